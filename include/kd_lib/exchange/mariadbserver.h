/// \file
/// Databases on MariaDB and MySQL servers; in libkd_mariadb.
#pragma once

#include <kd_lib/exchange/databaseserver.h>
#include <kd_lib/export.h>

#include <memory>
#include <string>

namespace kd_lib::exchange {

/// The database that a URI names, "mariadb://user@host/database" or "mysql://...", with the options of
/// `MariaDB::connectUri`. Nothing is connected yet.
/// - `target` uses LOAD DATA LOCAL, fed from memory, or INSERT statements of many rows if the server forbids that. A
///   new table is loaded under a temporary name, `TABLE_kd_db_N` with the comment "kd_db: unfinished load", and renamed
///   at the end; a replaced table is exchanged with it in one step. After a failure the temporary table is dropped,
///   over a new connection if necessary. Only if this process or the server is killed does it remain. Records are
///   appended in one transaction; a table of an engine without transactions is refused.
/// - `importScript`: CREATE, ALTER, DROP and similar statements commit everything before them and cannot be rolled
///   back. After a failure, only the statements after the last of them are rolled back. DELIMITER is supported.
KD_LIB_EXPORT std::unique_ptr<DatabaseServer> mariadbServer(const std::string& uri, const ServerOptions& options = {});

/// `mariadbServer` for programs that open this library with dlopen.
extern "C" KD_LIB_EXPORT ServerFunction kd_mariadb_server;

}  // namespace kd_lib::exchange
