/// \file
/// The columns of an existing table.
#pragma once

#include "mariadbsession.h"

#include <kd_lib/exchange/existingcolumn.h>

#include <string>
#include <vector>

namespace kd_lib::exchange::detail {

/// In the table's order; none if the database has no such table.
std::vector<ExistingColumn> columnsOfTable(MariadbSession& session, const std::string& table);

/// The names of the columns whose texts are not in UTF-8.
std::vector<std::string> foreignColumns(MariadbSession& session, const std::string& table);

}  // namespace kd_lib::exchange::detail
