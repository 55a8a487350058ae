#include "support/console_capture.h"
#include "support/scoped_directory.h"
#include "support/sql_calls.h"
#include "support/sql_fake.h"
#include "support/sql_other_process.h"
#include "support/sql_sqlite.h"

#include <kd_lib/sqliteconnection.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using kd_lib::SQLite3;
using kd_lib::TableField;
using kd_lib::TableFields;
using kd_test::bareQuery;
using kd_test::captured;
using kd_test::Console;
using kd_test::failureLine;
using kd_test::openStatements;
using kd_test::OtherProcess;
using kd_test::printedBy;
using kd_test::ScopedDirectory;
using kd_test::sqliteCalls;
using Texts = std::vector<std::string>;

const std::string rowIsFailure = failureLine(100, "another row available");
const std::string outOfRange = failureLine(25, "column index out of range");

/// A query whose first step fails with code 1.
const std::string failingQuery = "SELECT abs(-9223372036854775807 - 1)";
const std::string overflow = failureLine(1, "integer overflow");

/// An in-memory database with the table t (a UNIQUE, b), which is empty.
class SqliteStatement : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(Database.createDatabase(":memory:"));
        bare("CREATE TABLE t (a UNIQUE, b)");
        sqliteCalls.reset();
    }

    void TearDown() override { sqliteCalls.reset(); }

    std::string bare(const std::string& sql) const { return bareQuery(Database.handle, sql); }

    /// The rows of the table t, as SQL literals.
    std::string rows() const { return bare("SELECT quote(a), quote(b) FROM t ORDER BY rowid"); }

    bool transactionIsOpen() const { return sqlite3_get_autocommit(Database.handle) == 0; }

    SQLite3 Database;
};

/// A database file with two rows that another process has open, too.
class SqliteStatementLock : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(SQLITE_OK, Other.run("CREATE TABLE t (a); INSERT INTO t VALUES (1), (2)"));
        Database.host = Scratch.path();
        ASSERT_TRUE(Database.useDatabase("x.db"));
    }

    ScopedDirectory Scratch;
    OtherProcess Other{Scratch.file("x.db")};
    SQLite3 Database;
};

/// A list of fields with these names and values; names keep their case.
TableFields record(const std::vector<std::pair<std::string, std::string>>& values)
{
    TableFields fields;
    fields.CaseSensitive = true;
    for (const auto& [name, value] : values) {
        fields.add(name);
        fields.List.back()->Value = value;
    }
    return fields;
}

std::ptrdiff_t timesFinalised(const sqlite3_stmt* statement)
{
    return std::count(sqliteCalls.Finalized.begin(), sqliteCalls.Finalized.end(), statement);
}

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
    EXPECT_TRUE(Database.execute("INSERT INTO t VALUES (5, 6); this is no SQL"));
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

TEST_F(SqliteStatement, StatementThatChangesNoRowsShowsTheChangesOfTheOneBefore)
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
    sqliteCalls.Answers["step"] = {SQLITE_BUSY, 100};
    EXPECT_FALSE(Database.execute());
    EXPECT_EQ(1, sqliteCalls.Steps);
    EXPECT_EQ(nullptr, Database.statement);
}

TEST_F(SqliteStatement, FailedResetAfterExecuteIsReportedAndStillASuccess)
{
    sqliteCalls.Answers["reset"] = {SQLITE_ERROR, 1};
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

TEST_F(SqliteStatementLock, HalfReadStatementKeepsItsLockAlsoWhenReplaced)
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
    sqliteCalls.Answers["reset"] = {SQLITE_ERROR, 1};
    EXPECT_EQ(rowIsFailure, printedBy([&] { EXPECT_FALSE(Database.resetResults()); }));
}

TEST_F(SqliteStatement, ResetThatMeetsAReportedFailureIsFalseWithoutASecondLine)
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

TEST_F(SqliteStatement, FinalizeThatMeetsAReportedFailureIsFalseWithoutASecondLine)
{
    ASSERT_TRUE(Database.query(failingQuery));
    EXPECT_EQ(overflow, printedBy([&] {
                  EXPECT_FALSE(Database.fetchRow());
                  EXPECT_FALSE(Database.finalize());
              }));
    EXPECT_EQ("integer overflow [#1]", Database.errorText);
    EXPECT_EQ(nullptr, Database.statement);
}

TEST_F(SqliteStatement, FinalizeReportsAFailureThatFetchRowPassedOverInSilence)
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
    sqliteCalls.Answers["finalize"] = {SQLITE_BUSY, 100};
    EXPECT_FALSE(Database.finalize());
    const std::vector<sqlite3_stmt*> given = {statement, nullptr, nullptr, nullptr, nullptr, nullptr};
    EXPECT_EQ(given, sqliteCalls.Finalized) << "six calls in all";
    EXPECT_EQ(nullptr, Database.statement);
}

