#include "support/dbf_builder.h"
#include "support/table_builder.h"
#include "support/xbase_sample.h"

#include <kd_lib/xbasetable.h>

#include <gtest/gtest.h>

#include <csignal>
#include <stdexcept>
#include <string>

using kd_lib::xBaseTable;
using kd_test::captured;
using kd_test::Console;
using kd_test::DbfBuilder;
using kd_test::Opened;
using kd_test::Row;
using kd_test::rowOf;
using kd_test::Rows;
using kd_test::rowsOf;
using namespace kd_test;

// Records

TEST(xBaseFetch, ClosedTableIsReported)
{
    xBaseTable table;
    bool fetched = true;
    const Console console = captured([&] { fetched = table.fetchRecord(); });
    EXPECT_FALSE(fetched);
    EXPECT_EQ("", console.out);
    EXPECT_EQ("Table is not open\n", console.err);
}

TEST(xBaseFetch, WalkEndsAtTheEndMark)
{
    Opened<xBaseTable> file(threeRecords());
    withHeader(file);
    EXPECT_EQ(threeRows, rowsOf(file.table));
    EXPECT_EQ(threeRows[2], rowOf(file.table));
    EXPECT_TRUE(file.table.File.fail());
    EXPECT_TRUE(file.table.File.eof());
}

TEST(xBaseFetch, WalkCanBeRepeatedAfterEveryMove)
{
    Opened<xBaseTable> file(threeRecords());
    withHeader(file);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(threeRows, rowsOf(file.table));
        EXPECT_TRUE(file.table.firstRecord());
    }
    rowsOf(file.table);
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ(threeRows, rowsOf(file.table));
}

TEST(xBaseFetch, RecordCountOfTheHeaderDoesNotBoundTheWalk)
{
    DbfBuilder builder = threeColumns().record({"r1c1", "1", "2"}).record({"r2c1", "3", "4"});
    builder.recordCount = 1;
    Opened<xBaseTable> file(builder.bytes());
    withHeader(file);
    EXPECT_EQ((Rows{{"r1c1", "1", "2"}, {"r2c1", "3", "4"}}), rowsOf(file.table));
    EXPECT_EQ(1U, file.table.RecordCount);
}

TEST(xBaseFetch, ValuesAreTrimmedOnTheRightWhileTrimIsSet)
{
    const std::string bytes = DbfBuilder({{"A", 'C', 5}, {"M", 'M', 10}}).record({" ab", "  7"}).bytes();
    Opened<xBaseTable> trimmed(bytes);
    withHeader(trimmed);
    EXPECT_EQ((Rows{{" ab", "  7"}}), rowsOf(trimmed.table));
    Opened<xBaseTable> whole(bytes);
    whole.table.Trim = false;
    withHeader(whole);
    EXPECT_EQ((Rows{{" ab  ", "  7       "}}), rowsOf(whole.table));
}

TEST(xBaseFetch, EveryByteThatIsNotPrintableArrivesAsABlank)
{
    std::string every;
    std::string shown;
    for (int byte = 0; byte < 256; ++byte) {
        every += static_cast<char>(byte);
        shown += byte >= 0x20 && byte <= 0x7E ? static_cast<char>(byte) : ' ';
    }
    Opened<xBaseTable> file(
        DbfBuilder({{"A", 'C', 128}, {"B", 'C', 128}}).record({every.substr(0, 128), every.substr(128)}).bytes());
    file.table.Trim = false;
    withHeader(file);
    EXPECT_EQ((Rows{{shown.substr(0, 128), shown.substr(128)}}), rowsOf(file.table));
}

TEST(xBaseFetch, EveryByteInEveryPlaceOfALongRecordIsTestedAlike)
{
    // Long enough for every stretch in which bytes may be tested together, with a rest of seven bytes.
    constexpr unsigned char width = 150;
    Opened<xBaseTable> file("");
    file.table.Trim = false;
    for (unsigned int place = 0; place < width; ++place) {
        DbfBuilder builder({{"A", 'C', width}});
        Rows expected;
        for (unsigned int byte = 0; byte < 256; ++byte) {
            std::string value = kd_test::lettersOf(width);
            value[place] = static_cast<char>(byte);
            builder.record({value});
            value[place] = byte >= 0x20 && byte <= 0x7E ? static_cast<char>(byte) : ' ';
            expected.push_back({value});
        }
        file.reopen(builder.bytes());
        withHeader(file);
        EXPECT_TRUE(expected == rowsOf(file.table)) << place;
    }
}

