// Text files with one kind of damage per test, for the positional, the ASCII and the delimited reader.
#include "support/special_file_builder.h"
#include "support/table_builder.h"

#include <kd_lib/asciitable.h>
#include <kd_lib/filetable.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <stdexcept>
#include <string>
#include <type_traits>

using kd_lib::AsciiTable;
using kd_lib::DelimitedTable;
using kd_lib::FileTable;
using kd_test::addColumn;
using kd_test::lettersOf;
using kd_test::namesOf;
using kd_test::Opened;
using kd_test::Row;
using kd_test::rowOf;
using kd_test::Rows;
using kd_test::rowsOf;
using kd_test::ScopedDirectory;
using kd_test::withByte;

namespace {

/// Two columns of four characters, a gap of two, one more column of two.
const std::string twoRowsOfText = "r1c1r1c2..13\nr2c1r2c2..23\n";
const Rows twoRows = {{"r1c1", "r1c2", "13"}, {"r2c1", "r2c2", "23"}};

const std::string delimitedText = "a|b|c\nr1c1|r1c2|r1c3\nr2c1|r2c2|r2c3\n";
const Rows delimitedRows = {{"r1c1", "r1c2", "r1c3"}, {"r2c1", "r2c2", "r2c3"}};

void defineColumns(FileTable& table)
{
    addColumn(table, "a", 0, 4);
    addColumn(table, "b", 4, 4);
    addColumn(table, "c", 10, 2);
}

/// The positional and the ASCII reader, which must differ only in the assertion's unit.
template <class Table>
class DamagedPositional : public testing::Test {
protected:
    static std::string assertion()
    {
        const std::string unit = std::is_same_v<Table, FileTable> ? "filetable" : "asciitable";
        return "^src/db/" + unit +
               ": extractContent: Assertion `tmp_str\\.size\\(\\) == Fields\\.get\\(f\\)->getLength\\(\\)' "
               "failed\\.\n$";
    }
};

using PositionalTables = testing::Types<FileTable, AsciiTable>;

class TableNames {
public:
    template <class Table>
    static std::string GetName(int)
    {
        return std::is_same_v<Table, FileTable> ? "FileTable" : "AsciiTable";
    }
};

TYPED_TEST_SUITE(DamagedPositional, PositionalTables, TableNames);

template <class Table>
class DamagedPositionalDeathTest : public DamagedPositional<Table> {
};

TYPED_TEST_SUITE(DamagedPositionalDeathTest, PositionalTables, TableNames);

/// Tests for every text reader.
template <class Table>
class DamagedText : public testing::Test {
};

using TextTables = testing::Types<FileTable, AsciiTable, DelimitedTable>;

class TextNames {
public:
    template <class Table>
    static std::string GetName(int number)
    {
        return std::is_same_v<Table, DelimitedTable> ? "DelimitedTable" : TableNames::GetName<Table>(number);
    }
};

TYPED_TEST_SUITE(DamagedText, TextTables, TextNames);

}  // namespace

// Positional files

TYPED_TEST(DamagedPositional, UndamagedFileIsReadWhole)
{
    Opened<TypeParam> file(twoRowsOfText);
    defineColumns(file.table);
    EXPECT_EQ(twoRows, rowsOf(file.table));
}

TYPED_TEST(DamagedPositionalDeathTest, LineCutAtAnyByteStopsTheProcessOrThrows)
{
    Opened<TypeParam> file("");
    defineColumns(file.table);
    for (std::size_t size = 1; size < 12; ++size) {
        file.reopen(twoRowsOfText.substr(0, size));
        SCOPED_TRACE(size);
        if (size == 8 || size == 9) {
            // Only the third column is missing, and it starts after the end of the line.
            EXPECT_THROW(file.table.fetchRecord(), std::out_of_range);
            EXPECT_EQ((Row{"r1c1", "r1c2", ""}), rowOf(file.table));
            file.table.Fields.clearList();
            defineColumns(file.table);
        } else {
            EXPECT_EXIT(file.table.fetchRecord(), testing::KilledBySignal(SIGABRT), this->assertion());
        }
    }
}

