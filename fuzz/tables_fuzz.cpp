// A file of any kind as a table of SQL. A statement that reads it must find what a load into SQLite stores, `verify`
// must agree with the load, and each record must be found by its number.

#include "support/input_folder.h"
#include "support/options.h"

#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/opensource.h>
#include <kd_lib/exchange/sqlitesource.h>
#include <kd_lib/exchange/sqlitetarget.h>
#include <kd_lib/exchange/tablelayout.h>
#include <kd_lib/exchange/transfer.h>
#include <kd_lib/exchange/verify.h>
#include <kd_lib/exchange/virtualtables.h>

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace kd_lib::exchange;

constexpr std::size_t mostRowsLookedUp = 20;

void finding(const std::string& what)
{
    std::fprintf(stderr, "finding: %s\n", what.c_str());
    std::abort();
}

/// The rows of a statement, with the rowid first if it selects that; nothing: it failed.
std::optional<std::vector<std::string>> rowsOf(sqlite3* connection, const std::string& sql)
{
    std::vector<std::string> rows;
    const auto take = [](void* to, int count, char** cells, char**) {
        std::string row;
        for (int i = 0; i < count; ++i) {
            row.append(cells[i] != nullptr ? cells[i] : "NULL").append("|");
        }
        static_cast<std::vector<std::string>*>(to)->push_back(row);
        return 0;
    };
    const bool done = sqlite3_exec(connection, sql.c_str(), take, &rows, nullptr) == SQLITE_OK;
    return done ? std::optional(rows) : std::nullopt;
}

/// The columns as SQL texts that show a value's type too.
std::string shownColumns(const std::vector<TargetColumn>& columns)
{
    std::string list;
    for (const TargetColumn& column : columns) {
        const std::string name = dialectOf(Engine::Sqlite).quoteName(column.Name);
        list += (list.empty() ? "" : ", ") + ("typeof(" + name + ") || hex(" + name + ")");
    }
    return list;
}

struct Input {
    std::string File;
    SourceOptions Options;
};

Input inputOf(kd_fuzz::Options& options)
{
    constexpr const char* names[] = {"input.dbf", "input.csv", "input.tsv", "input.mem", "input.txt"};
    const unsigned choice = options.byte();
    const unsigned settings = options.byte();
    Input input;
    input.File = names[choice % 5];
    input.Options.Deleted = static_cast<DeletedRecords>(settings % 3);
    input.Options.OnEncodingError = static_cast<EncodingErrors>(settings / 3 % 3);
    if (input.File == "input.txt") {
        input.Options.FixedColumns = "a:1-4,b:5-9,c:9-30";
    }
    if (choice % 5 == 1 || choice % 5 == 2) {
        input.Options.Infer = settings / 9 % 2 != 0;
        input.Options.Header = settings / 18 % 2 != 0;
    }
    const std::string_view content = options.content();
    kd_fuzz::writeInput(input.File, content);
    input.File = kd_fuzz::inputFolder() + "/" + input.File;
    return input;
}

/// Loads the file; false: it cannot be.
bool load(const Input& input, const std::string& database)
{
    std::filesystem::remove(database);
    try {
        TableOptions table;
        table.Table = "t";
        SqliteTarget target(database, table);
        transfer(*openSource(input.File, input.Options), target);
        return true;
    } catch (const Error&) {
        if (std::filesystem::exists(database)) {
            finding("a failed load left a database");
        }
        return false;
    }
}

void checkVerify(const Input& input, const std::string& database)
{
    const auto source = openSource(input.File, input.Options);
    TableOptions options;
    options.Table = "t";
    TableLayout layout(dialectOf(Engine::Sqlite), input.File, source->columns(), options);
    std::vector<std::string> names;
    for (const TargetColumn& column : layout.columns()) {
        names.push_back(column.Name);
    }
    const auto table = SqliteSource::ofTable(database, "t", names);
    const Verification found = verify(*source, *table, layout);
    if (!found.agrees()) {
        finding("a load does not agree with its file: " +
                (found.Differences.empty() ? "counts"
                                           : found.Differences[0].InSource + " / " + found.Differences[0].InTable));
    }
}

void checkTable(const Input& input, const std::string& database)
{
    const auto source = openSource(input.File, input.Options);
    TableOptions options;
    options.Table = "t";
    const TableLayout layout(dialectOf(Engine::Sqlite), input.File, source->columns(), options);
    const std::string shown = shownColumns(layout.columns());
    const TableConnection tables({{input.File, "t", input.Options, false}});
    const auto direct = rowsOf(tables.handle(), "SELECT " + shown + " FROM t");
    sqlite3* loaded = nullptr;
    sqlite3_open(database.c_str(), &loaded);
    const auto stored = rowsOf(loaded, "SELECT " + shown + " FROM t ORDER BY rowid");
    sqlite3_close(loaded);
    if (direct != stored) {
        finding("a statement reads other values than a load stores");
    }
    const auto count = rowsOf(tables.handle(), "SELECT count(*) FROM t");
    if (!direct || !count || count->front() != std::to_string(direct->size()) + "|") {
        finding("another number of records is counted");
    }
    const auto numbers = rowsOf(tables.handle(), "SELECT rowid FROM t");
    for (std::size_t i = 0; i < numbers->size() && i < mostRowsLookedUp; ++i) {
        const std::size_t at = numbers->size() - 1 - i;
        std::string number = (*numbers)[at];
        number.pop_back();
        const auto found = rowsOf(tables.handle(), "SELECT " + shown + " FROM t WHERE rowid = " + number);
        if (!found || found->size() != 1 || found->front() != (*direct)[at]) {
            finding("a record is not found by its number");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kd_fuzz::Options options(data, size);
    const Input input = inputOf(options);
    const std::string database = kd_fuzz::inputFolder() + "/tables.db";
    if (load(input, database)) {
        checkVerify(input, database);
        checkTable(input, database);
    }
    return 0;
}
