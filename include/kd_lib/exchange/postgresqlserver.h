/// \file
/// PostgreSQL as a place where tables go to and come from; in libkd_postgresql.
#pragma once

#include <kd_lib/exchange/databaseserver.h>
#include <kd_lib/export.h>

#include <memory>
#include <string>

namespace kd_lib::exchange {

/// The database that a URI names, in any form that libpq knows: "postgresql://user@host/database?sslmode=...". Nothing is
/// connected yet.
/// - `target` copies rows (COPY) in one transaction. A failure, a lost connection and the end of this process leave
///   nothing. A replaced table is exchanged at the end of it.
/// - `importScript` runs a script in one transaction as well, all or nothing. Transactions of its own become part of that:
///   BEGIN makes a savepoint, COMMIT releases it, ROLLBACK goes back to it. Rows after COPY ... FROM stdin are copied.
KD_LIB_EXPORT std::unique_ptr<DatabaseServer> postgresqlServer(const std::string& uri,
                                                               const ServerOptions& options = {});

}  // namespace kd_lib::exchange