TEST_F(SqliteStatement, OtherFailureOfFinalizeIsNotRepeated)
{
    ASSERT_TRUE(Database.prepare("SELECT 1"));
    sqliteCalls.reset();
    sqliteCalls.Answers["finalize"] = {SQLITE_ERROR, 100};
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

TEST_F(SqliteStatement, QueryOfAStatementWithoutColumnsAnswersTrueToo)
{
    EXPECT_TRUE(Database.query("INSERT INTO t VALUES (1, 2)"));
    EXPECT_EQ(1U, Database.resultRows);
    EXPECT_EQ(0, Database.columnCount);
    EXPECT_EQ(0U, Database.queryColumns.size());
    EXPECT_EQ("", rows()) << "nothing is stepped";
}

TEST_F(SqliteStatement, QueryThatCannotBePreparedAnswersFalse)
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

TEST_F(SqliteStatement, NullIsFetchedAsTheEmptyTextAlsoOverAnOldValue)
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

TEST_F(SqliteStatement, FetchRowWithoutColumnsOfItsOwnIsHarmless)
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

TEST_F(SqliteStatement, FetchRowAnswersOtherCodesInSilence)
{
    for (const int code : {SQLITE_CORRUPT, SQLITE_LOCKED, SQLITE_MISUSE, SQLITE_NOMEM, SQLITE_OK}) {
        SCOPED_TRACE(code);
        ASSERT_TRUE(Database.query("SELECT 1 AS x"));
        sqliteCalls.Steps = 0;
        sqliteCalls.Answers["step"] = {code, 1};
        EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(Database.fetchRow()); }));
        EXPECT_EQ(1, sqliteCalls.Steps) << "not repeated";
        EXPECT_EQ("", Database.errorText);
        EXPECT_EQ(1U, Database.resultRows);
    }
}

TEST_F(SqliteStatement, FetchRowRepeatsABusyAnswerUpToSixCallsInAll)
{
    ASSERT_TRUE(Database.query("SELECT 1 AS x"));
    sqliteCalls.Answers["step"] = {SQLITE_BUSY, 5};
    EXPECT_TRUE(Database.fetchRow());
    EXPECT_EQ(6, sqliteCalls.Steps);
    EXPECT_EQ("1", Database.queryColumns.getData("x"));
    ASSERT_TRUE(Database.query("SELECT 1 AS x"));
    sqliteCalls.reset();
    sqliteCalls.Answers["step"] = {SQLITE_BUSY, 6};
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
    ASSERT_EQ(1U, Database.resultRows) << "which stands for a result, too";
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.queryResults()); }));
    EXPECT_EQ("NULL,7\nNULL,7\n", rows());
}

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

TEST_F(SqliteStatement, NotANumberIsBoundAsNullAndAnswersTrue)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (?, ?)"));
    EXPECT_TRUE(Database.bind(1, 5));
    EXPECT_TRUE(Database.bind(1, nan));
    EXPECT_TRUE(Database.bind(2, -nan));
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.bind(99, nan)); })) << "the answer is ignored";
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

TEST_F(SqliteStatement, BindNullOutsideTheParametersIsFalseInSilence)
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

TEST_F(SqliteStatement, EmptyRecordAnswersFalseInSilence)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (:a, :b)"));
    EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(Database.preparedRecord(TableFields())); }));
    EXPECT_EQ("", rows());
}

TEST_F(SqliteStatement, FieldWithoutItsParameterIsReportedAndPassedOver)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (:a, :b)"));
    EXPECT_EQ(outOfRange, printedBy([&] {
                  EXPECT_TRUE(Database.preparedRecord(record({{":a", "one"}, {"b", "two"}})));
              }));
    EXPECT_EQ("'one',NULL\n", rows());
}

TEST_F(SqliteStatement, ParameterWithoutAFieldKeepsTheValueOfTheRecordBefore)
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

TEST_F(SqliteStatement, FailedResetOfARecordIsReportedAndStillASuccess)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (:a, 2)"));
    sqliteCalls.Answers["reset"] = {SQLITE_ERROR, 1};
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

// Transactions

class SqliteTransaction : public SqliteStatement {};

