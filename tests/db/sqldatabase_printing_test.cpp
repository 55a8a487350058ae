#include "support/console_capture.h"
#include "support/sql_fake.h"

#include <kd_lib/sqldatabase.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using kd_test::captured;
using kd_test::Console;
using kd_test::FakeSqlDatabase;
using kd_test::Paged;
using kd_test::paged;
using kd_test::restartRowCounter;
using Texts = std::vector<std::string>;

namespace {

// Printing

/// A result with columns of these lengths.
void setLengths(FakeSqlDatabase& database, const std::vector<int>& lengths)
{
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        database.queryColumns.get(i)->Length = lengths[i];
    }
}

/// Rows of distinct values: r1c1, r1c2 and so on.
FakeSqlDatabase::Rows distinctRows(std::size_t rows, std::size_t columns)
{
    FakeSqlDatabase::Rows result(rows);
    for (std::size_t row = 1; row <= rows; ++row) {
        for (std::size_t column = 1; column <= columns; ++column) {
            std::string& value = result[row - 1].emplace_back("r");
            value.append(std::to_string(row)).append("c").append(std::to_string(column));
        }
    }
    return result;
}

/// The first `count` rows as they are printed.
std::string printed(const FakeSqlDatabase::Rows& rows, std::size_t count)
{
    std::string text;
    for (std::size_t row = 0; row < count; ++row) {
        for (std::size_t column = 0; column < rows[row].size(); ++column) {
            text += (column > 0 ? " " : "") + rows[row][column];
        }
        text += '\n';
    }
    return text;
}

class SqlDatabasePrinting : public testing::Test {
protected:
    void SetUp() override { restartRowCounter(); }

    FakeSqlDatabase Database;
};

TEST_F(SqlDatabasePrinting, HeaderPadsTheNamesAndAddsARuleAfterAnEmptyLine)
{
    Database.setResult({"a", "b"}, {});
    setLengths(Database, {5, 3});
    bool returned = false;
    const Console console = captured([&] { returned = Database.printHeader(); });
    EXPECT_EQ("    a   b\n\n----------", console.out);
    EXPECT_EQ("", console.err);
    EXPECT_TRUE(returned);
}

TEST_F(SqlDatabasePrinting, HeaderWithoutLengthsHasNoRule)
{
    Database.setResult({"one", "two", "three"}, {});
    EXPECT_EQ("one two three\n", captured([&] { Database.printHeader(); }).out);
}

TEST_F(SqlDatabasePrinting, HeaderLeavesColumnsOfLengthZeroOutOfTheRule)
{
    Database.setResult({"one", "two", "three"}, {});
    setLengths(Database, {0, 4, 0});
    EXPECT_EQ("one  two three\n\n-----", captured([&] { Database.printHeader(); }).out);
}

TEST_F(SqlDatabasePrinting, HeaderTreatsANegativeLengthAsNone)
{
    Database.setResult({"one", "two"}, {});
    setLengths(Database, {-4, 0});
    EXPECT_EQ("one two\n", captured([&] { Database.printHeader(); }).out);
}

TEST_F(SqlDatabasePrinting, HeaderKeepsANameLongerThanItsLength)
{
    Database.setResult({"surname"}, {});
    setLengths(Database, {3});
    EXPECT_EQ("surname\n\n----", captured([&] { Database.printHeader(); }).out);
}

TEST_F(SqlDatabasePrinting, HeaderOfNoColumnsIsEmpty)
{
    bool returned = false;
    EXPECT_EQ("", captured([&] { returned = Database.printHeader(); }).out);
    EXPECT_TRUE(returned);
}

TEST_F(SqlDatabasePrinting, RowPadsTheValuesOfColumnsWithALength)
{
    Database.setResult({"a", "b", "c"}, {});
    setLengths(Database, {5, 3, 0});
    Database.queryColumns.get(0UL)->Value = "x1";
    Database.queryColumns.get(1UL)->Value = "longer";
    Database.queryColumns.get(2UL)->Value = "plain";
    bool returned = false;
    const Console console = captured([&] { returned = Database.processRow(); });
    EXPECT_EQ("   x1 longer plain\n", console.out);
    EXPECT_EQ("", console.err);
    EXPECT_TRUE(returned);
}

TEST_F(SqlDatabasePrinting, RowOfEmptyValuesKeepsItsSeparators)
{
    Database.setResult({"a", "b", "c"}, {});
    EXPECT_EQ("  \n", captured([&] { Database.processRow(); }).out);
}

TEST_F(SqlDatabasePrinting, RowPadsAnEmptyValueOfLengthOneWithOneBlank)
{
    Database.setResult({"a", "b"}, {});
    setLengths(Database, {1, 0});
    EXPECT_EQ("  \n", captured([&] { Database.processRow(); }).out);
}

TEST_F(SqlDatabasePrinting, RowOfNoColumnsIsEmpty)
{
    bool returned = false;
    EXPECT_EQ("", captured([&] { returned = Database.processRow(); }).out);
    EXPECT_TRUE(returned);
}

TEST_F(SqlDatabasePrinting, RowKeepsControlAndZeroBytes)
{
    Database.setResult({"a"}, {});
    const std::string bytes("\x01\x1b[0m\0\xff", 7);
    Database.queryColumns.get(0UL)->Value = bytes;
    EXPECT_EQ(bytes + "\n", captured([&] { Database.processRow(); }).out);
}

