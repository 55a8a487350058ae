/// \file
/// A database on a server, as a place where tables go to and come from.
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
    /// Rows that the statement inserted, changed or deleted; known when `next` has returned false.
    virtual std::uint64_t changes() const = 0;

protected:
    using Source::Source;
};

/// How a server is approached.
struct ServerOptions {
    /// When a stop is requested, the connection is cut, whatever it is waiting for, and `Stopped` is thrown.
    std::stop_token Stop = {};
};

/// What a server can do. Each operation makes a connection of its own, so that results of several can be in use at the
/// same time, also on several threads. Errors name the URI without its password.
class KD_LIB_EXPORT DatabaseServer {
public:
    virtual ~DatabaseServer();
    DatabaseServer(const DatabaseServer&) = delete;
    DatabaseServer& operator=(const DatabaseServer&) = delete;

    virtual const Dialect& dialect() const = 0;

    /// A target that loads a table by the server's bulk road, all or nothing. What the server refuses of a record (a
    /// constraint, a value too long for a column of an existing table) is an `Error` that names the record. In a table
    /// that exists, a value that the server would change without a word is unreadable.
    virtual std::unique_ptr<Target> target(const TableOptions& table) = 0;

    /// Runs one statement. Throws a `SqlError` where the server refuses it. Rows come in constant memory. Values that no
    /// cell can hold (a date before year 1, a type of the server's own) are the server's text.
    virtual std::unique_ptr<ResultSource> query(const std::string& sql) = 0;

    /// The columns of a table, in the order in which the server stores the rows: that of a load, unless rows were changed
    /// since. Throws an `Error` where the table or a column is missing.
    virtual std::unique_ptr<Source> table(const std::string& table, const std::vector<std::string>& columns) = 0;

    /// Runs a script (a file; "-" is standard input), as `ServerScript` cuts it. Rows that its statements return are passed
    /// over. Errors name the script, the statement's number and the line.
    virtual ImportTally importScript(const std::string& script, const ImportOptions& options) = 0;

protected:
    DatabaseServer() = default;
};

}  // namespace kd_lib::exchange
