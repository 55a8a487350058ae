#include "support/console_capture.h"
#include "support/sql_calls.h"
#include "support/sql_fake.h"
#include "support/sql_sqlite.h"
#include "support/sql_statement.h"

#include <kd_lib/sqliteconnection.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

using kd_lib::SQLite3;
using kd_lib::TableField;
using kd_test::captured;
using kd_test::Console;
using kd_test::failureLine;
using kd_test::openStatements;
using kd_test::printedBy;
using kd_test::sqliteCalls;
using Texts = std::vector<std::string>;
using namespace kd_test;

namespace {

// Preparing

TEST_F(SqliteStatement, PrepareWithoutAConnectionFailsSilentlyAndEmptiesTheResult)
{
    SQLite3 database;
    database.errorText = "old";
    database.resultRows = 3;
    database.rowsFetched = 4;
    database.queryColumns.add(std::string("c"));
    EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(database.prepare("SELECT 1")); }));
    EXPECT_EQ("", database.errorText);
    EXPECT_EQ(0U, database.resultRows);
    EXPECT_EQ(0U, database.rowsFetched);
    EXPECT_EQ(0U, database.queryColumns.size());
}

TEST_F(SqliteStatement, EveryOperationWithoutAConnectionFailsSilently)
{
    SQLite3 database;
    const Console console = captured([&] {
        EXPECT_FALSE(database.execute("SELECT 1"));
        EXPECT_FALSE(database.execute());
        EXPECT_FALSE(database.query("SELECT 1"));
        EXPECT_FALSE(database.fetchRow());
        EXPECT_FALSE(database.queryResults());
        EXPECT_FALSE(database.bind(1, std::string("x")));
        EXPECT_FALSE(database.bind(1, 2));
        EXPECT_FALSE(database.bind(1, 2.5));
        EXPECT_FALSE(database.bind(":a", "x"));
        EXPECT_FALSE(database.bindNULL(1));
        EXPECT_FALSE(database.bindKept(1, "x"));
        EXPECT_FALSE(database.prepareInsert("t"));
        EXPECT_TRUE(database.resetResults());
        EXPECT_TRUE(database.finalize());
        EXPECT_TRUE(database.clearResults());
    });
    EXPECT_EQ("", console.out);
    EXPECT_EQ("", console.err);
}

TEST_F(SqliteStatement, PrepareEmptiesErrorResultAndCounts)
{
    ASSERT_TRUE(Database.query("SELECT 1 AS x"));
    ASSERT_TRUE(Database.fetchRow());
    Database.errorText = "old";
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.prepare("SELECT 2")); }));
    EXPECT_EQ("", Database.errorText);
    EXPECT_EQ(0U, Database.resultRows);
    EXPECT_EQ(0U, Database.rowsFetched);
    EXPECT_EQ(0U, Database.queryColumns.size());
    EXPECT_NE(nullptr, Database.statement);
}

TEST_F(SqliteStatement, FailedPrepareIsReportedOnce)
{
    EXPECT_EQ(failureLine(1, "near \"SELEC\": syntax error"),
              printedBy([&] { EXPECT_FALSE(Database.prepare("SELEC 1")); }));
    EXPECT_EQ("near \"SELEC\": syntax error [#1]", Database.errorText);
    EXPECT_EQ(nullptr, Database.statement);
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.finalize()); }));
}

TEST_F(SqliteStatement, OnlyTheFirstStatementOfATextIsPrepared)
{
    EXPECT_TRUE(Database.execute("INSERT INTO t VALUES (1, 2); INSERT INTO t VALUES (3, 4);"));
    EXPECT_EQ("1,2\n", rows());
    EXPECT_TRUE(Database.execute("INSERT INTO t VALUES (5, 6); this is not SQL"));
    EXPECT_EQ("1,2\n5,6\n", rows());
}

TEST_F(SqliteStatement, BackquotesBecomeDoubleQuotes)
{
    EXPECT_TRUE(Database.execute("CREATE TABLE `two words` (`a b`)"));
    EXPECT_EQ("CREATE TABLE \"two words\" (\"a b\")", sqliteCalls.Prepared.at(0));
    EXPECT_EQ(0, Database.getRecords("`two words`"));
    EXPECT_EQ("", Database.errorText);
}

