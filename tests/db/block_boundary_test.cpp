// The stream reads blocks of 65536 bytes. Records, lines and entries that straddle a boundary of blocks, and
// files that end near one, are read like any other: values, states and positions are the same.
#include "support/dbf_builder.h"
#include "support/mem_builder.h"
#include "support/position.h"
#include "support/repeated.h"
#include "support/table_builder.h"

#include <kd_lib/asciitable.h>
#include <kd_lib/filetable.h>
#include <kd_lib/xbase2sql.h>
#include <kd_lib/xbasememory.h>
#include <kd_lib/xbasetable.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using kd_lib::DelimitedTable;
using kd_lib::FileTable;
using kd_lib::xBaseMemory;
using kd_lib::xBaseTable;
using kd_test::lettersOf;
using kd_test::Opened;
using kd_test::position;
using kd_test::repeated;
using kd_test::Row;
using kd_test::rowOf;
using kd_test::Rows;
using kd_test::rowsOf;

namespace {

constexpr std::size_t block = 65536;

void expectGoodAt(FileTable& table, std::size_t expected)
{
    EXPECT_TRUE(table.File.good());
    EXPECT_EQ(static_cast<std::int64_t>(expected), position(table));
}

/// A fetch at the end of the file: false, with both states set and no position.
void expectEnd(FileTable& table)
{
    EXPECT_FALSE(table.fetchRecord());
    EXPECT_TRUE(table.File.eof());
    EXPECT_TRUE(table.File.fail());
    EXPECT_FALSE(table.File.bad());
    EXPECT_EQ(-1, position(table));
}

/// Lines that fill exactly `size` bytes, each of at most 200 characters.
std::string fillerLines(std::size_t size)
{
    std::string text;
    while (text.size() < size) {
        const std::size_t line = std::min<std::size_t>(size - text.size(), 201);
        text += lettersOf(line - 1, text.size()) + "\n";
    }
    return text;
}

/// Walks to byte `size` by fetching, without columns.
void walkTo(FileTable& table, std::size_t size)
{
    while (position(table) < static_cast<std::int64_t>(size)) {
        ASSERT_TRUE(table.fetchRecord());
    }
    ASSERT_EQ(static_cast<std::int64_t>(size), position(table));
}

/// Fixed-length text of `size` bytes in which every record differs from the previous one.
std::string fixedText(std::size_t size)
{
    std::string text = lettersOf(size);
    for (std::size_t i = 0; i < size; i += 11) {
        text[i] = static_cast<char>('0' + (i / 11) % 10);
    }
    return text;
}

}  // namespace

// Lines

TEST(BlockBoundaryLines, LineMayBeginEndOrStraddleAtAnyByteAroundABlock)
{
    Opened<FileTable> file("");
    for (const std::size_t blocks : {1U, 2U}) {
        for (std::size_t before = 0; before <= 12; ++before) {
            const std::size_t start = blocks * block - before;
            file.table.Fields.clearList();
            file.reopen(fillerLines(start) + "r1c1r1c2\nr2c1r2c2\n");
            walkTo(file.table, start);
            kd_test::addColumn(file.table, "a", 0, 4);
            kd_test::addColumn(file.table, "b", 4, 4);
            SCOPED_TRACE(start);
            ASSERT_TRUE(file.table.fetchRecord());
            EXPECT_EQ((Row{"r1c1", "r1c2"}), rowOf(file.table));
            expectGoodAt(file.table, start + 9);
            ASSERT_TRUE(file.table.fetchRecord());
            EXPECT_EQ((Row{"r2c1", "r2c2"}), rowOf(file.table));
            expectGoodAt(file.table, start + 18);
            expectEnd(file.table);
            EXPECT_EQ((Row{"r2c1", "r2c2"}), rowOf(file.table));
        }
    }
}

