/// \file
/// The PostgreSQL back end. It needs no header of libpq.
#pragma once

#include <kd_lib/export.h>
#include <kd_lib/serverdatabase.h>

#include <string>

struct pg_conn;

namespace kd_lib {

/// One connection to a PostgreSQL server; `ServerDatabase` describes its use.
///
///     kd_lib::PostgreSQL shop;
///     if (shop.connectUri("postgresql://clerk@db.example/shop?sslmode=verify-full") &&
///         shop.prepare("SELECT name, price FROM article WHERE price < :limit") && shop.bind(":limit", "100") &&
///         shop.query()) {
///         shop.queryResults();
///     }
///
/// libpq's own settings apply: PGHOST and similar variables, the password file, service files, TLS.
/// - The code after an error is the SQLSTATE, such as "[#42P01]".
/// - Parameters are $1, $2 and so on, or :name. "?" is an operator here.
/// - Backquotes outside of texts and comments become double quotes.
/// - The lists show the tables of the search path.
/// - Values are texts as the server prints them: "t" and "f" for booleans, "\x" and hexadecimal digits for bytes.
class KD_LIB_EXPORT PostgreSQL : public ServerDatabase {
public:
    PostgreSQL();            ///< engine "POSTGRESQL", disconnected; settings empty: libpq's defaults
    ~PostgreSQL() override;  ///< disconnects

    using ServerDatabase::connect;

    /// Connects with `host` (a name, an address, or the folder of a Unix socket), `port`, `user`, `password` and
    /// `database`; libpq chooses the empty ones. A connection that was open before is closed first.
    bool connect() override;

    /// Connects with a URI in any form that libpq accepts, or a list such as "service=shop dbname=archive".
    bool connectUri(const std::string& uri) override;

    /// Connects to another database of the same server, with the same settings. If that fails, the open connection
    /// stays.
    bool useDatabase(const std::string& name) override;

    /// The connection, for libpq's own functions; null: disconnected.
    pg_conn* handle() const;

private:
    KD_LIB_LOCAL bool open(const char* const* words, const char* const* values, bool isUri);
    KD_LIB_LOCAL void takeSettings(const void* options);
};

}  // namespace kd_lib
