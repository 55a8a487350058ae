/// \file
/// Runs scripts into MariaDB or MySQL.
#pragma once

#include <kd_lib/exchange/databaseserver.h>

#include <string>

namespace kd_lib::exchange::detail {

/// `DatabaseServer::importScript`.
ImportTally importIntoMariadb(const std::string& uri, const ServerOptions& server, const std::string& script,
                              const ImportOptions& options);

}  // namespace kd_lib::exchange::detail
