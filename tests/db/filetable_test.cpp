#include "support/table_builder.h"

#include <kd_lib/filetable.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using kd_lib::FileTable;
using kd_test::addColumn;
using kd_test::captured;
using kd_test::Console;
using kd_test::Opened;
using kd_test::Row;
using kd_test::rowOf;
using kd_test::Rows;
using kd_test::rowsOf;
using kd_test::ScopedDirectory;

namespace {

/// The positional file of most tests, for the columns "5|12|20".
const std::string twoLines = ".....r1c1.xxr1c2...r1c3....x\n.....r2c1.xxr2c2...r2c3....x\n";

int position(FileTable& table)
{
    return static_cast<int>(table.File.tellg());
}

/// The descriptor that the next open of a file takes.
int nextDescriptor()
{
    const int next = ::dup(STDIN_FILENO);
    ::close(next);
    return next;
}

void defineByLine(FileTable& table, std::string line)
{
    table.setFieldOffsets(line);
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

TEST(FileTable, VirtualOperationsStandInTheirSlotOrder)
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

TEST(FileTableOpen, KeepsThePathAsItWas)
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

TEST(FileTableOpen, TildeStandsForTheHomeDirectory)
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

TEST(FileTableOpen, MissingFileIsReportedBehindTheTableLine)
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

TEST(FileTableOpen, UnreadableFileIsReportedBehindTheTableLine)
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

TEST(FileTableOpen, StreamThatCannotBeOpenedIsFalseWithoutAMessage)
{
    // A socket exists and may be read, but it is no file to be opened.
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

TEST(FileTableOpen, OpenTableStaysOnItsFileWhateverIsAsked)
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

TEST(FileTableOpen, FailedOpenCanBeRepeatedOnceTheFileIsThere)
{
    const ScopedDirectory directory;
    FileTable table;
    EXPECT_FALSE(kd_test::openQuietly(table, directory, "late"));
    directory.write("late.txt", "here\n");
    EXPECT_TRUE(kd_test::openQuietly(table, directory, "late"));
}

TEST(FileTableClose, ClosedTableAnswersTrue)
{
    FileTable table;
    EXPECT_TRUE(table.close());
    EXPECT_TRUE(table.close());
}

TEST(FileTableClose, KeepsTheColumnsAndTheirValues)
{
    Opened<FileTable> file(twoLines);
    defineByLine(file.table, "5|12|20");
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

TEST(FileTableClose, FailedCloseSetsTheFailFlagAndIsStillTrue)
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

TEST(FileTableHeader, FieldListOfAClosedTableIsFalse)
{
    FileTable table;
    EXPECT_FALSE(table.getFieldList());
}

TEST(FileTableHeader, FieldListGoesToByteZeroAndAnswersTheVirtualReadHeader)
{
    class Headed : public FileTable {
    public:
        bool readHeader() override
        {
            At = static_cast<int>(File.tellg());
            return Answer;
        }
        int At = -1;
        bool Answer = true;
    };
    Opened<Headed> file(twoLines);
    for (const bool answer : {true, false}) {
        file.table.Answer = answer;
        file.table.HeaderLength = 9;
        file.table.firstRecord();
        EXPECT_EQ(answer, file.table.getFieldList());
        EXPECT_EQ(0, file.table.At);
    }
}

TEST(FileTableHeader, ReadHeaderOfAPositionalFileReadsNothingAndIsTrue)
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

TEST(FileTableHeader, SkipHeaderOfAClosedTableIsTrue)
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

// Navigation

namespace {

struct Move {
    const char* name;
    std::function<bool(FileTable&)> go;
    int expected;  ///< from byte 40 of a file of 100 bytes, header 7, records of 5
};

const std::vector<Move> moves = {
    {"BeginFile", [](FileTable& table) { return table.beginFile(); }, 0},
    {"EndFileGoesToByteTwo", [](FileTable& table) { return table.endFile(); }, 2},
    {"FirstRecord", [](FileTable& table) { return table.firstRecord(); }, 7},
    {"NextRecord", [](FileTable& table) { return table.nextRecord(); }, 45},
    {"LastRecordIsOneByteFurtherFromTheEndThanItsLength", [](FileTable& table) { return table.lastRecord(); }, 94},
    {"GoRecordZero", [](FileTable& table) { return table.goRecord(0); }, 7},
    {"GoRecordOne", [](FileTable& table) { return table.goRecord(1); }, 7},
    {"GoRecordFour", [](FileTable& table) { return table.goRecord(4); }, 22},
    {"GoRecordBehindTheEnd", [](FileTable& table) { return table.goRecord(101); }, 507},
};

void PrintTo(const Move& move, std::ostream* out)
{
    *out << move.name;
}

class Navigation : public testing::TestWithParam<Move> {};

/// Fixed-length records in a file of 100 bytes.
class FixedTable : public FileTable {
public:
    FixedTable()
    {
        HeaderLength = 7;
        RecordLength = 5;
        RecordEnd = 0;
    }
};

}  // namespace

TEST_P(Navigation, OfAClosedTableIsFalse)
{
    FileTable table;
    EXPECT_FALSE(GetParam().go(table));
    EXPECT_TRUE(table.File.good());
}

TEST_P(Navigation, LeadsToItsPosition)
{
    Opened<FixedTable> file(kd_test::lettersOf(100));
    file.table.File.seekg(40);
    EXPECT_TRUE(GetParam().go(file.table));
    EXPECT_TRUE(file.table.File.good());
    EXPECT_EQ(GetParam().expected, position(file.table));
}

TEST_P(Navigation, MakesAStreamThatFailedReadableAgain)
{
    Opened<FixedTable> file(kd_test::lettersOf(100));
    file.table.File.seekg(40);
    file.table.File.setstate(std::ios::failbit | std::ios::eofbit);
    EXPECT_TRUE(GetParam().go(file.table));
    EXPECT_TRUE(file.table.File.good());
    EXPECT_EQ(GetParam().expected, position(file.table));
}

INSTANTIATE_TEST_SUITE_P(FileTable, Navigation, testing::ValuesIn(moves), kd_test::caseName<Move>);

TEST(FileTableNavigation, FullWalkCanBeRepeated)
{
    Opened<FileTable> file("one\ntwo\n");
    addColumn(file.table, "word", 0, 3);
    const Rows expected{{"one"}, {"two"}};
    EXPECT_EQ(expected, rowsOf(file.table));
    EXPECT_TRUE(file.table.firstRecord());
    EXPECT_EQ(expected, rowsOf(file.table));
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ(expected, rowsOf(file.table));
    EXPECT_TRUE(file.table.skipHeader());
    EXPECT_EQ(expected, rowsOf(file.table));
}

TEST(FileTableNavigation, LastRecordOfAShorterFileIsTrueAndLeavesTheStreamFailed)
{
    Opened<FixedTable> file("12345");
    EXPECT_TRUE(file.table.lastRecord());
    EXPECT_TRUE(file.table.File.fail());
    EXPECT_FALSE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.beginFile());
    EXPECT_TRUE(file.table.File.good());
}

TEST(FileTableNavigation, LastRecordOfTheLongestLengthsIsOutOfReach)
{
    for (const std::uint64_t length : {std::uint64_t{INT64_MAX} - 1, std::uint64_t{INT64_MAX}}) {
        Opened<FixedTable> file("12345");
        file.table.RecordLength = length;
        EXPECT_TRUE(file.table.lastRecord());
        EXPECT_TRUE(file.table.File.fail());
    }
}

TEST(FileTableNavigation, LastRecordOfAFileOneByteLongerThanARecordIsItsFirstByte)
{
    Opened<FixedTable> file("123456");
    EXPECT_TRUE(file.table.lastRecord());
    EXPECT_EQ(0, position(file.table));
}

TEST(FileTableNavigation, NextRecordAddsTheRecordLengthToWhereTheLastFetchEnded)
{
    Opened<FixedTable> file(kd_test::lettersOf(100));
    addColumn(file.table, "part", 0, 5);
    file.table.firstRecord();
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ("hijkl", file.table.Fields.getData("part"));
    EXPECT_TRUE(file.table.nextRecord());
    EXPECT_EQ(17, position(file.table));
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ("rstuv", file.table.Fields.getData("part"));
}

TEST(FileTableNavigation, HeaderLengthNoStreamCanHoldLeavesTheStreamFailed)
{
    Opened<FixedTable> file(kd_test::lettersOf(100));
    file.table.HeaderLength = std::numeric_limits<std::uint64_t>::max();
    EXPECT_TRUE(file.table.firstRecord());
    EXPECT_TRUE(file.table.File.fail());
    EXPECT_FALSE(file.table.fetchRecord());
}

TEST(FileTableGoRecord, WithFixedRecordsOfTwentyTheFourthIsSixtyBytesBehindTheHeader)
{
    Opened<FileTable> file(kd_test::lettersOf(200));
    file.table.RecordEnd = 0;
    file.table.RecordLength = 20;
    file.table.HeaderLength = 33;
    EXPECT_TRUE(file.table.goRecord(4));
    EXPECT_EQ(93, position(file.table));
}

TEST(FileTableGoRecord, ThirdRecordOfALineFileSkipsTwoLines)
{
    Opened<FileTable> file("r1\nrecord2\nr3x\nr4\n");
    addColumn(file.table, "word", 0, 2);
    EXPECT_TRUE(file.table.goRecord(3));
    EXPECT_EQ(11, position(file.table));
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ("r3", file.table.Fields.getData("word"));
}

TEST(FileTableGoRecord, SkippedLinesStartAtTheHeaderLength)
{
    Opened<FileTable> file("head\nr1\nr2\nr3\n");
    file.table.HeaderLength = 5;
    EXPECT_TRUE(file.table.goRecord(2));
    EXPECT_EQ(8, position(file.table));
    EXPECT_TRUE(file.table.goRecord(1));
    EXPECT_EQ(5, position(file.table));
}

TEST(FileTableGoRecord, BinaryTableSeeksEvenWithNewlineRecords)
{
    Opened<FileTable> file("r1\nrecord2\nr3x\nr4\n");
    file.table.Binary = true;
    file.table.RecordLength = 4;
    EXPECT_TRUE(file.table.goRecord(3));
    EXPECT_EQ(8, position(file.table));
}

TEST(FileTableGoRecord, NumberWhosePositionNoFileHasIsTrueAndTheNextFetchFalse)
{
    struct Case {
        std::uint64_t Length;
        unsigned long Number;
    };
    // Modulo 2^64 these products are 4, 0 and, with the header, 1.
    for (const Case& record :
         {Case{20, 922337203685477582UL}, Case{2, 9223372036854775809UL}, Case{18446744073709551610UL, 2UL}}) {
        SCOPED_TRACE(record.Number);
        Opened<FileTable> file(kd_test::lettersOf(60));
        addColumn(file.table, "word", 0, 2);
        file.table.RecordEnd = 0;
        file.table.HeaderLength = record.Number == 2 ? 7 : 0;
        file.table.RecordLength = record.Length;
        EXPECT_TRUE(file.table.goRecord(record.Number));
        file.table.RecordLength = 2;
        EXPECT_FALSE(file.table.fetchRecord());
    }
}

TEST(FileTableGoRecord, BehindTheLastLineIsTrueAndTheNextFetchFalse)
{
    Opened<FileTable> file("r1\nr2\n");
    EXPECT_TRUE(file.table.goRecord(3));
    EXPECT_TRUE(file.table.File.good());
    EXPECT_FALSE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.goRecord(4));
    EXPECT_TRUE(file.table.File.fail());
    EXPECT_FALSE(file.table.fetchRecord());
}

TEST(FileTableGoRecord, HugeNumberOnALineFileEndsAtOnce)
{
    Opened<FileTable> file("r1\nr2\n");
    EXPECT_TRUE(file.table.goRecord(std::numeric_limits<unsigned long>::max()));
    EXPECT_TRUE(file.table.File.fail());
}

TEST(FileTableGoRecord, LineLongerThanTheBufferStopsTheSkippingWithAFailedStream)
{
    Opened<FileTable> file(std::string(255, 'x') + "\nr2\nr3\n");
    EXPECT_TRUE(file.table.goRecord(3));
    EXPECT_TRUE(file.table.File.fail());
    EXPECT_FALSE(file.table.fetchRecord());
}

// Fetching

TEST(FileTableFetch, ClosedTableIsFalseWithoutAMessage)
{
    FileTable table;
    bool fetched = true;
    const Console console = captured([&] { fetched = table.fetchRecord(); });
    EXPECT_FALSE(fetched);
    EXPECT_EQ("", console.out);
    EXPECT_EQ("", console.err);
    EXPECT_TRUE(table.File.fail());
}

TEST(FileTableFetch, LinesBecomeValuesCutByTheColumns)
{
    Opened<FileTable> file("01234r1c1 r1c2xx2r1c3xxx3\n01234r2c1 r2c2xx2r2c3xxx3\n");
    addColumn(file.table, "a", 5, 5);
    addColumn(file.table, "b", 10, 7);
    addColumn(file.table, "c", 17, 8);
    EXPECT_EQ((Rows{{"r1c1", "r1c2xx2", "r1c3xxx3"}, {"r2c1", "r2c2xx2", "r2c3xxx3"}}), rowsOf(file.table));
}

TEST(FileTableFetch, EndOfFileIsFalseAndKeepsTheLastValues)
{
    Opened<FileTable> file("one\n");
    addColumn(file.table, "word", 0, 3);
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_FALSE(file.table.fetchRecord());
    EXPECT_EQ("one", file.table.Fields.getData("word"));
    EXPECT_TRUE(file.table.File.eof());
    EXPECT_TRUE(file.table.File.fail());
}

TEST(FileTableFetch, LineOf254CharactersIsFetchedAndOneOf255IsNot)
{
    Opened<FileTable> file(kd_test::lettersOf(254) + "\n" + kd_test::lettersOf(255) + "\n");
    addColumn(file.table, "all", 0, 254);
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ(kd_test::lettersOf(254), file.table.Fields.getData("all"));
    EXPECT_EQ(255, position(file.table));
    EXPECT_FALSE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.File.fail());
    EXPECT_FALSE(file.table.File.eof());
    EXPECT_EQ(kd_test::lettersOf(254), file.table.Fields.getData("all"));
}

TEST(FileTableFetch, NewlineIsConsumedAndNotStored)
{
    Opened<FileTable> file("ab\ncd\n");
    addColumn(file.table, "word", 0, 2);
    file.table.Trim = false;
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ("ab", file.table.Fields.getData("word"));
    EXPECT_EQ(3, position(file.table));
}

TEST(FileTableFetch, LastLineWithoutANewlineIsFetched)
{
    Opened<FileTable> file("one\ntwo");
    addColumn(file.table, "word", 0, 3);
    EXPECT_EQ((Rows{{"one"}, {"two"}}), rowsOf(file.table));
}

TEST(FileTableFetch, EmptyLineIsARecordOfATableWithoutColumns)
{
    Opened<FileTable> file("\n\n");
    EXPECT_EQ(2U, rowsOf(file.table).size());
}

TEST(FileTableFetch, RecordLengthOneTakesOnlyEmptyLines)
{
    Opened<FileTable> file("\n\nx\n");
    file.table.RecordLength = 1;
    EXPECT_TRUE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.fetchRecord());
    EXPECT_FALSE(file.table.fetchRecord());
}