TEST_F(SqliteTransaction, BeginAndEndKeepTheChanges)
{
    EXPECT_EQ("", printedBy([&] {
                  Database.beginTransaction();
                  EXPECT_TRUE(Database.inTransaction);
                  EXPECT_TRUE(transactionIsOpen());
                  EXPECT_EQ(nullptr, Database.statement) << "finalised";
                  EXPECT_TRUE(Database.execute("INSERT INTO t VALUES (1, 2)"));
                  Database.endTransaction();
              }));
    EXPECT_FALSE(Database.inTransaction);
    EXPECT_FALSE(transactionIsOpen());
    EXPECT_EQ(nullptr, Database.statement);
    EXPECT_EQ((Texts{"BEGIN TRANSACTION", "INSERT INTO t VALUES (1, 2)", "END TRANSACTION"}), sqliteCalls.Prepared);
    EXPECT_EQ("1,2\n", rows());
}

TEST_F(SqliteTransaction, RollbackDropsTheChanges)
{
    Database.beginTransaction();
    EXPECT_TRUE(Database.execute("INSERT INTO t VALUES (1, 2)"));
    EXPECT_EQ("", printedBy([&] { Database.rollback(); }));
    EXPECT_EQ("ROLLBACK TRANSACTION", sqliteCalls.Prepared.back());
    EXPECT_FALSE(Database.inTransaction);
    EXPECT_FALSE(transactionIsOpen());
    EXPECT_EQ(nullptr, Database.statement);
    EXPECT_EQ("", rows());
}

TEST_F(SqliteTransaction, SecondBeginSendsAndFinalisesNothing)
{
    Database.beginTransaction();
    ASSERT_TRUE(Database.prepare("SELECT 1"));
    const sqlite3_stmt* statement = Database.statement;
    sqliteCalls.reset();
    EXPECT_EQ("", printedBy([&] { Database.beginTransaction(); }));
    EXPECT_TRUE(sqliteCalls.Prepared.empty());
    EXPECT_EQ(statement, Database.statement);
}

TEST_F(SqliteTransaction, EndAndRollbackWithoutABeginSendAndFinaliseNothing)
{
    ASSERT_TRUE(Database.prepare("SELECT 1"));
    const sqlite3_stmt* statement = Database.statement;
    sqliteCalls.reset();
    EXPECT_EQ("", printedBy([&] {
                  Database.endTransaction();
                  Database.rollback();
              }));
    EXPECT_TRUE(sqliteCalls.Prepared.empty());
    EXPECT_EQ(statement, Database.statement);
}

TEST_F(SqliteTransaction, DeliberatelyAFailedBeginSetsTheFlag)
{
    bare("BEGIN");
    EXPECT_EQ(failureLine(1, "cannot start a transaction within a transaction"),
              printedBy([&] { Database.beginTransaction(); }));
    EXPECT_TRUE(Database.inTransaction);
    EXPECT_EQ(nullptr, Database.statement);
}

TEST_F(SqliteTransaction, BeginWithoutAConnectionSetsTheFlagInSilence)
{
    SQLite3 database;
    EXPECT_EQ("", printedBy([&] { database.beginTransaction(); }));
    EXPECT_TRUE(database.inTransaction);
    EXPECT_EQ("", printedBy([&] { database.rollback(); }));
    EXPECT_FALSE(database.inTransaction);
}

TEST_F(SqliteTransaction, FailedEndRollsBackAndKeepsTheReason)
{
    bare("PRAGMA foreign_keys = ON; CREATE TABLE child (x REFERENCES t (a) DEFERRABLE INITIALLY DEFERRED)");
    Database.beginTransaction();
    EXPECT_TRUE(Database.execute("INSERT INTO child VALUES (9)"));
    sqliteCalls.reset();
    EXPECT_EQ(failureLine(19, "FOREIGN KEY constraint failed"), printedBy([&] { Database.endTransaction(); }));
    EXPECT_EQ((Texts{"END TRANSACTION", "ROLLBACK TRANSACTION"}), sqliteCalls.Prepared);
    EXPECT_EQ("FOREIGN KEY constraint failed [#19]", Database.errorText);
    EXPECT_FALSE(Database.inTransaction);
    EXPECT_FALSE(transactionIsOpen());
    EXPECT_EQ("0\n", bare("SELECT count(*) FROM child"));
}

TEST_F(SqliteTransaction, FailedStatementRollsBackWithOneLineAndKeepsTheReason)
{
    Database.beginTransaction();
    EXPECT_TRUE(Database.execute("INSERT INTO t VALUES (1, 2)"));
    EXPECT_EQ(failureLine(19, "UNIQUE constraint failed: t.a"),
              printedBy([&] { EXPECT_FALSE(Database.execute("INSERT INTO t VALUES (1, 3)")); }));
    EXPECT_EQ("UNIQUE constraint failed: t.a [#19]", Database.errorText);
    EXPECT_FALSE(Database.inTransaction);
    EXPECT_FALSE(transactionIsOpen());
    EXPECT_EQ(0U, openStatements(Database.handle));
    EXPECT_EQ(0U, Database.resultRows);
    EXPECT_EQ("", rows());
}

