#include "support/console_capture.h"
#include "support/sql_calls.h"
#include "support/sql_sqlite.h"
#include "support/sql_statement.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>

using kd_lib::TableFields;
using kd_test::captured;
using kd_test::Console;
using kd_test::failureLine;
using kd_test::printedBy;
using kd_test::sqliteCalls;
using namespace kd_test;

namespace {

// Binding

TEST_F(SqliteStatement, ValuesAreBoundByTheirTypes)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (?, ?)"));
    EXPECT_TRUE(Database.bind(1, std::string("it's")));
    EXPECT_TRUE(Database.bind(2, std::numeric_limits<int>::min()));
    EXPECT_TRUE(Database.execute());
    EXPECT_TRUE(Database.resetResults());
    EXPECT_TRUE(Database.bind(1, 0.1));
    EXPECT_TRUE(Database.bindNULL(2));
    EXPECT_TRUE(Database.execute());
    EXPECT_EQ("'it''s',-2147483648\n0.1,NULL\n", rows());
}

TEST_F(SqliteStatement, TextIsBoundUpToItsZeroByteAndCopied)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (?, ?)"));
    {
        std::string value("ab\0cd", 5);
        EXPECT_TRUE(Database.bind(1, value));
        value = std::string(100, '?');
        EXPECT_TRUE(Database.bind(2, std::string(100, 'x')));
    }
    EXPECT_TRUE(Database.execute());
    EXPECT_EQ("'ab','" + std::string(100, 'x') + "'\n", rows());
}

TEST_F(SqliteStatement, KeptTextIsBoundWithItsOwnLengthAndNotCopied)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (?, ?)"));
    std::string text = "r1c1r1c2";
    EXPECT_TRUE(Database.bindKept(1, std::string_view(text).substr(0, 4)));
    EXPECT_TRUE(Database.bindKept(2, std::string_view(text).substr(4)));
    text[0] = 'R';
    EXPECT_TRUE(Database.execute());
    EXPECT_EQ("'R1c1','r1c2'\n", rows());
}

TEST_F(SqliteStatement, EmptyKeptTextIsNotNull)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (?, ?)"));
    EXPECT_TRUE(Database.bindKept(1, std::string_view()));
    EXPECT_TRUE(Database.bindKept(2, ""));
    EXPECT_TRUE(Database.execute());
    EXPECT_EQ("'',''\n", rows());
}

TEST_F(SqliteStatement, KeptTextKeepsItsZeroBytesUnlikeCopiedText)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (?, ?)"));
    const std::string text("ab\0cd", 5);
    EXPECT_TRUE(Database.bindKept(1, text));
    EXPECT_TRUE(Database.bind(2, text));
    EXPECT_TRUE(Database.execute());
    EXPECT_EQ("6162006364,6162\n", bare("SELECT hex(a), hex(b) FROM t"));
}

TEST_F(SqliteStatement, NotANumberIsBoundAsNullAndReturnsTrue)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (?, ?)"));
    EXPECT_TRUE(Database.bind(1, 5));
    EXPECT_TRUE(Database.bind(1, nan));
    EXPECT_TRUE(Database.bind(2, -nan));
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.bind(99, nan)); })) << "SQLite's result is ignored";
    EXPECT_TRUE(Database.execute());
    EXPECT_EQ("NULL,NULL\n", rows());
}

TEST_F(SqliteStatement, ParameterIsFoundByItsNameExactlyAsPassed)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (:first, @second)"));
    EXPECT_TRUE(Database.bind(":first", "one"));
    EXPECT_TRUE(Database.bind("@second", "two"));
    EXPECT_EQ(outOfRange + outOfRange + outOfRange, printedBy([&] {
                  EXPECT_FALSE(Database.bind("first", "x"));
                  EXPECT_FALSE(Database.bind(":First", "x"));
                  EXPECT_FALSE(Database.bind("", "x"));
              }));
    EXPECT_EQ("column index out of range [#25]", Database.errorText);
    EXPECT_TRUE(Database.execute());
    EXPECT_EQ("'one','two'\n", rows());
}

TEST_F(SqliteStatement, BindingOutsideTheParametersIsReported)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (?, ?)"));
    for (const int index : {-1, 0, 3}) {
        EXPECT_EQ(outOfRange, printedBy([&] { EXPECT_FALSE(Database.bind(index, std::string("x"))); }));
        EXPECT_EQ(outOfRange, printedBy([&] { EXPECT_FALSE(Database.bind(index, 1)); }));
        EXPECT_EQ(outOfRange, printedBy([&] { EXPECT_FALSE(Database.bind(index, 1.5)); }));
        EXPECT_EQ(outOfRange, printedBy([&] { EXPECT_FALSE(Database.bindKept(index, "x")); }));
    }
}