TEST(FileTableFetch, RecordLengthZeroIsFalseForLinesAndForFixedRecords)
{
    for (const int recordEnd : {10, 0}) {
        Opened<FileTable> file("one\ntwo\n");
        file.table.RecordLength = 0;
        file.table.RecordEnd = recordEnd;
        EXPECT_FALSE(file.table.fetchRecord()) << recordEnd;
    }
}

TEST(FileTableFetch, AnyRecordEndButTenMeansFixedLengthRecords)
{
    for (const int recordEnd : {0, 13, -1, 266}) {
        Opened<FileTable> file("ab\ncd\nef");
        file.table.RecordLength = 4;
        file.table.RecordEnd = recordEnd;
        file.table.Trim = false;
        addColumn(file.table, "part", 0, 4);
        EXPECT_EQ((Rows{{"ab\nc"}, {"d\nef"}}), rowsOf(file.table)) << recordEnd;
    }
}

TEST(FileTableFetch, CutFixedRecordIsFalseAndKeepsTheValues)
{
    Opened<FixedTable> file("....... r1c1 r2");
    file.table.HeaderLength = 8;
    addColumn(file.table, "part", 0, 5);
    file.table.firstRecord();
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_FALSE(file.table.fetchRecord());
    EXPECT_EQ("r1c1", file.table.Fields.getData("part"));
    EXPECT_TRUE(file.table.File.eof());
}

