/// \file
/// Cutting a record into columns by their positions.
#pragma once

#include <kd_lib/tablefields.h>

#include <string>

namespace kd_lib::detail {

/// Stores the slice of `record` at each column's `Offset`, `Length` bytes long, as its value; without
/// trailing blanks if `trim` is set. A slice shorter than its column stops the process with a text that
/// names the assertion, `unit` and "extractContent". A column that starts after the record's end throws
/// std::out_of_range.
void sliceRecord(TableFields& fields, const std::string& record, bool trim, const char* unit);

}  // namespace kd_lib::detail