TYPED_TEST(DamagedPositional, FileCutAfterALineOrItsLastColumnGivesWholeLines)
{
    Opened<TypeParam> file("");
    defineColumns(file.table);
    for (const std::size_t size : {12U, 13U, 25U, 26U}) {
        file.reopen(twoRowsOfText.substr(0, size));
        const Rows expected(twoRows.begin(), twoRows.begin() + (size < 25 ? 1 : 2));
        EXPECT_EQ(expected, rowsOf(file.table)) << size;
    }
}

TYPED_TEST(DamagedPositionalDeathTest, EmptyLineStopsTheProcess)
{
    Opened<TypeParam> file("\n");
    defineColumns(file.table);
    EXPECT_EXIT(file.table.fetchRecord(), testing::KilledBySignal(SIGABRT), this->assertion());
}

TYPED_TEST(DamagedPositional, BytesAfterTheLastColumnAreNotRead)
{
    Opened<TypeParam> file("r1c1r1c2..13 more\nr2c1r2c2..23\r\n");
    defineColumns(file.table);
    EXPECT_EQ(twoRows, rowsOf(file.table));
}

TYPED_TEST(DamagedPositional, CarriageReturnInsideAColumnIsTrimmed)
{
    Opened<TypeParam> file("r1\r\nr2\r\n");
    addColumn(file.table, "a", 0, 3);
    EXPECT_EQ((Rows{{"r1"}, {"r2"}}), rowsOf(file.table));
    file.table.Trim = false;
    EXPECT_TRUE(file.table.firstRecord());
    EXPECT_EQ((Rows{{"r1\r"}, {"r2\r"}}), rowsOf(file.table));
}

TYPED_TEST(DamagedPositional, EveryByteInARecordIsKept)
{
    Opened<TypeParam> file("");
    defineColumns(file.table);
    file.table.Trim = false;
    for (unsigned int byte = 1; byte < 256; ++byte) {
        if (byte == '\n') {
            continue;
        }
        file.reopen(withByte(twoRowsOfText, 5, byte));
        const std::string value = std::string("r").append(1, static_cast<char>(byte)).append("c2");
        EXPECT_EQ((Rows{{"r1c1", value, "13"}, twoRows[1]}), rowsOf(file.table)) << byte;
    }
}

TYPED_TEST(DamagedPositionalDeathTest, ZeroByteOrNewlineInARecordCutsIt)
{
    for (const unsigned int byte : {0U, 10U}) {
        Opened<TypeParam> file(withByte(twoRowsOfText, 5, byte));
        defineColumns(file.table);
        EXPECT_EXIT(file.table.fetchRecord(), testing::KilledBySignal(SIGABRT), this->assertion()) << byte;
    }
}

TYPED_TEST(DamagedPositional, ZeroByteAfterTheLastColumnDoesNotMatter)
{
    Opened<TypeParam> file(std::string("r1c1r1c2..13\0\0more\nr2c1r2c2..23\n", 32));
    defineColumns(file.table);
    EXPECT_EQ(twoRows, rowsOf(file.table));
}

TYPED_TEST(DamagedPositional, FixedRecordsCutAtAnyByteGiveTheWholeOnes)
{
    const std::string bytes = "r1c1r1c2..13r2c1r2c2..23";
    Opened<TypeParam> file("");
    defineColumns(file.table);
    file.table.RecordEnd = 0;
    file.table.RecordLength = 12;
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        file.reopen(bytes.substr(0, size));
        const Rows expected(twoRows.begin(), twoRows.begin() + static_cast<std::ptrdiff_t>(size / 12));
        EXPECT_EQ(expected, rowsOf(file.table)) << size;
    }
}

TYPED_TEST(DamagedPositional, ColumnLineOfAnotherFileThrowsOutOfRange)
{
    Opened<TypeParam> file(twoRowsOfText);
    file.table.setFieldOffsets("100|200");
    EXPECT_THROW(file.table.fetchRecord(), std::out_of_range);
}

