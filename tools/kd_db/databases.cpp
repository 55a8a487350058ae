#include "databases.h"

#include "signals.h"

#include <kd_lib/exchange/databaseuri.h>
#include <kd_lib/exchange/sqlitesource.h>
#include <kd_lib/exchange/sqlitetarget.h>

#ifdef KD_WITH_POSTGRESQL
#include <kd_lib/exchange/postgresqlserver.h>
#endif
#ifdef KD_WITH_MARIADB
#include <kd_lib/exchange/mariadbserver.h>
#endif

namespace kd_tool {

namespace {

using Server = std::unique_ptr<exchange::DatabaseServer>;

[[noreturn, maybe_unused]] void failWithout(const std::string& database, const char* server)
{
    throw exchange::Error(shownName(database), std::string("this kd_db was built without ") + server);
}

Server postgresql([[maybe_unused]] const std::string& uri)
{
#ifdef KD_WITH_POSTGRESQL
    return exchange::postgresqlServer(uri, {.Stop = stopToken()});
#else
    failWithout(uri, "PostgreSQL");
#endif
}

Server mariadb([[maybe_unused]] const std::string& uri)
{
#ifdef KD_WITH_MARIADB
    return exchange::mariadbServer(uri, {.Stop = stopToken()});
#else
    failWithout(uri, "MariaDB");
#endif
}

/// The server of a URI; null for the path of a SQLite file.
Server serverOf(const std::string& database)
{
    switch (exchange::databaseKind(database)) {
    case exchange::DatabaseKind::PostgreSql:
        return postgresql(database);
    case exchange::DatabaseKind::MariaDb:
        return mariadb(database);
    case exchange::DatabaseKind::Sqlite:
        break;
    }
    return nullptr;
}

std::vector<std::string> namesOf(const exchange::TableLayout& layout)
{
    std::vector<std::string> names;
    for (const exchange::TargetColumn& column : layout.columns()) {
        names.push_back(column.Name);
    }
    return names;
}

template <class Rows>
QueryResult resultOf(std::unique_ptr<Rows> rows)
{
    const Rows* const result = rows.get();
    return {std::move(rows), [result] { return result->changes(); }};
}

}  // namespace

std::string shownName(const std::string& database)
{
    return exchange::withoutPassword(database);
}

bool isServer(const std::string& database)
{
    return exchange::databaseKind(database) != exchange::DatabaseKind::Sqlite;
}

LoadDatabase::LoadDatabase(const Options& options, bool several) : Asked(options)
{
    if (several && !isServer(Asked.Into)) {
        Batch = std::make_unique<exchange::SqliteBatch>(Asked.Into, exchange::SqliteOptions{.Stop = stopToken()});
    }
}

LoadDatabase::~LoadDatabase() = default;

std::unique_ptr<exchange::Target> LoadDatabase::target()
{
    if (Batch) {
        return std::make_unique<exchange::SqliteTarget>(*Batch, Asked.Table);
    }
    if (const Server server = serverOf(Asked.Into)) {
        return server->target(Asked.Table);
    }
    return std::make_unique<exchange::SqliteTarget>(Asked.Into, Asked.Table,
                                                    exchange::SqliteOptions{.Stop = stopToken()});
}

void LoadDatabase::finish()
{
    if (Batch) {
        Batch->finish();
    }
}

unsigned jobsAtATime(const std::string& database, unsigned asked)
{
    return isServer(database) ? asked : 1;
}

QueryResult queryDatabase(const std::string& database, const std::string& sql)
{
    if (const Server server = serverOf(database)) {
        return resultOf(server->query(sql));
    }
    return resultOf(
        std::make_unique<exchange::SqliteSource>(database, sql, exchange::SqliteOptions{.Stop = stopToken()}));
}

exchange::TableLayout layoutIn(const std::string& database, const std::string& file,
                               const std::vector<exchange::Column>& columns, const exchange::TableOptions& table)
{
    const Server server = serverOf(database);
    const exchange::Dialect& dialect = server ? server->dialect() : exchange::dialectOf(exchange::Engine::Sqlite);
    return {dialect, file, columns, table};
}

std::unique_ptr<exchange::Source> tableOf(const std::string& database, const exchange::TableLayout& layout)
{
    if (const Server server = serverOf(database)) {
        return server->table(layout.table(), namesOf(layout));
    }
    return exchange::SqliteSource::ofTable(database, layout.table(), namesOf(layout), {.Stop = stopToken()});
}

exchange::ImportTally importInto(const std::string& database, const std::string& script,
                                 const exchange::ImportOptions& options)
{
    if (const Server server = serverOf(database)) {
        return server->importScript(script, options);
    }
    return exchange::importScript(script, database, options);
}

}  // namespace kd_tool
