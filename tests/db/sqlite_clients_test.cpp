// Clients that do more than call the library's operations: steps, overrides, kept statements.
#include "support/console_capture.h"
#include "support/sql_calls.h"
#include "support/sql_sqlite.h"

#include <kd_lib/sqliteconnection.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using kd_lib::SQLite3;
using kd_lib::TableFields;
using kd_test::bareQuery;
using kd_test::captured;
using kd_test::Console;
using kd_test::failureLine;
using kd_test::openStatements;
using kd_test::printedBy;
using kd_test::sqliteCalls;

const std::string failingQuery = "SELECT abs(-9223372036854775807 - 1)";
const std::string overflow = failureLine(1, "integer overflow");
const std::string outOfRange = failureLine(25, "column index out of range");

/// A change that fails when it is executed, with another error than the failing query.
const std::string failingChange = "INSERT INTO t VALUES (NULL, NULL)";

/// An in-memory database with the empty table t (a UNIQUE, b NOT NULL).
class SqliteClient : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(Database.createDatabase(":memory:"));
        bareQuery(Database.handle, "CREATE TABLE t (a UNIQUE, b NOT NULL)");
        sqliteCalls.reset();
    }

    void TearDown() override { sqliteCalls.reset(); }

    SQLite3 Database;
};

/// A half-read statement that the caller has kept and another one has replaced.
class SqliteKeptStatement : public SqliteClient {
protected:
    void SetUp() override
    {
        SqliteClient::SetUp();
        bareQuery(Database.handle, "INSERT INTO t VALUES (1, 2), (3, 4), (5, 6)");
        ASSERT_TRUE(Database.query("SELECT a FROM t"));
        ASSERT_TRUE(Database.fetchRow());
        Kept = Database.statement;
        ASSERT_TRUE(Database.prepare("SELECT 1"));
        ASSERT_TRUE(Database.finalize());
        sqliteCalls.reset();
    }

    std::ptrdiff_t timesFinalised() const
    {
        return std::count(sqliteCalls.Finalized.begin(), sqliteCalls.Finalized.end(), Kept);
    }

    sqlite3_stmt* Kept = nullptr;
};

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

}  // namespace

// Failures of steps that the library has not made

TEST_F(SqliteClient, FailureOfAClientsStepIsReportedByFinalizeEvenAfterAReportedOne)
{
    for (const bool executed : {true, false}) {
        SCOPED_TRACE(executed);
        printedBy([&] {
            EXPECT_FALSE(executed ? Database.execute(failingChange)
                                  : Database.query(failingQuery) && Database.fetchRow());
        });
        ASSERT_TRUE(Database.prepare(failingQuery));
        EXPECT_EQ("", Database.errorText);
        EXPECT_EQ(SQLITE_ERROR, sqlite3_step(Database.statement));
        EXPECT_EQ(overflow, printedBy([&] { EXPECT_FALSE(Database.finalize()); }));
        EXPECT_EQ("integer overflow [#1]", Database.errorText);
    }
}

TEST_F(SqliteClient, FailureOfAClientsStepIsReportedByResetEvenAfterAReportedOne)
{
    printedBy([&] { EXPECT_FALSE(Database.execute(failingChange)); });
    ASSERT_TRUE(Database.prepare(failingQuery));
    EXPECT_EQ(SQLITE_ERROR, sqlite3_step(Database.statement));
    EXPECT_EQ(overflow, printedBy([&] { EXPECT_FALSE(Database.resetResults()); }));
    EXPECT_EQ("integer overflow [#1]", Database.errorText);
    EXPECT_EQ(SQLITE_ERROR, sqlite3_step(Database.statement));
    EXPECT_EQ(overflow, printedBy([&] { EXPECT_FALSE(Database.finalize()); }));
}

TEST_F(SqliteClient, FailureInsideAnOverrideIsReportedByFinalizeEvenAfterAReportedOne)
{
    class Stepping : public SQLite3 {
    public:
        using SQLite3::execute;
        bool execute() override { return sqlite3_step(statement) == SQLITE_DONE; }
    };
    Stepping database;
    ASSERT_TRUE(database.createDatabase(":memory:"));
    EXPECT_EQ(overflow, printedBy([&] {
                  EXPECT_TRUE(database.query(failingQuery));
                  EXPECT_FALSE(database.fetchRow());
              }));
    EXPECT_EQ(overflow, printedBy([&] {
                  EXPECT_FALSE(database.execute(failingQuery));
                  EXPECT_FALSE(database.finalize());
              }));
    EXPECT_EQ("integer overflow [#1]", database.errorText);
}

