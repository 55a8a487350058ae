/// \file
/// The columns of an existing table.
#pragma once

#include "postgresqlsession.h"

#include <kd_lib/exchange/existingcolumn.h>

#include <string>
#include <vector>

namespace kd_lib::exchange::detail {

/// In the table's order; none if the search path has no such table.
std::vector<ExistingColumn> columnsOfTable(PostgresqlSession& session, const std::string& table);

}  // namespace kd_lib::exchange::detail