TEST(FileTableFetch, RecordTextEndsAtTheFirstZeroByte)
{
    Opened<FileTable> file(std::string("ab\0cd\n", 6) + std::string("efg\0h", 5));
    addColumn(file.table, "word", 0, 2);
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ("ab", file.table.Fields.getData("word"));
    EXPECT_EQ(6, position(file.table));
    file.table.RecordEnd = 0;
    file.table.RecordLength = 5;
    file.table.Fields.get("word")->Length = 3;
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ("efg", file.table.Fields.getData("word"));
}

TEST(FileTableFetch, AnswerDoesNotDependOnExtractContent)
{
    class Refusing : public FileTable {
    public:
        bool extractContent(const std::string& record) override
        {
            Records.push_back(record);
            return false;
        }
        Row Records;
    };
    Opened<Refusing> file("one\ntwo\n");
    EXPECT_TRUE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.fetchRecord());
    EXPECT_FALSE(file.table.fetchRecord());
    EXPECT_EQ((Row{"one", "two"}), file.table.Records);
}

// Extraction

TEST(FileTableExtract, TrimsValuesOnTheRightOnly)
{
    FileTable table;
    addColumn(table, "a", 0, 6);
    addColumn(table, "b", 6, 4);
    EXPECT_TRUE(table.extractContent("  ab      "));
    EXPECT_EQ("  ab", table.Fields.getData("a"));
    EXPECT_EQ("", table.Fields.getData("b"));
}

