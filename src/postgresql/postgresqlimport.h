/// \file
/// Runs scripts into PostgreSQL.
#pragma once

#include <kd_lib/exchange/databaseserver.h>

#include <string>

namespace kd_lib::exchange::detail {

/// `DatabaseServer::importScript`.
ImportTally importIntoPostgresql(const std::string& uri, const ServerOptions& server, const std::string& script,
                                 const ImportOptions& options);

}  // namespace kd_lib::exchange::detail