TEST(xBaseFetch, NeighboursOfUnprintableBytesAreLeftAlone)
{
    // Every pair of awkward bytes side by side, at every place of sixteen.
    const std::string awkward("\x00\x1F\x20\x21\x7E\x7F\x80\xA0\xFE\xFF", 10);
    DbfBuilder builder({{"A", 'C', 31}});
    Rows expected;
    for (const char first : awkward) {
        for (const char second : awkward) {
            for (std::size_t place = 0; place < 16; ++place) {
                std::string value = kd_test::lettersOf(31);
                value[place] = first;
                value[place + 1] = second;
                builder.record({value});
                for (const std::size_t at : {place, place + 1}) {
                    value[at] = value[at] >= 0x20 && value[at] <= 0x7E ? value[at] : ' ';
                }
                expected.push_back({value});
            }
        }
    }
    Opened<xBaseTable> file(builder.bytes());
    file.table.Trim = false;
    withHeader(file);
    EXPECT_TRUE(expected == rowsOf(file.table));
}

TEST(xBaseFetch, ByteE9InsideACharacterFieldArrivesAsABlank)
{
    Opened<xBaseTable> file(DbfBuilder({{"A", 'C', 4}}).record({"Jos\xE9"}).record({"J\xE9sx"}).bytes());
    withHeader(file);
    EXPECT_EQ((Rows{{"Jos"}, {"J sx"}}), rowsOf(file.table));
}

TEST(xBaseFetch, DeletedRecordIsNotExtractedAndTheValuesStay)
{
    Opened<xBaseTable> file(
        DbfBuilder({{"A", 'C', 4}}).record({"r1c1"}).deletedRecord({"r2c1"}).record({"r3c1"}).bytes());
    withHeader(file);
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_FALSE(file.table.isDeleted());
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.isDeleted());
    EXPECT_EQ((Row{"r1c1"}), rowOf(file.table));
    EXPECT_EQ(65 + 2 * 5, position(file.table));
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_FALSE(file.table.isDeleted());
    EXPECT_EQ((Row{"r3c1"}), rowOf(file.table));
}

TEST(xBaseFetch, DeletedRecordIsExtractedWithTheSwitchOn)
{
    Opened<xBaseTable> file(DbfBuilder({{"A", 'C', 4}}).record({"r1c1"}).deletedRecord({"r2c1"}).bytes());
    file.table.ReadDeleted = true;
    withHeader(file);
    EXPECT_TRUE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.isDeleted());
    EXPECT_EQ((Row{"r2c1"}), rowOf(file.table));
}

TEST(xBaseFetch, OnlyTheStarMarksADeletedRecord)
{
    Opened<xBaseTable> file("");
    const std::string bytes = DbfBuilder({{"A", 'C', 2}}).record({"r1"}).bytes();
    for (unsigned int mark = 0; mark < 256; ++mark) {
        file.reopen(kd_test::withByte(bytes, 65, mark));
        withHeader(file);
        ASSERT_TRUE(file.table.fetchRecord());
        EXPECT_EQ(mark == '*', file.table.isDeleted()) << mark;
        EXPECT_EQ(mark == '*' ? "" : "r1", file.table.Fields.getData(0UL)) << mark;
    }
}

TEST(xBaseFetch, CutDeletedRecordReturnsTrueAlthoughTheStreamHasFailed)
{
    const std::string bytes = DbfBuilder({{"A", 'C', 4}}).record({"r1c1"}).deletedRecord({"r2c1"}).bytes();
    Opened<xBaseTable> file(bytes.substr(0, 65 + 5 + 2));
    withHeader(file);
    EXPECT_TRUE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.isDeleted());
    EXPECT_TRUE(file.table.File.fail());
    EXPECT_FALSE(file.table.fetchRecord());
    EXPECT_FALSE(file.table.isDeleted());
}

TEST(xBaseFetch, ReadsPastTheLastRecordReturnFalseAndKeepTheValues)
{
    Opened<xBaseTable> file(threeRecords());
    withHeader(file);
    EXPECT_TRUE(file.table.goRecord(4));
    EXPECT_FALSE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.goRecord(1000));
    EXPECT_FALSE(file.table.fetchRecord());
    EXPECT_EQ((Row{"", "", ""}), rowOf(file.table));
}