TYPED_TEST(DamagedPositionalDeathTest, DescendingColumnLineStopsTheProcess)
{
    Opened<TypeParam> file(twoRowsOfText);
    file.table.setFieldOffsets("4|2");
    EXPECT_EQ((Row{"4+4", "2+-2"}), kd_test::placesOf(file.table));
    EXPECT_EXIT(file.table.fetchRecord(), testing::KilledBySignal(SIGABRT), this->assertion());
}

TYPED_TEST(DamagedPositional, RepeatedNumberIsAColumnWithoutWidth)
{
    Opened<TypeParam> file(twoRowsOfText);
    file.table.setFieldOffsets("4|4");
    EXPECT_EQ((Rows{{"r1c2", ""}, {"r2c2", ""}}), rowsOf(file.table));
}

// Delimited files

TEST(DamagedDelimited, UndamagedFileIsReadWhole)
{
    Opened<DelimitedTable> file(delimitedText);
    ASSERT_TRUE(file.table.getFieldList());
    EXPECT_EQ(delimitedRows, rowsOf(file.table));
}

TEST(DamagedDelimited, FileCutAtAnyByteKeepsTheValuesOfMissingPieces)
{
    Opened<DelimitedTable> file("");
    for (std::size_t size = 0; size <= delimitedText.size(); ++size) {
        file.table.Fields.clearList();
        file.reopen(delimitedText.substr(0, size));
        SCOPED_TRACE(size);
        EXPECT_EQ(size > 0, file.table.getFieldList());
        const std::size_t names = size == 0 ? 0 : std::min<std::size_t>(size / 2 + 1, 3);
        EXPECT_EQ(names, file.table.Fields.size());
        const Rows rows = rowsOf(file.table);
        const std::size_t expected = size <= 6 ? 0 : (size <= 21 ? 1 : 2);
        ASSERT_EQ(expected, rows.size());
        if (expected == 1) {
            const std::string line = delimitedText.substr(6, std::min<std::size_t>(size, 20) - 6);
            const std::string joined = rows[0][0] + "|" + rows[0][1] + "|" + rows[0][2];
            EXPECT_EQ(line, joined.substr(0, line.size()));
            EXPECT_EQ(std::string::npos, joined.substr(line.size()).find_first_not_of('|'));
        }
        if (expected == 2) {
            EXPECT_EQ(delimitedRows[0], rows[0]);
            const std::size_t cut = std::min<std::size_t>(size, 35) - 21;
            // A piece replaces the value; if it is missing, the value of the previous row stays.
            for (std::size_t column = 0; column < 3; ++column) {
                const std::size_t begin = column * 5;
                const std::string piece =
                    begin > cut ? delimitedRows[0][column]
                                : delimitedRows[1][column].substr(0, std::min<std::size_t>(cut - begin, 4));
                EXPECT_EQ(piece, rows[1][column]) << column;
            }
        }
    }
}

TEST(DamagedDelimited, CarriageReturnStaysInTheLastNameAndValue)
{
    Opened<DelimitedTable> file("a|b\r\nr1c1|r1c2\r\nr2c1|r2c2\r\n");
    ASSERT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Row{"a", "b\r"}), namesOf(file.table));
    EXPECT_EQ((Rows{{"r1c1", "r1c2\r"}, {"r2c1", "r2c2\r"}}), rowsOf(file.table));
}

TEST(DamagedDelimited, CarriageReturnAloneEndsNoLine)
{
    Opened<DelimitedTable> file("a|b\rr1c1|r1c2\r");
    ASSERT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Row{"a", "b\rr1c1", "r1c2\r"}), namesOf(file.table));
    EXPECT_EQ(Rows{}, rowsOf(file.table));
}

