// A process whose user has no entry in the user database, or one without a directory. The test replaces
// the database.

#include <kd_lib/path.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <pwd.h>
#include <string>

namespace {

enum class Reply { NoEntry, NoDirectory, Failure, Directory };

Reply reply = Reply::NoEntry;
std::string directory = "/of/the/entry";

std::string expanded(std::string path)
{
    ::unsetenv("HOME");
    kd_lib::checkHomePath(path);
    return path;
}

}  // namespace

extern "C" int getpwuid_r(uid_t, passwd* entry, char*, size_t, passwd** found)
{
    *entry = passwd{};
    *found = reply == Reply::NoDirectory || reply == Reply::Directory ? entry : nullptr;
    entry->pw_dir = reply == Reply::Directory ? directory.data() : nullptr;
    return reply == Reply::Failure ? EIO : 0;
}

namespace {

TEST(UserDatabase, ItsDirectoryReplacesTheTilde)
{
    reply = Reply::Directory;
    EXPECT_EQ("/of/the/entry/file", expanded("~/file"));
}

TEST(UserDatabase, WithoutAnEntryWithADirectoryTheTildeStays)
{
    for (const Reply each : {Reply::NoEntry, Reply::NoDirectory, Reply::Failure}) {
        reply = each;
        EXPECT_EQ("~/file", expanded("~/file"));
        EXPECT_EQ("~", expanded("~"));
    }
}

}  // namespace
