/// \file
/// The root of all tables.
#pragma once

#include <kd_lib/export.h>
#include <kd_lib/tablefields.h>

#include <cstdint>
#include <string>

namespace kd_lib {

/// A table of typed fields that is read one record at a time. This base class opens and reads nothing;
/// derived classes override the operations for their kind of source. The order of the virtual operations is
/// part of the binary interface.
/// Threads: one thread per object.
class KD_LIB_EXPORT DatabaseTable {
public:
    TableFields Fields;             ///< the columns with their current values
    std::string Name;               ///< table name; for a file, without directory and extension
    std::string Path;               ///< directory of the file; for a linked table, the database name
    std::uint64_t RecordCount = 0;  ///< number of records, if the source states it
    bool Trim = true;               ///< values lose their trailing blanks when they are extracted

    DatabaseTable() = default;                        ///< a table without a name
    explicit DatabaseTable(const std::string& name);  ///< a table named `name`

    virtual ~DatabaseTable();

    /// `open(Name)`.
    virtual bool open();

    /// Opens the table `name`; every concrete table overrides it. The base class returns false.
    virtual bool open(const std::string& name);

    /// Whether the table is open; the base class returns true.
    virtual bool is_open();

    /// Closes the table. The base class empties `Fields` and returns true.
    virtual bool close();

    /// Defines the columns from the source; the base class only returns true.
    virtual bool getFieldList();

    /// Goes to the first byte after the header; the base class only returns true.
    virtual bool skipHeader();

    /// Empties `Fields`.
    virtual void defineFields();

    /// Displays "Header information for table : " and the name, the column list, and
    /// "Number of records: " with the record count.
    /// Deliberate: the count is one character, the one whose code is its low 8 bits.
    virtual void showHeader();

    /// Reads the next record into the values of `Fields`; the base class only returns true.
    virtual bool fetchRecord();
};

}  // namespace kd_lib
