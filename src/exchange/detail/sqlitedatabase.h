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

/// A name as SQL, quoted so that no character of it can end it.
std::string quotedName(std::string_view name);

/// Lets SQLite roll back what a failed write left in a database, if its journal is there: it would wait for the next
/// one who reads. What cannot be opened or read is left as it is.
void settleJournal(const std::string& path) noexcept;

/// Binds a copy of a text.
void bindText(sqlite3_stmt* statement, int parameter, std::string_view text);

/// SQLite's words for the last failure of a connection; the system's, where SQLite only says that a file could not be
/// opened.
std::string reasonOf(sqlite3* database);

/// An open database. Every failure is an `Error` that names the database as the caller named it.
class SqliteDatabase {
public:
    enum class Access { Change, Read };

    /// Opens an existing regular file. `name` is what errors call it. A file that is write-protected can be read only.
    /// What the file holds is not looked at.
    SqliteDatabase(const std::string& path, std::string name, Access access = Access::Change);

    /// Opens a database file, which is made where there is none.
    static std::unique_ptr<SqliteDatabase> openOrMake(const std::string& path);

    /// Opens an empty database in memory; `name` is for errors.
    static std::unique_ptr<SqliteDatabase> inMemory(std::string name);

    /// Opens an empty database that goes to a temporary file when it becomes large.
    static std::unique_ptr<SqliteDatabase> temporary(std::string name);

    ~SqliteDatabase();
    SqliteDatabase(const SqliteDatabase&) = delete;
    SqliteDatabase& operator=(const SqliteDatabase&) = delete;

    /// From now on a locked database is tried again for `patience`; a statement under way ends when a stop is
    /// requested, and `fail` throws `Stopped` then.
    void heed(std::stop_token stop, std::chrono::milliseconds patience);

    /// Runs statements that return no rows of interest.
    void execute(const std::string& sql);

    /// Ends a transaction, if there is one, whatever state the connection is in.
    void rollback() noexcept;

    StatementHandle prepare(std::string_view sql);

    /// Takes the next row; false at the end.
    bool step(sqlite3_stmt* statement);

    /// The integer in the first column of the first row.
    std::int64_t integer(const std::string& sql);

    [[noreturn]] void fail() const;

    /// Throws `Stopped` where a stop that was asked for is why the last call failed.
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
};

}  // namespace kd_lib::exchange::detail
