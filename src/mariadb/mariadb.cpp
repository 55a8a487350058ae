#include <kd_lib/mariadb.h>

#include "mariadbconnection.h"

#include <kd_lib/exchange/error.h>

#include <utility>

namespace kd_lib {

namespace {

constexpr const char* databaseQuery = "SELECT schema_name FROM information_schema.schemata ORDER BY 1";

constexpr const char* tableQuery = "SELECT table_name FROM information_schema.tables "
                                   "WHERE table_schema = database() AND table_type = 'BASE TABLE' ORDER BY 1";

constexpr const char* columnQuery =
    "SELECT c.ordinal_position - 1 AS cid, c.column_name AS name, upper(c.column_type) AS type, "
    "if(c.is_nullable = 'NO', 1, 0) AS notnull, c.column_default AS dflt_value, coalesce(s.seq_in_index, 0) AS pk "
    "FROM information_schema.columns c LEFT JOIN information_schema.statistics s ON s.table_schema = c.table_schema "
    "AND s.table_name = c.table_name AND s.column_name = c.column_name AND s.index_name = 'PRIMARY' "
    "WHERE c.table_schema = database() AND c.table_name = :name ORDER BY c.ordinal_position";

}  // namespace

MariaDB::MariaDB()
    : ServerDatabase("MARIADB", detail::ServerWords{databaseQuery, tableQuery, columnQuery, "START TRANSACTION", '`'})
{
}

MariaDB::~MariaDB() = default;

st_mysql* MariaDB::handle() const
{
    return connection() != nullptr ? static_cast<detail::MariadbConnection*>(connection())->handle() : nullptr;
}

bool MariaDB::open(const detail::MariadbSettings& settings)
{
    std::string reason;
    detail::Mysql opened = detail::openMariadb(settings, reason);
    if (!opened) {
        return fail(reason);
    }
    adopt(std::make_unique<detail::MariadbConnection>(std::move(opened)));
    database = settings.Database;
    return true;
}

bool MariaDB::connect()
{
    const std::string name = std::exchange(database, {});
    disconnect();
    return open({host, port, user, password, name, {}});
}

bool MariaDB::connectUri(const std::string& uri)
{
    disconnect();
    try {
        const detail::MariadbSettings settings = detail::MariadbSettings::of(uri);
        host = settings.Host;
        port = settings.Port;
        user = settings.User;
        password = settings.Password;
        return open(settings);
    } catch (const exchange::OptionError& error) {
        return fail(error.Reason);
    }
}

bool MariaDB::useDatabase(const std::string& name)
{
    if (handle() == nullptr) {
        database = name;
        return connect();
    }
    if (!execute("USE " + quoted(name))) {
        return false;
    }
    database = name;
    return true;
}

}  // namespace kd_lib
