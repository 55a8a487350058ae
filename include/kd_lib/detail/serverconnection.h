/// \file
/// The interface between `ServerDatabase` and the back end of a server.
#pragma once

#include <kd_lib/detail/statementtext.h>
#include <kd_lib/tablefields.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kd_lib::detail {

/// The statements that list the objects of a server, and its quotes around names.
struct ServerWords {
    const char* Databases;
    const char* Tables;
    const char* Columns;  ///< with one parameter, the table
    const char* Begin;
    char Quote;
};

/// The value of a parameter.
struct Parameter {
    enum class Kind { Null, Text, Integer, Real };

    Kind Type = Kind::Null;
    std::string Text;
    std::int64_t Integer = 0;
    double Real = 0;
};

/// One open connection with one current statement. An operation that fails returns false and leaves its reason in
/// `Failure`, on one line and without a password. The result of a running statement is read to its end before the next
/// one is sent.
class ServerConnection {
public:
    ServerConnection() = default;
    ServerConnection(const ServerConnection&) = delete;
    ServerConnection& operator=(const ServerConnection&) = delete;
    virtual ~ServerConnection() = default;

    std::string Failure;  ///< reason of the last failure; the caller empties it

    virtual bool alive() const = 0;        ///< the connection has not been lost
    virtual SqlForm form() const = 0;      ///< of the statements
    virtual bool backslashes() const = 0;  ///< inside the session's quotes, a backslash is an escape

    /// Makes this statement, which must not change, the current one.
    virtual bool prepare(const StatementText& statement) = 0;

    /// Starts the current statement and, if it returns rows, sets `columns` to their names. `next` fetches the rows.
    virtual bool run(const StatementText& statement, const std::vector<Parameter>& parameters,
                     std::vector<std::string>& columns) = 0;

    /// Takes the next row into the values of `row`, NULL as the empty text; also false at the end of the rows.
    virtual bool next(TableFields& row) = 0;

    /// Reads the rest of all results; true if none of them is a failure.
    virtual bool readRest() = 0;

    /// The number of rows that the last statement has changed.
    virtual std::uint64_t changedRows() const = 0;

    /// Sends a statement of the transaction itself. The current statement stays.
    virtual bool command(const char* sql) = 0;

    /// Drops the current statement.
    virtual void drop() = 0;
};

}  // namespace kd_lib::detail