TEST_F(SqliteStatement, DeliberatelyBackquotesInsideTextLiteralsBecomeDoubleQuotesToo)
{
    EXPECT_TRUE(Database.execute("INSERT INTO t VALUES ('it`s', '``')"));
    EXPECT_EQ("'it\"s','\"\"'\n", rows());
}

TEST_F(SqliteStatement, TextEndsAtAZeroByte)
{
    EXPECT_TRUE(Database.execute(std::string("INSERT INTO t VALUES (1, 2)\0 no SQL", 35)));
    EXPECT_EQ("1,2\n", rows());
}

TEST_F(SqliteStatement, TextWithoutAStatementPreparesNothingAndFailsToExecute)
{
    for (const char* sql : {"", " \n", ";", "-- nothing", "/* nothing */"}) {
        SCOPED_TRACE(sql);
        EXPECT_EQ("", printedBy([&] {
                      EXPECT_TRUE(Database.prepare(sql));
                      EXPECT_EQ(nullptr, Database.statement);
                      EXPECT_FALSE(Database.execute());
                      EXPECT_FALSE(Database.execute(sql));
                  }));
    }
}

TEST_F(SqliteStatement, VeryLongStatementIsPrepared)
{
    EXPECT_TRUE(Database.execute("INSERT INTO t VALUES (1, '" + std::string(10'000'000, 'x') + "')"));
    EXPECT_EQ("10000000\n", bare("SELECT length(b) FROM t"));
}

// Executing

TEST_F(SqliteStatement, ExecuteSetsResultRowsToTheChangedRows)
{
    EXPECT_TRUE(Database.execute("INSERT INTO t VALUES (1, 'x'), (2, 'x'), (3, 'y')"));
    EXPECT_EQ(3U, Database.resultRows);
    EXPECT_TRUE(Database.execute("UPDATE t SET b = 'z' WHERE b = 'x'"));
    EXPECT_EQ(2U, Database.resultRows);
    EXPECT_TRUE(Database.execute("DELETE FROM t WHERE a = 9"));
    EXPECT_EQ(0U, Database.resultRows);
}

TEST_F(SqliteStatement, StatementThatChangesNoRowsShowsThePreviousChanges)
{
    EXPECT_TRUE(Database.execute("INSERT INTO t VALUES (1, 'x'), (2, 'y')"));
    EXPECT_TRUE(Database.execute("CREATE TABLE u (a)"));
    EXPECT_EQ(2U, Database.resultRows);
}

TEST_F(SqliteStatement, DeliberatelyExecuteOfASelectWithARowFails)
{
    Database.queryColumns.add(std::string("old"));
    EXPECT_EQ(rowIsFailure, printedBy([&] { EXPECT_FALSE(Database.execute("SELECT 1")); }));
    EXPECT_EQ("another row available [#100]", Database.errorText);
    EXPECT_EQ(nullptr, Database.statement);
    EXPECT_EQ(0U, openStatements(Database.handle)) << "finalised";
    EXPECT_EQ(0U, Database.resultRows);
    EXPECT_EQ(0U, Database.queryColumns.size());
}

TEST_F(SqliteStatement, FailedExecuteEmptiesTheResultThatAQueryBegan)
{
    ASSERT_TRUE(Database.query("SELECT 1 AS x"));
    EXPECT_EQ(rowIsFailure, printedBy([&] { EXPECT_FALSE(Database.execute()); }));
    EXPECT_EQ(0U, Database.queryColumns.size());
    EXPECT_EQ(0U, Database.resultRows);
}

TEST_F(SqliteStatement, ExecuteOfASelectWithoutARowSucceeds)
{
    SQLite3 fresh;
    ASSERT_TRUE(fresh.createDatabase(":memory:"));
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(fresh.execute("SELECT 1 WHERE 0")); }));
    EXPECT_EQ(0U, fresh.resultRows);
}

TEST_F(SqliteStatement, ExecutedStatementIsResetNotFinalisedAndCanRunAgain)
{
    EXPECT_TRUE(Database.execute("INSERT INTO t (b) VALUES (7)"));
    EXPECT_NE(nullptr, Database.statement);
    EXPECT_EQ(0, timesFinalised(Database.statement));
    EXPECT_TRUE(Database.execute());
    EXPECT_EQ("NULL,7\nNULL,7\n", rows());
    EXPECT_EQ(0, sqlite3_stmt_busy(Database.statement));
}

