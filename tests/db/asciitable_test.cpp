#include "support/position.h"
#include "support/table_builder.h"

#include <kd_lib/asciitable.h>

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

using kd_lib::AsciiTable;
using kd_lib::DelimitedTable;
using kd_test::addColumn;
using kd_test::captured;
using kd_test::Console;
using kd_test::namesOf;
using kd_test::Opened;
using kd_test::position;
using kd_test::Row;
using kd_test::rowOf;
using kd_test::Rows;
using kd_test::rowsOf;

namespace {

const char* const asciiTableAssertion = "^src/db/asciitable: extractContent: Assertion `tmp_str\\.size\\(\\) == "
                                        "Fields\\.get\\(f\\)->getLength\\(\\)' failed\\.\n$";

}  // namespace

// ASCII tables

TEST(AsciiTable, DefaultsOfTheConstructorWithoutAName)
{
    const AsciiTable table;
    EXPECT_EQ("", table.Name);
    EXPECT_EQ("", table.BaseName);
    EXPECT_EQ("txt", table.Extension);
    EXPECT_EQ(255U, table.RecordLength);
    EXPECT_EQ(0U, table.HeaderLength);
    EXPECT_EQ(10, table.RecordEnd);
    EXPECT_FALSE(table.Binary);
    EXPECT_TRUE(table.Trim);
    EXPECT_EQ(0, table.CommentChar);
    EXPECT_FALSE(table.HasFieldNames);
}

TEST(AsciiTable, NameConstructorSetsBaseNameAndName)
{
    std::string name = "stock";
    const AsciiTable table(name);
    EXPECT_EQ("stock", table.BaseName);
    EXPECT_EQ("stock", table.Name);
    EXPECT_EQ("txt", table.Extension);
    EXPECT_EQ(255U, table.RecordLength);
    EXPECT_EQ(0U, table.HeaderLength);
    EXPECT_EQ(10, table.RecordEnd);
    EXPECT_FALSE(table.Binary);
    EXPECT_TRUE(table.Trim);
}

TEST(AsciiTable, DerivesFromFileTableAndCannotBeCopied)
{
    static_assert(std::is_base_of_v<kd_lib::FileTable, AsciiTable>);
    static_assert(!std::is_copy_constructible_v<AsciiTable>);
    static_assert(std::is_same_v<decltype(AsciiTable::CommentChar), int>);
    static_assert(std::is_same_v<decltype(AsciiTable::HasFieldNames), bool>);
}

TEST(AsciiTable, ExtractContentKeepsItsSlot)
{
    EXPECT_EQ(12U, kd_test::slotOf(&AsciiTable::extractContent));
    EXPECT_EQ(0U, kd_test::slotOf(&AsciiTable::isCommentLine));
}

TEST(AsciiTableComment, ALineWithTheCharacterAnywhereIsAComment)
{
    AsciiTable table;
    table.CommentChar = '#';
    EXPECT_TRUE(table.isCommentLine("# at the front"));
    EXPECT_TRUE(table.isCommentLine("in the # middle"));
    EXPECT_TRUE(table.isCommentLine("at the end #"));
    EXPECT_FALSE(table.isCommentLine("none"));
    EXPECT_FALSE(table.isCommentLine(""));
}

TEST(AsciiTableComment, OnlyTheLowEightBitsCount)
{
    AsciiTable table;
    table.CommentChar = 0x100 + '#';
    EXPECT_TRUE(table.isCommentLine("a#b"));
    table.CommentChar = 0xE9;
    EXPECT_TRUE(table.isCommentLine("a\xE9z"));
    table.CommentChar = -23;
    EXPECT_TRUE(table.isCommentLine("a\xE9z"));
    EXPECT_FALSE(table.isCommentLine("aiz"));
}

TEST(AsciiTableComment, CharacterZeroMakesOnlyALineWithAZeroByteAComment)
{
    AsciiTable table;
    EXPECT_FALSE(table.isCommentLine("ordinary # line"));
    EXPECT_FALSE(table.isCommentLine(""));
    EXPECT_TRUE(table.isCommentLine(std::string("a\0b", 3)));
}

