/// \file
/// The database of a load: opened in place, or made under a name of its own.
#pragma once

#include "databasefile.h"
#include "sqlitedatabase.h"

#include <kd_lib/exchange/sqlitetarget.h>
#include <kd_lib/exchange/tablelayout.h>

#include <memory>
#include <string>
#include <vector>

namespace kd_lib::exchange::detail {

/// A table that was made.
struct MadeTable {
    std::string Name;
    std::string Definition;  ///< CREATE TABLE
    TableMode Mode;
};

/// Makes the place for a new table: drops the old one, or throws an `Error` where it must stay.
void makeRoom(SqliteDatabase& database, const std::string& table, TableMode mode);

bool holdsTable(SqliteDatabase& database, const std::string& table);

class LoadDatabase {
public:
    enum class Tables { One, Several };

    /// Opens or makes the database. Throws an `Error`. With `Several` a transaction can be rolled back without an end
    /// of the whole load.
    LoadDatabase(std::string name, SqliteOptions options, Tables tables);

    SqliteDatabase& database() { return *Database; }
    const SqliteOptions& options() const { return Options; }

    /// A table is whole, and its transaction has ended.
    void add(MadeTable table) { Made.push_back(std::move(table)); }

    /// Gives a new database its name, if it holds a table. Where another program has made one of that name meanwhile,
    /// the tables go into that one; an `Error` is thrown at the end if one of them could not.
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
