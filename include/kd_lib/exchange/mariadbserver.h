/// \file
/// MariaDB and MySQL as a place where tables go to and come from; in libkd_mariadb.
#pragma once

#include <kd_lib/exchange/databaseserver.h>
#include <kd_lib/export.h>

#include <memory>
#include <string>

namespace kd_lib::exchange {

/// The database that a URI names, "mariadb://user@host/database" or "mysql://...", with the options of
/// `MariaDB::connectUri`. Nothing is connected yet.
/// - `target` uses LOAD DATA LOCAL, fed from memory, or INSERT statements of many rows where the server forbids that. A
///   new table is loaded under another name, `TABLE_kd_db_N` with the comment "kd_db: unfinished load", and gets its
///   own at the end; a replaced one is exchanged with it in one step. After a failure it is dropped, over a new
///   connection if need be. The end of this process, or of the server, leaves it; nothing else is left. Records are
///   appended in one transaction; a table of an engine without transactions is refused.
/// - `importScript`: CREATE, ALTER, DROP and their like commit what came before them, and cannot be taken back; what
///   followed the last of them is, after a failure. DELIMITER is known.
KD_LIB_EXPORT std::unique_ptr<DatabaseServer> mariadbServer(const std::string& uri, const ServerOptions& options = {});

}  // namespace kd_lib::exchange
