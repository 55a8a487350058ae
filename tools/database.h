/// \file
/// The database that a command works on.
#pragma once

#include <kd_lib/sqliteconnection.h>

#include <string>

namespace kd_tool {

/// A connection whose failures end in a `Failure` that names the database file; the library's own lines
/// about them are not shown.
class Connection : public kd_lib::SQLite3 {
public:
    /// Opens the existing file `file`, whatever characters its name has.
    explicit Connection(const std::string& file);

    void setError() override;

    /// Throws a `Failure` with SQLite's reason unless `succeeded`.
    void require(bool succeeded) const;
    [[noreturn]] void fail() const;

    /// As in the base, but a failure throws.
    void begin();
    void commit();

    const std::string& file() const { return Argument; }

private:
    std::string Argument;
};

/// Makes an empty database file where there is none, and removes that again unless it is kept.
class NewDatabaseFile {
public:
    explicit NewDatabaseFile(const std::string& file);
    ~NewDatabaseFile();
    NewDatabaseFile(const NewDatabaseFile&) = delete;
    NewDatabaseFile& operator=(const NewDatabaseFile&) = delete;

    void keep() { Created = false; }

private:
    std::string Path;
    bool Created;
};

}  // namespace kd_tool