TEST(BlockBoundaryLines, LastLineWithoutANewlineSetsTheEndStateAlone)
{
    Opened<FileTable> file("");
    for (std::size_t before = 0; before <= 6; ++before) {
        const std::size_t start = block - before;
        file.table.Fields.clearList();
        file.reopen(fillerLines(start) + "r1c1");
        walkTo(file.table, start);
        kd_test::addColumn(file.table, "a", 0, 4);
        SCOPED_TRACE(start);
        ASSERT_TRUE(file.table.fetchRecord());
        EXPECT_EQ((Row{"r1c1"}), rowOf(file.table));
        EXPECT_TRUE(file.table.File.eof());
        EXPECT_FALSE(file.table.File.fail());
        EXPECT_EQ(-1, position(file.table));
        expectEnd(file.table);
    }
}

TEST(BlockBoundaryLines, LineTooLongForItsBufferFailsWithoutTheEndState)
{
    Opened<FileTable> file("");
    for (std::size_t before = 0; before <= 12; ++before) {
        const std::size_t start = block - before;
        file.reopen(fillerLines(start) + "123456789\nr2\n");
        file.table.RecordLength = 255;
        walkTo(file.table, start);
        file.table.RecordLength = 9;
        SCOPED_TRACE(start);
        EXPECT_FALSE(file.table.fetchRecord());
        EXPECT_TRUE(file.table.File.fail());
        EXPECT_FALSE(file.table.File.eof());
        EXPECT_FALSE(file.table.File.bad());
    }
}

TEST(BlockBoundaryLines, LineThatJustFitsItsBufferIsFetched)
{
    Opened<FileTable> file("");
    for (std::size_t before = 0; before <= 12; ++before) {
        const std::size_t start = block - before;
        file.table.Fields.clearList();
        file.reopen(fillerLines(start) + "123456789\nr2\n");
        file.table.RecordLength = 255;
        walkTo(file.table, start);
        file.table.RecordLength = 10;
        kd_test::addColumn(file.table, "a", 0, 2);
        SCOPED_TRACE(start);
        ASSERT_TRUE(file.table.fetchRecord());
        expectGoodAt(file.table, start + 10);
        ASSERT_TRUE(file.table.fetchRecord());
        EXPECT_EQ((Row{"r2"}), rowOf(file.table));
        expectEnd(file.table);
    }
}

TEST(BlockBoundaryLines, LinesLongerThanABlockAreFetchedWhole)
{
    for (const std::size_t length : {block - 1, block, block + 1, 2 * block - 1, 2 * block, 2 * block + 1}) {
        Opened<FileTable> file(lettersOf(length) + "\n" + lettersOf(length, 5) + "\n");
        file.table.RecordLength = length + 1;
        kd_test::addColumn(file.table, "all", 0, static_cast<int>(length));
        SCOPED_TRACE(length);
        ASSERT_TRUE(file.table.fetchRecord());
        EXPECT_TRUE(lettersOf(length) == file.table.Fields.getData(0UL));
        expectGoodAt(file.table, length + 1);
        ASSERT_TRUE(file.table.fetchRecord());
        EXPECT_TRUE(lettersOf(length, 5) == file.table.Fields.getData(0UL));
        expectGoodAt(file.table, 2 * (length + 1));
        expectEnd(file.table);
        EXPECT_TRUE(file.table.firstRecord());
        file.table.RecordLength = length;
        EXPECT_FALSE(file.table.fetchRecord());
        EXPECT_FALSE(file.table.File.eof());
    }
}

TEST(BlockBoundaryLines, GoRecordSkipsLinesAcrossBlocks)
{
    const std::string before = fillerLines(block - 4);
    const auto lines = static_cast<unsigned long>(std::count(before.begin(), before.end(), '\n'));
    Opened<FileTable> file(before + "r1c1\nr2c1\n");
    kd_test::addColumn(file.table, "a", 0, 4);
    EXPECT_TRUE(file.table.goRecord(lines + 1));
    expectGoodAt(file.table, block - 4);
    EXPECT_EQ((Rows{{"r1c1"}, {"r2c1"}}), rowsOf(file.table));
    EXPECT_TRUE(file.table.goRecord(lines + 2));
    expectGoodAt(file.table, block + 1);
}

