/// \file
/// MySQL's limits on the size of a row.
#pragma once

#include "targettype.h"

#include <kd_lib/exchange/column.h>

#include <vector>

namespace kd_lib::exchange::detail {

/// Turns varchars among the types of `columns` into longtext, the longest first, until the server accepts the table.
/// False if it accepts the table only with innodb_strict_mode=0, and then refuses single rows instead.
bool fitMySqlRow(const Dialect& dialect, const std::vector<Column>& columns, bool key, std::vector<TargetType>& types);

}  // namespace kd_lib::exchange::detail
