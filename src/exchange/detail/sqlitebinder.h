/// \file
/// The cells of a record as parameters of a prepared statement.
#pragma once

#include "sqliteaffinity.h"

#include <kd_lib/exchange/record.h>

#include <sqlite3.h>

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

namespace kd_lib::exchange::detail {

/// Binds records to the parameters 1, 2, ... of a statement. The bound values view the record and this object, so the
/// statement must have run before the next record is bound. Nothing is allocated per record.
class SqliteBinder {
public:
    /// One affinity for each column.
    explicit SqliteBinder(std::vector<Affinity> columns);

    /// Returns SQLite's code.
    int bind(sqlite3_stmt* statement, const Record& record);

private:
    using Room = std::array<char, 32>;

    int bindNumber(sqlite3_stmt* statement, std::size_t column, std::string_view digits) const;
    int bindFloat(sqlite3_stmt* statement, std::size_t column, double value);
    int bindMoment(sqlite3_stmt* statement, std::size_t column, const Cell& cell);

    std::vector<Affinity> Columns;
    std::vector<Room> Texts;  // memory for values that are written as text
};

}  // namespace kd_lib::exchange::detail
