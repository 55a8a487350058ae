#include <kd_lib/postgresql.h>

#include "postgresqlconnection.h"

#include <charconv>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace kd_lib {

namespace {

constexpr const char* encoding = "UTF8";
constexpr const char* applicationName = "kd_db";

constexpr const char* databaseQuery =
    "SELECT datname FROM pg_database WHERE datallowconn AND NOT datistemplate ORDER BY 1";

constexpr const char* tableQuery =
    "SELECT c.relname FROM pg_class c JOIN pg_namespace n ON n.oid = c.relnamespace "
    "WHERE c.relkind IN ('r', 'p', 'f') AND n.nspname = ANY (current_schemas(false)) ORDER BY 1";

constexpr const char* columnQuery =
    "SELECT a.attnum - 1 AS cid, a.attname AS name, upper(format_type(a.atttypid, a.atttypmod)) AS type, "
    "a.attnotnull::int AS notnull, pg_get_expr(d.adbin, d.adrelid) AS dflt_value, "
    "coalesce(array_position(string_to_array(i.indkey::text, ' '), a.attnum::text), 0) AS pk "
    "FROM pg_attribute a LEFT JOIN pg_attrdef d ON d.adrelid = a.attrelid AND d.adnum = a.attnum "
    "LEFT JOIN pg_index i ON i.indrelid = a.attrelid AND i.indisprimary "
    "WHERE a.attrelid = to_regclass(quote_ident($1)) AND a.attnum > 0 AND NOT a.attisdropped ORDER BY a.attnum";

const char* orNull(const std::string& text)
{
    return text.empty() ? nullptr : text.c_str();
}

}  // namespace

PostgreSQL::PostgreSQL()
    : ServerDatabase("POSTGRESQL", detail::ServerWords{databaseQuery, tableQuery, columnQuery, "BEGIN", '"'})
{
}

PostgreSQL::~PostgreSQL() = default;

pg_conn* PostgreSQL::handle() const
{
    return connection() != nullptr ? static_cast<detail::PostgresqlConnection*>(connection())->handle() : nullptr;
}

bool PostgreSQL::open(const char* const* words, const char* const* values, bool isUri)
{
    PGconn* opened = PQconnectdbParams(words, values, isUri ? 1 : 0);
    if (PQstatus(opened) != CONNECTION_OK) {
        const std::string reason = detail::postgresqlReason(PQerrorMessage(opened));
        PQfinish(opened);
        return fail(reason);
    }
    adopt(std::make_unique<detail::PostgresqlConnection>(opened));
    database = PQdb(opened);
    return true;
}

bool PostgreSQL::connect()
{
    const std::string name = std::exchange(database, {});
    disconnect();
    const std::string number = port != 0 ? std::to_string(port) : "";
    const char* const words[] = {
        "host", "port", "user", "password", "dbname", "client_encoding", "fallback_application_name", nullptr};
    const char* const values[] = {orNull(host), orNull(number), orNull(user),    orNull(password),
                                  orNull(name), encoding,       applicationName, nullptr};
    return open(words, values, false);
}

bool PostgreSQL::connectUri(const std::string& uri)
{
    disconnect();
    char* reason = nullptr;
    PQconninfoOption* options = PQconninfoParse(uri.c_str(), &reason);
    if (options == nullptr) {
        // After its colon the reason quotes a part of the URI, perhaps the password.
        const std::string text = reason != nullptr ? reason : "out of memory";
        PQfreemem(reason);
        return fail(detail::postgresqlReason(text.substr(0, text.find(": \"")).c_str()));
    }
    takeSettings(options);
    PQconninfoFree(options);
    const char* const words[] = {"dbname", "client_encoding", "fallback_application_name", nullptr};
    const char* const values[] = {uri.c_str(), encoding, applicationName, nullptr};
    return open(words, values, true);
}

void PostgreSQL::takeSettings(const void* options)
{
    host.clear();
    user.clear();
    password.clear();
    port = 0;
    for (const auto* option = static_cast<const PQconninfoOption*>(options); option->keyword != nullptr; ++option) {
        const std::string_view word = option->keyword;
        const char* value = option->val != nullptr ? option->val : "";
        if (word == "host") {
            host = value;
        } else if (word == "user") {
            user = value;
        } else if (word == "password") {
            password = value;
        } else if (word == "port") {
            std::from_chars(value, value + std::strlen(value), port);
        }
    }
}

bool PostgreSQL::useDatabase(const std::string& name)
{
    if (handle() == nullptr) {
        database = name;
        return connect();
    }
    // The settings that this connection was made with, including those of a URI.
    PQconninfoOption* options = PQconninfo(handle());
    std::vector<const char*> words;
    std::vector<const char*> values;
    for (const PQconninfoOption* option = options; option != nullptr && option->keyword != nullptr; ++option) {
        words.push_back(option->keyword);
        values.push_back(std::string_view(option->keyword) == "dbname" ? name.c_str() : option->val);
    }
    words.push_back(nullptr);
    values.push_back(nullptr);
    const bool opened = open(words.data(), values.data(), false);
    PQconninfoFree(options);
    return opened;
}

}  // namespace kd_lib
