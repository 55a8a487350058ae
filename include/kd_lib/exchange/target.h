/// \file
/// Targets of records.
#pragma once

#include <kd_lib/exchange/column.h>
#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/record.h>
#include <kd_lib/export.h>

#include <string>
#include <vector>

namespace kd_lib::exchange {

/// Stores records. The result appears whole or not at all. The order of calls: `begin`, then for each record `fit` and,
/// unless the record is left out, `write`; then `finish`, or `abandon`. Every operation except `abandon` throws an
/// `Error` when it fails; then only `abandon` may follow. The destructor abandons an unfinished result. Threads: one
/// thread per object.
class KD_LIB_EXPORT Target {
public:
    virtual ~Target();
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    /// Prepares for records of these columns, from a file of this name. Names and types are chosen here. `columns` must
    /// outlive the work.
    virtual void begin(const std::string& file, const std::vector<Column>& columns) = 0;

    /// Marks the cells that the target cannot hold, by `Record::reject`. It stores nothing.
    virtual void fit(Record& record) = 0;

    /// Stores a record. None of its cells may be unreadable.
    virtual void write(const Record& record) = 0;

    /// Makes the written records visible.
    virtual void finish() = 0;

    /// Discards everything written, except on standard output.
    virtual void abandon() noexcept = 0;

    /// The destination of the records, for the tally: "table people", or empty.
    virtual std::string destination() const { return {}; }

    /// Notes: names changed, digits kept as text. Complete after `finish`.
    const std::vector<Note>& notes() const { return Notes; }

protected:
    Target() = default;

    std::vector<Note> Notes;
};

/// What to do with a table that exists in the target.
enum class TableMode : std::uint8_t {
    Create,  ///< it is an error, and the table stays untouched
    Append,  ///< records are added to it, columns matched by name
    Replace  ///< a new one replaces it; the old one stays until the new one is whole
};

enum class NameCase : std::uint8_t { Lower, Keep };

/// The table that an SQL target creates.
struct TableOptions {
    std::string Table = {};  ///< taken as written; empty: the file's name without folder and extension, in `Names` case
    TableMode Mode = TableMode::Create;
    std::string Key = {};  ///< a first column of this name, numbered by the database; empty: none
    NameCase Names = NameCase::Lower;
};

}  // namespace kd_lib::exchange