TEST_F(SqliteStatement, BindNullOutsideTheParametersFailsSilently)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (?, ?)"));
    EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(Database.bindNULL(3)); }));
    EXPECT_EQ("", Database.errorText);
}

TEST_F(SqliteStatement, BindingAStatementThatIsNotResetIsReported)
{
    ASSERT_TRUE(Database.query("SELECT ? AS x"));
    ASSERT_TRUE(Database.fetchRow());
    EXPECT_EQ(failureLine(21, "bad parameter or other API misuse"),
              printedBy([&] { EXPECT_FALSE(Database.bind(1, 5)); }));
}

// Prepared insert

TEST_F(SqliteStatement, PrepareInsertBuildsThreeLinesFromTheResultColumns)
{
    ASSERT_TRUE(Database.query("SELECT a, b FROM t"));
    sqliteCalls.reset();
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.prepareInsert("T")); }));
    EXPECT_EQ("INSERT INTO t (\na,b) \n\tVALUES (:a,:b);\n", sqliteCalls.Prepared.at(0));
    EXPECT_EQ(0U, Database.queryColumns.size());
    EXPECT_EQ(0U, Database.resultRows);
    EXPECT_NE(nullptr, Database.statement);
}

TEST_F(SqliteStatement, PrepareInsertOfOneColumnHasNoComma)
{
    ASSERT_TRUE(Database.query("SELECT b FROM t"));
    sqliteCalls.reset();
    EXPECT_TRUE(Database.prepareInsert("t"));
    EXPECT_EQ("INSERT INTO t (\nb) \n\tVALUES (:b);\n", sqliteCalls.Prepared.at(0));
}

TEST_F(SqliteStatement, PrepareInsertNamesColumnAndParameterInLowerCase)
{
    bare("CREATE TABLE u (MyCol)");
    ASSERT_TRUE(Database.query("SELECT MyCol FROM u"));
    EXPECT_EQ("mycol", Database.queryColumns.get(0UL)->Name);
    sqliteCalls.reset();
    EXPECT_TRUE(Database.prepareInsert("U"));
    EXPECT_EQ("INSERT INTO u (\nmycol) \n\tVALUES (:mycol);\n", sqliteCalls.Prepared.at(0));
}

TEST_F(SqliteStatement, PrepareInsertJoinsAnEmptyColumnNameLikeAnyOther)
{
    ASSERT_TRUE(Database.query("SELECT 1 AS \"\", 2 AS b"));
    sqliteCalls.reset();
    printedBy([&] { EXPECT_FALSE(Database.prepareInsert("t")); });
    EXPECT_EQ("INSERT INTO t (\n,b) \n\tVALUES (:,:b);\n", sqliteCalls.Prepared.at(0));
}

TEST_F(SqliteStatement, PrepareInsertWithoutColumnsPreparesNothing)
{
    ASSERT_TRUE(Database.prepare("SELECT 1"));
    Database.errorText = "kept";
    const sqlite3_stmt* statement = Database.statement;
    EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(Database.prepareInsert("t")); }));
    EXPECT_EQ(statement, Database.statement);
    EXPECT_EQ("kept", Database.errorText);
    EXPECT_EQ(1U, sqliteCalls.Prepared.size());
}

TEST_F(SqliteStatement, PrepareInsertIntoAMissingTableIsReportedAndEmptiesTheColumns)
{
    ASSERT_TRUE(Database.query("SELECT a FROM t"));
    EXPECT_EQ(failureLine(1, "no such table: none"), printedBy([&] { EXPECT_FALSE(Database.prepareInsert("none")); }));
    EXPECT_EQ(0U, Database.queryColumns.size());
}

TEST_F(SqliteStatement, PreparedRecordsAreInsertedOneAfterTheOther)
{
    ASSERT_TRUE(Database.query("SELECT a, b FROM t"));
    ASSERT_TRUE(Database.prepareInsert("t"));
    EXPECT_EQ("", printedBy([&] {
                  EXPECT_TRUE(Database.preparedRecord(record({{":a", "r1c1"}, {":b", "r1c2"}})));
                  EXPECT_TRUE(Database.preparedRecord(record({{":b", "r2c2"}, {":a", "r2c1"}})));
              }));
    EXPECT_EQ("'r1c1','r1c2'\n'r2c1','r2c2'\n", rows());
    EXPECT_EQ(1U, Database.resultRows);
    EXPECT_EQ(0, sqlite3_stmt_busy(Database.statement));
}