TEST_F(SqliteClient, OtherFailureOfTheSameStatementIsReportedToo)
{
    bareQuery(Database.handle, "INSERT INTO t VALUES (1, 2)");
    ASSERT_TRUE(Database.query("INSERT INTO t VALUES (1, abs(?))"));
    ASSERT_EQ(SQLITE_OK, sqlite3_bind_int64(Database.statement, 1, std::numeric_limits<sqlite3_int64>::min()));
    EXPECT_EQ(overflow, printedBy([&] { EXPECT_FALSE(Database.fetchRow()); }));
    sqlite3_reset(Database.statement);
    ASSERT_TRUE(Database.bind(1, 2));
    EXPECT_EQ(SQLITE_CONSTRAINT, sqlite3_step(Database.statement));
    EXPECT_EQ(failureLine(19, "UNIQUE constraint failed: t.a"), printedBy([&] { EXPECT_FALSE(Database.finalize()); }));
}

// Statements that the caller has kept

TEST_F(SqliteKeptStatement, IsFinalisedOnceByFinalize)
{
    Database.statement = Kept;
    EXPECT_TRUE(Database.finalize());
    EXPECT_TRUE(Database.disconnect());
    EXPECT_EQ(1, timesFinalised());
}

TEST_F(SqliteKeptStatement, IsFinalisedOnceByDisconnect)
{
    Database.statement = Kept;
    EXPECT_TRUE(Database.disconnect());
    EXPECT_EQ(1, timesFinalised());
}

TEST_F(SqliteKeptStatement, ContinuesAndIsReplacedLikeAnyOther)
{
    Database.statement = Kept;
    ASSERT_TRUE(Database.prepare("SELECT 2")) << "replaced without a step";
    EXPECT_TRUE(Database.finalize());
    EXPECT_NE(0, sqlite3_stmt_busy(Kept));
    Database.statement = Kept;
    ASSERT_TRUE(Database.query());
    EXPECT_TRUE(Database.fetchRow());
    EXPECT_EQ("3", Database.queryColumns.getData(0UL));
    ASSERT_TRUE(Database.prepare("SELECT 3")) << "replaced after a step";
    EXPECT_TRUE(Database.finalize());
    EXPECT_NE(0, sqlite3_stmt_busy(Kept));
    Database.statement = Kept;
    ASSERT_TRUE(Database.query());
    EXPECT_TRUE(Database.fetchRow());
    EXPECT_FALSE(Database.fetchRow());
    EXPECT_EQ(0, timesFinalised());
    ASSERT_TRUE(Database.prepare("SELECT 4")) << "replaced at its end";
    EXPECT_EQ(1, timesFinalised());
    EXPECT_EQ(1U, openStatements(Database.handle)) << "the new one";
    EXPECT_TRUE(Database.disconnect());
}

TEST_F(SqliteKeptStatement, ThatIsResetDoesNotPileUp)
{
    Database.statement = Kept;
    EXPECT_TRUE(Database.resetResults());
    ASSERT_TRUE(Database.prepare("SELECT 2"));
    EXPECT_EQ(1, timesFinalised());
    EXPECT_EQ(1U, openStatements(Database.handle)) << "the new one";
    EXPECT_TRUE(Database.disconnect());
}

// Prepared records without a reason

TEST_F(SqliteClient, PreparedRecordWithoutAConnectionFailsSilently)
{
    SQLite3 database;
    const Console console = captured([&] { EXPECT_FALSE(database.preparedRecord(record({{":a", "1"}}))); });
    EXPECT_EQ("", console.out);
    EXPECT_EQ("", console.err);
}

TEST_F(SqliteClient, PreparedRecordWithoutAStatementFailsAndRepeatsNoOldReason)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (:a, 2)"));
    EXPECT_EQ(outOfRange, printedBy([&] { EXPECT_FALSE(Database.bind(":other", "x")); }));
    EXPECT_TRUE(Database.finalize());
    const Console console = captured([&] { EXPECT_FALSE(Database.preparedRecord(record({{":a", "1"}}))); });
    EXPECT_EQ("", console.out);
    EXPECT_EQ("", console.err);
}

TEST_F(SqliteClient, FailedRecordWithoutAReasonRepeatsNoOldOne)
{
    class Refusing : public SQLite3 {
    public:
        using SQLite3::execute;
        bool execute() override { return false; }
    };
    Refusing database;
    ASSERT_TRUE(database.createDatabase(":memory:"));
    ASSERT_TRUE(database.prepare("SELECT :a"));
    database.errorText = "an old reason [#1]";
    const Console console = captured([&] { EXPECT_FALSE(database.preparedRecord(record({{":a", "1"}}))); });
    EXPECT_EQ("", console.out);
    EXPECT_EQ("", console.err);
    EXPECT_EQ("", database.errorText);
}

TEST_F(SqliteClient, RecordThatIsStoredLeavesTheErrorText)
{
    ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (:a, 2)"));
    Database.errorText = "an old reason [#1]";
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.preparedRecord(record({{":a", "1"}}))); }));
    EXPECT_EQ("an old reason [#1]", Database.errorText);
}
