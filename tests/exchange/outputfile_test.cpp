// Files that appear whole or not at all.
#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/outputfile.h>

#include "support/console_capture.h"
#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

/// Whether the file system has files without a name.
bool namelessFiles = true;

/// How many temporary names are found in use.
int namesInUse = 0;

/// Whether standard input is closed when a folder is opened, which then has its descriptor.
bool foldersAreInput = false;

/// Whether only the group of a file may be changed, as for a user without privileges.
bool ownersAreFixed = false;

/// Whether the group may not be changed either.
bool groupsAreFixed = false;

}  // namespace

extern "C" int fchown(int descriptor, uid_t owner, gid_t group) noexcept
{
    if (groupsAreFixed || (ownersAreFixed && owner != static_cast<uid_t>(-1))) {
        errno = EPERM;
        return -1;
    }
    static const auto real = reinterpret_cast<int (*)(int, uid_t, gid_t)>(dlsym(RTLD_NEXT, "fchown"));
    return real(descriptor, owner, group);
}

extern "C" int open(const char* path, int flags, ...)
{
    if (!namelessFiles && (flags & O_TMPFILE) == O_TMPFILE) {
        errno = EOPNOTSUPP;
        return -1;
    }
    if (namesInUse > 0 && (flags & O_EXCL) != 0) {
        --namesInUse;
        errno = EEXIST;
        return -1;
    }
    if (foldersAreInput && (flags & O_DIRECTORY) != 0 && (flags & O_TMPFILE) != O_TMPFILE) {
        ::close(STDIN_FILENO);
    }
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    static const auto real = reinterpret_cast<int (*)(const char*, int, ...)>(dlsym(RTLD_NEXT, "open"));
    return real(path, flags, mode);
}

namespace {

using kd_lib::exchange::Error;
using kd_lib::exchange::OutputFile;
using kd_test::readFile;
using Texts = std::vector<std::string>;

/// Each test runs twice: with files that have no name, and with temporary names.
class OutputFileTest : public testing::TestWithParam<bool> {
protected:
    OutputFileTest() { namelessFiles = GetParam(); }
    ~OutputFileTest() override { namelessFiles = true; }

    void SetUp() override
    {
        const int descriptor = GetParam() ? ::open(Folder.path().c_str(), O_TMPFILE | O_WRONLY, 0600) : 0;
        if (descriptor < 0) {
            GTEST_SKIP() << "the file system has no files without a name";
        }
        if (descriptor > 0) {
            ::close(descriptor);
        }
    }

    std::string path(const std::string& name) const { return Folder.file(name); }

    /// The names in the folder, without temporary ones.
    Texts names() const
    {
        Texts found;
        for (const auto& entry : std::filesystem::directory_iterator(Folder.path())) {
            found.push_back(entry.path().filename());
        }
        std::ranges::sort(found);
        return found;
    }

    static void put(const std::string& path, const std::string& text)
    {
        OutputFile file(path);
        file.write(text);
        file.commit();
    }

    static mode_t modeOf(const std::string& path)
    {
        struct stat status = {};
        EXPECT_EQ(::stat(path.c_str(), &status), 0);
        return status.st_mode & 07777U;
    }

    static std::string failureOf(const std::string& path)
    {
        try {
            put(path, "text");
        } catch (const Error& error) {
            return error.what();
        }
        return "";
    }