TEST_F(SqlDatabasePrinting, DeliberatelyPagingCountsValuesNotRows)
{
    struct Case {
        std::size_t Columns;
        std::size_t RowsBeforeTheQuestion;
    };
    for (const Case& shape : {Case{1, 26}, Case{2, 13}, Case{3, 9}, Case{5, 6}, Case{25, 2}, Case{26, 1}}) {
        SCOPED_TRACE(shape.Columns);
        restartRowCounter();
        const auto rows = distinctRows(30, shape.Columns);
        Database.setResult(Texts(shape.Columns, "c"), rows);
        std::size_t printedRows = 0;
        const Paged result = paged({"q"}, [&] {
            while (Database.fetchRow()) {
                ++printedRows;
                if (!Database.processRow()) {
                    break;
                }
            }
        });
        EXPECT_EQ(shape.RowsBeforeTheQuestion, printedRows);
        EXPECT_EQ(printed(rows, printedRows), result.out);
        EXPECT_EQ(1U, result.asked);
    }
}

TEST_F(SqlDatabasePrinting, MoreIsFirstCalledAfterTheNinthRowOfThreeColumns)
{
    const auto rows = distinctRows(20, 3);
    Database.setResult({"a", "b", "c"}, rows);
    bool returned = false;
    const Paged result = paged({"q", "unread"}, [&] { returned = Database.queryResults(); });
    EXPECT_EQ("a b c\n" + printed(rows, 9), result.out);
    EXPECT_EQ(1U, result.asked);
    EXPECT_TRUE(returned) << "also when stopped";
}

TEST_F(SqlDatabasePrinting, ContinuingRestartsTheCount)
{
    const auto rows = distinctRows(30, 3);
    Database.setResult({"a", "b", "c"}, rows);
    const Paged result = paged({"", "y", "no", "unread"}, [&] { EXPECT_TRUE(Database.queryResults()); });
    EXPECT_EQ("a b c\n" + printed(rows, 27), result.out);
    EXPECT_EQ(3U, result.asked);
}

TEST_F(SqlDatabasePrinting, EndOfInputContinues)
{
    const auto rows = distinctRows(30, 3);
    Database.setResult({"a", "b", "c"}, rows);
    const Paged result = paged({}, [&] { EXPECT_TRUE(Database.queryResults()); });
    EXPECT_EQ("a b c\n" + printed(rows, 30), result.out);
}

TEST_F(SqlDatabasePrinting, StoppingKeepsTheCountSoThatTheNextRowAsksAgain)
{
    Database.setResult(Texts(26, "c"), distinctRows(3, 26));
    const Paged result = paged({"q", "q", "go on"}, [&] {
        EXPECT_FALSE(Database.processRow());
        Database.setResult({"a"}, {});
        EXPECT_FALSE(Database.processRow());
        EXPECT_TRUE(Database.processRow());
        EXPECT_TRUE(Database.processRow());
    });
    EXPECT_EQ(3U, result.asked);
}

TEST_F(SqlDatabasePrinting, DeliberatelyAllObjectsShareTheCount)
{
    FakeSqlDatabase other;
    other.setResult({"a", "b", "c"}, distinctRows(5, 3));
    Database.setResult({"d", "e", "f"}, distinctRows(5, 3));
    const Paged result = paged({"q"}, [&] {
        EXPECT_TRUE(other.queryResults());
        EXPECT_TRUE(Database.queryResults());
    });
    EXPECT_EQ("a b c\n" + printed(distinctRows(5, 3), 5) + "d e f\n" + printed(distinctRows(5, 3), 4), result.out);
    EXPECT_EQ(1U, result.asked);
}

TEST_F(SqlDatabasePrinting, CountContinuesFromOneResultToTheNext)
{
    Database.setResult(Texts(25, "c"), distinctRows(1, 25));
    EXPECT_EQ(0U, paged({"q"}, [&] { EXPECT_TRUE(Database.queryResults()); }).asked);
    Database.setResult({"a"}, {{"x"}, {"y"}});
    const Paged result = paged({"q"}, [&] { EXPECT_TRUE(Database.queryResults()); });
    EXPECT_EQ("a\nx\n", result.out);
    EXPECT_EQ(1U, result.asked);
}

TEST_F(SqlDatabasePrinting, PageRowsIsTheThresholdOfTheObject)
{
    Database.pageRows = 4;
    Database.setResult({"a", "b"}, distinctRows(9, 2));
    const Paged result = paged({"q"}, [&] { EXPECT_TRUE(Database.queryResults()); });
    EXPECT_EQ("a b\n" + printed(distinctRows(9, 2), 3), result.out);
}

TEST_F(SqlDatabasePrinting, QueryResultsWithoutAResultPrintsNothingAndReturnsFalse)
{
    Database.setResult({"a"}, {{"x"}});
    Database.resultRows = 0;
    bool returned = true;
    EXPECT_EQ("", captured([&] { returned = Database.queryResults(); }).out);
    EXPECT_FALSE(returned);
    EXPECT_EQ(0U, Database.Fetched);
}

TEST_F(SqlDatabasePrinting, QueryResultsOfNoRowsPrintsTheHeaderAndReturnsTrue)
{
    Database.setResult({"a", "b"}, {});
    bool returned = false;
    EXPECT_EQ("a b\n", captured([&] { returned = Database.queryResults(); }).out);
    EXPECT_TRUE(returned);
}

}  // namespace
