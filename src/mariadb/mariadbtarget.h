/// \file
/// Loads a table of MariaDB or MySQL.
#pragma once

#include <kd_lib/exchange/databaseserver.h>
#include <kd_lib/exchange/servertarget.h>

#include <memory>
#include <string>
#include <vector>

namespace kd_lib::exchange::detail {

/// Loads a new table under a temporary name, or appends in one transaction.
std::unique_ptr<ServerLoad> mariadbLoad(const std::string& uri, const ServerOptions& options, const TableOptions& table,
                                        const std::string& file, const std::vector<Column>& columns);

}  // namespace kd_lib::exchange::detail
