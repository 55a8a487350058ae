/// \file
/// The libraries of the servers.
#pragma once

#include <kd_lib/exchange/databaseserver.h>

#include <memory>
#include <string>

namespace kd_tool {

namespace exchange = kd_lib::exchange;

/// The server of a URI; null for the path of a SQLite file. A program with shared libraries opens the server's library
/// here, at the first URI, so that it starts without client libraries and also runs if they are missing. The library
/// stays open until the program ends. Any thread may call this.
std::unique_ptr<exchange::DatabaseServer> serverOf(const std::string& database);

}  // namespace kd_tool