TEST(AsciiTableComment, CommentLinesAreRecordsLikeAnyOther)
{
    Opened<AsciiTable> file("#1\nr2\n#3\n");
    file.table.CommentChar = '#';
    addColumn(file.table, "word", 0, 2);
    EXPECT_EQ((Rows{{"#1"}, {"r2"}, {"#3"}}), rowsOf(file.table));
}

TEST(AsciiTableExtract, TenCharactersGoIntoTwoColumnsOfFive)
{
    AsciiTable table;
    addColumn(table, "first", 0, 5);
    addColumn(table, "last", 5, 5);
    EXPECT_TRUE(table.extractContent("abcdefghij"));
    EXPECT_EQ((Row{"abcde", "fghij"}), rowOf(table));
}

TEST(AsciiTableExtract, TrimLeavesTwoLettersOfASliceWithThreeBlanks)
{
    AsciiTable table;
    addColumn(table, "first", 0, 5);
    addColumn(table, "last", 5, 5);
    table.extractContent("ab     cd ");
    EXPECT_EQ((Row{"ab", "  cd"}), rowOf(table));
    table.Trim = false;
    table.extractContent("ef     gh ");
    EXPECT_EQ((Row{"ef   ", "  gh "}), rowOf(table));
}

TEST(AsciiTableExtract, RecordMayBeTheValueOfAColumn)
{
    AsciiTable table;
    table.Trim = false;
    addColumn(table, "first", 0, 2);
    addColumn(table, "last", 2, 3);
    for (const std::size_t column : {0U, 1U}) {
        table.Fields.List[column]->Value = "abcde";
        EXPECT_TRUE(table.extractContent(table.Fields.List[column]->Value));
        EXPECT_EQ((Row{"ab", "cde"}), rowOf(table));
    }
}

TEST(AsciiTableExtract, ColumnThatStartsAfterTheRecordThrowsOutOfRange)
{
    AsciiTable table;
    addColumn(table, "a", 5, 1);
    EXPECT_THROW(table.extractContent("abcd"), std::out_of_range);
}

TEST(AsciiTableExtractDeathTest, AssertionNamesTheUnitOfAsciiTables)
{
    AsciiTable table;
    addColumn(table, "a", 0, 5);
    EXPECT_EXIT(table.extractContent("abcd"), testing::KilledBySignal(SIGABRT), asciiTableAssertion);
}

TEST(AsciiTableExtractDeathTest, ShortLineStopsTheProcessWhileItIsFetched)
{
    Opened<AsciiTable> file("ab\n");
    addColumn(file.table, "a", 0, 3);
    EXPECT_EXIT(file.table.fetchRecord(), testing::KilledBySignal(SIGABRT), asciiTableAssertion);
}

TEST(AsciiTable, SetFieldOffsetsDefinesItsColumnsToo)
{
    Opened<AsciiTable> file("..r1xyz\n..r2uvw\n");
    file.table.setFieldOffsets("2|4");
    EXPECT_EQ((Row{"2+2", "4+2"}), kd_test::placesOf(file.table));
    EXPECT_EQ((Rows{{"r1", "xy"}, {"r2", "uv"}}), rowsOf(file.table));
}

// Delimited tables: settings

TEST(DelimitedTable, Defaults)
{
    const DelimitedTable table;
    EXPECT_EQ("", table.Name);
    EXPECT_EQ("", table.BaseName);
    EXPECT_EQ("csv", table.Extension);
    EXPECT_TRUE(table.HasFieldNames);
    EXPECT_EQ(255U, table.RecordLength);
    EXPECT_EQ(0, table.Quote);
    EXPECT_EQ(10, table.RecordEnd);
    EXPECT_EQ(124, table.Separator);
    EXPECT_EQ(0U, table.HeaderLength);
    EXPECT_FALSE(table.Binary);
    EXPECT_TRUE(table.Trim);
    EXPECT_EQ(0, table.CommentChar);
}

TEST(DelimitedTable, HasNoConstructorTakingAName)
{
    static_assert(!std::is_constructible_v<DelimitedTable, std::string&>);
    static_assert(std::is_base_of_v<AsciiTable, DelimitedTable>);
    static_assert(!std::is_copy_constructible_v<DelimitedTable>);
}

