/// \file
/// The file of a database that is to be changed, or made.
#pragma once

#include <string>

namespace kd_lib::exchange::detail {

/// Where a database is written: in place where the file exists; else under a name of its own in the same folder, which
/// nobody else knows, until `publish` gives it its final name. Because of that name the file can be removed on failure:
/// no other program can have stored anything in it. The file with the final name is never removed.
/// A program that is killed leaves the file `.kd_db-...` behind.
class DatabaseFile {
public:
    /// Makes an empty file if `name` does not exist. Throws an `Error` where it can be neither opened nor made, and
    /// where it is not a regular file.
    explicit DatabaseFile(const std::string& name);

    /// Removes an unpublished file. In a database that exists, what a failed write left is rolled back; no connection of
    /// the work may be open any longer.
    ~DatabaseFile();
    DatabaseFile(const DatabaseFile&) = delete;
    DatabaseFile& operator=(const DatabaseFile&) = delete;

    bool isNew() const { return !Temporary.empty(); }

    /// What is to be opened, in a form that SQLite takes for nothing else.
    const std::string& path() const { return isNew() ? Temporary : Final; }

    /// Brings the new file to the disk and gives it its final name; it must be closed. False: the final name exists
    /// now, or the file system cannot do this without the danger of replacing another's file; the new file stays where
    /// it is. Throws an `Error` for other failures.
    bool publish();

private:
    /// SQLite would take the journal of an earlier database for that of the new one, and spoil it.
    void checkRemains() const;
    void makeTemporary();
    void removeTemporary() noexcept;
    [[noreturn]] void fail(int error) const;

    std::string Name;
    std::string Final;
    std::string Temporary;  // empty: none
};

/// The database's path in a form that SQLite takes for nothing else: no ":memory:", no "file:" address.
std::string plainPath(const std::string& name);

}  // namespace kd_lib::exchange::detail
