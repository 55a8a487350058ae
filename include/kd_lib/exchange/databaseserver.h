/// \file
/// A database on a server, which tables are read from and loaded into.
#pragma once

#include <kd_lib/exchange/dialect.h>
#include <kd_lib/exchange/importscript.h>
#include <kd_lib/exchange/source.h>
#include <kd_lib/exchange/target.h>
#include <kd_lib/export.h>

#include <cstdint>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace kd_lib::exchange {

/// The rows of a statement.
class KD_LIB_EXPORT ResultSource : public Source {
public:
    ~ResultSource() override;

    /// Rows that the statement inserted, changed or deleted; known when `next` has returned false.
    virtual std::uint64_t changes() const = 0;

protected:
    using Source::Source;
};

/// Options of a connection to a server.
struct ServerOptions {
    /// When a stop is requested, the connection is closed, even while it waits, and `Stopped` is thrown.
    std::stop_token Stop = {};
};

/// The operations of a server. Each one opens a separate connection, so that several results can be in use at the same
/// time, also on several threads. Errors name the URI without its password.
class KD_LIB_EXPORT DatabaseServer {
public:
    virtual ~DatabaseServer();
    DatabaseServer(const DatabaseServer&) = delete;
    DatabaseServer& operator=(const DatabaseServer&) = delete;

    virtual const Dialect& dialect() const = 0;

    /// A target that loads a table by the server's bulk load, all or nothing. If the server refuses a record (a
    /// constraint, a value too long for a column of an existing table), an `Error` names the record. When records are
    /// appended, a value that the server would silently change is unreadable.
    virtual std::unique_ptr<Target> target(const TableOptions& table) = 0;

    /// Runs one statement. Throws a `SqlError` if the server refuses it. Memory does not grow with the number of rows.
    /// A value that no cell can hold (a date before year 1, a type that only this server has) becomes the text that the
    /// server sends.
    virtual std::unique_ptr<ResultSource> query(const std::string& sql) = 0;

    /// The rows of these columns of a table, in the order in which the server stores them: that of a load, unless rows
    /// were changed since. Throws an `Error` if the table or a column is missing.
    virtual std::unique_ptr<Source> table(const std::string& table, const std::vector<std::string>& columns) = 0;

    /// Runs a script (a file; "-" is standard input), which `ServerScript` splits. Rows that its statements return are
    /// ignored. Errors name the script, the statement's number and the line.
    virtual ImportTally importScript(const std::string& script, const ImportOptions& options) = 0;

protected:
    DatabaseServer() = default;
};

/// Creates a server; the caller deletes it. The library of each server has such a function with C linkage,
/// `kd_postgresql_server` and `kd_mariadb_server`, for programs that open the library with dlopen when they need it.
/// Exceptions pass through.
using ServerFunction = DatabaseServer*(const std::string& uri, const ServerOptions& options);

}  // namespace kd_lib::exchange