TEST(DelimitedTable, VirtualOperationsAreInTheirSlotOrder)
{
    EXPECT_EQ(7U, kd_test::slotOf(&DelimitedTable::skipHeader));
    EXPECT_EQ(11U, kd_test::slotOf(&DelimitedTable::readHeader));
    EXPECT_EQ(12U, kd_test::slotOf(&DelimitedTable::extractContent));
    EXPECT_EQ(13U, kd_test::slotOf(&DelimitedTable::extractFieldNames));
    EXPECT_EQ(0U, kd_test::slotOf(&DelimitedTable::setCsvMode));
}

namespace {

struct Mode {
    const char* name;
    std::function<void(DelimitedTable&)> set;
    int separator;
};

const std::vector<Mode> modes = {
    {"Csv", [](DelimitedTable& table) { table.setCsvMode(); }, 44},
    {"R", [](DelimitedTable& table) { table.setRMode(); }, 9},
    {"Excel", [](DelimitedTable& table) { table.setExcelMode(); }, 44},
};

void PrintTo(const Mode& mode, std::ostream* out)
{
    *out << mode.name;
}

class DelimitedMode : public testing::TestWithParam<Mode> {};

}  // namespace

TEST_P(DelimitedMode, SetsSeparatorQuoteAndRecordEnd)
{
    DelimitedTable table;
    table.RecordEnd = 0;
    GetParam().set(table);
    EXPECT_EQ(GetParam().separator, table.Separator);
    EXPECT_EQ(34, table.Quote);
    EXPECT_EQ(10, table.RecordEnd);
}

TEST_P(DelimitedMode, SetsNothingElse)
{
    DelimitedTable table;
    table.Name = "n";
    table.Extension = "e";
    table.Path = "p";
    table.Binary = true;
    table.Trim = false;
    table.RecordLength = 77;
    table.HeaderLength = 9;
    table.CommentChar = 35;
    table.HasFieldNames = false;
    addColumn(table, "kept", 1, 2);
    GetParam().set(table);
    EXPECT_EQ("n", table.Name);
    EXPECT_EQ("e", table.Extension);
    EXPECT_EQ("p", table.Path);
    EXPECT_TRUE(table.Binary);
    EXPECT_FALSE(table.Trim);
    EXPECT_EQ(77U, table.RecordLength);
    EXPECT_EQ(9U, table.HeaderLength);
    EXPECT_EQ(35, table.CommentChar);
    EXPECT_FALSE(table.HasFieldNames);
    EXPECT_EQ((Row{"kept"}), namesOf(table));
}

INSTANTIATE_TEST_SUITE_P(DelimitedTable, DelimitedMode, testing::ValuesIn(modes), kd_test::caseName<Mode>);

// Delimited tables: the header line

TEST(DelimitedHeader, RModeCutsTheNamesAtTabsAndFoldsThem)
{
    Opened<DelimitedTable> file("id\tName\tCity\n1\tr1c2\tr1c3\n");
    file.table.setRMode();
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Row{"id", "name", "city"}), namesOf(file.table));
    for (const kd_lib::TableField& field : file.table.Fields) {
        EXPECT_EQ(kd_lib::UNKNOWN_TYPE, field.Type);
        EXPECT_EQ(0, field.Offset);
        EXPECT_EQ(0, field.Length);
        EXPECT_EQ("", field.Value);
    }
}

TEST(DelimitedHeader, FieldListLeavesThePositionAtTheSecondLine)
{
    Opened<DelimitedTable> file("a|b\nr1c1|r1c2\n");
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ(4, position(file.table));
    EXPECT_EQ((Rows{{"r1c1", "r1c2"}}), rowsOf(file.table));
}

TEST(DelimitedHeader, FieldListTakesTheFirstLineFromEveryPosition)
{
    Opened<DelimitedTable> file("a|b\nr1c1|r1c2\n");
    file.table.goRecord(2);
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Row{"a", "b"}), namesOf(file.table));
}

TEST(DelimitedHeader, ReadHeaderTakesTheLineAtThePosition)
{
    Opened<DelimitedTable> file("# c\na|b\nr1c1|r1c2\n");
    file.table.goRecord(2);
    EXPECT_TRUE(file.table.readHeader());
    EXPECT_EQ((Row{"a", "b"}), namesOf(file.table));
    EXPECT_EQ(8, position(file.table));
}

