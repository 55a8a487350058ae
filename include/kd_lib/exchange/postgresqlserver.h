/// \file
/// Databases on PostgreSQL servers; in libkd_postgresql.
#pragma once

#include <kd_lib/exchange/databaseserver.h>
#include <kd_lib/export.h>

#include <memory>
#include <string>

namespace kd_lib::exchange {

/// The database that a URI names, in any form that libpq accepts: "postgresql://user@host/database?sslmode=...".
/// Nothing is connected yet.
/// - `target` copies rows (COPY) in one transaction. Nothing remains after a failure, a lost connection or the end of
///   this process. A replaced table is exchanged at the end of the transaction.
/// - `importScript` runs a script in one transaction as well, all or nothing. The script's transactions become part of
///   it: BEGIN makes a savepoint, COMMIT releases it, ROLLBACK goes back to it. Rows after COPY ... FROM stdin are
///   loaded.
KD_LIB_EXPORT std::unique_ptr<DatabaseServer> postgresqlServer(const std::string& uri,
                                                               const ServerOptions& options = {});

/// `postgresqlServer` for programs that open this library with dlopen.
extern "C" KD_LIB_EXPORT ServerFunction kd_postgresql_server;

}  // namespace kd_lib::exchange
