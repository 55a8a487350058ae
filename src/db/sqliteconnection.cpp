#include <kd_lib/sqliteconnection.h>

#include "detail/messages.h"
#include "detail/sqlitecalls.h"

#include <kd_lib/console.h>
#include <kd_lib/path.h>

#include <algorithm>
#include <unistd.h>

namespace kd_lib {

namespace {

constexpr const char* inMemory = ":memory:";

/// The type of a NULL: a value past the named types.
constexpr int nullType = 15;

/// The connection's last error with its code; empty after a success.
std::string errorOf(sqlite3* connection)
{
    const int code = sqlite3_errcode(connection);
    return code == SQLITE_OK ? "" : sqlite3_errmsg(connection) + (" [#" + std::to_string(code) + "]");
}

int closeConnection(sqlite3* connection)
{
    return detail::retriedWhileBusy([&] { return sqlite3_close_v2(connection); });
}

}  // namespace

SQLite3::SQLite3()
{
    engine = "SQLITE3";
}

SQLite3::~SQLite3()
{
    // Like disconnect, but without its virtual calls: the overrides of a derived class no longer exist.
    if (handle != nullptr && closeConnection(handle) != SQLITE_OK && sqlite3_errcode(handle) != SQLITE_OK) {
        message(errorOf(handle));
    }
    closeEverything();
}

bool SQLite3::isConnected() const
{
    return handle != nullptr;
}

bool SQLite3::isDisconnected() const
{
    return handle == nullptr;
}

std::string SQLite3::connectionError() const
{
    return isConnected() ? errorOf(handle) : "";
}

void SQLite3::setError()
{
    const std::string error = connectionError();
    if (!error.empty()) {
        errorText = error;
        message(errorText);
    }
}

bool SQLite3::succeeded(int code)
{
    if (code != SQLITE_OK) {
        setError();
    }
    return code == SQLITE_OK;
}

bool SQLite3::disconnect()
{
    clearResults();
    errorText.clear();
    if (isConnected() && !succeeded(closeConnection(handle))) {
        return false;
    }
    database.clear();
    handle = nullptr;
    closeEverything();
    return true;
}

void SQLite3::closeEverything()
{
    // A closed connection exists until its last statement is finalised.
    statementEnded();
    sqlite3_finalize(statement);
    statement = nullptr;
    for (sqlite3_stmt* superseded : superseded_) {
        sqlite3_finalize(superseded);
    }
    superseded_.clear();
    for (sqlite3* replaced : replaced_) {
        sqlite3_close_v2(replaced);
    }
    replaced_.clear();
}

std::string SQLite3::databasePath(const std::string& name)
{
    std::string path = host;
    checkHomePath(path);
    addEndSlash(path);
    return path + name;
}

std::string SQLite3::failureAt(const std::string& name)
{
    if (errorText.empty()) {
        return "";
    }
    const std::string path = name == inMemory ? name : databasePath(name);
    const std::string directory = path.substr(0, std::min(path.rfind('/'), path.size()));
    std::string text = path + ": " + errorText;
    if (directory != path && !directory.empty() && ::access(directory.c_str(), F_OK) != 0) {
        text += "; there is no directory " + directory + (host.empty() ? "" : " (host is \"" + host + "\")");
    }
    return text;
}

bool SQLite3::openDatabase(const std::string& name, bool create, const std::string& encoding)
{
    if (name.empty()) {
        return false;
    }
    const bool onDisk = name != inMemory;
    const std::string path = onDisk ? databasePath(name) : name;
    errorText.clear();
    database.clear();
    if (onDisk && !create && ::access(path.c_str(), F_OK) != 0) {
        errorText = detail::messages::databaseMissing;
        message(errorText);
        return false;
    }
    if (!encoding.empty()) {
        // Deliberate: executed before the new connection is opened, so it applies to the previous one.
        execute("PRAGMA encoding = " + encoding + ";");
        finalize();
    }
    if (isConnected()) {
        replaced_.push_back(handle);
    }
    const int flags = SQLITE_OPEN_READWRITE | (create || !onDisk ? SQLITE_OPEN_CREATE : 0);
    if (!succeeded(sqlite3_open_v2(path.c_str(), &handle, flags, nullptr))) {
        return false;
    }
    database = path;
    return true;
}

bool SQLite3::useDatabase(const std::string& name)
{
    return openDatabase(name, false, "");
}

bool SQLite3::createDatabase(const std::string& name)
{
    return openDatabase(name, true, "");
}

bool SQLite3::attach(const std::string& path, const std::string& alias)
{
    if (isDisconnected()) {
        errorText = detail::messages::noMainDatabase;
        message(errorText);
        return false;
    }
    std::string expanded = path;
    checkHomePath(expanded);
    const bool attached = execute("ATTACH DATABASE " + inQuotes(expanded, '\'') + " AS " + alias + ";");
    finalize();
    return attached;
}

bool SQLite3::detach(const std::string& alias)
{
    const bool detached = execute("DETACH DATABASE " + alias + ";");
    finalize();
    return detached;
}

bool SQLite3::enableLoad()
{
    return false;
}

bool SQLite3::loadExtension(const std::string&)
{
    errorText = loadEnabled ? detail::messages::loadingFailed : detail::messages::loadingNotEnabled;
    message(errorText);
    return false;
}

bool SQLite3::getDatabaseList()
{
    databaseList.clear();
    query("PRAGMA database_list;");
    const bool listed = resultRows != 0;
    while (listed && fetchRow()) {
        addDatabase(queryColumns.getData(1));
    }
    finalize();
    return listed;
}

bool SQLite3::getTableList()
{
    clearTableList();
    query("SELECT name FROM sqlite_master WHERE type == 'table';");
    const bool listed = resultRows != 0;
    while (listed && fetchRow()) {
        linkTable(queryColumns.getData(0));
    }
    finalize();
    return listed;
}

bool SQLite3::getColumnList(std::string table)
{
    clearTableList();
    query("PRAGMA table_info(" + table + ");");
    const bool listed = resultRows != 0;
    while (listed && fetchRow()) {
    }
    finalize();
    return listed;
}

std::int64_t SQLite3::getRecords(const std::string& table)
{
    const std::int64_t count = SqlDatabase::getRecords(table);
    finalize();
    return count;
}

FIELD_TYPE SQLite3::convertFieldType(int storageClass)
{
    switch (storageClass) {
    case SQLITE_INTEGER:
        return INTEGER_TYPE;
    case SQLITE_FLOAT:
        return FLOAT_TYPE;
    case SQLITE_TEXT:
        return TEXT_TYPE;
    case SQLITE_BLOB:
        return BLOB_TYPE;
    case SQLITE_NULL:
        return static_cast<FIELD_TYPE>(nullType);
    default:
        return UNKNOWN_TYPE;
    }
}

}  // namespace kd_lib