TEST_F(SqliteTransaction, StatementThatCannotBePreparedDoesNotRollBack)
{
    Database.beginTransaction();
    EXPECT_TRUE(Database.execute("INSERT INTO t VALUES (1, 2)"));
    printedBy([&] { EXPECT_FALSE(Database.execute("INSERT INTO none VALUES (1)")); });
    EXPECT_TRUE(Database.inTransaction);
    EXPECT_TRUE(transactionIsOpen());
    Database.endTransaction();
    EXPECT_EQ("1,2\n", rows());
}

TEST_F(SqliteTransaction, SelectWithARowThatIsExecutedRollsBackToo)
{
    Database.beginTransaction();
    EXPECT_TRUE(Database.execute("INSERT INTO t VALUES (1, 2)"));
    EXPECT_EQ(rowIsFailure, printedBy([&] { EXPECT_FALSE(Database.execute("SELECT a FROM t")); }));
    EXPECT_EQ("another row available [#100]", Database.errorText);
    EXPECT_FALSE(Database.inTransaction);
    EXPECT_FALSE(transactionIsOpen());
    EXPECT_EQ(0U, openStatements(Database.handle)) << "the SELECT is finalised";
    EXPECT_EQ("", rows());
}

TEST_F(SqliteTransaction, RollbackThatFailsAfterAFailureKeepsTheFirstReason)
{
    bare("INSERT INTO t VALUES (1, 2)");
    Database.beginTransaction();
    EXPECT_EQ(failureLine(19, "UNIQUE constraint failed: t.a") +
                  failureLine(1, "cannot rollback - no transaction is active"),
              printedBy([&] { EXPECT_FALSE(Database.execute("INSERT OR ROLLBACK INTO t VALUES (1, 3)")); }));
    EXPECT_EQ("UNIQUE constraint failed: t.a [#19]", Database.errorText);
    EXPECT_FALSE(Database.inTransaction);
    EXPECT_EQ(nullptr, Database.statement);
}

TEST_F(SqliteTransaction, RollbackWhoseStatementFailsEndsWithTheFlagFalseAndNeverCallsItself)
{
    Database.beginTransaction();
    bare("ROLLBACK");
    sqliteCalls.reset();
    EXPECT_EQ(failureLine(1, "cannot rollback - no transaction is active"), printedBy([&] { Database.rollback(); }));
    EXPECT_EQ(Texts{"ROLLBACK TRANSACTION"}, sqliteCalls.Prepared);
    EXPECT_EQ("cannot rollback - no transaction is active [#1]", Database.errorText);
    EXPECT_FALSE(Database.inTransaction);
}

TEST_F(SqliteTransaction, DeliberatelyTheEndOfTheRowsEndsAnOpenTransaction)
{
    Database.beginTransaction();
    EXPECT_TRUE(Database.execute("INSERT INTO t VALUES (1, 2), (3, 4)"));
    ASSERT_TRUE(Database.query("SELECT a FROM t"));
    EXPECT_TRUE(Database.fetchRow());
    EXPECT_TRUE(Database.inTransaction);
    EXPECT_TRUE(Database.fetchRow());
    EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(Database.fetchRow()); }));
    EXPECT_FALSE(Database.inTransaction);
    EXPECT_FALSE(transactionIsOpen());
    EXPECT_EQ("END TRANSACTION", sqliteCalls.Prepared.back());
    EXPECT_EQ("1,2\n3,4\n", rows());
}

TEST_F(SqliteTransaction, DeliberatelyTheEndOfTheRowsInATransactionEmptiesTheColumns)
{
    bare("INSERT INTO t VALUES (1, 2)");
    Database.beginTransaction();
    ASSERT_TRUE(Database.query("SELECT a FROM t"));
    EXPECT_TRUE(Database.fetchRow());
    EXPECT_EQ(1U, Database.queryColumns.size());
    EXPECT_FALSE(Database.fetchRow());
    EXPECT_EQ(0U, Database.queryColumns.size());
}

TEST_F(SqliteTransaction, FailureOfFetchRowDoesNotEndTheTransaction)
{
    Database.beginTransaction();
    ASSERT_TRUE(Database.query(failingQuery));
    printedBy([&] { EXPECT_FALSE(Database.fetchRow()); });
    EXPECT_TRUE(Database.inTransaction);
    EXPECT_TRUE(transactionIsOpen());
}

TEST_F(SqliteTransaction, DisconnectLeavesTheFlag)
{
    Database.beginTransaction();
    EXPECT_TRUE(Database.disconnect());
    EXPECT_TRUE(Database.inTransaction);
}

}  // namespace
