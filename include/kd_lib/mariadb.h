/// \file
/// The back end for MariaDB and MySQL. It needs no header of libmariadb.
#pragma once

#include <kd_lib/export.h>
#include <kd_lib/serverdatabase.h>

#include <string>

struct st_mysql;

namespace kd_lib {

namespace detail {
struct MariadbSettings;
}

/// One connection to a MariaDB or MySQL server; `ServerDatabase` describes its use.
///
///     kd_lib::MariaDB shop;
///     if (shop.connectUri("mariadb://clerk@db.example/shop?ssl-ca=/etc/ssl/shop.pem") &&
///         shop.prepare("SELECT name, price FROM article WHERE price < :limit") && shop.bind(":limit", "100") &&
///         shop.query()) {
///         shop.queryResults();
///     }
///
/// libmariadb's own settings apply: the groups [client] and [kd_db] of ~/.my.cnf and of the machine's option files.
/// - The code after an error is the server's number, such as "[#1146]".
/// - Parameters are ? or :name; each ? is a separate parameter.
/// - A statement without parameters is checked when it is executed, not when it is prepared.
/// - An INSERT or UPDATE counts the rows that it matches, as SQLite does, even if it changes nothing in them.
/// - CREATE, ALTER, DROP and similar statements end a transaction, and cannot be rolled back.
/// - The server never gets a file of this machine, even if it asks for one.
class KD_LIB_EXPORT MariaDB : public ServerDatabase {
public:
    MariaDB();            ///< engine "MARIADB", disconnected; settings empty: libmariadb's defaults
    ~MariaDB() override;  ///< disconnects

    using ServerDatabase::connect;

    /// Connects with `host` (a name, an address, or the path of a Unix socket), `port`, `user`, `password` and
    /// `database`; libmariadb chooses the empty ones. A connection that was open before is closed first.
    bool connect() override;

    /// Connects with a URI, "mariadb://" or "mysql://". Its options are those of the option files: socket, ssl, ssl-ca,
    /// ssl-capath, ssl-cert, ssl-cipher, ssl-crl, ssl-key, ssl-verify-server-cert, connect-timeout. "ssl=1" and every
    /// option that begins with "ssl-" make the connection fail if the server does not offer TLS; ssl-ca and ssl-capath
    /// also if the server's certificate or name is wrong.
    bool connectUri(const std::string& uri) override;

    /// Makes another database of the same server the current one.
    bool useDatabase(const std::string& name) override;

    /// The connection, for libmariadb's own functions; null: disconnected.
    st_mysql* handle() const;

private:
    KD_LIB_LOCAL bool open(const detail::MariadbSettings& settings);
};

}  // namespace kd_lib
