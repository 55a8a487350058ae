// A script in SQLite's SQL: read in blocks of any size, compared with the statements that SQLite finds, and imported
// into a database, all or nothing.

#include "support/bounded_output.h"
#include "support/input_folder.h"
#include "support/options.h"
#include "support/sqlite_fence.h"

#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/importscript.h>
#include <kd_lib/exchange/statementreader.h>

#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using kd_lib::exchange::StatementReader;

/// Comparing with SQLite takes quadratic time.
constexpr std::size_t longestCompared = 600;

std::vector<std::string> cut(std::string_view script, std::size_t blockSize)
{
    std::vector<std::string> statements;
    StatementReader reader("input.sql");
    while (!script.empty()) {
        std::string_view block = script.substr(0, blockSize);
        script.remove_prefix(block.size());
        while (reader.next(block)) {
            statements.push_back(std::to_string(reader.line()) + ":" + reader.statement());
        }
    }
    if (reader.finish()) {
        statements.push_back(std::to_string(reader.line()) + ":" + reader.statement());
    }
    return statements;
}

void finding(const char* what)
{
    std::fprintf(stderr, "finding: %s\n", what);
    std::abort();
}

bool isBlankForSqlite(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r';
}

/// The statements that SQLite's `sqlite3_complete` finds, without empty ones.
std::size_t countBySqlite(const std::string& script)
{
    std::size_t count = 0;
    std::string under;
    for (const char c : script) {
        under += c;
        if (c == ';' && sqlite3_complete(under.c_str()) != 0) {
            StatementReader one("");
            std::string_view rest = under;
            count += one.next(rest) ? 1 : 0;
            under.clear();
        }
    }
    StatementReader last("");
    std::string_view rest = under;
    return count + (last.next(rest) || last.finish() ? 1 : 0);
}

/// The two differ on purpose in comments that begin with "#" and in byte order marks; `sqlite3_complete` does not know
/// triggers that are explained, and stops at zero bytes.
bool isComparable(std::string_view script)
{
    std::string lower(script);
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return script.size() <= longestCompared && script.find('#') == std::string_view::npos &&
           script.find('\0') == std::string_view::npos && script.find('\xEF') == std::string_view::npos &&
           script.find('\v') == std::string_view::npos && lower.find("explain") == std::string::npos;
}

void checkCutting(std::string_view script, std::size_t blockSize)
{
    const std::vector<std::string> statements = cut(script, blockSize);
    if (statements != cut(script, std::max<std::size_t>(script.size(), 1))) {
        finding("the block size changes the statements");
    }
    for (const std::string& statement : statements) {
        if (isBlankForSqlite(statement[statement.find(':') + 1])) {
            finding("a statement begins with a blank");
        }
    }
    if (isComparable(script) && statements.size() != countBySqlite(std::string(script))) {
        finding("SQLite takes other parts for statements");
    }
}

std::string content(const std::string& path)
{
    std::string bytes;
    if (std::FILE* const file = std::fopen(path.c_str(), "rb"); file != nullptr) {
        char block[4096];
        for (std::size_t got = 0; (got = std::fread(block, 1, sizeof block, file)) > 0;) {
            bytes.append(block, got);
        }
        std::fclose(file);
    }
    return bytes;
}

/// A database of one table.
const std::string& oldDatabase()
{
    static const std::string bytes = [] {
        const std::string path = kd_fuzz::inputFolder() + "/first.db";
        kd_fuzz::writeInput("first.sql", "CREATE TABLE t(a UNIQUE, b); INSERT INTO t VALUES (1, 'one')");
        kd_lib::exchange::importScript(kd_fuzz::inputFolder() + "/first.sql", path);
        return content(path);
    }();
    return bytes;
}

void runScript(std::string_view script)
{
    const std::string path = kd_fuzz::inputFolder() + "/input.db";
    kd_fuzz::writeInput("input.db", oldDatabase());
    kd_fuzz::writeInput("input.sql", script);
    try {
        kd_lib::exchange::importScript(kd_fuzz::inputFolder() + "/input.sql", path);
    } catch (const kd_lib::exchange::Error&) {
        if (content(path) != oldDatabase()) {
            finding("a failed script changed the database");
        }
    }
    if (!content(path + "-journal").empty()) {
        finding("a journal is left");
    }
}

bool holdsSettings(std::string_view script)
{
    // Some settings apply to the whole process.
    constexpr std::string_view word = "pragma";
    const auto same = [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; };
    return std::search(script.begin(), script.end(), word.begin(), word.end(), same) != script.end();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    oldDatabase();
    kd_fuzz::fenceInConnections();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kd_fuzz::Options options(data, size);
    const std::size_t blockSize = 1 + options.byte() % 16;
    const std::string_view script = options.content();
    checkCutting(script, blockSize);
    kd_fuzz::renewBudget();
    if (!holdsSettings(script)) {
        runScript(script);
    }
    return 0;
}
