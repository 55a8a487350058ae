#include <kd_lib/path.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <pwd.h>
#include <string>
#include <unistd.h>

namespace {

/// Sets HOME, or removes it, while it exists.
class ScopedHome {
public:
    explicit ScopedHome(std::optional<std::string> home)
    {
        if (const char* saved = std::getenv("HOME")) {
            Saved = saved;
        }
        set(home);
    }
    ~ScopedHome() { set(Saved); }
    ScopedHome(const ScopedHome&) = delete;
    ScopedHome& operator=(const ScopedHome&) = delete;

private:
    static void set(const std::optional<std::string>& home)
    {
        if (home) {
            ::setenv("HOME", home->c_str(), 1);
        } else {
            ::unsetenv("HOME");
        }
    }

    std::optional<std::string> Saved;
};

std::string checked(std::string path)
{
    kd_lib::checkHomePath(path);
    return path;
}

std::string withEndSlash(std::string dir)
{
    kd_lib::addEndSlash(dir);
    return dir;
}

std::string homeInUserDatabase()
{
    const passwd* entry = ::getpwuid(::getuid());
    return entry != nullptr ? entry->pw_dir : "";
}

}  // namespace

// checkHomePath

TEST(CheckHomePath, ReplacesTheTildeByHome)
{
    const ScopedHome home("/home/r1c1");
    EXPECT_EQ("/home/r1c1", checked("~"));
    EXPECT_EQ("/home/r1c1/", checked("~/"));
    EXPECT_EQ("/home/r1c1/tables/people.txt", checked("~/tables/people.txt"));
}

TEST(CheckHomePath, ReplacesTheFirstTildeOnly)
{
    const ScopedHome home("/home/r1c1");
    EXPECT_EQ("/home/r1c1/~/~", checked("~/~/~"));
}

TEST(CheckHomePath, WithHomeUnsetUsesTheUserDatabase)
{
    const ScopedHome noHome(std::nullopt);
    ASSERT_NE("", homeInUserDatabase());
    EXPECT_EQ(homeInUserDatabase() + "/data.txt", checked("~/data.txt"));
    EXPECT_EQ(homeInUserDatabase(), checked("~"));
}

TEST(CheckHomePath, WithHomeEmptyUsesTheUserDatabase)
{
    const ScopedHome emptyHome("");
    EXPECT_EQ(homeInUserDatabase() + "/data.txt", checked("~/data.txt"));
}

TEST(CheckHomePath, PrefersHomeToTheUserDatabase)
{
    const ScopedHome home(homeInUserDatabase() + "/elsewhere");
    EXPECT_EQ(homeInUserDatabase() + "/elsewhere/x", checked("~/x"));
}

TEST(CheckHomePath, LeavesTheTildeOfAnotherUser)
{
    const ScopedHome home("/home/r1c1");
    EXPECT_EQ("~name", checked("~name"));
    EXPECT_EQ("~name/tables", checked("~name/tables"));
    EXPECT_EQ("~root", checked("~root"));
    EXPECT_EQ("~x", checked("~x"));
    EXPECT_EQ("~~/x", checked("~~/x"));
}

TEST(CheckHomePath, LeavesEveryOtherPath)
{
    const ScopedHome home("/home/r1c1");
    for (const char* path : {"", "data.txt", "/tmp/~/data", "./~", "data~", " ~/data", "/", "a/b"}) {
        EXPECT_EQ(path, checked(path));
    }
}

// addEndSlash

TEST(AddEndSlash, AppendsOneToADirectoryWithoutIt)
{
    EXPECT_EQ("tables/", withEndSlash("tables"));
    EXPECT_EQ("/tmp/tables/", withEndSlash("/tmp/tables"));
    EXPECT_EQ("~/", withEndSlash("~"));
    EXPECT_EQ("back\\/", withEndSlash("back\\"));
}

TEST(AddEndSlash, ChangesNothingAfterASlash)
{
    EXPECT_EQ("tables/", withEndSlash("tables/"));
    EXPECT_EQ("/", withEndSlash("/"));
    EXPECT_EQ("tables//", withEndSlash("tables//"));
}

TEST(AddEndSlash, LeavesTheEmptyTextEmpty)
{
    EXPECT_EQ("", withEndSlash(""));
}