TEST(DamagedDelimited, EveryByteInAValueIsKept)
{
    Opened<DelimitedTable> file("");
    for (unsigned int byte = 1; byte < 256; ++byte) {
        if (byte == '\n' || byte == '|') {
            continue;
        }
        file.table.Fields.clearList();
        file.reopen(withByte(delimitedText, 12, byte));
        ASSERT_TRUE(file.table.getFieldList());
        const std::string value = std::string("r").append(1, static_cast<char>(byte)).append("c2");
        EXPECT_EQ((Rows{{"r1c1", value, "r1c3"}, delimitedRows[1]}), rowsOf(file.table)) << byte;
    }
}

TEST(DamagedDelimited, ZeroByteEndsTheRecordAndTheRestOfItsLineIsSkipped)
{
    Opened<DelimitedTable> file(withByte(delimitedText, 22 + 5, 0));
    ASSERT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Rows{delimitedRows[0], {"r2c1", "r", "r1c3"}}), rowsOf(file.table));
}

TEST(DamagedDelimited, EveryByteInANameIsKeptButZeroAndCapitals)
{
    Opened<DelimitedTable> file("");
    for (unsigned int byte = 1; byte < 256; ++byte) {
        if (byte == '\n' || byte == '|') {
            continue;
        }
        file.table.Fields.clearList();
        file.reopen(withByte(delimitedText, 2, byte));
        ASSERT_TRUE(file.table.getFieldList());
        EXPECT_EQ((Row{"a", kd_lib::stringToLower(std::string(1, static_cast<char>(byte))), "c"}), namesOf(file.table))
            << byte;
    }
}

TEST(DamagedDelimited, ThousandSeparatorsAreIgnoredAfterTheColumns)
{
    Opened<DelimitedTable> file("a|b\nr1c1|r1c2" + std::string(1000, '|') + "\n");
    file.table.RecordLength = 2000;
    ASSERT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Rows{{"r1c1", "r1c2"}}), rowsOf(file.table));
}

TEST(DamagedDelimited, ByteOrderMarkStaysInTheFirstName)
{
    Opened<DelimitedTable> file("\xEF\xBB\xBF" + delimitedText);
    ASSERT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Row{"\xEF\xBB\xBF"
                   "a",
                   "b", "c"}),
              namesOf(file.table));
}

// All text files

TYPED_TEST(DamagedText, LinesShorterThanTheBufferAsLongAndLonger)
{
    for (const std::size_t recordLength : {2U, 16U, 255U, 256U, 1000U}) {
        for (const std::size_t length : {recordLength - 2, recordLength - 1, recordLength}) {
            Opened<TypeParam> file(lettersOf(length) + "\n" + lettersOf(length, 3) + "\n");
            file.table.RecordLength = recordLength;
            addColumn(file.table, "all", 0, static_cast<int>(length));
            SCOPED_TRACE(length);
            const Rows expected = {{lettersOf(length)}, {lettersOf(length, 3)}};
            EXPECT_EQ(length < recordLength ? expected : Rows{}, rowsOf(file.table));
            EXPECT_EQ(length < recordLength, file.table.File.eof());
        }
    }
}

TYPED_TEST(DamagedText, LastLineWithoutANewlineShorterThanTheBufferAsLongAndLonger)
{
    for (const std::size_t length : {14U, 15U, 16U}) {
        Opened<TypeParam> file(lettersOf(length));
        file.table.RecordLength = 16;
        addColumn(file.table, "all", 0, static_cast<int>(length));
        SCOPED_TRACE(length);
        EXPECT_EQ(length < 16, file.table.fetchRecord());
        EXPECT_EQ(length < 16, file.table.File.eof());
        EXPECT_FALSE(file.table.fetchRecord());
    }
}

TYPED_TEST(DamagedText, FileOfOneByteIsOneRecord)
{
    for (const std::string bytes : {"x", "\n"}) {
        Opened<TypeParam> file(bytes);
        EXPECT_EQ(1U, rowsOf(file.table).size());
        EXPECT_TRUE(file.table.firstRecord());
        EXPECT_TRUE(file.table.fetchRecord());
    }
}

