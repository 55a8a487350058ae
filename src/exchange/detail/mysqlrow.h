/// \file
/// How large MySQL lets a row be.
#pragma once

#include "targettype.h"

#include <kd_lib/exchange/column.h>

#include <vector>

namespace kd_lib::exchange::detail {

/// Turns varchars among the types of `columns` into longtext, the longest first, until the server takes the table.
/// False where it takes it only with innodb_strict_mode=0, and refuses single rows instead.
bool fitMySqlRow(const Dialect& dialect, const std::vector<Column>& columns, bool key, std::vector<TargetType>& types);

}  // namespace kd_lib::exchange::detail
