/// \file
/// The databases that DATABASE may name: SQLite files, and servers if their libraries were built.
#pragma once

#include "options.h"

#include <kd_lib/exchange/databaseserver.h>
#include <kd_lib/exchange/source.h>
#include <kd_lib/exchange/sqlitetarget.h>
#include <kd_lib/exchange/tablelayout.h>
#include <kd_lib/exchange/target.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kd_tool {

/// `database` as messages may show it: without a password.
std::string shownName(const std::string& database);

/// Whether `database` is a URI; otherwise it is the path of a SQLite file.
bool isServer(const std::string& database);

/// The database of a load.
class LoadDatabase {
public:
    /// For one target, or for several: one after the other or, on a server, at the same time.
    LoadDatabase(const Options& options, bool several);
    ~LoadDatabase();
    LoadDatabase(const LoadDatabase&) = delete;
    LoadDatabase& operator=(const LoadDatabase&) = delete;

    /// The target of a file: a table of --into.
    std::unique_ptr<exchange::Target> target();

    /// Ends a load of several files. A new SQLite database appears here.
    void finish();

private:
    const Options& Asked;
    std::unique_ptr<exchange::SqliteBatch> Batch;
};

/// The number of files to load at a time, at most `asked`: one into SQLite, which locks the whole database.
unsigned jobsAtATime(const std::string& database, unsigned asked);

/// The rows of a statement.
struct QueryResult {
    std::unique_ptr<exchange::Source> Rows;
    std::function<std::uint64_t()> Changes;  ///< rows that it changed; known when all its rows have been read
};
QueryResult queryDatabase(const std::string& database, const std::string& sql);

/// Names and types of a table of `database` for the columns of a source.
exchange::TableLayout layoutIn(const std::string& database, const std::string& file,
                               const std::vector<exchange::Column>& columns, const exchange::TableOptions& table);

/// The rows of the layout's table, in the order of its records.
std::unique_ptr<exchange::Source> tableOf(const std::string& database, const exchange::TableLayout& layout);

/// Runs a script into a database.
exchange::ImportTally importInto(const std::string& database, const std::string& script,
                                 const exchange::ImportOptions& options);

}  // namespace kd_tool
