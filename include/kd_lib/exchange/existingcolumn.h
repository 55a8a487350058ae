/// \file
/// Columns of a table that exists on a server.
#pragma once

#include <kd_lib/exchange/cell.h>
#include <kd_lib/exchange/dialect.h>
#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/record.h>
#include <kd_lib/exchange/tablelayout.h>
#include <kd_lib/export.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kd_lib::exchange {

/// How a column would silently change a value. Values that the server refuses are not described.
struct ExistingColumn {
    enum class Kind : std::uint8_t {
        Other,    ///< keeps the value, or refuses it
        Text,     ///< at most `Limit` characters, further blanks at the end are cut; 0: of any length
        Whole,    ///< whole numbers
        Decimal,  ///< `Limit` decimals, others are rounded
        Float,    ///< about `Limit` significant digits
        Date,     ///< no time of the day
        Moment    ///< a time with `Limit` digits of a second's fraction
    };

    std::string Name;
    Kind Keeps = Kind::Other;
    std::uint32_t Limit = 0;
};

/// The column of exactly this name; if there is none, the one whose name differs only in the case of ASCII letters.
/// Throws an `Error` with `database` as its place if the table or the column is missing.
KD_LIB_EXPORT const ExistingColumn& findColumn(const std::vector<ExistingColumn>& columns, const std::string& name,
                                               const std::string& table, const std::string& database);

/// The SELECT of these columns, each found as `findColumn` does.
KD_LIB_EXPORT std::string selectColumns(Engine engine, const std::vector<ExistingColumn>& found,
                                        const std::vector<std::string>& columns, const std::string& table,
                                        const std::string& database);

/// The columns of an existing table to which records are appended, in the order of the source's columns.
class KD_LIB_EXPORT ExistingColumns {
public:
    /// Finds the columns of `layout` among those of the table, as `findColumn` does.
    ExistingColumns(const TableLayout& layout, const std::vector<ExistingColumn>& table, const std::string& database);

    const std::vector<ExistingColumn>& all() const { return Columns; }

    /// Marks the cells that the columns would keep only in part, by `Record::reject`. Removes decimals that are all
    /// zeros from whole numbers.
    void fit(Record& record, Engine engine) const;

private:
    std::vector<ExistingColumn> Columns;
};

}  // namespace kd_lib::exchange
