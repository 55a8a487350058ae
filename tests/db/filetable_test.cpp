#include "support/file_sample.h"
#include "support/table_builder.h"

#include <kd_lib/filetable.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <string>
#include <type_traits>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using kd_lib::FileTable;
using kd_test::addColumn;
using kd_test::captured;
using kd_test::Console;
using kd_test::Opened;
using kd_test::position;
using kd_test::Row;
using kd_test::rowOf;
using kd_test::Rows;
using kd_test::rowsOf;
using kd_test::ScopedDirectory;
using kd_test::twoLines;

namespace {

/// The descriptor that the next opened file gets.
int nextDescriptor()
{
    const int next = ::dup(STDIN_FILENO);
    ::close(next);
    return next;
}

}  // namespace

// Construction

TEST(FileTable, DefaultsOfTheConstructorWithoutAName)
{
    const FileTable table;
    EXPECT_EQ("", table.Name);
    EXPECT_EQ("", table.Path);
    EXPECT_EQ("", table.FullName);
    EXPECT_EQ("", table.BaseName);
    EXPECT_EQ("txt", table.Extension);
    EXPECT_FALSE(table.Binary);
    EXPECT_TRUE(table.Trim);
    EXPECT_EQ(255U, table.RecordLength);
    EXPECT_EQ(0U, table.HeaderLength);
    EXPECT_EQ(10, table.RecordEnd);
    EXPECT_EQ(0U, table.RecordCount);
    EXPECT_EQ(0U, table.Fields.size());
    EXPECT_FALSE(table.Fields.CaseSensitive);
}

TEST(FileTable, NameConstructorSetsTheNameAndTheSameDefaults)
{
    FileTable table("stock");
    EXPECT_EQ("stock", table.Name);
    EXPECT_EQ("", table.BaseName);
    EXPECT_EQ("txt", table.Extension);
    EXPECT_FALSE(table.Binary);
    EXPECT_TRUE(table.Trim);
    EXPECT_EQ(255U, table.RecordLength);
    EXPECT_EQ(0U, table.HeaderLength);
    EXPECT_EQ(10, table.RecordEnd);
    EXPECT_FALSE(table.is_open());
}

TEST(FileTable, MembersHaveTheirStatedTypes)
{
    static_assert(std::is_same_v<decltype(FileTable::File), std::fstream>);
    static_assert(std::is_same_v<decltype(FileTable::RecordLength), std::uint64_t>);
    static_assert(std::is_same_v<decltype(FileTable::HeaderLength), std::uint64_t>);
    static_assert(std::is_same_v<decltype(FileTable::RecordEnd), int>);
    static_assert(std::has_virtual_destructor_v<kd_lib::FileName>);
    static_assert(std::is_base_of_v<kd_lib::DatabaseTable, FileTable>);
    static_assert(std::is_base_of_v<kd_lib::FileName, FileTable>);
}

TEST(FileTable, CannotBeCopied)
{
    static_assert(!std::is_copy_constructible_v<FileTable>);
    static_assert(!std::is_copy_assignable_v<FileTable>);
}

TEST(FileTable, VirtualOperationsAreInTheirSlotOrder)
{
    using OpenName = bool (FileTable::*)(const std::string&);
    using OpenOwn = bool (FileTable::*)();
    EXPECT_EQ(2U, kd_test::slotOf(static_cast<OpenOwn>(&FileTable::open)));
    EXPECT_EQ(3U, kd_test::slotOf(static_cast<OpenName>(&FileTable::open)));
    EXPECT_EQ(4U, kd_test::slotOf(&FileTable::is_open));
    EXPECT_EQ(5U, kd_test::slotOf(&FileTable::close));
    EXPECT_EQ(6U, kd_test::slotOf(&FileTable::getFieldList));
    EXPECT_EQ(7U, kd_test::slotOf(&FileTable::skipHeader));
    EXPECT_EQ(8U, kd_test::slotOf(&FileTable::defineFields));
    EXPECT_EQ(9U, kd_test::slotOf(&FileTable::showHeader));
    EXPECT_EQ(10U, kd_test::slotOf(&FileTable::fetchRecord));
    EXPECT_EQ(11U, kd_test::slotOf(&FileTable::readHeader));
    EXPECT_EQ(12U, kd_test::slotOf(&FileTable::extractContent));
}

// Opening and closing