TEST_F(SqliteStatement, FailedExecuteIsReportedOnceAndFinalises)
{
    bare("INSERT INTO t VALUES (1, 2)");
    const std::string reason = "UNIQUE constraint failed: t.a";
    EXPECT_EQ(failureLine(19, reason), printedBy([&] {
                  EXPECT_FALSE(Database.execute("INSERT INTO t VALUES (1, 3)"));
                  EXPECT_TRUE(Database.finalize());
              }));
    EXPECT_EQ(reason + " [#19]", Database.errorText);
    EXPECT_EQ(nullptr, Database.statement);
    EXPECT_EQ(0U, Database.resultRows);
}

TEST_F(SqliteStatement, FailedPreparationLeavesExecuteWithoutAStep)
{
    EXPECT_EQ(failureLine(1, "no such table: none"),
              printedBy([&] { EXPECT_FALSE(Database.execute("DELETE FROM none")); }));
    EXPECT_EQ(0, sqliteCalls.Steps);
}

TEST_F(SqliteStatement, BusyIsNotRepeatedByExecute)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (1, 2)"));
    sqliteCalls.Replies["step"] = {SQLITE_BUSY, 100};
    EXPECT_FALSE(Database.execute());
    EXPECT_EQ(1, sqliteCalls.Steps);
    EXPECT_EQ(nullptr, Database.statement);
}

TEST_F(SqliteStatement, FailedResetAfterExecuteIsReportedButExecuteSucceeds)
{
    sqliteCalls.Replies["reset"] = {SQLITE_ERROR, 1};
    EXPECT_EQ(failureLine(101, "no more rows available"),
              printedBy([&] { EXPECT_TRUE(Database.execute("INSERT INTO t VALUES (1, 2)")); }));
    EXPECT_EQ("1,2\n", rows());
}

// Replaced statements

TEST_F(SqliteStatement, ReplacedStatementsThatAreNotHalfReadDoNotPileUp)
{
    for (int i = 0; i < 1000; ++i) {
        ASSERT_TRUE(Database.execute("INSERT INTO t VALUES (NULL, 1)"));
        ASSERT_TRUE(Database.query("SELECT a FROM t"));
    }
    EXPECT_EQ(1U, openStatements(Database.handle));
}

TEST_F(SqliteStatement, FinishedResultsAreReplacedWithoutAFinalize)
{
    bare("INSERT INTO t VALUES (1, 2)");
    for (int i = 0; i < 10; ++i) {
        ASSERT_TRUE(Database.query("SELECT a FROM t"));
        while (Database.fetchRow()) {
        }
        ASSERT_TRUE(Database.query("SELECT a FROM t"));
        ASSERT_TRUE(Database.fetchRow());
        ASSERT_TRUE(Database.resetResults());
    }
    EXPECT_EQ(1U, openStatements(Database.handle));
}

TEST_F(SqliteStatement, HalfReadStatementThatIsReplacedStaysOpenUntilDisconnect)
{
    bare("INSERT INTO t VALUES (1, 2), (3, 4)");
    ASSERT_TRUE(Database.query("SELECT a FROM t"));
    ASSERT_TRUE(Database.fetchRow());
    sqlite3_stmt* halfRead = Database.statement;
    ASSERT_TRUE(Database.execute("UPDATE t SET b = 5"));
    EXPECT_TRUE(Database.finalize());
    EXPECT_NE(0, sqlite3_stmt_busy(halfRead));
    EXPECT_EQ(1U, openStatements(Database.handle));
    sqliteCalls.reset();
    EXPECT_TRUE(Database.disconnect());
    EXPECT_EQ(1, timesFinalised(halfRead));
}

TEST_F(SqliteStatementLock, HalfReadStatementKeepsItsLockEvenWhenReplaced)
{
    ASSERT_TRUE(Database.query("SELECT a FROM t"));
    ASSERT_TRUE(Database.fetchRow());
    EXPECT_EQ(SQLITE_BUSY, Other.run("UPDATE t SET a = 3"));
    ASSERT_TRUE(Database.query("SELECT 1"));
    EXPECT_EQ(SQLITE_BUSY, Other.run("UPDATE t SET a = 3"));
    EXPECT_TRUE(Database.finalize());
    EXPECT_EQ(SQLITE_BUSY, Other.run("UPDATE t SET a = 3"));
    EXPECT_TRUE(Database.disconnect());
    EXPECT_EQ(SQLITE_OK, Other.run("UPDATE t SET a = 3"));
}

