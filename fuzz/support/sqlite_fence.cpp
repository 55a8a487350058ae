#include "support/sqlite_fence.h"

#include <sqlite3.h>

#include <string>

namespace kd_fuzz {

namespace {

constexpr int stepsPerCall = 1000;
constexpr int callsPerInput = 200;
constexpr int longestValue = 20000;

int budget = callsPerInput;

/// The file that may be attached, in addition to databases in memory; empty: none.
std::string allowedFile;

bool isHarmless(const std::string& pragma)
{
    return pragma == "database_list" || pragma == "table_info" || pragma == "encoding";
}

int refuseFilesAndSettings(void*, int action, const char* first, const char*, const char*, const char*)
{
    const std::string text = first != nullptr ? first : "";
    const bool refused = (action == SQLITE_ATTACH && text != allowedFile && text != ":memory:") ||
                         (action == SQLITE_PRAGMA && !isHarmless(text));
    return refused ? SQLITE_DENY : SQLITE_OK;
}

int spendBudget(void*)
{
    return --budget < 0 ? 1 : 0;
}

int fenceIn(sqlite3* handle, const char**, const struct sqlite3_api_routines*)
{
    sqlite3_progress_handler(handle, stepsPerCall, spendBudget, nullptr);
    sqlite3_set_authorizer(handle, refuseFilesAndSettings, nullptr);
    sqlite3_limit(handle, SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, longestValue);
    sqlite3_limit(handle, SQLITE_LIMIT_EXPR_DEPTH, 50);
    sqlite3_limit(handle, SQLITE_LIMIT_COMPOUND_SELECT, 10);
    sqlite3_limit(handle, SQLITE_LIMIT_TRIGGER_DEPTH, 10);
    sqlite3_limit(handle, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 50);
    return SQLITE_OK;
}

}  // namespace

void fenceInConnections()
{
    // SQLite's type for this pointer hides the real one.
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(fenceIn));
}

void allowAttaching(const std::string& file)
{
    allowedFile = file;
}

void renewBudget()
{
    budget = callsPerInput;
}

}  // namespace kd_fuzz