TEST(FileTableOpen, BuildsThePathFromDirectoryNameAndExtensionAndPrintsIt)
{
    const ScopedDirectory directory;
    directory.write("data.txt", twoLines);
    FileTable table;
    table.Path = directory.path();
    bool opened = false;
    const Console console = captured([&] { opened = table.open("data"); });
    EXPECT_TRUE(opened);
    EXPECT_TRUE(table.is_open());
    EXPECT_EQ("Table: " + directory.path() + "/data.txt\n", console.out);
    EXPECT_EQ("", console.err);
    EXPECT_EQ("data", table.Name);
    EXPECT_EQ(0, position(table));
}

TEST(FileTableOpen, KeepsThePath)
{
    const ScopedDirectory directory;
    directory.write("data.txt", twoLines);
    FileTable table;
    ASSERT_TRUE(kd_test::openQuietly(table, directory, "data"));
    EXPECT_EQ(directory.path(), table.Path);
}

TEST(FileTableOpen, DirectoryWithASlashGetsNoSecondOne)
{
    const ScopedDirectory directory;
    directory.write("data.txt", twoLines);
    FileTable table;
    table.Path = directory.path() + "/";
    const Console console = captured([&] { table.open("data"); });
    EXPECT_EQ("Table: " + directory.path() + "/data.txt\n", console.out);
    EXPECT_TRUE(table.is_open());
}

TEST(FileTableOpen, EmptyPathLeavesTheNameRelativeToTheWorkingDirectory)
{
    const ScopedDirectory directory;
    directory.write("data.txt", twoLines);
    const std::filesystem::path before = std::filesystem::current_path();
    FileTable table;
    Console console;
    std::filesystem::current_path(directory.path());
    console = captured([&] { table.open("data"); });
    std::filesystem::current_path(before);
    EXPECT_EQ("Table: data.txt\n", console.out);
    EXPECT_TRUE(table.is_open());
}

TEST(FileTableOpen, EmptyExtensionAppendsNoDot)
{
    const ScopedDirectory directory;
    directory.write("data", twoLines);
    FileTable table;
    table.Extension = "";
    table.Path = directory.path();
    const Console console = captured([&] { table.open("data"); });
    EXPECT_EQ("Table: " + directory.path() + "/data\n", console.out);
    EXPECT_TRUE(table.is_open());
}

TEST(FileTableOpen, OtherExtensionIsAppendedWithADot)
{
    const ScopedDirectory directory;
    directory.write("data.prn", twoLines);
    FileTable table;
    table.Extension = "prn";
    table.Path = directory.path();
    const Console console = captured([&] { table.open("data"); });
    EXPECT_EQ("Table: " + directory.path() + "/data.prn\n", console.out);
    EXPECT_TRUE(table.is_open());
}

TEST(FileTableOpen, TildeIsTheHomeDirectory)
{
    const ScopedDirectory directory;
    directory.write("data.txt", twoLines);
    const char* home = std::getenv("HOME");
    const std::string before = home != nullptr ? home : "";
    ::setenv("HOME", directory.path().c_str(), 1);
    FileTable table;
    table.Path = "~";
    const Console console = captured([&] { table.open("data"); });
    ::setenv("HOME", before.c_str(), 1);
    EXPECT_EQ("Table: " + directory.path() + "/data.txt\n", console.out);
    EXPECT_TRUE(table.is_open());
    EXPECT_EQ("~", table.Path);
}

TEST(FileTableOpen, WithoutArgumentOpensTheTablesOwnName)
{
    const ScopedDirectory directory;
    directory.write("stock.txt", twoLines);
    FileTable table("stock");
    table.Path = directory.path();
    bool opened = false;
    const Console console = captured([&] { opened = table.open(); });
    EXPECT_TRUE(opened);
    EXPECT_EQ("Table: " + directory.path() + "/stock.txt\n", console.out);
    EXPECT_EQ("stock", table.Name);
}

TEST(FileTableOpen, WithoutArgumentGoesThroughTheVirtualOperation)
{
    class Recorder : public FileTable {
    public:
        using FileTable::FileTable;
        using FileTable::open;
        bool open(const std::string& name) override
        {
            Asked = name;
            return true;
        }
        std::string Asked;
    };
    Recorder table("stock");
    kd_lib::DatabaseTable& base = table;
    EXPECT_TRUE(base.open());
    EXPECT_EQ("stock", table.Asked);
}

TEST(FileTableOpen, EmptyNameIsReportedAndRefused)
{
    FileTable table;
    bool opened = true;
    const Console console = captured([&] { opened = table.open(""); });
    EXPECT_FALSE(opened);
    EXPECT_EQ("", console.out);
    EXPECT_EQ("No file name provided for table file\n", console.err);
}

