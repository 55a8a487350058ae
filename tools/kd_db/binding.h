/// \file
/// The values of a table as SQL: what a column is declared as, and how its values are bound.
#pragma once

#include <kd_lib/sqliteconnection.h>
#include <kd_lib/tablefield.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kd_tool {

/// `name` as an SQL name. The library gives SQLite a double quote for every backquote, so a backquote in
/// a name arrives as a double quote; it ends nothing.
std::string quotedName(const std::string& name);

/// The columns of a table on their way into an SQL table.
///
/// | column                        | declared as      | bound as                                    |
/// |-------------------------------|------------------|---------------------------------------------|
/// | char, varchar                 | `char(length)`   | text                                        |
/// | integer without decimals      | `integer`        | number                                      |
/// | integer or decimal with some  | `decimal(l,d)`   | number                                      |
/// | float                         | `float`          | number                                      |
/// | boolean                       | `boolean`        | 1 for t, y; 0 for f, n; NULL for the others |
/// | date                          | `date text`      | YYYY-MM-DD for 8 digits, else as it is      |
/// | every other                   | `text`           | text                                        |
///
/// An empty value is NULL. A number that is none is bound as its text.
class Binding {
public:
    /// `fields` must outlive this.
    explicit Binding(const kd_lib::TableFields& fields);

    std::string createTable(const std::string& table) const;
    std::string insert(const std::string& table) const;

    /// Binds the current values to the prepared `insert`; false when SQLite refuses one. The statement must
    /// have been executed before the values change.
    bool bindRecord(kd_lib::SQLite3& database);

    /// Numbers bound so far that have more digits than SQLite keeps.
    std::uint64_t roundedNumbers() const { return Rounded; }

private:
    enum class Kind { Text, Number, Float, Boolean, Date };

    bool bindNumber(kd_lib::SQLite3& database, int index, Kind kind, std::string_view value);
    static bool bindBoolean(kd_lib::SQLite3& database, int index, char letter);
    bool bindDate(kd_lib::SQLite3& database, int index, std::string_view value);
    bool bindValue(kd_lib::SQLite3& database, int index, Kind kind, const std::string& value);
    static Kind kindOf(const kd_lib::TableField& field);

    const kd_lib::TableFields& Fields;
    std::vector<Kind> Kinds;
    std::vector<std::string> Dates;  // what is bound for each column of dates
    std::uint64_t Rounded = 0;
};

}  // namespace kd_tool
