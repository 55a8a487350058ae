// Tables opened by the path of their file.
#include "support/table_builder.h"

#include <kd_lib/filetable.h>
#include <kd_lib/xbasetable.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

using kd_lib::FileTable;
using kd_test::captured;
using kd_test::Console;
using kd_test::ScopedDirectory;

namespace {

struct Case {
    std::string path;
    std::string directory;
    std::string name;
    std::string extension;
};

}  // namespace

TEST(OpenPath, IsCutIntoDirectoryNameAndExtension)
{
    const ScopedDirectory scratch;
    std::filesystem::create_directories(scratch.file("a.b"));
    const std::string here = scratch.path();
    const Case cases[] = {
        {here + "/stock.dbf", here, "stock", "dbf"},
        {here + "/two.dots.csv", here, "two.dots", "csv"},
        {here + "/plain", here, "plain", ""},
        {here + "/.hidden", here, ".hidden", ""},
        {here + "/.hidden.txt", here, ".hidden", "txt"},
        {here + "/ends.", here, "ends.", ""},
        {here + "/a.b/plain", here + "/a.b", "plain", ""},
        {here + "/a.b/x.Y z", here + "/a.b", "x", "Y z"},
        {here + "//twice.txt", here + "/", "twice", "txt"},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.path);
        scratch.write(each.path.substr(here.size() + 1), "one\n");
        FileTable table;
        const Console console = captured([&] { EXPECT_TRUE(table.openPath(each.path)); });
        EXPECT_EQ("Table: " + std::filesystem::path(each.path).lexically_normal().string() + "\n", console.out);
        EXPECT_EQ("", console.err);
        EXPECT_EQ(each.directory, table.Path);
        EXPECT_EQ(each.name, table.Name);
        EXPECT_EQ(each.extension, table.Extension);
        EXPECT_TRUE(table.is_open());
    }
}

TEST(OpenPath, WithoutADirectoryIsRelativeToTheWorkingDirectory)
{
    const ScopedDirectory scratch;
    scratch.write("stock.txt", "one\n");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(scratch.path());
    FileTable table;
    table.Path = "elsewhere";
    EXPECT_EQ("Table: stock.txt\n", captured([&] { EXPECT_TRUE(table.openPath("stock.txt")); }).out);
    EXPECT_EQ("", table.Path);
    std::filesystem::current_path(before);
}

TEST(OpenPath, OfAFileInTheRootKeepsTheSlash)
{
    FileTable table;
    const Console console = captured([&] { EXPECT_FALSE(table.openPath("/no such file of this test.txt")); });
    EXPECT_EQ("Table: /no such file of this test.txt\n", console.out);
    EXPECT_EQ("File does not exist\n", console.err);
}

TEST(OpenPath, TildeIsTheHomeDirectory)
{
    const ScopedDirectory scratch;
    scratch.write("stock.txt", "one\n");
    const char* const old = std::getenv("HOME");
    const std::string before = old != nullptr ? old : "";
    ::setenv("HOME", scratch.path().c_str(), 1);
    FileTable table;
    EXPECT_EQ("Table: " + scratch.path() + "/stock.txt\n",
              captured([&] { EXPECT_TRUE(table.openPath("~/stock.txt")); }).out);
    ::setenv("HOME", before.c_str(), 1);
}

TEST(OpenPath, FailureLeavesTheTableUnchanged)
{
    kd_lib::xBaseTable table("stock");
    table.Path = "data";
    const Console missing = captured([&] { EXPECT_FALSE(table.openPath("none/other.csv")); });
    EXPECT_EQ("File does not exist\n", missing.err);
    const Console empty = captured([&] { EXPECT_FALSE(table.openPath("none/")); });
    EXPECT_EQ("", empty.out);
    EXPECT_EQ("No file name provided for table file\n", empty.err);
    EXPECT_EQ("data", table.Path);
    EXPECT_EQ("dbf", table.Extension);
    EXPECT_EQ("stock", table.Name);
}

TEST(OpenPath, OpenTableStaysOnItsFile)
{
    kd_test::Opened<FileTable> file("one\n");
    const std::string directory = file.table.Path;
    EXPECT_EQ("", captured([&] { EXPECT_TRUE(file.table.openPath("none/other.csv")); }).out);
    EXPECT_EQ(directory, file.table.Path);
    EXPECT_EQ("sample", file.table.Name);
    EXPECT_EQ("txt", file.table.Extension);
}

TEST(OpenPath, GoesThroughTheVirtualOpen)
{
    class Recorder : public FileTable {
    public:
        using FileTable::open;
        bool open(const std::string& name) override
        {
            Asked = Path + "," + name + "," + Extension;
            return true;
        }
        std::string Asked;
    };
    Recorder table;
    EXPECT_TRUE(table.openPath("data/stock.dbf"));
    EXPECT_EQ("data,stock,dbf", table.Asked);
}