    kd_test::ScopedDirectory Folder;
};

INSTANTIATE_TEST_SUITE_P(Names, OutputFileTest, testing::Bool(),
                         [](const auto& way) { return way.param ? "Nameless" : "Temporary"; });

TEST_P(OutputFileTest, LeavesNoFolderOpenInPlaceOfStandardInput)
{
    const int input = ::dup(STDIN_FILENO);
    foldersAreInput = true;
    put(path("a"), "text");
    foldersAreInput = false;
    EXPECT_EQ(::fcntl(STDIN_FILENO, F_GETFD), -1);
    ::dup2(input, STDIN_FILENO);
    ::close(input);
}

TEST_P(OutputFileTest, AppearsWhenItIsCommitted)
{
    OutputFile file(path("a"));
    file.write(std::string(1000000, 'x'));
    EXPECT_FALSE(std::filesystem::exists(path("a")));
    EXPECT_EQ(names().size(), GetParam() ? 0U : 1U);
    EXPECT_FALSE(file.isStraight());
    file.commit();
    EXPECT_EQ(names(), Texts{"a"});
    EXPECT_EQ(readFile(path("a")), std::string(1000000, 'x'));
}

TEST_P(OutputFileTest, LeavesNothingWhenItIsAbandoned)
{
    Folder.write("a", "old");
    {
        OutputFile file(path("a"));
        file.write(std::string(1000000, 'x'));
        OutputFile other(path("b"));
        other.write("y");
        other.abandon();
        other.abandon();
    }
    EXPECT_EQ(names(), Texts{"a"});
    EXPECT_EQ(readFile(path("a")), "old");
}

TEST_P(OutputFileTest, ReplacesAFileAndKeepsItsMode)
{
    Folder.write("a", "a longer old text");
    for (const mode_t mode : {0600U, 0640U, 0755U, 0666U}) {
        ::chmod(path("a").c_str(), mode);
        put(path("a"), "new");
        EXPECT_EQ(modeOf(path("a")), mode);
    }
    EXPECT_EQ(readFile(path("a")), "new");
    EXPECT_EQ(names(), Texts{"a"});
}

TEST_P(OutputFileTest, GivesNewFilesTheUsualMode)
{
    const mode_t mask = ::umask(027);
    put(path("a"), "");
    ::umask(mask);
    EXPECT_EQ(modeOf(path("a")), 0640U);
}

TEST_P(OutputFileTest, KeepsTheOwnerIfPermitted)
{
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root";
    }
    Folder.write("a", "old");
    ASSERT_EQ(::chown(path("a").c_str(), 12345, 23456), 0);
    ::chmod(path("a").c_str(), 0640);
    put(path("a"), "new");
    struct stat status = {};
    ASSERT_EQ(::stat(path("a").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 12345U);
    EXPECT_EQ(status.st_gid, 23456U);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST_P(OutputFileTest, KeepsTheGroupAndItsRightsIfTheOwnerCannotBeKept)
{
    Folder.write("a", "old");
    ::chmod(path("a").c_str(), 0664);
    ownersAreFixed = true;
    put(path("a"), "new");
    ownersAreFixed = false;
    struct stat status = {};
    ASSERT_EQ(::stat(path("a").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, ::geteuid());
    EXPECT_EQ(status.st_mode & 07777U, 0664U);
}

TEST_P(OutputFileTest, TakesTheRightsOfTheGroupIfItCannotBeKept)
{
    Folder.write("a", "old");
    ::chmod(path("a").c_str(), 0775);
    groupsAreFixed = true;
    put(path("a"), "new");
    groupsAreFixed = false;
    EXPECT_EQ(modeOf(path("a")), 0705U);
}

TEST_P(OutputFileTest, TriesAnotherTemporaryNameIfOneIsInUse)
{
    namelessFiles = false;
    namesInUse = 2;
    const int input = ::dup(STDIN_FILENO);
    ::close(STDIN_FILENO);  // so that the file gets the descriptor 0
    {
        const OutputFile file(path("a"));
        EXPECT_EQ(names().size(), 1U);
        EXPECT_EQ(namesInUse, 0);
    }
    EXPECT_EQ(names(), Texts{});
    EXPECT_EQ(::fcntl(STDIN_FILENO, F_GETFD), -1) << "the file is still open";
    ::dup2(input, STDIN_FILENO);
    ::close(input);
}

TEST_P(OutputFileTest, WritesThroughSymbolicLinks)
{
    std::filesystem::create_directory(path("sub"));
    Folder.write("sub/target", "old");
    std::filesystem::create_symlink("sub/target", path("link"));
    std::filesystem::create_symlink("link", path("link2"));
    put(path("link2"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
    EXPECT_TRUE(std::filesystem::is_symlink(path("link2")));
    EXPECT_EQ(readFile(path("sub/target")), "new");

    std::filesystem::create_symlink(path("sub/made"), path("dangling"));
    put(path("dangling"), "made");
    EXPECT_TRUE(std::filesystem::is_symlink(path("dangling")));
    EXPECT_EQ(readFile(path("sub/made")), "made");
}

TEST_P(OutputFileTest, NamesTheFileThatCannotBeWritten)
{
    std::filesystem::create_symlink("loop", path("loop"));
    EXPECT_EQ(failureOf(path("loop")), path("loop") + ": Too many levels of symbolic links");
    EXPECT_EQ(failureOf(Folder.path()), Folder.path() + ": Is a directory");
    EXPECT_EQ(failureOf(path("none/a")), path("none/a") + ": No such file or directory");
    EXPECT_EQ(failureOf("/dev/full"), "/dev/full: No space left on device");
    EXPECT_EQ(failureOf(path(std::string(256, 'n'))), path(std::string(256, 'n')) + ": File name too long");
    Folder.write("file", "");
    EXPECT_EQ(failureOf(path("file/a")), path("file/a") + ": Not a directory");
    EXPECT_EQ(names(), (Texts{"file", "loop"}));
}

TEST_P(OutputFileTest, TakesNamesOf255Bytes)
{
    const std::string name(255, 'n');
    put(path(name), "a");
    put(path(name), "b");
    EXPECT_EQ(names(), Texts{name});
    EXPECT_EQ(readFile(path(name)), "b");
}

TEST_P(OutputFileTest, RefusesFilesThatMayNotBeWritten)
{
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root may write everything";
    }
    Folder.write("a", "old");
    ::chmod(path("a").c_str(), 0444);
    EXPECT_EQ(failureOf(path("a")), path("a") + ": Permission denied");
    EXPECT_EQ(readFile(path("a")), "old");
}

TEST_P(OutputFileTest, WritesPipesDirectly)
{
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    std::string got;
    std::thread reader([&] { got = readFile(path("pipe")); });
    {
        OutputFile file(path("pipe"));
        EXPECT_TRUE(file.isStraight());
        file.write("through the pipe");
        file.commit();
    }
    reader.join();
    EXPECT_EQ(got, "through the pipe");
    EXPECT_EQ(names(), Texts{"pipe"});
}

TEST_P(OutputFileTest, WritesStandardOutputDirectly)
{
    const auto console = kd_test::captured([] {
        put("-", "one ");
        put("/dev/stdout", "two ");
        put("/proc/self/fd/1", "three ");
        put("-", "four");
    });
    EXPECT_EQ(console.out, "one two three four");
}

TEST_P(OutputFileTest, ContinuesAtThePositionOfStandardOutput)
{
    Folder.write("log", "before\n");
    const int descriptor = ::open(path("log").c_str(), O_WRONLY | O_APPEND);
    const int saved = ::dup(STDOUT_FILENO);
    ::dup2(descriptor, STDOUT_FILENO);
    put("/dev/stdout", "after\n");
    ::dup2(saved, STDOUT_FILENO);
    ::close(saved);
    ::close(descriptor);
    EXPECT_EQ(readFile(path("log")), "before\nafter\n");
    EXPECT_EQ(names(), Texts{"log"});
}

TEST_P(OutputFileTest, LeavesOtherFiles)
{
    OutputFile file(path("a"));
    file.write("mine");
    Texts temporary = names();
    // Another process has replaced the temporary file.
    for (const std::string& name : temporary) {
        std::filesystem::remove(path(name));
        Folder.write(name, "another's");
    }
    file.abandon();
    EXPECT_EQ(names(), temporary);
}

TEST_P(OutputFileTest, TheLastOfTwoWritersWins)
{
    OutputFile first(path("a"));
    OutputFile second(path("a"));
    first.write("first");
    second.write("second");
    second.commit();
    first.commit();
    EXPECT_EQ(readFile(path("a")), "first");
    EXPECT_EQ(names(), Texts{"a"});
}

TEST_P(OutputFileTest, AKilledProcessLeavesNothingVisible)
{
    const pid_t child = ::fork();
    if (child == 0) {
        OutputFile file(path("a"));
        file.write(std::string(1000000, 'x'));
        ::raise(SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_FALSE(std::filesystem::exists(path("a")));
    EXPECT_EQ(names().size(), GetParam() ? 0U : 1U);
}

}  // namespace
