/// \file
/// The database of a load: opened in place, or created under a temporary name.
#pragma once

#include "databasefile.h"
#include "sqlitedatabase.h"

#include <kd_lib/exchange/sqlitetarget.h>
#include <kd_lib/exchange/tablelayout.h>

#include <memory>
#include <string>
#include <vector>

namespace kd_lib::exchange::detail {

/// A table that the load has created.
struct MadeTable {
    std::string Name;
    std::string Definition;  ///< CREATE TABLE
    TableMode Mode;
};

/// Makes room for a new table: drops the old one, or throws an `Error` if it must stay.
void makeRoom(SqliteDatabase& database, const std::string& table, TableMode mode);

bool holdsTable(SqliteDatabase& database, const std::string& table);

class LoadDatabase {
public:
    enum class Tables { One, Several };

    /// Opens or creates the database. Throws an `Error` if that fails. With `Several`, one transaction can be rolled
    /// back while the load continues.
    LoadDatabase(std::string name, SqliteOptions options, Tables tables);

    SqliteDatabase& database() { return *Database; }
    const SqliteOptions& options() const { return Options; }

    /// Registers a table that is whole, and whose transaction has ended.
    void add(MadeTable table) { Made.push_back(std::move(table)); }

    /// Gives a new database its name, if it holds a table. If another program has created one of that name meanwhile,
    /// the tables are copied into that one. Throws an `Error` at the end if one of them could not be copied.
    void finish();

private:
    std::unique_ptr<SqliteDatabase> open(const std::string& path) const;
    void copyTables();
    void copy(SqliteDatabase& target, const MadeTable& table);

    std::string Name;
    SqliteOptions Options;
    DatabaseFile Place;  // before the connection, which is closed first
    std::unique_ptr<SqliteDatabase> Database;
    std::vector<MadeTable> Made;
};

}  // namespace kd_lib::exchange::detail