TEST(BlockBoundaryLines, HeaderLineLongerThanABlockDefinesItsColumns)
{
    for (const std::size_t length : {block - 1, block, block + 1}) {
        const std::string first = lettersOf(length - 5);
        Opened<DelimitedTable> file(first + "|name\nr1c1|r1c2\n");
        file.table.RecordLength = length + 1;
        ASSERT_TRUE(file.table.getFieldList());
        expectGoodAt(file.table, length + 1);
        EXPECT_EQ(2U, file.table.Fields.size());
        EXPECT_TRUE(first == file.table.Fields.get(0UL)->Name);
        EXPECT_EQ((Rows{{"r1c1", "r1c2"}}), rowsOf(file.table));
    }
}

TEST(BlockBoundaryLines, DelimitedRecordsStraddleABlockAtAnyByte)
{
    Opened<DelimitedTable> file("");
    for (std::size_t before = 0; before <= 12; ++before) {
        const std::size_t start = block - before;
        file.table.Fields.clearList();
        file.reopen(fillerLines(start) + "r1c1,r1c2\n,r2c2\n");
        walkTo(file.table, start);
        file.table.setCsvMode();
        file.table.extractFieldNames("a,b");
        SCOPED_TRACE(start);
        EXPECT_EQ((Rows{{"r1c1", "r1c2"}, {"", "r2c2"}}), rowsOf(file.table));
    }
}

// Fixed-length records

TEST(BlockBoundaryFixed, EveryRecordOfThreeBlocksHasItsValueAndPosition)
{
    const std::string text = fixedText(3 * block);
    for (const std::size_t length : {7U, 255U, 4093U}) {
        Opened<FileTable> file(text);
        file.table.RecordEnd = 0;
        file.table.RecordLength = length;
        kd_test::addColumn(file.table, "all", 0, static_cast<int>(length));
        std::size_t at = 0;
        for (; at + length <= text.size(); at += length) {
            ASSERT_TRUE(file.table.fetchRecord());
            ASSERT_EQ(text.substr(at, length), file.table.Fields.getData(0UL));
            ASSERT_EQ(static_cast<std::int64_t>(at + length), position(file.table));
            ASSERT_TRUE(file.table.File.good());
        }
        expectEnd(file.table);
    }
}

TEST(BlockBoundaryFixed, FileMayEndAtAnyByteAroundABlock)
{
    const std::string text = fixedText(block + 16);
    Opened<FileTable> file("");
    file.table.RecordEnd = 0;
    file.table.RecordLength = 5;
    kd_test::addColumn(file.table, "all", 0, 5);
    for (std::size_t size = block - 12; size <= block + 12; ++size) {
        file.reopen(text.substr(0, size));
        SCOPED_TRACE(size);
        EXPECT_EQ(size / 5, rowsOf(file.table).size());
        EXPECT_EQ(text.substr((size / 5 - 1) * 5, 5), file.table.Fields.getData(0UL));
        EXPECT_TRUE(file.table.File.eof());
        EXPECT_TRUE(file.table.File.fail());
    }
}

TEST(BlockBoundaryFixed, RecordLongerThanABlockIsOneFetch)
{
    const std::size_t length = 2 * block + 3;
    const std::string text = fixedText(2 * length);
    Opened<FileTable> file(text + "cut");
    file.table.RecordEnd = 0;
    file.table.RecordLength = length;
    kd_test::addColumn(file.table, "all", 0, static_cast<int>(length));
    for (const std::size_t record : {1U, 2U}) {
        ASSERT_TRUE(file.table.fetchRecord());
        EXPECT_TRUE(text.substr((record - 1) * length, length) == file.table.Fields.getData(0UL));
        expectGoodAt(file.table, record * length);
    }
    expectEnd(file.table);
}

// xBase tables