TEST(FileTableExtract, KeepsBlanksWithoutTrim)
{
    FileTable table;
    table.Trim = false;
    addColumn(table, "a", 0, 6);
    EXPECT_TRUE(table.extractContent("  ab  "));
    EXPECT_EQ("  ab  ", table.Fields.getData("a"));
}

TEST(FileTableExtract, ColumnsMayOverlapAndStandInAnyOrder)
{
    FileTable table;
    addColumn(table, "late", 4, 4);
    addColumn(table, "early", 0, 6);
    addColumn(table, "nothing", 8, 0);
    EXPECT_TRUE(table.extractContent("abcdefgh"));
    EXPECT_EQ((Row{"efgh", "abcdef", ""}), kd_test::rowOf(table));
}

TEST(FileTableExtract, RecordMayBeTheValueOfAColumn)
{
    FileTable table;
    addColumn(table, "first", 0, 2);
    addColumn(table, "last", 2, 4);
    for (const std::size_t column : {0U, 1U}) {
        table.Fields.List[column]->Value = "abcd  ";
        EXPECT_TRUE(table.extractContent(table.Fields.List[column]->Value));
        EXPECT_EQ((Row{"ab", "cd"}), rowOf(table));
    }
}

// Every size is copied in its own way: a value goes whole into its column, and nothing beside it changes.
TEST(FileTableExtract, ColumnsOfEveryWidthHoldTheirBytes)
{
    for (const bool trim : {false, true}) {
        for (int width = 1; width <= 70; ++width) {
            FileTable table;
            table.Trim = trim;
            addColumn(table, "before", 0, 2);
            addColumn(table, "value", 2, width);
            addColumn(table, "behind", 2 + width, 2);
            for (int size = width; size > 0; --size) {
                const std::string value = kd_test::lettersOf(static_cast<std::size_t>(size));
                const std::string blanks(static_cast<std::size_t>(width - size), ' ');
                for (int again = 0; again < 2; ++again) {
                    table.extractContent("ab" + value + blanks + "yz");
                    ASSERT_EQ((Row{"ab", trim ? value : value + blanks, "yz"}), rowOf(table)) << width << ' ' << size;
                }
            }
        }
    }
}