TEST(FileTableOpen, MissingFileIsReportedAfterTheTableLine)
{
    const ScopedDirectory directory;
    FileTable table("before");
    table.Path = directory.path();
    bool opened = true;
    const Console console = captured([&] { opened = table.open("absent"); });
    EXPECT_FALSE(opened);
    EXPECT_FALSE(table.is_open());
    EXPECT_EQ("Table: " + directory.path() + "/absent.txt\n", console.out);
    EXPECT_EQ("File does not exist\n", console.err);
    EXPECT_EQ("before", table.Name);
}

TEST(FileTableOpen, UnreadableFileIsReportedAfterTheTableLine)
{
    const ScopedDirectory directory;
    const std::string path = directory.write("secret.txt", twoLines);
    ASSERT_EQ(0, ::chmod(path.c_str(), 0));
    ASSERT_EQ(0, ::chmod(directory.path().c_str(), 0755));
    int out[2];
    ASSERT_EQ(0, ::pipe(out));
    const pid_t child = ::fork();
    ASSERT_NE(-1, child);
    if (child == 0) {
        // The super-user may read every file, so this runs as nobody.
        constexpr uid_t nobody = 65534;
        if (::getuid() == 0 && ::setresuid(nobody, nobody, nobody) != 0) {
            ::_exit(3);
        }
        ::dup2(out[1], STDOUT_FILENO);
        ::dup2(out[1], STDERR_FILENO);
        FileTable table;
        table.Path = directory.path();
        const bool opened = table.open("secret");
        std::cout.flush();
        std::cerr.flush();
        ::_exit(opened ? 2 : 0);
    }
    ::close(out[1]);
    std::string printed;
    char piece[256];
    for (ssize_t got = 0; (got = ::read(out[0], piece, sizeof piece)) > 0;) {
        printed.append(piece, static_cast<std::size_t>(got));
    }
    ::close(out[0]);
    int status = 0;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(0, WEXITSTATUS(status));
    EXPECT_EQ("Table: " + directory.path() + "/secret.txt\nNo permission to read file\n", printed);
}

TEST(FileTableOpen, StreamThatCannotBeOpenedReturnsFalseWithoutAMessage)
{
    // A socket exists and may be read, but it cannot be opened as a file.
    const ScopedDirectory directory;
    ASSERT_EQ(0, ::mknod(directory.file("data.txt").c_str(), S_IFSOCK | 0600, 0));
    FileTable table("before");
    table.Path = directory.path();
    bool opened = true;
    const Console console = captured([&] { opened = table.open("data"); });
    EXPECT_FALSE(opened);
    EXPECT_FALSE(table.is_open());
    EXPECT_EQ("Table: " + directory.path() + "/data.txt\n", console.out);
    EXPECT_EQ("", console.err);
    EXPECT_EQ("before", table.Name);
}

TEST(FileTableOpen, OpenTableStaysOnItsFileWhateverTheName)
{
    const ScopedDirectory directory;
    directory.write("one.txt", "first\n");
    directory.write("two.txt", "second\n");
    FileTable table;
    table.Path = directory.path();
    ASSERT_TRUE(kd_test::openQuietly(table, directory, "one"));
    addColumn(table, "word", 0, 5);
    for (const std::string other : {"two", "absent", ""}) {
        bool opened = false;
        const Console console = captured([&] { opened = table.open(other); });
        EXPECT_TRUE(opened) << other;
        EXPECT_EQ("", console.out) << other;
        EXPECT_EQ("", console.err) << other;
        EXPECT_EQ("one", table.Name) << other;
    }
    EXPECT_EQ((Rows{{"first"}}), rowsOf(table));
}

TEST(FileTableOpen, OpensForInputOnly)
{
    Opened<FileTable> file(twoLines);
    file.table.File << "overwritten" << std::flush;
    EXPECT_TRUE(file.table.File.fail());
    file.table.close();
    EXPECT_EQ(twoLines, kd_test::readFile(file.directory() + "/sample.txt"));
}

TEST(FileTableOpen, FailedOpenCanBeRepeatedOnceTheFileExists)
{
    const ScopedDirectory directory;
    FileTable table;
    EXPECT_FALSE(kd_test::openQuietly(table, directory, "late"));
    directory.write("late.txt", "here\n");
    EXPECT_TRUE(kd_test::openQuietly(table, directory, "late"));
}

TEST(FileTableClose, ClosedTableReturnsTrue)
{
    FileTable table;
    EXPECT_TRUE(table.close());
    EXPECT_TRUE(table.close());
}