TYPED_TEST(DamagedText, EmptyFileHasNoRecord)
{
    Opened<TypeParam> file("");
    EXPECT_FALSE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.File.eof());
    EXPECT_TRUE(file.table.goRecord(3));
    EXPECT_FALSE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.lastRecord());
    EXPECT_TRUE(file.table.File.fail());
}

TYPED_TEST(DamagedText, DirectoryOpensAndReadsNothing)
{
    const ScopedDirectory directory;
    TypeParam table;
    kd_test::makeDirectory(directory, "sample." + table.Extension);
    EXPECT_TRUE(kd_test::openQuietly(table, directory));
    EXPECT_FALSE(table.fetchRecord());
    EXPECT_TRUE(table.File.fail());
    EXPECT_TRUE(table.goRecord(2));
    EXPECT_FALSE(table.fetchRecord());
    table.RecordEnd = 0;
    EXPECT_TRUE(table.firstRecord());
    EXPECT_FALSE(table.fetchRecord());
    EXPECT_TRUE(table.close());
}

TYPED_TEST(DamagedText, PipeIsReadLineByLineWithoutASeek)
{
    const ScopedDirectory directory;
    TypeParam table;
    kd_test::Fifo pipe(directory, "sample." + table.Extension, "r1\nr2\nr3");
    ASSERT_TRUE(kd_test::openQuietly(table, directory));
    pipe.end();
    addColumn(table, "a", 0, 2);
    EXPECT_EQ((Rows{{"r1"}, {"r2"}, {"r3"}}), rowsOf(table));
}

TYPED_TEST(DamagedText, SeekInAPipeFailsAndTheNextFetchReturnsFalse)
{
    const ScopedDirectory directory;
    TypeParam table;
    kd_test::Fifo pipe(directory, "sample." + table.Extension, "r1\nr2\n");
    ASSERT_TRUE(kd_test::openQuietly(table, directory));
    pipe.end();
    for (bool (FileTable::*move)() : {&FileTable::beginFile, &FileTable::endFile, &FileTable::firstRecord,
                                      &FileTable::nextRecord, &FileTable::lastRecord}) {
        EXPECT_TRUE((table.*move)());
        EXPECT_TRUE(table.File.fail());
        EXPECT_FALSE(table.fetchRecord());
    }
}

TYPED_TEST(DamagedText, EndlessZeroBytesAreNotALine)
{
    const ScopedDirectory directory;
    TypeParam table;
    kd_test::makeEndless(directory, "sample." + table.Extension);
    ASSERT_TRUE(kd_test::openQuietly(table, directory));
    EXPECT_FALSE(table.fetchRecord());
    EXPECT_FALSE(table.File.eof());
    EXPECT_TRUE(table.goRecord(1000000000));
    EXPECT_FALSE(table.fetchRecord());
}

TYPED_TEST(DamagedText, EndlessZeroBytesAreEmptyFixedRecords)
{
    const ScopedDirectory directory;
    TypeParam table;
    kd_test::makeEndless(directory, "sample." + table.Extension);
    ASSERT_TRUE(kd_test::openQuietly(table, directory));
    table.RecordEnd = 0;
    for (int i = 0; i < 10000; ++i) {
        ASSERT_TRUE(table.fetchRecord());
    }
}

TEST(DamagedDelimited, EndlessZeroBytesAreNotAHeader)
{
    const ScopedDirectory directory;
    DelimitedTable table;
    kd_test::makeEndless(directory, "sample.csv");
    ASSERT_TRUE(kd_test::openQuietly(table, directory));
    EXPECT_FALSE(table.getFieldList());
    EXPECT_EQ(0U, table.Fields.size());
}

TEST(DamagedDelimited, PipeHasNoFieldListButItsHeaderLineCanBeRead)
{
    const ScopedDirectory directory;
    kd_test::Fifo pipe(directory, "sample.csv", delimitedText);
    DelimitedTable table;
    ASSERT_TRUE(kd_test::openQuietly(table, directory));
    pipe.end();
    ASSERT_TRUE(table.readHeader());
    EXPECT_EQ(delimitedRows, rowsOf(table));
    EXPECT_FALSE(table.getFieldList());
}
