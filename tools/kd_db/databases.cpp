#include "databases.h"

#include "serverlibraries.h"
#include "signals.h"

#include <kd_lib/exchange/databaseuri.h>
#include <kd_lib/exchange/sqlitesource.h>
#include <kd_lib/exchange/sqlitetarget.h>

namespace kd_tool {

namespace {

using Server = std::unique_ptr<exchange::DatabaseServer>;

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
