#include "support/file_sample.h"
#include "support/table_builder.h"

#include <kd_lib/filetable.h>

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <vector>

using kd_lib::FileTable;
using kd_test::addColumn;
using kd_test::FixedTable;
using kd_test::Opened;
using kd_test::position;
using kd_test::Rows;
using kd_test::rowsOf;

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

}  // namespace

TEST_P(Navigation, OfAClosedTableReturnsFalse)
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

TEST(FileTableNavigation, LastRecordOfAShorterFileReturnsTrueAndLeavesTheStreamFailed)
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

TEST(FileTableNavigation, NextRecordAddsTheRecordLengthToTheEndOfTheLastFetch)
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

TEST(FileTableGoRecord, WithFixedRecordsOfTwentyTheFourthIsSixtyBytesAfterTheHeader)
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

TEST(FileTableGoRecord, NumberWhosePositionNoFileHasReturnsTrueAndTheNextFetchFalse)
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

TEST(FileTableGoRecord, AfterTheLastLineReturnsTrueAndTheNextFetchFalse)
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
