/// \file
/// A connection on which a table is loaded or read.
#pragma once

#include "mariadbopen.h"

#include <kd_lib/exchange/databaseserver.h>

#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange::detail {

/// The rows of a result, all of them; NULL as the empty text.
using TextRows = std::vector<std::vector<std::string>>;

/// Connects, and turns every failure into an `Error`. A requested stop closes the connection: every wait for the server
/// then fails, and `Stopped` is thrown.
class MariadbSession {
public:
    MariadbSession(const std::string& uri, const ServerOptions& options);
    ~MariadbSession();

    /// The URI without its password.
    const std::string& name() const { return Name; }
    MYSQL* handle() const { return Handle.get(); }

    /// Runs one statement and ignores its rows.
    void run(const std::string& sql);

    /// The rows of a statement.
    TextRows rows(const std::string& sql);

    /// Sends one statement; true if the server accepts it. The caller must read its result, if it has one.
    bool send(const std::string& sql) const;

    /// `text` as a literal.
    std::string literal(std::string_view text) const;

    /// The connection's last error.
    std::string reason() const;
    bool lost() const;

    /// Throws for the last error: `Stopped`, or an `Error` that names the database.
    [[noreturn]] void fail() const;

    /// Throws `Stopped` if a stop is requested.
    void checkStop() const;

    /// The server's number of the connection.
    unsigned long number() const { return mysql_thread_id(handle()); }

private:
    using Cutter = std::stop_callback<std::function<void()>>;

    std::string Name;
    std::stop_token Stop;
    kd_lib::detail::Mysql Handle;
    std::unique_ptr<Cutter> OnStop;  // destroyed before the connection
};

}  // namespace kd_lib::exchange::detail