TEST(FileTableExtract, ColumnThatStartsBehindTheRecordThrowsOutOfRange)
{
    FileTable table;
    addColumn(table, "a", 0, 2);
    addColumn(table, "b", 5, 2);
    EXPECT_THROW(table.extractContent("abcd"), std::out_of_range);
    EXPECT_EQ("ab", table.Fields.getData("a"));
}

TEST(FileTableExtract, NegativeOffsetThrowsOutOfRange)
{
    FileTable table;
    addColumn(table, "a", -1, 2);
    EXPECT_THROW(table.extractContent("abcd"), std::out_of_range);
}

namespace {

const char* const fileTableAssertion =
    "src/db/filetable.*extractContent.*tmp_str\\.size\\(\\) == Fields\\.get\\(f\\)->getLength\\(\\)";

}  // namespace

TEST(FileTableExtractDeathTest, RecordShorterThanAColumnStopsTheProcess)
{
    FileTable table;
    addColumn(table, "a", 0, 5);
    EXPECT_EXIT(table.extractContent("abcd"), testing::KilledBySignal(SIGABRT), fileTableAssertion);
}

TEST(FileTableExtractDeathTest, ColumnThatStartsAtTheRecordsEndStopsTheProcess)
{
    FileTable table;
    addColumn(table, "a", 4, 1);
    EXPECT_EXIT(table.extractContent("abcd"), testing::KilledBySignal(SIGABRT), fileTableAssertion);
}

