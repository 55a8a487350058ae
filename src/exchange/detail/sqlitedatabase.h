/// \file
/// A connection to SQLite and its statements, for this library's own use.
#pragma once

#include <sqlite3.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

struct StatementCloser {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using StatementHandle = std::unique_ptr<sqlite3_stmt, StatementCloser>;

/// A name as SQL, quoted so that no character in it can end it.
std::string quotedName(std::string_view name);

/// Makes SQLite roll back the remains of a failed write, if there is a journal; otherwise the next reader would have to
/// do so. A database that cannot be opened or read is left unchanged.
void settleJournal(const std::string& path) noexcept;

/// Binds a copy of a text.
void bindText(sqlite3_stmt* statement, int parameter, std::string_view text);

/// SQLite's message for the last failure of a connection; the system's if SQLite only says that a file could not be
/// opened.
std::string reasonOf(sqlite3* database);

/// An open database. Every failure is an `Error` that names the database as the caller named it.
class SqliteDatabase {
public:
    enum class Access { Change, Read };

    /// Opens an existing regular file, which is called `name` in errors. A write-protected file is opened for reading.
    /// The contents of the file are not examined.
    SqliteDatabase(const std::string& path, std::string name, Access access = Access::Change);

    /// Opens a database file, or creates it if there is none.
    static std::unique_ptr<SqliteDatabase> openOrMake(const std::string& path);

    /// Opens an empty database in memory; `name` is for errors.
    static std::unique_ptr<SqliteDatabase> inMemory(std::string name);

    /// Opens an empty database that is moved to a temporary file when it becomes large.
    static std::unique_ptr<SqliteDatabase> temporary(std::string name);

    ~SqliteDatabase();
    SqliteDatabase(const SqliteDatabase&) = delete;
    SqliteDatabase& operator=(const SqliteDatabase&) = delete;

    /// From now on, statements wait up to `patience` for a lock, and the next ones do not wait if that was in vain:
    /// SQLite keeps changes in memory while another program reads the database. `execute` waits again. When a stop is requested, the current statement ends,
    /// and `fail` throws `Stopped`.
    void heed(std::stop_token stop, std::chrono::milliseconds patience);

    /// Runs statements whose rows are not needed.
    void execute(const std::string& sql);

    /// Ends a transaction, if there is one, whatever state the connection is in.
    void rollback() noexcept;

    StatementHandle prepare(std::string_view sql);

    /// Reads the next row; false at the end.
    bool step(sqlite3_stmt* statement);

    /// The integer in the first column of the first row.
    std::int64_t integer(const std::string& sql);

    [[noreturn]] void fail() const;

    /// Throws `Stopped` if the last call failed because of a requested stop.
    void throwIfStopped() const;

    sqlite3* handle() const { return Handle; }
    const std::string& name() const { return Name; }

private:
    explicit SqliteDatabase(std::string name) : Name(std::move(name)) {}
    void open(const std::string& path, int flags);
    void watchForStop();

    std::string Name;
    sqlite3* Handle = nullptr;
    std::stop_token Stop;
    std::chrono::milliseconds Patience = {};
    bool InVain = false;  // the last wait for a lock has ended without it
};

}  // namespace kd_lib::exchange::detail
