/// \file
/// SQL literals for output buffers.
#pragma once

#include "textbuffer.h"

#include <kd_lib/tablefield.h>

#include <span>

namespace kd_lib::detail {

/// Appends the current values of `fields`, each as the literal that `convertValue2Sql` returns, with ","
/// between them. If a value throws, some of those before it may have been appended.
void appendLiterals(TextBuffer& sql, std::span<TableField* const> fields);

}  // namespace kd_lib::detail