TEST(xBaseFetch, RecordIsPassedWholeToTheVirtualExtractContent)
{
    class Recorder : public xBaseTable {
    public:
        bool extractContent(const std::string& record) override
        {
            Records.push_back(record);
            return false;
        }
        Row Records;
    };
    Opened<Recorder> file(DbfBuilder({{"A", 'C', 3}}).record({std::string("a\0b", 3)}).record({"cd"}).bytes());
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_TRUE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.fetchRecord());
    EXPECT_FALSE(file.table.fetchRecord());
    EXPECT_EQ((Row{" a b", " cd "}), file.table.Records);
}

TEST(xBaseFetchDeathTest, FieldsWiderThanTheRecordStopTheProcessInTheUnitOfFileTables)
{
    DbfBuilder builder = threeColumns().record({"r1c1", "1", "2"});
    builder.recordLength = 19;
    Opened<xBaseTable> file(builder.bytes());
    withHeader(file);
    EXPECT_EXIT(file.table.fetchRecord(), testing::KilledBySignal(SIGABRT),
                "^src/db/filetable: extractContent: Assertion `tmp_str\\.size\\(\\) == "
                "Fields\\.get\\(f\\)->getLength\\(\\)' failed\\.\n$");
}

TEST(xBaseFetch, FieldThatStartsAfterTheRecordThrowsOutOfRange)
{
    DbfBuilder builder = threeColumns().record({"r1c1", "1", "2"});
    builder.recordLength = 20;
    Opened<xBaseTable> file(builder.bytes());
    withHeader(file);
    file.table.Fields.get("born")->Offset = 21;
    EXPECT_THROW(file.table.fetchRecord(), std::out_of_range);
}

// The listing

TEST(xBaseShowHeader, ListsTheHeaderTheFieldsAndAnEmptyLine)
{
    Opened<xBaseTable> file(threeRecords());
    withHeader(file);
    const Console console = captured([&] { file.table.showHeader(); });
    EXPECT_EQ("Header information\n"
              "------------------\n"
              "Database      : " +
                  file.directory() +
                  "\n"
                  "Table         : sample\n"
                  "xBase version : 3\n"
                  "Header length : 129\n"
                  "Fields        : 3\n"
                  "Last update   : 202435\n"
                  "Records       : 3\n"
                  "\n"
                  "Fields:\n"
                  "0\tname\tchar\t1\t4\t0\t0\n"
                  "1\tprice\tinteger\t5\t7\t2\t0\n"
                  "2\tborn\tdate\t12\t8\t0\t0\n"
                  "\n",
              console.out);
    EXPECT_EQ("", console.err);
}

TEST(xBaseShowHeader, TableNeverOpenedShowsItsInitialValues)
{
    xBaseTable table("stock");
    const Console console = captured([&] { table.showHeader(); });
    EXPECT_EQ("Header information\n"
              "------------------\n"
              "Database      : \n"
              "Table         : stock\n"
              "xBase version : 0\n"
              "Header length : 0\n"
              "Fields        : 0\n"
              "Last update   : \n"
              "Records       : 0\n"
              "\n"
              "Fields:\n"
              "\n",
              console.out);
}

TEST(xBaseShowHeader, CountIsDecimalUnlikeTheBaseClasss)
{
    DbfBuilder builder = threeColumns();
    builder.recordCount = 4294967295U;
    Opened<xBaseTable> file(builder.bytes());
    withHeader(file);
    const Console console = captured([&] { file.table.showHeader(); });
    EXPECT_NE(std::string::npos, console.out.find("\nRecords       : 4294967295\n"));
}

// Logical values

TEST(xBaseBoolean, OnlyAFirstFOrNIsFalse)
{
    xBaseTable table;
    for (unsigned int first = 0; first < 256; ++first) {
        const bool isFalse = first == 'F' || first == 'f' || first == 'N' || first == 'n';
        EXPECT_EQ(!isFalse, table.convertBoolean(std::string(1, static_cast<char>(first)) + "x")) << first;
    }
}

TEST(xBaseBoolean, Examples)
{
    xBaseTable table;
    EXPECT_TRUE(table.convertBoolean(""));
    EXPECT_TRUE(table.convertBoolean("?"));
    EXPECT_TRUE(table.convertBoolean(" "));
    EXPECT_TRUE(table.convertBoolean("T"));
    EXPECT_TRUE(table.convertBoolean("Y"));
    EXPECT_TRUE(table.convertBoolean(" f"));
    EXPECT_FALSE(table.convertBoolean("f"));
    EXPECT_FALSE(table.convertBoolean("no"));
}