TEST(FileTableExtractDeathTest, NegativeLengthStopsTheProcess)
{
    FileTable table;
    addColumn(table, "a", 0, -1);
    EXPECT_EXIT(table.extractContent("abcd"), testing::KilledBySignal(SIGABRT), fileTableAssertion);
}

TEST(FileTableExtractDeathTest, ShortLineStopsTheProcessWhileItIsFetched)
{
    Opened<FileTable> file("abc\nab\n");
    addColumn(file.table, "a", 0, 3);
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EXIT(file.table.fetchRecord(), testing::KilledBySignal(SIGABRT), fileTableAssertion);
}

TEST(FileTableExtractDeathTest, AssertionIsOneExactLine)
{
    FileTable table;
    addColumn(table, "a", 0, 5);
    EXPECT_EXIT(table.extractContent("abcd"), testing::KilledBySignal(SIGABRT),
                "^src/db/filetable: extractContent: Assertion `tmp_str\\.size\\(\\) == "
                "Fields\\.get\\(f\\)->getLength\\(\\)' failed\\.\n$");
}

// Column positions

TEST(FileTableOffsets, ColumnStartsAtItsNumberAndIsAsWideAsTheDistanceBeforeIt)
{
    FileTable table;
    std::string line = "5|12|20";
    table.setFieldOffsets(line);
    EXPECT_EQ("5|12|20", line);
    EXPECT_EQ((Row{"5+5", "12+7", "20+8"}), kd_test::placesOf(table));
    EXPECT_EQ((Row{"field#0", "field#1", "field#2"}), kd_test::namesOf(table));
    for (const kd_lib::TableField& field : table.Fields) {
        EXPECT_EQ(kd_lib::UNKNOWN_TYPE, field.Type);
        EXPECT_EQ(0, field.Decimals);
        EXPECT_FALSE(field.Indexed);
        EXPECT_EQ("", field.Value);
    }
}