TEST(DelimitedHeader, SecondFieldListAppendsToTheColumns)
{
    Opened<DelimitedTable> file("a|b\n");
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Row{"a", "b", "a", "b"}), namesOf(file.table));
}

TEST(DelimitedHeader, NamesKeepTheirQuotesAndBlanks)
{
    Opened<DelimitedTable> file("\"Id\"| Name |'x',y||\n");
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Row{"\"id\"", " name ", "'x',y", "", ""}), namesOf(file.table));
}

TEST(DelimitedHeader, CaseSensitiveListKeepsTheNames)
{
    Opened<DelimitedTable> file("Id|NAME\n");
    file.table.Fields.CaseSensitive = true;
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Row{"Id", "NAME"}), namesOf(file.table));
}

TEST(DelimitedHeader, LineWithTheCommentCharacterIsConsumedAndDefinesNothing)
{
    for (const std::string line : {"#a|b\n", "a#|b\n", "a|b#\n"}) {
        Opened<DelimitedTable> file(line + "r1c1|r1c2\n");
        file.table.CommentChar = '#';
        EXPECT_FALSE(file.table.getFieldList()) << line;
        EXPECT_EQ(0U, file.table.Fields.size()) << line;
        EXPECT_EQ(static_cast<int>(line.size()), position(file.table)) << line;
    }
}

TEST(DelimitedHeader, ZeroByteEndsTheLineAndIsNotAComment)
{
    Opened<DelimitedTable> file(std::string("a|b\0|c\n", 7) + "r1c1|r1c2\n");
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Row{"a", "b"}), namesOf(file.table));
    EXPECT_EQ(7, position(file.table));
}

TEST(DelimitedHeader, CommentCharacterAfterAZeroByteDoesNotCount)
{
    Opened<DelimitedTable> file(std::string("a|b\0#\n", 6));
    file.table.CommentChar = '#';
    EXPECT_TRUE(file.table.getFieldList());
}

TEST(DelimitedHeader, WithoutFieldNamesReadHeaderReturnsFalseAndReadsNothing)
{
    Opened<DelimitedTable> file("r1c1|r1c2\n");
    file.table.HasFieldNames = false;
    EXPECT_FALSE(file.table.readHeader());
    EXPECT_EQ(0, position(file.table));
    EXPECT_FALSE(file.table.getFieldList());
    EXPECT_EQ(0, position(file.table));
    EXPECT_EQ(0U, file.table.Fields.size());
}

TEST(DelimitedHeader, LongestHeaderLineHas254Characters)
{
    Opened<DelimitedTable> longest(std::string(200, 'a') + "|" + std::string(53, 'b') + "\n");
    EXPECT_TRUE(longest.table.getFieldList());
    EXPECT_EQ((Row{std::string(200, 'a'), std::string(53, 'b')}), namesOf(longest.table));
    Opened<DelimitedTable> longer(std::string(200, 'a') + "|" + std::string(54, 'b') + "\n");
    EXPECT_FALSE(longer.table.getFieldList());
    EXPECT_EQ(0U, longer.table.Fields.size());
    EXPECT_TRUE(longer.table.File.fail());
}

TEST(DelimitedHeader, FixedLengthHeaderIsOneRecord)
{
    Opened<DelimitedTable> file("a|bc|dr1|2|");
    file.table.RecordEnd = 0;
    file.table.RecordLength = 6;
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Row{"a", "bc", "d"}), namesOf(file.table));
    EXPECT_EQ(6, position(file.table));
}

TEST(DelimitedHeader, LastLineWithoutANewlineIsAHeader)
{
    Opened<DelimitedTable> file("a|b");
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Row{"a", "b"}), namesOf(file.table));
}

TEST(DelimitedHeader, EmptyFileReturnsFalse)
{
    Opened<DelimitedTable> file("");
    EXPECT_FALSE(file.table.getFieldList());
    EXPECT_EQ(0U, file.table.Fields.size());
}

TEST(DelimitedHeader, ClosedTableReturnsFalse)
{
    DelimitedTable table;
    EXPECT_FALSE(table.getFieldList());
    EXPECT_FALSE(table.readHeader());
}

