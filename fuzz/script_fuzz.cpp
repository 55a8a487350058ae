// An SQL script: split in blocks of any size, imported into a database in memory, and printed as a query.

#include "support/bounded_output.h"
#include "support/input_folder.h"
#include "support/options.h"
#include "support/sqlite_fence.h"

#include "db/detail/scriptsplitter.h"

#include <kd_lib/sqliteconnection.h>
#include <kd_lib/text.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

namespace {

/// Steps bound the rows, the longest value bounds a row.
constexpr std::size_t outputLimit = 256U << 20U;

std::vector<std::string> split(std::string_view script, std::size_t blockSize)
{
    std::vector<std::string> statements;
    kd_lib::detail::ScriptSplitter splitter;
    while (!script.empty()) {
        std::string_view block = script.substr(0, blockSize);
        script.remove_prefix(block.size());
        while (splitter.next(block)) {
            statements.push_back(kd_lib::allTrim(std::string(splitter.statement())));
        }
    }
    return statements;
}

/// The rules of the splitter, one character after the other; blanks around a statement do not count.
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
            statements.push_back(kd_lib::allTrim(statement));
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
    kd_lib::SQLite3 database;
    database.openDatabase(":memory:", true, "");
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

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    kd_fuzz::fenceInConnections();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kd_fuzz::Options options(data, size);
    const std::size_t blockSize = 1 + options.byte() % 16;
    const std::string_view script = options.content();
    checkSplitting(script, blockSize);
    kd_fuzz::writeInput("input.sql", script);
    const kd_fuzz::BoundedOutput output(outputLimit);
    kd_fuzz::renewBudget();
    try {
        runScript(script);
    } catch (const std::exception&) {
        // A standard exception is an outcome.
    }
    return 0;
}