namespace {

/// Distinct values of 5 and 7 characters.
Row rowNumber(std::size_t i)
{
    const std::string number = std::to_string(100000 + i);
    return {std::string("a").append(number, 2), std::string("b").append(number)};
}

/// As many records of 13 bytes as `size` bytes need.
kd_test::DbfBuilder recordsOver(std::size_t size)
{
    kd_test::DbfBuilder builder({{"A", 'C', 5}, {"B", 'C', 7}});
    for (std::size_t i = 0; builder.records().size() < size; ++i) {
        builder.record(rowNumber(i));
    }
    return builder;
}

constexpr std::size_t xBaseHeader = 97;
constexpr std::size_t xBaseRecord = 13;

}  // namespace

TEST(BlockBoundaryXBase, EveryRecordOfThreeBlocksHasItsValuesAndPosition)
{
    const kd_test::DbfBuilder builder = recordsOver(3 * block);
    const std::size_t count = builder.records().size() / xBaseRecord;
    Opened<xBaseTable> file(builder.bytes());
    ASSERT_TRUE(file.table.getFieldList());
    for (std::size_t i = 0; i < count; ++i) {
        ASSERT_TRUE(file.table.fetchRecord());
        ASSERT_EQ(rowNumber(i), rowOf(file.table));
        ASSERT_EQ(static_cast<std::int64_t>(xBaseHeader + (i + 1) * xBaseRecord), position(file.table));
        ASSERT_TRUE(file.table.File.good());
    }
    expectEnd(file.table);
    EXPECT_EQ(rowNumber(count - 1), rowOf(file.table));
}

TEST(BlockBoundaryXBase, FileMayEndAtAnyByteAroundABlock)
{
    const std::string bytes = recordsOver(block + 100).bytes();
    Opened<xBaseTable> file("");
    for (std::size_t size = block - 30; size <= block + 30; ++size) {
        file.reopen(bytes.substr(0, size));
        SCOPED_TRACE(size);
        ASSERT_TRUE(file.table.getFieldList());
        const std::size_t whole = (size - xBaseHeader) / xBaseRecord;
        EXPECT_EQ(whole, rowsOf(file.table).size());
        EXPECT_EQ(rowNumber(whole - 1), rowOf(file.table));
        EXPECT_TRUE(file.table.File.eof());
        EXPECT_TRUE(file.table.File.fail());
        EXPECT_FALSE(file.table.fetchRecord());
    }
}

TEST(BlockBoundaryXBase, CutDeletedRecordAroundABlockReturnsTrueOnce)
{
    const std::string bytes = recordsOver(block + 100).bytes();
    const std::size_t record = (block - xBaseHeader) / xBaseRecord;
    const std::size_t start = xBaseHeader + record * xBaseRecord;
    ASSERT_LT(start, block);
    ASSERT_GT(start + xBaseRecord, block);
    Opened<xBaseTable> file("");
    for (std::size_t size = start + 1; size < start + xBaseRecord; ++size) {
        file.reopen(kd_test::withByte(bytes, start, '*').substr(0, size));
        SCOPED_TRACE(size);
        ASSERT_TRUE(file.table.getFieldList());
        EXPECT_TRUE(file.table.goRecord(record + 1));
        EXPECT_TRUE(file.table.fetchRecord());
        EXPECT_TRUE(file.table.isDeleted());
        EXPECT_TRUE(file.table.File.eof());
        EXPECT_TRUE(file.table.File.fail());
        EXPECT_FALSE(file.table.fetchRecord());
        EXPECT_FALSE(file.table.isDeleted());
    }
}