TEST(DelimitedHeader, ReadHeaderCallsTheVirtualExtractFieldNames)
{
    class Recorder : public DelimitedTable {
    public:
        bool extractFieldNames(const std::string& line) override
        {
            Line = line;
            return false;
        }
        std::string Line;
    };
    Opened<Recorder> file("a|b\n");
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ("a|b", file.table.Line);
    EXPECT_EQ(0U, file.table.Fields.size());
}

TEST(DelimitedHeader, ExtractFieldNamesNeedsNoFile)
{
    DelimitedTable table;
    EXPECT_TRUE(table.extractFieldNames("One|two"));
    EXPECT_TRUE(table.extractFieldNames(""));
    EXPECT_EQ((Row{"one", "two", ""}), namesOf(table));
}

// Delimited tables: skipping the header

TEST(DelimitedSkipHeader, GoesToByteRecordLengthNotToTheSecondLine)
{
    Opened<DelimitedTable> file("a|b\n" + std::string(300, 'x'));
    EXPECT_TRUE(file.table.skipHeader());
    EXPECT_EQ(255, position(file.table));
    file.table.RecordLength = 100;
    EXPECT_TRUE(file.table.skipHeader());
    EXPECT_EQ(100, position(file.table));
}

TEST(DelimitedSkipHeader, WithoutFieldNamesThePositionStays)
{
    Opened<DelimitedTable> file("a|b\n" + std::string(300, 'x'));
    file.table.HasFieldNames = false;
    file.table.File.seekg(3);
    EXPECT_TRUE(file.table.skipHeader());
    EXPECT_EQ(3, position(file.table));
}

TEST(DelimitedSkipHeader, ClosedTableReturnsTrue)
{
    DelimitedTable table;
    EXPECT_TRUE(table.skipHeader());
}

TEST(DelimitedSkipHeader, MakesAStreamThatFailedReadableAgain)
{
    Opened<DelimitedTable> file("a|b\nr1c1|r1c2\n");
    file.table.RecordLength = 10;
    rowsOf(file.table);
    ASSERT_TRUE(file.table.File.fail());
    EXPECT_TRUE(file.table.skipHeader());
    EXPECT_TRUE(file.table.File.good());
    EXPECT_EQ(10, position(file.table));
}

TEST(DelimitedSkipHeader, PositionThatNoStreamCanHoldReturnsTrueAndLeavesTheStreamFailed)
{
    Opened<DelimitedTable> file("a|b\n");
    file.table.RecordLength = ~std::uint64_t{0};
    EXPECT_TRUE(file.table.skipHeader());
    EXPECT_TRUE(file.table.File.fail());
}

TEST(DelimitedSkipHeader, SecondLineIsReachedByGoRecordTwo)
{
    Opened<DelimitedTable> file("a|b\nr1c1|r1c2\n");
    file.table.getFieldList();
    EXPECT_TRUE(file.table.goRecord(2));
    EXPECT_EQ((Rows{{"r1c1", "r1c2"}}), rowsOf(file.table));
}

// Delimited tables: records

TEST(DelimitedRecord, DefaultModeCutsAtBarsAndCommasDoNotCount)
{
    Opened<DelimitedTable> file("x|y|z\na|b|c\na,b,c\n");
    ASSERT_TRUE(file.table.getFieldList());
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ((Row{"a", "b", "c"}), rowOf(file.table));
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ((Row{"a,b,c", "b", "c"}), rowOf(file.table));
}

TEST(DelimitedRecord, FewerPiecesLeaveTheOtherColumnsUnchanged)
{
    Opened<DelimitedTable> file("x|y|z\nr1c1|r1c2|r1c3\nr2c1|r2c2\n");
    ASSERT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Rows{{"r1c1", "r1c2", "r1c3"}, {"r2c1", "r2c2", "r1c3"}}), rowsOf(file.table));
}

TEST(DelimitedRecord, PiecesWithoutAColumnAreIgnored)
{
    Opened<DelimitedTable> file("x|y\nr1c1|r1c2|r1c3|r1c4\n");
    ASSERT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Rows{{"r1c1", "r1c2"}}), rowsOf(file.table));
}

