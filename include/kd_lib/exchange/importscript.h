/// \file
/// Runs an SQL script into a SQLite database, all or nothing.
#pragma once

#include <kd_lib/export.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>

namespace kd_lib::exchange {

/// How far an import is.
struct ImportProgress {
    std::uint64_t Statements = 0;       ///< run
    std::uint64_t Bytes = 0;            ///< of the script, read
    std::optional<std::uint64_t> Size;  ///< of the script, where known
};

struct ImportOptions {
    std::function<void(const ImportProgress&)> OnProgress = {};  ///< called about every 64 KiB, and at the end
    std::stop_token Stop = {};  ///< when a stop is requested, also inside a long statement, `Stopped` is thrown
    std::chrono::milliseconds Patience = std::chrono::seconds(5);  ///< the wait for another program's lock
};

/// What an import did.
struct ImportTally {
    std::uint64_t Statements = 0;  ///< run
};

/// Runs a script (a file; "-" is standard input) into a database file, which is made where there is none.
/// After success everything that the script did is in the database. After an `Error` the database is as it was
/// before, and a file that did not exist does not exist: a new database is built under another name in the same
/// folder (`.kd_db-...`) and gets its own when it is whole. If another program has made a database of that name
/// meanwhile, the import fails, and the other's database stays untouched.
///
/// The statements are cut by `StatementReader`. The whole script is one transaction, and transactions of its own
/// become part of it: BEGIN makes a savepoint, COMMIT and END release it and all savepoints in it, and ROLLBACK goes
/// back to it. As in SQLite, BEGIN inside a transaction or savepoint, and COMMIT or ROLLBACK outside any, are errors.
/// So is a script that ends inside a BEGIN or a SAVEPOINT: half of what it meant is missing.
/// Rows that a statement returns are passed over. What SQLite refuses inside a transaction (VACUUM, DETACH) is an
/// error; settings that it ignores there (`PRAGMA foreign_keys`) are ignored. A database that the script attaches is
/// part of the transaction, but stays as an empty file if it did not exist before.
///
/// Errors of a statement name the script, the statement's number and the line; those of the database (locked, full,
/// damaged, not a database) name the database. A read error is never taken for the end of the script.
///
///     importScript("people.sql", "people.db");
KD_LIB_EXPORT ImportTally importScript(const std::string& script, const std::string& database,
                                       const ImportOptions& options = {});

}  // namespace kd_lib::exchange
