#include "databasefile.h"

#include "filepath.h"
#include "sqlitedatabase.h"

#include <kd_lib/exchange/error.h>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace kd_lib::exchange::detail {

namespace {

constexpr mode_t databaseMode = 0644;
constexpr int mostAttempts = 100;

std::string randomName()
{
    constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device random;
    std::string name = ".kd_db-";
    for (int i = 0; i < 12; ++i) {
        name += letters[random() % letters.size()];
    }
    return name;
}

/// Waits until the file, or the folder's entries, are on the disk. Returns an error number, or 0.
int bringToDisk(const std::string& path, int flags)
{
    const int descriptor = ::open(path.c_str(), flags | O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        return errno;
    }
    const int error = ::fsync(descriptor) == 0 ? 0 : errno;
    ::close(descriptor);
    return error;
}

/// Renames the file `from` to `to`, unless that exists. Returns an error number, or 0.
int renameWithoutReplacing(const std::string& from, const std::string& to)
{
    return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0 ? 0 : errno;
}

int linkWithoutReplacing(const std::string& from, const std::string& to)
{
    return ::link(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

}  // namespace

std::string plainPath(const std::string& name)
{
    return name.empty() || name.front() == '/' ? name : "./" + name;
}

DatabaseFile::DatabaseFile(const std::string& name) : Name(name), Final(plainPath(name))
{
    struct stat status = {};
    if (::stat(Final.c_str(), &status) == 0) {
        if (!S_ISREG(status.st_mode)) {
            S_ISDIR(status.st_mode) ? fail(EISDIR) : throw Error(Name, "not a regular file");
        }
        return;
    }
    if (errno != ENOENT || Final.empty()) {
        fail(errno);
    }
    std::string target = linkTarget(Final);
    for (int links = 0; !target.empty() && links < mostLinks; ++links) {
        Final = target;
        target = linkTarget(Final);
    }
    checkRemains();
    makeTemporary();
}

DatabaseFile::~DatabaseFile()
{
    if (isNew()) {
        removeTemporary();
    } else {
        settleJournal(Final);
    }
}

void DatabaseFile::checkRemains() const
{
    for (const char* ending : {"-journal", "-wal"}) {
        struct stat status = {};
        if (::lstat((Final + ending).c_str(), &status) == 0) {
            throw Error(Name, Name + ending + " remains from an earlier database of this name; remove it first");
        }
    }
}

void DatabaseFile::makeTemporary()
{
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        const std::string path = folderOf(Final) + randomName();
        const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, databaseMode);
        if (descriptor >= 0) {
            ::close(descriptor);
            Temporary = path;
            return;
        }
        if (errno != EEXIST) {
            fail(errno);
        }
    }
    fail(EEXIST);
}

void DatabaseFile::removeTemporary() noexcept
{
    if (isNew()) {
        ::unlink(Temporary.c_str());
        ::unlink((Temporary + "-journal").c_str());
        Temporary.clear();
    }
}

bool DatabaseFile::publish()
{
    checkRemains();
    if (const int error = bringToDisk(Temporary, 0); error != 0) {
        fail(error);
    }
    int error = renameWithoutReplacing(Temporary, Final);
    if (error == EINVAL || error == ENOSYS || error == ENOTSUP) {
        error = linkWithoutReplacing(Temporary, Final);
    }
    if (error == EEXIST || error == EPERM || error == ENOTSUP || error == ENOSYS) {
        return false;
    }
    if (error != 0) {
        fail(error);
    }
    removeTemporary();
    bringToDisk(folderOf(Final), O_DIRECTORY);
    return true;
}

void DatabaseFile::fail(int error) const
{
    throw Error(Name, std::generic_category().message(error));
}

}  // namespace kd_lib::exchange::detail