TEST(FileTableOffsets, EachOfTheThreeSeparatorsEndsANumber)
{
    for (const std::string line : {"5|12;20", "5:12|20", "5;12:20", "5:12:20", "5;12;20"}) {
        FileTable table;
        defineByLine(table, line);
        EXPECT_EQ((Row{"5+5", "12+7", "20+8"}), kd_test::placesOf(table)) << line;
    }
}

TEST(FileTableOffsets, NoOtherByteEndsANumber)
{
    for (int byte = 1; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        if (std::string("|:;0123456789").find(c) == std::string::npos) {
            FileTable table;
            defineByLine(table, std::string("5") + c + "12|20");
            EXPECT_EQ((Row{"5+5", "20+15"}), kd_test::placesOf(table)) << byte;
        }
    }
}

TEST(FileTableOffsets, NumbersAreReadAsStoiReadsThem)
{
    FileTable table;
    defineByLine(table, "  5x|+12 characters|20.9|-3");
    EXPECT_EQ((Row{"5+5", "12+7", "20+8", "-3+-23"}), kd_test::placesOf(table));
}

TEST(FileTableOffsets, CaseSensitiveListKeepsTheCapitalOfField)
{
    FileTable table;
    table.Fields.CaseSensitive = true;
    defineByLine(table, "5|12");
    EXPECT_EQ((Row{"Field#0", "Field#1"}), kd_test::namesOf(table));
}

TEST(FileTableOffsets, ExistingColumnsStayAndNumbersBeginAtZeroAgain)
{
    FileTable table;
    addColumn(table, "first", 0, 5);
    defineByLine(table, "4");
    defineByLine(table, "9|11");
    EXPECT_EQ((Row{"first", "field#0", "field#0", "field#1"}), kd_test::namesOf(table));
    EXPECT_EQ((Row{"0+5", "4+4", "9+9", "11+2"}), kd_test::placesOf(table));
}

TEST(FileTableOffsets, PieceWithoutDigitsThrowsAndKeepsTheColumnsBeforeIt)
{
    for (const std::string line : {"5|12|x|20", "5|12|", "5|12||20"}) {
        FileTable table;
        EXPECT_THROW(defineByLine(table, line), std::invalid_argument) << line;
        EXPECT_EQ((Row{"5+5", "12+7"}), kd_test::placesOf(table)) << line;
    }
}

TEST(FileTableOffsets, EmptyLineThrowsInvalidArgument)
{
    FileTable table;
    EXPECT_THROW(defineByLine(table, ""), std::invalid_argument);
    EXPECT_EQ(0U, table.Fields.size());
}

TEST(FileTableOffsets, NumberThatNoIntHoldsThrowsOutOfRange)
{
    FileTable table;
    EXPECT_THROW(defineByLine(table, "5|2147483648"), std::out_of_range);
    EXPECT_EQ(1U, table.Fields.size());
}

TEST(FileTableOffsets, FarApartNumbersWrapInsteadOfOverflowing)
{
    FileTable table;
    defineByLine(table, "2147483647|-2147483648");
    EXPECT_EQ((Row{"2147483647+2147483647", "-2147483648+1"}), kd_test::placesOf(table));
}

TEST(FileTableOffsets, DefinedColumnsCutTheLinesOfAFile)
{
    Opened<FileTable> file(twoLines);
    defineByLine(file.table, "5|12|20");
    EXPECT_EQ((Rows{{"r1c1.", "r1c2...", "1c3....x"}, {"r2c1.", "r2c2...", "2c3....x"}}), rowsOf(file.table));
}

TEST(FileTableOffsets, ConstantLineGivesTheSameColumns)
{
    FileTable table;
    const std::string line = "5|12";
    table.setFieldOffsets(line);
    table.setFieldOffsets("20");
    EXPECT_EQ((Row{"5+5", "12+7", "20+20"}), kd_test::placesOf(table));
}
