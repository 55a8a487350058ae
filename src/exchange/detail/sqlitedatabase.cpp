#include "sqlitedatabase.h"

#include "databasefile.h"

#include <kd_lib/exchange/error.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace kd_lib::exchange::detail {

namespace {

constexpr int instructionsBetweenLooks = 1000;
constexpr std::chrono::milliseconds lockPause(10);

extern "C" int stopRequested(void* stop)
{
    return static_cast<const std::stop_token*>(stop)->stop_requested() ? 1 : 0;
}

/// The system's reason why `path` cannot be opened. The file is not opened to find it: closing a database file would
/// end the locks that this process has on it.
int reasonNotToOpen(const std::string& path)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        return errno;
    }
    if (S_ISDIR(status.st_mode)) {
        return EISDIR;
    }
    return ::faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) == 0 ? 0 : errno;
}

std::string messageOf(int error)
{
    return std::generic_category().message(error);
}

}  // namespace

std::string quotedName(std::string_view name)
{
    std::string quoted = "\"";
    for (const char c : name) {
        quoted.append(c == '"' ? 2 : 1, c);
    }
    return quoted + '"';
}

void settleJournal(const std::string& path) noexcept
{
    struct stat status = {};
    if (::stat((path + "-journal").c_str(), &status) != 0) {
        return;
    }
    sqlite3* database = nullptr;
    if (sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK) {
        sqlite3_exec(database, "SELECT count(*) FROM sqlite_master", nullptr, nullptr, nullptr);
    }
    sqlite3_close(database);
}

void bindText(sqlite3_stmt* statement, int parameter, std::string_view text)
{
    const char* const bytes = text.empty() ? "" : text.data();
    sqlite3_bind_text64(statement, parameter, bytes, text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

std::string reasonOf(sqlite3* database)
{
    const int code = sqlite3_errcode(database);
    const int system = sqlite3_system_errno(database);
    if ((code == SQLITE_CANTOPEN || code == SQLITE_IOERR) && system != 0) {
        return std::string(sqlite3_errmsg(database)) + ": " + messageOf(system);
    }
    return sqlite3_errmsg(database);
}

SqliteDatabase::SqliteDatabase(const std::string& path, std::string name, Access access) : Name(std::move(name))
{
    if (const int error = path.empty() ? ENOENT : reasonNotToOpen(path); error != 0) {
        throw Error(Name, messageOf(error));
    }
    open(plainPath(path), access == Access::Read ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE);
}

std::unique_ptr<SqliteDatabase> SqliteDatabase::openOrMake(const std::string& path)
{
    std::unique_ptr<SqliteDatabase> database(new SqliteDatabase(path));
    database->open(plainPath(path), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    return database;
}

std::unique_ptr<SqliteDatabase> SqliteDatabase::inMemory(std::string name)
{
    std::unique_ptr<SqliteDatabase> database(new SqliteDatabase(std::move(name)));
    database->open(":memory:", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    return database;
}

std::unique_ptr<SqliteDatabase> SqliteDatabase::temporary(std::string name)
{
    std::unique_ptr<SqliteDatabase> database(new SqliteDatabase(std::move(name)));
    database->open("", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    return database;
}

void SqliteDatabase::open(const std::string& path, int flags)
{
    // One thread per object: SQLite's own locks would only cost time.
    if (sqlite3_open_v2(path.c_str(), &Handle, flags | SQLITE_OPEN_NOMUTEX, nullptr) != SQLITE_OK) {
        const std::string reason = Handle != nullptr ? reasonOf(Handle) : messageOf(ENOMEM);
        sqlite3_close_v2(Handle);
        throw Error(Name, reason);
    }
    sqlite3_extended_result_codes(Handle, 0);
}

SqliteDatabase::~SqliteDatabase()
{
    sqlite3_close_v2(Handle);
}

void SqliteDatabase::heed(std::stop_token stop, std::chrono::milliseconds patience)
{
    Stop = std::move(stop);
    Patience = patience;
    sqlite3_busy_handler(
        Handle,
        [](void* self, int pauses) {
            auto* database = static_cast<SqliteDatabase*>(self);
            // SQLite asks again for each page that it wants to write before the transaction ends.
            database->InVain = database->InVain || pauses * lockPause >= database->Patience;
            if (database->InVain || database->Stop.stop_requested()) {
                return 0;
            }
            ::usleep(static_cast<useconds_t>(std::chrono::microseconds(lockPause).count()));
            return 1;
        },
        this);
    watchForStop();
}

void SqliteDatabase::watchForStop()
{
    if (Stop.stop_possible()) {
        sqlite3_progress_handler(Handle, instructionsBetweenLooks, stopRequested, &Stop);
    }
}

void SqliteDatabase::execute(const std::string& sql)
{
    InVain = false;
    if (sqlite3_exec(Handle, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail();
    }
}

void SqliteDatabase::rollback() noexcept
{
    if (sqlite3_get_autocommit(Handle) == 0) {
        // A requested stop must not end this.
        sqlite3_progress_handler(Handle, 0, nullptr, nullptr);
        sqlite3_exec(Handle, "ROLLBACK", nullptr, nullptr, nullptr);
        watchForStop();
    }
}

StatementHandle SqliteDatabase::prepare(std::string_view sql)
{
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(Handle, sql.data(), static_cast<int>(sql.size()), &statement, nullptr) != SQLITE_OK) {
        fail();
    }
    return StatementHandle(statement);
}

bool SqliteDatabase::step(sqlite3_stmt* statement)
{
    const int code = sqlite3_step(statement);
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        fail();
    }
    return code == SQLITE_ROW;
}

std::int64_t SqliteDatabase::integer(const std::string& sql)
{
    const StatementHandle statement = prepare(sql);
    return step(statement.get()) ? sqlite3_column_int64(statement.get(), 0) : 0;
}

void SqliteDatabase::fail() const
{
    throwIfStopped();
    throw Error(Name, reasonOf(Handle));
}

void SqliteDatabase::throwIfStopped() const
{
    const int code = sqlite3_errcode(Handle);
    if (Stop.stop_requested() && (code == SQLITE_INTERRUPT || code == SQLITE_BUSY)) {
        throw Stopped(Name, "stopped");
    }
}

}  // namespace kd_lib::exchange::detail
