#include "support/console_capture.h"
#include "support/sql_calls.h"
#include "support/sql_sqlite.h"
#include "support/sql_statement.h"

#include <kd_lib/sqliteconnection.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using kd_lib::SQLite3;
using kd_test::failureLine;
using kd_test::openStatements;
using kd_test::printedBy;
using kd_test::sqliteCalls;
using Texts = std::vector<std::string>;
using namespace kd_test;

namespace {

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

TEST_F(SqliteTransaction, BeginWithoutAConnectionSetsTheFlagSilently)
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