TEST(DelimitedRecord, EmptyPiecesKeepValuesInTheirColumns)
{
    Opened<DelimitedTable> file("x|y|z\n|r1c2|\n||r2c3\n\n");
    ASSERT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Rows{{"", "r1c2", ""}, {"", "", "r2c3"}, {"", "", "r2c3"}}), rowsOf(file.table));
}

TEST(DelimitedRecord, QuotesProtectNothing)
{
    Opened<DelimitedTable> file("x,y,z\n\"a,b\",3\n");
    file.table.setCsvMode();
    ASSERT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Rows{{"\"a", "b\"", "3"}}), rowsOf(file.table));
}

TEST(DelimitedRecord, EnclosingQuotesAreStored)
{
    Opened<DelimitedTable> file("x,y\n\"r1c1\",'r1c2'\n");
    file.table.setExcelMode();
    ASSERT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Rows{{"\"r1c1\"", "'r1c2'"}}), rowsOf(file.table));
}

TEST(DelimitedRecord, ValuesAreVerbatimEvenWithTrim)
{
    for (const bool trim : {true, false}) {
        Opened<DelimitedTable> file("x|y\n  a  |\tb \r\n");
        file.table.Trim = trim;
        ASSERT_TRUE(file.table.getFieldList());
        EXPECT_EQ((Rows{{"  a  ", "\tb \r"}}), rowsOf(file.table)) << trim;
    }
}

TEST(DelimitedRecord, OnlyTheLowEightBitsOfTheSeparatorCount)
{
    DelimitedTable table;
    table.Separator = 0x100 + ';';
    table.extractFieldNames("x;y");
    EXPECT_TRUE(table.extractContent("r1c1;r1c2"));
    EXPECT_EQ((Row{"r1c1", "r1c2"}), rowOf(table));
    table.Separator = 0xA6;
    EXPECT_TRUE(table.extractContent("r2c1\xA6r2c2"));
    EXPECT_EQ((Row{"r2c1", "r2c2"}), rowOf(table));
}

TEST(DelimitedRecord, EmptyPiecesAreEmptyTexts)
{
    DelimitedTable table;
    table.extractFieldNames("a|b|c");
    table.extractContent("||x");
    EXPECT_STREQ("", table.Fields.List[0]->Value.c_str());
    EXPECT_STREQ("", table.Fields.List[1]->Value.c_str());
    EXPECT_STREQ("x", table.Fields.List[2]->Value.c_str());
}

TEST(DelimitedRecord, RecordMayBeTheValueOfAColumn)
{
    for (const std::size_t column : {0U, 1U}) {
        DelimitedTable table;
        table.setCsvMode();
        table.extractFieldNames("a,b");
        table.Fields.List[column]->Value = "r1c1,a longer text that has separate memory";
        EXPECT_TRUE(table.extractContent(table.Fields.List[column]->Value));
        EXPECT_EQ((Row{"r1c1", "a longer text that has separate memory"}), rowOf(table));
    }
}

TEST(DelimitedRecord, TableWithoutColumnsTakesARecordAndStoresNothing)
{
    DelimitedTable table;
    EXPECT_TRUE(table.extractContent("a|b"));
    EXPECT_EQ(0U, table.Fields.size());
}

TEST(DelimitedRecord, LongLineReturnsFalseAndKeepsTheValues)
{
    Opened<DelimitedTable> file("x|y\nr1c1|r1c2\n" + std::string(255, 'z') + "\nr3c1|r3c2\n");
    ASSERT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Rows{{"r1c1", "r1c2"}}), rowsOf(file.table));
    EXPECT_EQ((Row{"r1c1", "r1c2"}), rowOf(file.table));
}

TEST(DelimitedRecord, OpenAppendsTheExtensionCsv)
{
    const kd_test::ScopedDirectory directory;
    directory.write("people.csv", "x|y\n");
    DelimitedTable table;
    table.Path = directory.path();
    bool opened = false;
    const Console console = captured([&] { opened = table.open("people"); });
    EXPECT_TRUE(opened);
    EXPECT_EQ("Table: " + directory.path() + "/people.csv\n", console.out);
}

TEST(AsciiTable, TakesItsNameAsALiteral)
{
    const AsciiTable table("parts");
    EXPECT_EQ("parts", table.BaseName);
    EXPECT_EQ("parts", table.Name);
}
