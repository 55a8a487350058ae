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

/// The file of a database that is to be changed, made empty where there is none. Unless it is kept, it is
/// brought back to what it was: a new file is removed, in an old one SQLite undoes what a failed write left.
class TargetFile {
public:
    explicit TargetFile(const std::string& file);
    ~TargetFile();
    TargetFile(const TargetFile&) = delete;
    TargetFile& operator=(const TargetFile&) = delete;

    void keep() { Kept = true; }

private:
    void undo() const;

    std::string Argument;
    bool Created;
    bool Kept = false;
};

}  // namespace kd_tool
