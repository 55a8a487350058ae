/// \file
/// A connection on which a table is loaded or read.
#pragma once

#include "postgresqlconnection.h"

#include <kd_lib/exchange/databaseserver.h>

#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

using kd_lib::detail::Result;

/// Connects, and turns every failure into an `Error`. A requested stop closes the connection: every wait for the server
/// then fails, and `Stopped` is thrown.
class PostgresqlSession {
public:
    PostgresqlSession(const std::string& uri, const ServerOptions& options);

    /// The URI without its password.
    const std::string& name() const { return Name; }
    PGconn* handle() const { return Handle.get(); }

    /// Runs one or more statements. Throws if one of them fails, or begins a COPY although `copy` is false.
    Result run(const std::string& sql, bool copy = false);

    /// The rows of a statement with one parameter.
    Result rows(const char* sql, const std::string& parameter);

    /// Throws for a failed result: `Stopped`, or an `Error` that names the database.
    [[noreturn]] void fail(const PGresult* result) const;

    /// Throws `Stopped` if a stop is requested.
    void checkStop() const;

private:
    struct Closer {
        void operator()(PGconn* handle) const { PQfinish(handle); }
    };
    using Cutter = std::stop_callback<std::function<void()>>;

    std::string Name;
    std::stop_token Stop;
    std::unique_ptr<PGconn, Closer> Handle;
    std::unique_ptr<Cutter> OnStop;  // destroyed before the connection
};

/// The value of a row; empty for NULL.
inline std::string valueOf(const Result& rows, int row, int column)
{
    return {PQgetvalue(rows.get(), row, column), static_cast<std::size_t>(PQgetlength(rows.get(), row, column))};
}

}  // namespace kd_lib::exchange::detail
