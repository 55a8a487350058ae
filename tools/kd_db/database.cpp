#include "database.h"

#include "failure.h"
#include "output.h"

#include <kd_lib/path.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

namespace kd_tool {

namespace {

constexpr mode_t databaseMode = 0644;

/// The file's path in a form that SQLite takes for nothing else: no ":memory:" and no "file:" address.
std::string plainPath(const std::string& file)
{
    std::string path = file;
    kd_lib::checkHomePath(path);
    return path.empty() || path.front() == '/' ? path : "./" + path;
}

/// Answers whether the file was made now.
bool createEmpty(const std::string& file)
{
    const int descriptor = ::open(plainPath(file).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, databaseMode);
    if (descriptor >= 0) {
        ::close(descriptor);
        return true;
    }
    if (errno != EEXIST) {
        throw Failure(file, std::strerror(errno));
    }
    return false;
}

}  // namespace

Connection::Connection(const std::string& file) : Argument(file)
{
    host = "";
    const Muted quiet(std::cout);
    require(useDatabase(plainPath(file)));
}

void Connection::setError()
{
    const Muted quiet(std::cout);
    SQLite3::setError();
}

void Connection::require(bool succeeded) const
{
    if (!succeeded) {
        fail();
    }
}

void Connection::fail() const
{
    throw Failure(Argument, errorText.empty() ? "the database refused the statement" : errorText);
}

void Connection::begin()
{
    errorText.clear();
    beginTransaction();
    require(errorText.empty());
}

void Connection::commit()
{
    errorText.clear();
    endTransaction();
    require(errorText.empty());
}

TargetFile::TargetFile(const std::string& file) : Argument(file), Created(createEmpty(file)) {}

TargetFile::~TargetFile()
{
    if (!Kept) {
        undo();
    }
}

void TargetFile::undo() const
{
    if (Created) {
        const std::string path = plainPath(Argument);
        ::unlink((path + "-journal").c_str());
        ::unlink(path.c_str());
        return;
    }
    try {
        // After a failed write SQLite leaves its journal to the next one who reads: that is done here.
        Connection database(Argument);
        database.query("SELECT count(*) FROM sqlite_master");
        database.fetchRow();
    } catch (const Failure&) {
        // There is nothing to undo in what cannot be opened.
    }
}

}  // namespace kd_tool
