/// \file
/// The file of a database that is changed or created.
#pragma once

#include <string>

namespace kd_lib::exchange::detail {

/// The file in which a database is written. An existing file is changed in place. A new one has a temporary name in the
/// same folder, which nobody else knows, until `publish` gives it its final name. Because of that name the file can be
/// removed on failure: no other program can have stored anything in it. A file with the final name is never removed. If
/// the program is killed, the file `.kd_db-...` remains.
class DatabaseFile {
public:
    /// Creates an empty file if `name` does not exist. Throws an `Error` if it can be neither opened nor created, or is
    /// not a regular file.
    explicit DatabaseFile(const std::string& name);

    /// Removes an unpublished file. In an existing database, rolls back the remains of a failed write. All connections
    /// of the work must be closed before.
    ~DatabaseFile();
    DatabaseFile(const DatabaseFile&) = delete;
    DatabaseFile& operator=(const DatabaseFile&) = delete;

    bool isNew() const { return !Temporary.empty(); }

    /// The path to open, in a form that SQLite cannot mistake for anything else.
    const std::string& path() const { return isNew() ? Temporary : Final; }

    /// Writes the new file, which must be closed, to the disk and gives it its final name. False: a file of that name
    /// exists now, or the file system cannot rename without the risk of replacing another file; the new file keeps its
    /// temporary name. Throws an `Error` for other failures.
    bool publish();

private:
    /// SQLite would apply the journal of an earlier database to the new one, and damage it.
    void checkRemains() const;
    void makeTemporary();
    void removeTemporary() noexcept;
    [[noreturn]] void fail(int error) const;

    std::string Name;
    std::string Final;
    std::string Temporary;  // empty: none
};

/// The database's path in a form that SQLite cannot mistake for ":memory:" or a "file:" address.
std::string plainPath(const std::string& name);

}  // namespace kd_lib::exchange::detail