TEST_F(SqliteStatementLock, FinalizeResetAndTheEndOfTheRowsFreeTheLock)
{
    ASSERT_TRUE(Database.query("SELECT a FROM t"));
    while (Database.fetchRow()) {
    }
    EXPECT_EQ(SQLITE_OK, Other.run("UPDATE t SET a = 3"));
    ASSERT_TRUE(Database.query("SELECT a FROM t") && Database.fetchRow() && Database.resetResults());
    EXPECT_EQ(SQLITE_OK, Other.run("UPDATE t SET a = 4"));
    ASSERT_TRUE(Database.query("SELECT a FROM t") && Database.fetchRow() && Database.finalize());
    EXPECT_EQ(SQLITE_OK, Other.run("UPDATE t SET a = 5"));
    printedBy([&] { EXPECT_FALSE(Database.execute("SELECT a FROM t")); });
    EXPECT_EQ(SQLITE_OK, Other.run("UPDATE t SET a = 6")) << "a failed execute finalises";
}

// Resetting and finalising

TEST_F(SqliteStatement, ResetResultsRestartsTheRows)
{
    ASSERT_TRUE(Database.query("SELECT 1 AS x UNION SELECT 2"));
    ASSERT_TRUE(Database.fetchRow());
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.resetResults()); }));
    ASSERT_TRUE(Database.fetchRow());
    EXPECT_EQ("1", Database.queryColumns.getData("x"));
}

TEST_F(SqliteStatement, FailedResetIsReported)
{
    ASSERT_TRUE(Database.query("SELECT 1 AS x"));
    ASSERT_TRUE(Database.fetchRow());
    sqliteCalls.Replies["reset"] = {SQLITE_ERROR, 1};
    EXPECT_EQ(rowIsFailure, printedBy([&] { EXPECT_FALSE(Database.resetResults()); }));
}

TEST_F(SqliteStatement, ResetAfterAReportedFailureReturnsFalseWithoutASecondLine)
{
    ASSERT_TRUE(Database.query(failingQuery));
    EXPECT_EQ(overflow, printedBy([&] {
                  EXPECT_FALSE(Database.fetchRow());
                  EXPECT_FALSE(Database.resetResults());
                  EXPECT_TRUE(Database.finalize()) << "the reset took the failure";
              }));
}

TEST_F(SqliteStatement, FinalizeDestroysTheStatementAndMayBeRepeated)
{
    ASSERT_TRUE(Database.prepare("SELECT 1"));
    EXPECT_EQ("", printedBy([&] {
                  EXPECT_TRUE(Database.finalize());
                  EXPECT_EQ(nullptr, Database.statement);
                  EXPECT_TRUE(Database.finalize());
              }));
    EXPECT_EQ(0U, openStatements(Database.handle));
}

TEST_F(SqliteStatement, FinalizeLeavesTheResultAndTheErrorText)
{
    ASSERT_TRUE(Database.query("SELECT 7 AS x"));
    ASSERT_TRUE(Database.fetchRow());
    Database.errorText = "kept";
    EXPECT_TRUE(Database.finalize());
    EXPECT_EQ("7", Database.queryColumns.getData("x"));
    EXPECT_EQ(1U, Database.resultRows);
    EXPECT_EQ(1U, Database.rowsFetched);
    EXPECT_EQ("kept", Database.errorText);
}

TEST_F(SqliteStatement, FinalizeAfterAReportedFailureReturnsFalseWithoutASecondLine)
{
    ASSERT_TRUE(Database.query(failingQuery));
    EXPECT_EQ(overflow, printedBy([&] {
                  EXPECT_FALSE(Database.fetchRow());
                  EXPECT_FALSE(Database.finalize());
              }));
    EXPECT_EQ("integer overflow [#1]", Database.errorText);
    EXPECT_EQ(nullptr, Database.statement);
}

TEST_F(SqliteStatement, FinalizeReportsAFailureThatFetchRowDidNotReport)
{
    bare("INSERT INTO t VALUES (1, 2)");
    ASSERT_TRUE(Database.query("INSERT INTO t VALUES (1, 3)"));
    EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(Database.fetchRow()); }));
    EXPECT_EQ("", Database.errorText);
    EXPECT_EQ(failureLine(19, "UNIQUE constraint failed: t.a"), printedBy([&] { EXPECT_FALSE(Database.finalize()); }));
}

