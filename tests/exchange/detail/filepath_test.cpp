#include "detail/filepath.h"

#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using kd_lib::exchange::detail::folderOf;
using kd_lib::exchange::detail::linkTarget;

namespace {

TEST(FilePath, AFolderEndsWithASlash)
{
    EXPECT_EQ(folderOf("/tmp/new.db"), "/tmp/");
    EXPECT_EQ(folderOf("/new.db"), "/");
    EXPECT_EQ(folderOf("a/b/new.db"), "a/b/");
    EXPECT_EQ(folderOf("a/"), "a/");
    EXPECT_EQ(folderOf("new.db"), "./");
    EXPECT_EQ(folderOf(""), "./");
}

TEST(FilePath, ALinkLeadsFromItsOwnFolder)
{
    const kd_test::ScopedDirectory folder;
    const std::string link = folder.file("link");
    std::filesystem::create_symlink("sub/new.db", link);
    EXPECT_EQ(linkTarget(link), folder.file("sub/new.db"));
    std::filesystem::remove(link);
    std::filesystem::create_symlink("/tmp/new.db", link);
    EXPECT_EQ(linkTarget(link), "/tmp/new.db");
}

TEST(FilePath, OnlyALinkHasATarget)
{
    const kd_test::ScopedDirectory folder;
    EXPECT_EQ(linkTarget(folder.write("file", "x")), "");
    EXPECT_EQ(linkTarget(folder.file("nothing")), "");
    EXPECT_EQ(linkTarget(folder.path()), "");
    EXPECT_EQ(linkTarget(""), "");
}

}  // namespace