TEST(BlockBoundaryXBase, UnprintableBytesAroundABlockBecomeBlanks)
{
    const std::string bytes = recordsOver(block + 100).bytes();
    const std::size_t record = (block - xBaseHeader) / xBaseRecord;
    for (std::size_t at = block - 4; at < block + 4; ++at) {
        Opened<xBaseTable> whole(bytes);
        Opened<xBaseTable> file(kd_test::withByte(bytes, at, 0xE9));
        Opened<xBaseTable> blank(kd_test::withByte(bytes, at, ' '));
        for (xBaseTable* table : {&whole.table, &file.table, &blank.table}) {
            ASSERT_TRUE(table->getFieldList());
            table->Trim = false;
            for (std::size_t i = 0; i <= record; ++i) {
                ASSERT_TRUE(table->fetchRecord());
            }
        }
        EXPECT_EQ(rowOf(blank.table), rowOf(file.table)) << at;
        const std::size_t inRecord = at - xBaseHeader - record * xBaseRecord;
        if (inRecord > 0 && inRecord < xBaseRecord) {
            EXPECT_NE(rowOf(whole.table), rowOf(file.table)) << at;
        }
    }
}

TEST(BlockBoundaryXBase, ConvertedScriptHoldsEveryRecordOfThreeBlocks)
{
    const kd_test::DbfBuilder builder = recordsOver(3 * block);
    const std::size_t count = builder.records().size() / xBaseRecord;
    Opened<kd_lib::xBase2Sql> file(builder.bytes());
    std::string expected =
        "DROP TABLE IF EXISTS sample;\nCREATE TABLE IF NOT EXISTS sample (\na char(5),\nb char(7)\n);\n";
    for (std::size_t i = 0; i < count; ++i) {
        const Row row = rowNumber(i);
        expected += "INSERT INTO sample(a,b) \n VALUES ('" + row[0] + "','" + row[1] + "');\n";
    }
    const std::string path = file.table.convert();
    EXPECT_TRUE(expected == kd_test::readFile(path));
}

// Memory files

namespace {

std::string listingOf(Opened<xBaseMemory>& file, const std::string& bytes)
{
    file.reopen(bytes);
    return kd_test::printedBy([&] { EXPECT_TRUE(file.table.read()); });
}

/// One entry of 255 bytes and its line.
const std::string longEntry = kd_test::memEntry("LONG", 'C', 223, 7, lettersOf(222) + std::string(1, '\0'));
const std::string longLine = "LONG C 223.7  " + lettersOf(222) + "|\n";

}  // namespace

TEST(BlockBoundaryMemory, EntriesOfThreeBlocksAreListedOneByOne)
{
    const std::size_t count = 3 * block / longEntry.size() + 2;
    Opened<xBaseMemory> file("");
    EXPECT_TRUE(repeated(longLine, count + 1) == listingOf(file, repeated(longEntry, count)));
}

TEST(BlockBoundaryMemory, FileCutAtAnyByteAroundABlockEndsAsAShortOneDoes)
{
    // The lines after the long entries depend only on the last of these.
    const std::string tail = kd_test::memEntry("TEXT", 'C', 6, 1, std::string("abcde\0", 6)) +
                             kd_test::memEntry("NUMBER", 'N', 8, 2, "1.5@") +
                             kd_test::memEntry("DATE", 'D', 8, 0, "20240305") +
                             kd_test::memEntry("OTHER", 'X', 3, 4, "");
    const std::size_t start = block - tail.size() / 2;
    const std::size_t count = (start - 32) / longEntry.size();
    const std::size_t padding = start - 32 - count * longEntry.size();
    const std::string front = kd_test::memEntry("PAD", 'C', static_cast<unsigned char>(padding), 0, lettersOf(padding));
    const std::string frontLine = "PAD C " + std::to_string(padding) + ".0  " + lettersOf(padding) + "|\n";
    const std::string longFile = front + repeated(longEntry, count);
    ASSERT_EQ(start, longFile.size());
    Opened<xBaseMemory> file("");
    for (std::size_t size = 0; size <= tail.size(); ++size) {
        const std::string shortList = listingOf(file, longEntry + tail.substr(0, size));
        const std::string longList = listingOf(file, longFile + tail.substr(0, size));
        EXPECT_TRUE(frontLine + repeated(longLine, count - 1) + shortList == longList) << size;
    }
}