TEST_F(SqliteStatement, RepeatedFinalizeNeverSeesTheOldStatement)
{
    ASSERT_TRUE(Database.prepare("SELECT 1"));
    sqlite3_stmt* statement = Database.statement;
    sqliteCalls.reset();
    sqliteCalls.Replies["finalize"] = {SQLITE_BUSY, 100};
    EXPECT_FALSE(Database.finalize());
    const std::vector<sqlite3_stmt*> given = {statement, nullptr, nullptr, nullptr, nullptr, nullptr};
    EXPECT_EQ(given, sqliteCalls.Finalized) << "six calls in all";
    EXPECT_EQ(nullptr, Database.statement);
}

TEST_F(SqliteStatement, OtherFailureOfFinalizeIsNotRepeated)
{
    ASSERT_TRUE(Database.prepare("SELECT 1"));
    sqliteCalls.reset();
    sqliteCalls.Replies["finalize"] = {SQLITE_ERROR, 100};
    EXPECT_FALSE(Database.finalize());
    EXPECT_EQ(1U, sqliteCalls.Finalized.size());
    EXPECT_EQ(nullptr, Database.statement);
}

// Querying

TEST_F(SqliteStatement, QueryMakesOneFieldPerColumnAndStepsNothing)
{
    EXPECT_TRUE(Database.query("SELECT 1 AS x, 'two' AS MyCol, 3"));
    EXPECT_EQ(0, sqliteCalls.Steps);
    EXPECT_EQ(3, Database.columnCount);
    EXPECT_EQ(1U, Database.resultRows);
    EXPECT_EQ(0U, Database.rowsFetched);
    const Texts names = {"x", "mycol", "3"};
    ASSERT_EQ(names.size(), Database.queryColumns.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        const TableField& column = *Database.queryColumns.get(i);
        EXPECT_EQ(names[i], column.Name);
        EXPECT_EQ(0, column.getLength());
        EXPECT_EQ(kd_lib::UNKNOWN_TYPE, column.Type);
        EXPECT_EQ("", column.Value);
    }
}

TEST_F(SqliteStatement, QueryOfAStatementWithoutColumnsReturnsTrueToo)
{
    EXPECT_TRUE(Database.query("INSERT INTO t VALUES (1, 2)"));
    EXPECT_EQ(1U, Database.resultRows);
    EXPECT_EQ(0, Database.columnCount);
    EXPECT_EQ(0U, Database.queryColumns.size());
    EXPECT_EQ("", rows()) << "nothing is stepped";
}

TEST_F(SqliteStatement, QueryThatCannotBePreparedReturnsFalse)
{
    EXPECT_EQ(failureLine(1, "no such table: none"),
              printedBy([&] { EXPECT_FALSE(Database.query("SELECT * FROM none")); }));
    EXPECT_EQ(0U, Database.resultRows);
}

TEST_F(SqliteStatement, FetchRowTakesTheValuesOfOneRowAfterTheOther)
{
    ASSERT_TRUE(Database.query("SELECT 'r1c1' AS a, 12 AS b UNION ALL SELECT 'r2c1', 22.5"));
    EXPECT_TRUE(Database.fetchRow());
    EXPECT_EQ(1U, Database.rowsFetched);
    EXPECT_EQ("r1c1", Database.queryColumns.getData("a"));
    EXPECT_EQ("12", Database.queryColumns.getData("b"));
    EXPECT_TRUE(Database.fetchRow());
    EXPECT_EQ(2U, Database.rowsFetched);
    EXPECT_EQ("r2c1", Database.queryColumns.getData("a"));
    EXPECT_EQ("22.5", Database.queryColumns.getData("b"));
    EXPECT_EQ(1U, Database.resultRows);
    EXPECT_FALSE(Database.fetchRow());
    EXPECT_EQ(2U, Database.resultRows);
    EXPECT_EQ(2U, Database.rowsFetched);
    EXPECT_EQ("r2c1", Database.queryColumns.getData("a")) << "the last row stays";
}

