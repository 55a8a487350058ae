#include "support/file_sample.h"
#include "support/table_builder.h"

#include <kd_lib/filetable.h>

#include <gtest/gtest.h>

#include <csignal>
#include <iterator>
#include <stdexcept>
#include <string>

using kd_lib::FileTable;
using kd_test::addColumn;
using kd_test::captured;
using kd_test::Console;
using kd_test::FixedTable;
using kd_test::Opened;
using kd_test::position;
using kd_test::Row;
using kd_test::rowOf;
using kd_test::Rows;
using kd_test::rowsOf;
using kd_test::twoLines;

namespace {

void defineByLine(FileTable& table, std::string line)
{
    table.setFieldOffsets(line);
}

}  // namespace

// Fetching

TEST(FileTableFetch, ClosedTableReturnsFalseWithoutAMessage)
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

TEST(FileTableFetch, EndOfFileReturnsFalseAndKeepsTheLastValues)
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

TEST(FileTableFetch, RecordLengthZeroReturnsFalseForLinesAndForFixedRecords)
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

TEST(FileTableFetch, CutFixedRecordDiffersFromTheEndOnlyInGcount)
{
    for (const std::string& rest : {std::string("r2"), std::string()}) {
        Opened<FixedTable> file("....... r1c1 " + rest);
        file.table.HeaderLength = 8;
        addColumn(file.table, "part", 0, 5);
        file.table.firstRecord();
        ASSERT_TRUE(file.table.fetchRecord());
        EXPECT_FALSE(file.table.fetchRecord()) << rest;
        EXPECT_EQ("r1c1", file.table.Fields.getData("part")) << rest;
        EXPECT_TRUE(file.table.File.eof()) << rest;
        EXPECT_EQ(static_cast<std::streamsize>(rest.size()), file.table.File.gcount());
    }
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

TEST(FileTableFetch, ResultDoesNotDependOnExtractContent)
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

TEST(FileTableExtract, ColumnsMayOverlapAndBeInAnyOrder)
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

// Each size is copied by different code: a value goes whole into its column, and nothing around it changes.
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

TEST(FileTableExtract, ColumnThatStartsAfterTheRecordThrowsOutOfRange)
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

TEST(FileTableOffsets, ColumnStartsAtItsNumberAndItsWidthIsTheDistanceFromThePreviousOne)
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
