#include "loaddatabase.h"

#include <optional>
#include <utility>

namespace kd_lib::exchange::detail {

bool holdsTable(SqliteDatabase& database, const std::string& table)
{
    const StatementHandle statement =
        database.prepare("SELECT 1 FROM sqlite_master WHERE type IN ('table', 'view') AND name = ?1 COLLATE NOCASE");
    bindText(statement.get(), 1, table);
    return database.step(statement.get());
}

void makeRoom(SqliteDatabase& database, const std::string& table, TableMode mode)
{
    if (!holdsTable(database, table)) {
        return;
    }
    if (mode != TableMode::Replace) {
        throw Error(database.name(), "table " + table + " exists already");
    }
    database.execute("DROP TABLE " + quotedName(table));
}

LoadDatabase::LoadDatabase(std::string name, SqliteOptions options, Tables tables)
    : Name(std::move(name)), Options(std::move(options)), Place(Name), Database(open(Place.path()))
{
    if (Place.isNew()) {
        // No other program knows the file: it needs no locks, and its journal need not survive this process. One table
        // needs no journal at all. The file is written to the disk before it is published.
        Database->execute(std::string("PRAGMA synchronous=OFF; PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=") +
                          (tables == Tables::One ? "OFF" : "MEMORY"));
    }
}

std::unique_ptr<SqliteDatabase> LoadDatabase::open(const std::string& path) const
{
    auto database = std::make_unique<SqliteDatabase>(path, Name, SqliteDatabase::Access::Change);
    database->heed(Options.Stop, Options.Patience);
    return database;
}

void LoadDatabase::finish()
{
    if (!Place.isNew() || Made.empty()) {
        return;
    }
    Database.reset();
    if (!Place.publish()) {
        copyTables();
    }
}

void LoadDatabase::copyTables()
{
    const std::unique_ptr<SqliteDatabase> target = SqliteDatabase::openOrMake(Name);
    target->heed(Options.Stop, Options.Patience);
    const StatementHandle attach = target->prepare("ATTACH ?1 AS fresh");
    bindText(attach.get(), 1, Place.path());
    target->step(attach.get());
    std::optional<Error> failure;
    for (const MadeTable& table : Made) {
        try {
            copy(*target, table);
        } catch (const Stopped&) {
            throw;
        } catch (const Error& error) {
            failure = failure ? failure : std::optional(error);
        }
    }
    if (failure) {
        throw Error(*failure);
    }
}

void LoadDatabase::copy(SqliteDatabase& target, const MadeTable& table)
{
    target.execute("BEGIN IMMEDIATE");
    try {
        makeRoom(target, table.Name, table.Mode);
        const std::string name = quotedName(table.Name);
        target.execute(table.Definition);
        target.execute("INSERT INTO main." + name + " SELECT * FROM fresh." + name + " ORDER BY rowid");
        target.execute("COMMIT");
    } catch (const Error&) {
        target.rollback();
        throw;
    }
}

}  // namespace kd_lib::exchange::detail