TEST_F(SqliteStatement, SelectOfOneConstantIsOneFieldAndOneRow)
{
    ASSERT_TRUE(Database.query("SELECT 1 AS x"));
    ASSERT_EQ(1U, Database.queryColumns.size());
    EXPECT_EQ("x", Database.queryColumns.get(0UL)->Name);
    EXPECT_EQ(0, Database.queryColumns.get(0UL)->getLength());
    EXPECT_TRUE(Database.fetchRow());
    EXPECT_EQ("1", Database.queryColumns.getData("x"));
    EXPECT_FALSE(Database.fetchRow());
    EXPECT_EQ(1U, Database.resultRows);
}

TEST_F(SqliteStatement, ResultWithoutRowsEndsWithResultRowsZero)
{
    ASSERT_TRUE(Database.query("SELECT a FROM t"));
    EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(Database.fetchRow()); }));
    EXPECT_EQ(0U, Database.resultRows);
}

TEST_F(SqliteStatement, NullIsFetchedAsTheEmptyTextEvenOverAnOldValue)
{
    ASSERT_TRUE(Database.query("SELECT 'full' AS x UNION ALL SELECT NULL"));
    ASSERT_TRUE(Database.fetchRow());
    ASSERT_TRUE(Database.fetchRow());
    EXPECT_EQ("", Database.queryColumns.getData("x"));
}

TEST_F(SqliteStatement, FetchedTextEndsAtItsZeroByte)
{
    ASSERT_TRUE(Database.query("SELECT 'ab' || char(0) || 'cd' AS x, x'6566006768' AS y, x'' AS z"));
    ASSERT_TRUE(Database.fetchRow());
    EXPECT_EQ("ab", Database.queryColumns.getData("x"));
    EXPECT_EQ("ef", Database.queryColumns.getData("y"));
    EXPECT_EQ("", Database.queryColumns.getData("z"));
}

TEST_F(SqliteStatement, ColumnsOfOneNameKeepTheirPlaces)
{
    ASSERT_TRUE(Database.query("SELECT 1 AS x, 2 AS X, 3 AS x"));
    ASSERT_TRUE(Database.fetchRow());
    EXPECT_EQ("1", Database.queryColumns.getData(0UL));
    EXPECT_EQ("2", Database.queryColumns.getData(1UL));
    EXPECT_EQ("3", Database.queryColumns.getData(2UL));
}

TEST_F(SqliteStatement, FetchRowWithoutColumnsIsHarmless)
{
    ASSERT_TRUE(Database.query("SELECT 1 AS a, 2 AS b"));
    ASSERT_TRUE(Database.prepare("SELECT 3 AS c"));
    EXPECT_TRUE(Database.fetchRow()) << "no query() since prepare, so there is no field to fill";
    EXPECT_EQ(0U, Database.queryColumns.size());
    EXPECT_EQ(1U, Database.rowsFetched);
}

TEST_F(SqliteStatement, FetchRowReportsAnErrorOfCodeOneOnce)
{
    bare("CREATE TABLE n (i); INSERT INTO n VALUES (-5), (-9223372036854775807 - 1)");
    ASSERT_TRUE(Database.query("SELECT abs(i) AS a FROM n ORDER BY rowid"));
    EXPECT_TRUE(Database.fetchRow());
    EXPECT_EQ("5", Database.queryColumns.getData("a"));
    EXPECT_EQ(overflow, printedBy([&] { EXPECT_FALSE(Database.fetchRow()); }));
    EXPECT_EQ("integer overflow [#1]", Database.errorText);
    EXPECT_EQ(1U, Database.resultRows) << "as the query set it";
    EXPECT_EQ(1U, Database.rowsFetched);
}

TEST_F(SqliteStatement, StatementThatFailsAgainIsReportedAgain)
{
    ASSERT_TRUE(Database.query(failingQuery));
    EXPECT_EQ(overflow + overflow, printedBy([&] {
                  EXPECT_FALSE(Database.fetchRow());
                  EXPECT_FALSE(Database.resetResults());
                  EXPECT_FALSE(Database.fetchRow());
                  EXPECT_FALSE(Database.finalize());
              }));
}

TEST_F(SqliteStatement, FetchRowReturnsFalseSilentlyForOtherCodes)
{
    for (const int code : {SQLITE_CORRUPT, SQLITE_LOCKED, SQLITE_MISUSE, SQLITE_NOMEM, SQLITE_OK}) {
        SCOPED_TRACE(code);
        ASSERT_TRUE(Database.query("SELECT 1 AS x"));
        sqliteCalls.Steps = 0;
        sqliteCalls.Replies["step"] = {code, 1};
        EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(Database.fetchRow()); }));
        EXPECT_EQ(1, sqliteCalls.Steps) << "not repeated";
        EXPECT_EQ("", Database.errorText);
        EXPECT_EQ(1U, Database.resultRows);
    }
}