TEST(FileTableClose, KeepsTheColumnsAndTheirValues)
{
    Opened<FileTable> file(twoLines);
    file.table.setFieldOffsets("5|12|20");
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.close());
    EXPECT_FALSE(file.table.is_open());
    EXPECT_EQ((Row{"r1c1.", "r1c2...", "1c3....x"}), kd_test::rowOf(file.table));
}

TEST(FileTableClose, ClearsTheStreamsState)
{
    Opened<FileTable> file("one\n");
    rowsOf(file.table);
    ASSERT_TRUE(file.table.File.fail());
    EXPECT_TRUE(file.table.close());
    EXPECT_TRUE(file.table.File.good());
}

TEST(FileTableClose, FailedCloseSetsTheFailFlagAndStillReturnsTrue)
{
    const ScopedDirectory directory;
    directory.write("data.txt", twoLines);
    FileTable table;
    table.Path = directory.path();
    captured([&] {
        const int descriptor = nextDescriptor();
        table.open("data");
        ::close(descriptor);
    });
    EXPECT_TRUE(table.close());
    EXPECT_TRUE(table.File.fail());
}

TEST(FileTableClose, ReopenedTableReadsTheNewFileWithTheOldColumns)
{
    Opened<FileTable> file("old01\n");
    addColumn(file.table, "word", 0, 5);
    EXPECT_EQ((Rows{{"old01"}}), rowsOf(file.table));
    file.reopen("new01\nnew02\n");
    EXPECT_EQ((Rows{{"new01"}, {"new02"}}), rowsOf(file.table));
    file.table.defineFields();
    EXPECT_EQ(0U, file.table.Fields.size());
}

TEST(FileTableClose, DestructionClosesTheFile)
{
    const ScopedDirectory directory;
    directory.write("data.txt", twoLines);
    const auto openDescriptors = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); };
    const auto before = openDescriptors();
    {
        FileTable table;
        ASSERT_TRUE(kd_test::openQuietly(table, directory, "data"));
        EXPECT_EQ(before + 1, openDescriptors());
    }
    EXPECT_EQ(before, openDescriptors());
}

// Header operations

TEST(FileTableHeader, FieldListOfAClosedTableReturnsFalse)
{
    FileTable table;
    EXPECT_FALSE(table.getFieldList());
}

TEST(FileTableHeader, FieldListGoesToByteZeroAndReturnsTheVirtualReadHeader)
{
    class Headed : public FileTable {
    public:
        bool readHeader() override
        {
            At = static_cast<int>(File.tellg());
            return Result;
        }
        int At = -1;
        bool Result = true;
    };
    Opened<Headed> file(twoLines);
    for (const bool expected : {true, false}) {
        file.table.Result = expected;
        file.table.HeaderLength = 9;
        file.table.firstRecord();
        EXPECT_EQ(expected, file.table.getFieldList());
        EXPECT_EQ(0, file.table.At);
    }
}

TEST(FileTableHeader, ReadHeaderOfAPositionalFileReadsNothingAndReturnsTrue)
{
    Opened<FileTable> file(twoLines);
    EXPECT_TRUE(file.table.readHeader());
    EXPECT_EQ(0, position(file.table));
    EXPECT_EQ(0U, file.table.Fields.size());
    EXPECT_TRUE(FileTable().readHeader());
}

TEST(FileTableHeader, SkipHeaderGoesToByteZeroNotToTheFirstRecord)
{
    Opened<FileTable> file(twoLines);
    file.table.HeaderLength = 9;
    file.table.firstRecord();
    EXPECT_TRUE(file.table.skipHeader());
    EXPECT_EQ(0, position(file.table));
}

TEST(FileTableHeader, SkipHeaderOfAClosedTableReturnsTrue)
{
    FileTable table;
    EXPECT_TRUE(table.skipHeader());
}

TEST(FileTableHeader, ShowHeaderIsTheBaseClasssListing)
{
    FileTable table("stock");
    addColumn(table, "Price", 3, 7);
    table.RecordCount = 65;
    const Console console = captured([&] { table.showHeader(); });
    EXPECT_EQ("Header information for table : stock\nFields:\n0\tprice\tunknown\t3\t7\t0\t0\nNumber of records: A\n",
              console.out);
}

TEST(FileTableHeader, DefineFieldsEmptiesTheList)
{
    FileTable table;
    addColumn(table, "a", 0, 1);
    table.defineFields();
    EXPECT_EQ(0U, table.Fields.size());
}
