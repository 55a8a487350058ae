// An SQL script: split in blocks of any size, imported into a database in memory, and printed as a query.
//
// SQL can ask for endless work, for huge values and for files by itself, which is SQLite's affair. The
// connection is therefore fenced in: a budget of virtual machine steps per input, small limits, and an
// authorizer that refuses other files and settings of the process. A refusal is a failing statement like
// any other.

#include "support/bounded_output.h"
#include "support/input_folder.h"
#include "support/options.h"

#include "db/scriptsplitter.h"

#include <kd_lib/sqliteconnection.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <sqlite3.h>
#include <string>
#include <vector>

namespace {

constexpr int stepsPerCall = 1000;
constexpr int callsPerInput = 200;
constexpr int longestValue = 20000;
/// Steps bound the rows, the longest value bounds a row.
constexpr std::size_t outputLimit = 256U << 20U;

int refuseFilesAndSettings(void*, int action, const char*, const char*, const char*, const char*)
{
    return action == SQLITE_ATTACH || action == SQLITE_PRAGMA ? SQLITE_DENY : SQLITE_OK;
}

int spendBudget(void* budget)
{
    return --*static_cast<int*>(budget) < 0 ? 1 : 0;
}

void fenceIn(sqlite3* handle, int& budget)
{
    sqlite3_progress_handler(handle, stepsPerCall, spendBudget, &budget);
    sqlite3_set_authorizer(handle, refuseFilesAndSettings, nullptr);
    sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, longestValue);
    sqlite3_limit(handle, SQLITE_LIMIT_EXPR_DEPTH, 50);
    sqlite3_limit(handle, SQLITE_LIMIT_COMPOUND_SELECT, 10);
    sqlite3_limit(handle, SQLITE_LIMIT_TRIGGER_DEPTH, 10);
    sqlite3_limit(handle, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 50);
}

std::vector<std::string> split(std::string_view script, std::size_t blockSize)
{
    std::vector<std::string> statements;
    kd_lib::ScriptSplitter splitter;
    while (!script.empty()) {
        std::string_view block = script.substr(0, blockSize);
        script.remove_prefix(block.size());
        while (splitter.next(block)) {
            statements.push_back(splitter.statement());
        }
    }
    return statements;
}

/// The rules of the splitter, one character after the other.
std::vector<std::string> plainSplit(std::string_view script)
{
    std::vector<std::string> statements;
    std::string statement;
    bool inQuote = false;
    bool inComment = false;
    for (const char c : script) {
        if (inComment) {
            inComment = c != '\n';
            continue;
        }
        inComment = !inQuote && c == '#';
        if (inComment) {
            continue;
        }
        statement += c;
        inQuote = inQuote != (c == '\'');
        if (!inQuote && c == ';') {
            statements.push_back(statement);
            statement.clear();
        }
    }
    return statements;
}

void checkSplitting(std::string_view script, std::size_t blockSize)
{
    if (split(script, blockSize) != plainSplit(script)) {
        std::fputs("finding: the block size changes the statements\n", stderr);
        std::abort();
    }
}

void runScript(std::string_view script)
{
    int budget = callsPerInput;
    kd_lib::SQLite3 database;
    database.openDatabase(":memory:", true, "");
    fenceIn(database.handle, budget);
    database.beginTransaction();
    database.importSqlFile(kd_fuzz::inputFolder() + "/input.sql");
    database.endTransaction();
    if (database.query(std::string(script))) {
        database.queryResults();
    }
    database.getTableList();
    for (const kd_lib::DatabaseTable* table : database.tableList) {
        database.getRecords(table->Name);
    }
    database.disconnect();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kd_fuzz::Options options(data, size);
    const std::size_t blockSize = 1 + options.byte() % 16;
    const std::string_view script = options.content();
    checkSplitting(script, blockSize);
    kd_fuzz::writeInput("input.sql", script);
    const kd_fuzz::BoundedOutput output(outputLimit);
    try {
        runScript(script);
    } catch (const std::exception&) {
        // A standard exception is an outcome.
    }
    return 0;
}
