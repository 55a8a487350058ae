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

/// The progress of an import.
struct ImportProgress {
    std::uint64_t Statements = 0;       ///< run
    std::uint64_t Bytes = 0;            ///< of the script, read
    std::optional<std::uint64_t> Size;  ///< of the script, if known
};

struct ImportOptions {
    std::function<void(const ImportProgress&)> OnProgress = {};  ///< called about every 64 KiB, and at the end
    std::stop_token Stop = {};  ///< when a stop is requested, also inside a long statement, `Stopped` is thrown
    std::chrono::milliseconds Patience = std::chrono::seconds(5);  ///< how long to wait for another program's lock
};

/// The result of an import.
struct ImportTally {
    std::uint64_t Statements = 0;  ///< run
};

/// Runs a script (a file; "-" is standard input) on a database file, which is created if it does not exist. After
/// success everything that the script did is in the database. After an `Error` the database is unchanged, and a new
/// database does not appear: it is built under a temporary name in the same folder (`.kd_db-...`) and renamed when it
/// is whole. If another program has created a database of that name meanwhile, the import fails, and the other database
/// stays untouched.
///
/// `StatementReader` splits the script into statements. The whole script is one transaction, and the script's
/// transactions become part of it: BEGIN makes a savepoint, COMMIT and END release it and all savepoints in it, and
/// ROLLBACK goes back to it. As in SQLite, BEGIN inside a transaction or savepoint, and COMMIT or ROLLBACK outside any,
/// are errors. A script that ends inside a BEGIN or a SAVEPOINT is an error too, because part of it must be missing.
/// Rows that a statement returns are ignored. Statements that SQLite refuses inside a transaction (VACUUM, DETACH) are
/// errors; settings that it ignores there (`PRAGMA foreign_keys`) are ignored. A database that the script attaches is
/// part of the transaction, but stays as an empty file if it did not exist before.
///
/// Errors of a statement name the script, the statement's number and the line; those of the database (locked, full,
/// damaged, not a database) name the database. A read error is never taken for the end of the script.
///
///     importScript("people.sql", "people.db");
KD_LIB_EXPORT ImportTally importScript(const std::string& script, const std::string& database,
                                       const ImportOptions& options = {});

}  // namespace kd_lib::exchange
