#include "newfile.h"

#include "filepath.h"

#include <kd_lib/exchange/error.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace kd_lib::exchange::detail {

namespace {

constexpr mode_t ordinaryMode = 0666;
constexpr mode_t ownerOnly = 0600;
constexpr mode_t permissions = 0777;

/// The folder of a path, without symbolic links; empty if there is none.
std::string realFolderOf(const std::string& path)
{
    char* const real = ::realpath(folderOf(path).c_str(), nullptr);
    std::string folder = real != nullptr ? real : "";
    std::free(real);
    return folder;
}

/// A link of /proc leads to an open file, whatever that file's name is now.
bool liesInProc(const std::string& path)
{
    return realFolderOf(path).starts_with("/proc/");
}

/// If the path is such a link (/dev/stdout leads to one), another descriptor of the open file, which continues at the
/// same position. -1 for other paths.
int sameAsOwn(const std::string& path)
{
    const std::string name = path.substr(path.find_last_of('/') + 1);
    const bool own = realFolderOf(path) == "/proc/" + std::to_string(::getpid()) + "/fd";
    int descriptor = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), descriptor);
    if (!own || error != std::errc() || end != name.data() + name.size() || descriptor < 0) {
        return -1;
    }
    return ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

/// The destination of the links from a path.
struct Destination {
    std::string Path;
    bool OpenFile = false;  ///< a link of /proc, which is not followed
    int Error = 0;
};

Destination follow(const std::string& path)
{
    Destination to = {path};
    for (int links = 0;; ++links) {
        struct stat status = {};
        if (::lstat(to.Path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) {
            return to;
        }
        if (liesInProc(to.Path)) {
            to.OpenFile = true;
            return to;
        }
        std::string target = linkTarget(to.Path);
        if (links == mostLinks || target.empty()) {
            to.Error = ELOOP;
            return to;
        }
        to.Path = std::move(target);
    }
}

/// A file name that no other process chooses.
std::string unusedName(const std::string& folder)
{
    static std::atomic<unsigned> count = 0;
    struct timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    char name[64];
    std::snprintf(name, sizeof name, ".kd_db-%lx-%lx-%x", static_cast<unsigned long>(::getpid()),
                  static_cast<unsigned long>(now.tv_nsec), count++);
    return folder + name;
}

std::string pathOf(int descriptor)
{
    return "/proc/self/fd/" + std::to_string(descriptor);
}

/// Makes the new name survive a loss of power. Not every file system supports this; a failure is ignored, because the
/// file exists anyway.
void syncFolder(const std::string& folder)
{
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

}  // namespace

NewFile::NewFile(const std::string& path) : Path(path)
{
    if (path == "-") {
        Descriptor = STDOUT_FILENO;
        Straight = true;
        return;
    }
    const Destination to = follow(path);
    if (to.Error != 0) {
        fail(to.Error);
    }
    Final = to.Path;
    struct stat status = {};
    const bool exists = ::stat(Final.c_str(), &status) == 0;
    if (!exists && errno != ENOENT) {
        fail(errno);
    }
    if (to.OpenFile || (exists && !S_ISREG(status.st_mode))) {
        openStraight(Final);
        return;
    }
    Replaces = exists;
    if (!exists) {
        openTemporary(ordinaryMode);
        return;
    }
    if (::access(Final.c_str(), W_OK) != 0) {
        fail(errno);
    }
    openTemporary(ownerOnly);
    takeOver(status.st_mode & permissions, status.st_uid, status.st_gid);
}

NewFile::~NewFile()
{
    abandon();
}

void NewFile::openStraight(const std::string& path)
{
    Straight = true;
    Descriptor = sameAsOwn(path);
    if (Descriptor < 0) {
        Descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    }
    if (Descriptor < 0) {
        fail(errno);
    }
}

void NewFile::openTemporary(mode_t mode)
{
    const std::string folder = folderOf(Final);
    // A file without a name vanishes with its process, even if that is killed. Not every file system has them.
    Descriptor = ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, mode);
    if (Descriptor >= 0 && ::access(pathOf(Descriptor).c_str(), F_OK) == 0) {
        return;
    }
    close();
    do {
        Temporary = unusedName(folder);
        Descriptor = ::open(Temporary.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode);
    } while (Descriptor < 0 && errno == EEXIST);
    if (Descriptor < 0) {
        Temporary.clear();
        fail(errno);
    }
}

void NewFile::takeOver(mode_t mode, uid_t owner, gid_t group)
{
    // Without permission the file remains the caller's. If the group cannot be kept, another group does not get its
    // rights.
    const bool kept =
        ::fchown(Descriptor, owner, group) == 0 || ::fchown(Descriptor, static_cast<uid_t>(-1), group) == 0;
    constexpr mode_t rightsOfGroup = 070;
    ::fchmod(Descriptor, kept ? mode : mode & ~rightsOfGroup);
}

void NewFile::write(std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = ::write(Descriptor, text.data(), text.size());
        if (written < 0 && errno != EINTR) {
            fail(errno);
        }
        text.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
    }
}

void NewFile::sync()
{
    if (!Straight && ::fsync(Descriptor) != 0) {
        fail(errno);
    }
}

void NewFile::commit()
{
    if (Straight) {
        close();
        return;
    }
    sync();
    giveName();
    close();
    syncFolder(folderOf(Final));
}

void NewFile::giveName()
{
    // A new name is used at once, unless another process has used it meanwhile.
    if (Temporary.empty()) {
        if (!Replaces &&
            ::linkat(AT_FDCWD, pathOf(Descriptor).c_str(), AT_FDCWD, Final.c_str(), AT_SYMLINK_FOLLOW) == 0) {
            return;
        }
        std::string name;
        int result = 0;
        do {
            name = unusedName(folderOf(Final));
            result = ::linkat(AT_FDCWD, pathOf(Descriptor).c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW);
        } while (result != 0 && errno == EEXIST);
        if (result != 0) {
            fail(errno);
        }
        Temporary = std::move(name);
    }
    if (std::rename(Temporary.c_str(), Final.c_str()) != 0) {
        fail(errno);
    }
    Temporary.clear();
}

void NewFile::abandon() noexcept
{
    // Removes only the file that was created here.
    struct stat made = {};
    struct stat named = {};
    if (!Temporary.empty() && Descriptor >= 0 && ::fstat(Descriptor, &made) == 0 &&
        ::lstat(Temporary.c_str(), &named) == 0 && made.st_dev == named.st_dev && made.st_ino == named.st_ino) {
        ::unlink(Temporary.c_str());
    }
    Temporary.clear();
    close();
}

void NewFile::close() noexcept
{
    if (Descriptor >= 0 && Path != "-") {
        ::close(Descriptor);
    }
    Descriptor = -1;
}

void NewFile::fail(int error) const
{
    throw Error(Path == "-" ? "standard output" : Path, std::generic_category().message(error));
}

}  // namespace kd_lib::exchange::detail
