/// \file
/// Values in a common form for all sources and databases.
#pragma once

#include <kd_lib/exchange/cell.h>
#include <kd_lib/exchange/column.h>

#include <string>

namespace kd_lib::exchange::detail {

/// Appends a value of a column of this type, in a form that is the same for equal values: numbers by value, booleans,
/// dates and times even if a database returns them as numbers or texts. No value's form is the beginning of another's.
void appendComparable(std::string& to, ColumnType type, const Cell& cell);

/// Whether two values of a column of this type are equal. `scratch` is memory for reuse.
bool equalValues(ColumnType type, const Cell& a, const Cell& b, std::string& scratch);

/// A value as people read it: NULL, digits, 'text', x'00ff'. Long values are not cut.
std::string shownValue(const Cell& cell);

}  // namespace kd_lib::exchange::detail