TEST_F(SqliteStatement, FetchRowRepeatsABusyCallUpToSixTimesInAll)
{
    ASSERT_TRUE(Database.query("SELECT 1 AS x"));
    sqliteCalls.Replies["step"] = {SQLITE_BUSY, 5};
    EXPECT_TRUE(Database.fetchRow());
    EXPECT_EQ(6, sqliteCalls.Steps);
    EXPECT_EQ("1", Database.queryColumns.getData("x"));
    ASSERT_TRUE(Database.query("SELECT 1 AS x"));
    sqliteCalls.reset();
    sqliteCalls.Replies["step"] = {SQLITE_BUSY, 6};
    EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(Database.fetchRow()); }));
    EXPECT_EQ(6, sqliteCalls.Steps);
    EXPECT_EQ(0U, Database.rowsFetched);
}

TEST_F(SqliteStatementLock, FetchRowGivesUpAfterSixTriesAtADatabaseThatAnotherProcessLocks)
{
    ASSERT_TRUE(Database.query("SELECT a FROM t"));
    ASSERT_EQ(SQLITE_OK, Other.run("BEGIN EXCLUSIVE"));
    sqliteCalls.reset();
    EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(Database.fetchRow()); }));
    EXPECT_EQ(6, sqliteCalls.Steps);
    sqliteCalls.reset();
    EXPECT_EQ(failureLine(5, "database is locked"),
              printedBy([&] { EXPECT_FALSE(Database.execute("INSERT INTO t VALUES (2)")); }));
    EXPECT_EQ(1, sqliteCalls.Steps) << "no second try";
    ASSERT_EQ(SQLITE_OK, Other.run("COMMIT"));
    EXPECT_EQ(2, Database.getRecords("t"));
}

TEST_F(SqliteStatementLock, StatementThatGaveUpIsStillRunningWhenAnotherReplacesIt)
{
    ASSERT_TRUE(Database.query("SELECT a FROM t"));
    ASSERT_EQ(SQLITE_OK, Other.run("BEGIN EXCLUSIVE"));
    EXPECT_FALSE(Database.fetchRow());
    ASSERT_EQ(SQLITE_OK, Other.run("COMMIT"));
    ASSERT_TRUE(Database.prepare("VACUUM"));
    EXPECT_EQ(2U, openStatements(Database.handle));
    EXPECT_EQ(failureLine(1, "cannot VACUUM - SQL statements in progress"),
              printedBy([&] { EXPECT_FALSE(Database.execute()); }));
    EXPECT_TRUE(Database.disconnect());
}

TEST_F(SqliteStatement, ClearResultsEmptiesTheResultAndLeavesTheStatement)
{
    ASSERT_TRUE(Database.query("SELECT 1 AS x"));
    EXPECT_TRUE(Database.clearResults());
    EXPECT_EQ(0U, Database.queryColumns.size());
    EXPECT_EQ(0U, Database.resultRows);
    EXPECT_NE(nullptr, Database.statement);
    EXPECT_TRUE(Database.fetchRow());
}

TEST_F(SqliteStatement, QueryResultsPrintsARealResult)
{
    kd_test::restartRowCounter();
    bare("INSERT INTO t VALUES ('r1c1', 'r1c2'), ('r2c1', NULL)");
    ASSERT_TRUE(Database.query("SELECT a, b AS Second FROM t"));
    EXPECT_EQ("a second\nr1c1 r1c2\nr2c1 \n", printedBy([&] { EXPECT_TRUE(Database.queryResults()); }));
    EXPECT_EQ(2U, Database.resultRows);
}

TEST_F(SqliteStatement, DeliberatelyQueryResultsOfAnExecutedChangeRunsItAgain)
{
    ASSERT_TRUE(Database.execute("INSERT INTO t (b) VALUES (7)"));
    ASSERT_EQ(1U, Database.resultRows) << "which counts as a result";
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.queryResults()); }));
    EXPECT_EQ("NULL,7\nNULL,7\n", rows());
}

}  // namespace
