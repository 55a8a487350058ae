/// \file
/// SQL literals for output buffers.
#pragma once

#include "textbuffer.h"

#include <kd_lib/tablefields.h>

namespace kd_lib {

/// Appends the current values of all columns, each as the literal that `convertValue2Sql` returns, with
/// "," between them. When a value throws, some of those before it may have been appended.
void appendLiterals(TextBuffer& sql, const TableFields& fields);

}  // namespace kd_lib
