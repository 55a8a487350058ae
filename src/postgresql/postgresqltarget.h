/// \file
/// Loads a table of PostgreSQL.
#pragma once

#include <kd_lib/exchange/databaseserver.h>
#include <kd_lib/exchange/servertarget.h>

#include <memory>
#include <string>
#include <vector>

namespace kd_lib::exchange::detail {

/// Copies records into a table in one transaction.
std::unique_ptr<ServerLoad> postgresqlLoad(const std::string& uri, const ServerOptions& options,
                                           const TableOptions& table, const std::string& file,
                                           const std::vector<Column>& columns);

}  // namespace kd_lib::exchange::detail