TEST_F(SqliteStatement, DeliberatelyEveryValueOfARecordIsBoundAsTextAndAnEmptyOneIsNotNull)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (:a, :b)"));
    TableFields fields = record({{":a", "12"}, {":b", ""}});
    fields.get(0UL)->Type = kd_lib::INTEGER_TYPE;
    EXPECT_TRUE(Database.preparedRecord(fields));
    EXPECT_EQ("'12',''\n", rows());
    EXPECT_EQ("12", fields.getData(0UL)) << "the list was copied";
}

TEST_F(SqliteStatement, EmptyRecordReturnsFalseSilently)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (:a, :b)"));
    EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(Database.preparedRecord(TableFields())); }));
    EXPECT_EQ("", rows());
}

TEST_F(SqliteStatement, FieldWithoutItsParameterIsReportedAndSkipped)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (:a, :b)"));
    EXPECT_EQ(outOfRange, printedBy([&] {
                  EXPECT_TRUE(Database.preparedRecord(record({{":a", "one"}, {"b", "two"}})));
              }));
    EXPECT_EQ("'one',NULL\n", rows());
}

TEST_F(SqliteStatement, ParameterWithoutAFieldKeepsTheValueOfThePreviousRecord)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (:a, :b)"));
    EXPECT_TRUE(Database.preparedRecord(record({{":a", "1"}, {":b", "kept"}})));
    EXPECT_TRUE(Database.preparedRecord(record({{":a", "2"}})));
    EXPECT_EQ("'1','kept'\n'2','kept'\n", rows());
}

TEST_F(SqliteStatement, FailedRecordIsReportedOnceOnEachStreamAndFinalisesTheStatement)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (:a, :b)"));
    ASSERT_TRUE(Database.preparedRecord(record({{":a", "1"}, {":b", "x"}})));
    const Console console = captured([&] {
        EXPECT_FALSE(Database.preparedRecord(record({{":a", "1"}, {":b", "y"}})));
    });
    EXPECT_EQ(failureLine(19, "UNIQUE constraint failed: t.a"), console.out);
    EXPECT_EQ(failureLine(19, "UNIQUE constraint failed: t.a"), console.err);
    EXPECT_EQ("UNIQUE constraint failed: t.a [#19]", Database.errorText);
    EXPECT_EQ(nullptr, Database.statement);
    EXPECT_EQ("'1','x'\n", rows());
}

TEST_F(SqliteStatement, FailedRecordInATransactionRollsItBackAndKeepsTheReason)
{
    Database.beginTransaction();
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (:a, :b)"));
    ASSERT_TRUE(Database.preparedRecord(record({{":a", "1"}, {":b", "x"}})));
    const Console console = captured([&] {
        EXPECT_FALSE(Database.preparedRecord(record({{":a", "1"}, {":b", "y"}})));
    });
    EXPECT_EQ(failureLine(19, "UNIQUE constraint failed: t.a"), console.out);
    EXPECT_EQ(failureLine(19, "UNIQUE constraint failed: t.a"), console.err);
    EXPECT_EQ("UNIQUE constraint failed: t.a [#19]", Database.errorText);
    EXPECT_FALSE(Database.inTransaction);
    EXPECT_EQ("", rows());
}

TEST_F(SqliteStatement, FailedResetOfARecordIsReportedButTheRecordSucceeds)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (:a, 2)"));
    sqliteCalls.Replies["reset"] = {SQLITE_ERROR, 1};
    EXPECT_EQ(failureLine(101, "no more rows available"), printedBy([&] {
                  EXPECT_TRUE(Database.preparedRecord(record({{":a", "1"}})));
              }));
}

TEST_F(SqliteStatement, BoundValuesCannotBreakOut)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (:a, :b)"));
    const std::string value = "'); DROP TABLE t; --`\"\n\x01\x1b";
    EXPECT_TRUE(Database.preparedRecord(record({{":a", value}, {":b", "x"}})));
    ASSERT_TRUE(Database.query("SELECT a FROM t"));
    ASSERT_TRUE(Database.fetchRow());
    EXPECT_EQ(value, Database.queryColumns.getData("a")) << "bound values keep their backquotes";
}

}  // namespace
