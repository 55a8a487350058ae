#include "support/console_capture.h"
#include "support/sql_calls.h"
#include "support/sql_connection.h"
#include "support/sql_other_process.h"
#include "support/sql_rights.h"
#include "support/sql_slot.h"
#include "support/sql_sqlite.h"

#include <kd_lib/sqliteconnection.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>
#include <unistd.h>
#include <vector>

using kd_lib::SQLite3;
using kd_test::bareQuery;
using kd_test::failureLine;
using kd_test::makeDatabase;
using kd_test::openDescriptors;
using kd_test::OtherProcess;
using kd_test::printedBy;
using kd_test::sqliteCalls;
using Texts = std::vector<std::string>;
using namespace kd_test;

namespace {

static_assert(std::is_base_of_v<kd_lib::SqlDatabase, SQLite3>);
static_assert(!std::is_copy_constructible_v<SQLite3>, "a connection has one owner");
static_assert(!std::is_copy_assignable_v<SQLite3>, "a connection has one owner");

// Construction

TEST(Sqlite3Object, HasTheInitialValues)
{
    const SQLite3 database;
    EXPECT_EQ("SQLITE3", database.engine);
    EXPECT_EQ("localhost", database.host);
    EXPECT_EQ("anonymous", database.user);
    EXPECT_EQ("", database.password);
    EXPECT_EQ("", database.database);
    EXPECT_EQ("", database.errorText);
    EXPECT_FALSE(database.loadEnabled);
    EXPECT_EQ(nullptr, database.handle);
    EXPECT_EQ(nullptr, database.statement);
    EXPECT_EQ(25U, database.pageRows);
    EXPECT_FALSE(database.inTransaction);
    EXPECT_EQ(0U, database.resultRows);
    EXPECT_EQ(0U, database.rowsFetched);
}

TEST(Sqlite3Object, IsDisconnectedAtFirstAndDisconnectReturnsTrue)
{
    SQLite3 database;
    EXPECT_FALSE(database.isConnected());
    EXPECT_TRUE(database.isDisconnected());
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(database.disconnect()); }));
}

TEST(Sqlite3Object, ConnectOfTheBaseAssignsTheSettingsAndOpensNothing)
{
    SQLite3 database;
    EXPECT_TRUE(database.connect());
    EXPECT_TRUE(database.connect("h", "u", "p", "d"));
    EXPECT_EQ("h", database.host);
    EXPECT_EQ("d", database.database);
    EXPECT_EQ("SQLITE3", database.engine);
    EXPECT_TRUE(database.isDisconnected());
}

TEST(Sqlite3Object, VirtualOperationsAreInTheirSlots)
{
    kd_test::expectSqlSlots<SQLite3>();
}

// Paths

TEST_F(SqliteConnection, DatabasePathJoinsTheHostAsDirectoryAndTheName)
{
    SQLite3 database;
    EXPECT_EQ("localhost/x.db", database.databasePath("x.db"));
    database.host = "";
    EXPECT_EQ("x.db", database.databasePath("x.db"));
    EXPECT_EQ("~/x.db", database.databasePath("~/x.db")) << "only the host is expanded";
    database.host = "dir/";
    EXPECT_EQ("dir/x.db", database.databasePath("x.db"));
    database.host = "/a/b";
    EXPECT_EQ("/a/b/", database.databasePath(""));
    database.host = "~";
    EXPECT_EQ(Scratch.path() + "/x.db", database.databasePath("x.db"));
    EXPECT_EQ("~", database.host);
    database.host = "~/sub";
    EXPECT_EQ(Scratch.path() + "/sub/x.db", database.databasePath("x.db"));
}

TEST_F(SqliteConnection, TheReasonOfAFailureNamesThePath)
{
    SQLite3 database;
    EXPECT_EQ("", database.failureAt("x.db"));
    printedBy([&] { EXPECT_FALSE(database.createDatabase("x.db")); });
    EXPECT_EQ(
        "localhost/x.db: unable to open database file [#14]; there is no directory localhost (host is \"localhost\")",
        database.failureAt("x.db"));
    database.host = "";
    printedBy([&] { EXPECT_FALSE(database.useDatabase("x.db")); });
    EXPECT_EQ("x.db: Cannot find database", database.failureAt("x.db"));
    printedBy([&] { EXPECT_FALSE(database.createDatabase("none/x.db")); });
    EXPECT_EQ("none/x.db: unable to open database file [#14]; there is no directory none",
              database.failureAt("none/x.db"));
    EXPECT_TRUE(database.createDatabase("x.db"));
    EXPECT_EQ("", database.failureAt("x.db"));
}

TEST_F(SqliteConnection, DeliberatelyTheHostIsTheDirectoryOfDatabaseFiles)
{
    std::filesystem::create_directory("localhost");
    makeDatabase("localhost/x.db", "CREATE TABLE inside (a)");
    SQLite3 database;
    ASSERT_TRUE(database.useDatabase("x.db"));
    EXPECT_EQ("localhost/x.db", database.database);
    EXPECT_TRUE(database.getTableList());
    ASSERT_EQ(1U, database.tableList.size());
    EXPECT_EQ("inside", database.tableList[0]->Name);
}

TEST_F(SqliteConnection, EmptyHostIsTheCurrentDirectory)
{
    makeDatabase("x.db", "CREATE TABLE here (a)");
    SQLite3 database;
    database.connect("", "u", "p", "d");
    ASSERT_TRUE(database.useDatabase("x.db"));
    EXPECT_EQ("x.db", database.database);
    EXPECT_TRUE(database.getTableList());
    ASSERT_EQ(1U, database.tableList.size());
    EXPECT_EQ("here", database.tableList[0]->Name);
}

TEST_F(SqliteConnection, DatabaseOfTheConnectSettingsIsNotOpenedByConnect)
{
    makeDatabase("x.db", "CREATE TABLE t (a)");
    Database.connect("", "u", "p", "x.db");
    EXPECT_TRUE(Database.isDisconnected());
    EXPECT_TRUE(Database.useDatabase(Database.database)) << "the member may be the argument";
    EXPECT_EQ("x.db", Database.database);
}

// Opening

TEST_F(SqliteConnection, UseDatabaseOpensAnExistingFile)
{
    makeDatabase("x.db", "CREATE TABLE t (a)");
    sqliteCalls.reset();
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.useDatabase("x.db")); }));
    EXPECT_TRUE(Database.isConnected());
    EXPECT_FALSE(Database.isDisconnected());
    EXPECT_EQ("x.db", Database.database);
    ASSERT_EQ(1U, sqliteCalls.Opens.size());
    EXPECT_EQ("x.db", sqliteCalls.Opens[0].Path);
    EXPECT_EQ(2, sqliteCalls.Opens[0].Flags);
    EXPECT_FALSE(sqliteCalls.Opens[0].NamesFileSystem);
}

TEST_F(SqliteConnection, CreateDatabaseCreatesAMissingFile)
{
    EXPECT_TRUE(Database.createDatabase("new.db"));
    EXPECT_EQ("new.db", Database.database);
    EXPECT_TRUE(std::filesystem::exists("new.db"));
    ASSERT_EQ(1U, sqliteCalls.Opens.size());
    EXPECT_EQ(6, sqliteCalls.Opens[0].Flags);
    EXPECT_FALSE(sqliteCalls.Opens[0].NamesFileSystem);
}

TEST_F(SqliteConnection, CreateDatabaseOpensAnExistingFile)
{
    makeDatabase("x.db", "CREATE TABLE t (a); INSERT INTO t VALUES (1)");
    EXPECT_TRUE(Database.createDatabase("x.db"));
    EXPECT_EQ(1, Database.getRecords("t"));
}

TEST_F(SqliteConnection, MemoryIsOpenedByUseAndByCreateWithoutTheHost)
{
    for (const bool create : {false, true}) {
        SQLite3 database;
        sqliteCalls.reset();
        EXPECT_TRUE(create ? database.createDatabase(":memory:") : database.useDatabase(":memory:"));
        EXPECT_EQ(":memory:", database.database);
        ASSERT_EQ(1U, sqliteCalls.Opens.size());
        EXPECT_EQ(":memory:", sqliteCalls.Opens[0].Path);
        EXPECT_EQ(6, sqliteCalls.Opens[0].Flags) << "create is forced";
    }
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST_F(SqliteConnection, EmptyNameChangesNothing)
{
    ASSERT_TRUE(Database.createDatabase("x.db"));
    Database.errorText = "kept";
    const sqlite3* handle = Database.handle;
    sqliteCalls.reset();
    EXPECT_EQ("", printedBy([&] {
                  EXPECT_FALSE(Database.openDatabase("", true, "x"));
                  EXPECT_FALSE(Database.useDatabase(""));
                  EXPECT_FALSE(Database.createDatabase(""));
              }));
    EXPECT_EQ("x.db", Database.database);
    EXPECT_EQ("kept", Database.errorText);
    EXPECT_EQ(handle, Database.handle);
    EXPECT_TRUE(sqliteCalls.Opens.empty());
    EXPECT_TRUE(sqliteCalls.Prepared.empty());
}

TEST_F(SqliteConnection, MissingFileIsReported)
{
    Database.errorText = "old";
    Database.database = "old";
    EXPECT_EQ("Cannot find database\n", printedBy([&] { EXPECT_FALSE(Database.useDatabase("missing.db")); }));
    EXPECT_EQ("Cannot find database", Database.errorText);
    EXPECT_EQ("", Database.database);
    EXPECT_TRUE(Database.isDisconnected());
    EXPECT_TRUE(sqliteCalls.Opens.empty());
    EXPECT_FALSE(std::filesystem::exists("missing.db"));
}

TEST_F(SqliteConnection, MissingFileLeavesTheConnectionThatWasOpen)
{
    ASSERT_TRUE(Database.createDatabase("x.db"));
    const sqlite3* handle = Database.handle;
    printedBy([&] { EXPECT_FALSE(Database.useDatabase("missing.db")); });
    EXPECT_EQ(handle, Database.handle);
    EXPECT_EQ("", Database.database);
}

TEST_F(SqliteConnection, SuccessClearsTheOldError)
{
    printedBy([&] { Database.useDatabase("missing.db"); });
    EXPECT_TRUE(Database.createDatabase("x.db"));
    EXPECT_EQ("", Database.errorText);
}

TEST_F(SqliteConnection, FailedOpenIsReportedAndKeepsTheHandle)
{
    std::filesystem::create_directory("directory.db");
    EXPECT_EQ(failureLine(14, "unable to open database file"),
              printedBy([&] { EXPECT_FALSE(Database.useDatabase("directory.db")); }));
    EXPECT_EQ("unable to open database file [#14]", Database.errorText);
    EXPECT_EQ("", Database.database);
    EXPECT_TRUE(Database.isConnected()) << "the handle that SQLite returned stays";
    EXPECT_TRUE(Database.disconnect());
    EXPECT_EQ("", Database.errorText);
}

class SqliteConnectionDeathTest : public SqliteConnection {};

TEST_F(SqliteConnectionDeathTest, ExistingFileThatMayNotBeReadIsNotReportedAsMissing)
{
    makeDatabase("x.db", "CREATE TABLE t (a)");
    std::filesystem::permissions(Scratch.path(), std::filesystem::perms::all);
    std::filesystem::permissions("x.db", std::filesystem::perms::none);
    const auto useWithoutRights = [this] {
        kd_test::giveUpRights();
        const bool opened = Database.useDatabase("x.db");
        ::_exit(!opened && Database.errorText == "unable to open database file [#14]" ? 0 : 1);
    };
    EXPECT_EXIT(useWithoutRights(), testing::ExitedWithCode(0), "");
}

TEST_F(SqliteConnection, CreateInAMissingDirectoryFails)
{
    EXPECT_EQ(failureLine(14, "unable to open database file"),
              printedBy([&] { EXPECT_FALSE(Database.createDatabase("no/such/x.db")); }));
}

TEST_F(SqliteConnection, AfterAFailedOpenAnotherOneSucceeds)
{
    printedBy([&] { Database.createDatabase("no/such/x.db"); });
    EXPECT_TRUE(Database.createDatabase("x.db"));
    EXPECT_EQ("x.db", Database.database);
    EXPECT_EQ("", Database.errorText);
}

TEST_F(SqliteConnection, ReplacedConnectionStaysOpenUntilDisconnect)
{
    const std::size_t before = openDescriptors();
    ASSERT_TRUE(Database.createDatabase("first.db"));
    ASSERT_TRUE(Database.execute("CREATE TABLE t (a)"));
    sqlite3* first = Database.handle;
    ASSERT_TRUE(Database.createDatabase("second.db"));
    EXPECT_NE(first, Database.handle);
    EXPECT_EQ(0, sqliteCalls.Closes);
    EXPECT_EQ("0\n", bareQuery(first, "SELECT count(*) FROM t"));
    EXPECT_EQ(0U, (Database.getTableList(), Database.tableList.size())) << "the second database is the current one";
    EXPECT_LT(before, openDescriptors());
    EXPECT_TRUE(Database.disconnect());
    EXPECT_EQ(2, sqliteCalls.Closes);
    EXPECT_EQ(before, openDescriptors());
}

TEST_F(SqliteConnection, EveryReplacedConnectionIsClosedByDestruction)
{
    const std::size_t before = openDescriptors();
    {
        SQLite3 database;
        database.host = "";
        for (const char* name : {"a.db", "b.db", "c.db", "a.db"}) {
            ASSERT_TRUE(database.createDatabase(name));
            ASSERT_TRUE(database.execute("CREATE TABLE IF NOT EXISTS t (x)"));
        }
    }
    EXPECT_EQ(4, sqliteCalls.Closes);
    EXPECT_EQ(before, openDescriptors());
}

TEST_F(SqliteConnection, DeliberatelyTheEncodingGoesToTheConnectionThatWasOpenBefore)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    sqlite3* first = Database.handle;
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.openDatabase("x.db", true, "'UTF-16le'")); }));
    EXPECT_EQ("UTF-16le\n", bareQuery(first, "PRAGMA encoding"));
    EXPECT_EQ("UTF-8\n", bareQuery(Database.handle, "PRAGMA encoding"));
}

TEST_F(SqliteConnection, EncodingPragmaIsUnchangedAndIsFinalised)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    sqliteCalls.reset();
    ASSERT_TRUE(Database.openDatabase(":memory:", true, "'UTF-16be'"));
    EXPECT_EQ(Texts{"PRAGMA encoding = 'UTF-16be';"}, sqliteCalls.Prepared);
    EXPECT_EQ(nullptr, Database.statement);
}

TEST_F(SqliteConnection, EncodingWithoutAConnectionFailsSilentlyAndTheOpenContinues)
{
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.openDatabase("x.db", true, "'UTF-16le'")); }));
    EXPECT_EQ("UTF-8\n", bareQuery(Database.handle, "PRAGMA encoding"));
    EXPECT_EQ("", Database.errorText);
}

TEST_F(SqliteConnection, FailingEncodingPragmaIsReportedAndTheOpenContinues)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    EXPECT_EQ(failureLine(1, "near \"-\": syntax error"),
              printedBy([&] { EXPECT_TRUE(Database.openDatabase("x.db", true, "UTF-16le")); }));
    EXPECT_EQ("x.db", Database.database);
    EXPECT_EQ("near \"-\": syntax error [#1]", Database.errorText);
}

TEST_F(SqliteConnection, EncodingIsNotSetForAMissingFile)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    sqliteCalls.reset();
    printedBy([&] { EXPECT_FALSE(Database.openDatabase("missing.db", false, "'UTF-16le'")); });
    EXPECT_TRUE(sqliteCalls.Prepared.empty());
}

// Disconnecting

TEST_F(SqliteConnection, DisconnectReturnsToTheDisconnectedState)
{
    ASSERT_TRUE(Database.createDatabase("x.db"));
    Database.execute("CREATE TABLE t (a)");
    Database.query("SELECT 1 AS one");
    Database.errorText = "old";
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.disconnect()); }));
    EXPECT_TRUE(Database.isDisconnected());
    EXPECT_FALSE(Database.isConnected());
    EXPECT_EQ(nullptr, Database.statement);
    EXPECT_EQ("", Database.database);
    EXPECT_EQ("", Database.errorText);
    EXPECT_EQ(0U, Database.queryColumns.size());
    EXPECT_EQ(0U, Database.resultRows);
    EXPECT_TRUE(Database.disconnect());
}

TEST_F(SqliteConnection, DisconnectWithoutAConnectionEmptiesDatabaseErrorAndResult)
{
    Database.database = "d";
    Database.errorText = "e";
    Database.resultRows = 3;
    Database.queryColumns.add(std::string("c"));
    EXPECT_TRUE(Database.disconnect());
    EXPECT_EQ("", Database.database);
    EXPECT_EQ("", Database.errorText);
    EXPECT_EQ(0U, Database.resultRows);
    EXPECT_EQ(0U, Database.queryColumns.size());
}

TEST_F(SqliteConnection, DisconnectKeepsSettingsAndLinkedTablesUnlikeTheBase)
{
    Database.connect("", "u", "p", "d");
    ASSERT_TRUE(Database.createDatabase("x.db"));
    Database.linkTable("t");
    EXPECT_TRUE(Database.disconnect());
    EXPECT_EQ("SQLITE3", Database.engine);
    EXPECT_EQ("u", Database.user);
    EXPECT_EQ("p", Database.password);
    EXPECT_EQ(Texts{"x.db:t"}, linkedTables());
}

TEST_F(SqliteConnection, DisconnectDiscardsAnOpenTransaction)
{
    ASSERT_TRUE(Database.createDatabase("x.db"));
    Database.execute("CREATE TABLE t (a)");
    Database.beginTransaction();
    Database.execute("INSERT INTO t VALUES (1)");
    EXPECT_TRUE(Database.disconnect());
    ASSERT_TRUE(Database.useDatabase("x.db"));
    EXPECT_EQ(0, Database.getRecords("t"));
}

TEST_F(SqliteConnection, BusyCloseIsCalledSixTimesInAllAndTheConnectionStays)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    sqliteCalls.Replies["close"] = {SQLITE_BUSY, 100};
    EXPECT_FALSE(Database.disconnect());
    EXPECT_EQ(6, sqliteCalls.Closes);
    EXPECT_TRUE(Database.isConnected());
    EXPECT_EQ(":memory:", Database.database);
    sqliteCalls.reset();
    EXPECT_TRUE(Database.disconnect());
}

TEST_F(SqliteConnection, CloseThatSucceedsTheSixthTimeIsASuccess)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    sqliteCalls.Replies["close"] = {SQLITE_BUSY, 5};
    EXPECT_TRUE(Database.disconnect());
    EXPECT_EQ(6, sqliteCalls.Closes);
    EXPECT_TRUE(Database.isDisconnected());
}

TEST_F(SqliteConnection, OtherFailureOfCloseIsNotRepeatedAndReportsTheErrorOfTheConnection)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    const std::string line = failureLine(1, "no such table: none");
    EXPECT_EQ(line, printedBy([&] { Database.execute("DELETE FROM none"); }));
    sqliteCalls.reset();
    sqliteCalls.Replies["close"] = {SQLITE_MISUSE, 1};
    EXPECT_EQ(line, printedBy([&] { EXPECT_FALSE(Database.disconnect()); }));
    EXPECT_EQ(1, sqliteCalls.Closes);
    EXPECT_EQ("no such table: none [#1]", Database.errorText);
    EXPECT_TRUE(Database.isConnected());
}

TEST_F(SqliteConnection, DisconnectLeavesNoDescriptorAndNoLockOfAHalfReadStatement)
{
    OtherProcess other("x.db");
    ASSERT_EQ(SQLITE_OK, other.run("CREATE TABLE t (a); INSERT INTO t VALUES (1), (2)"));
    const std::size_t before = openDescriptors();
    ASSERT_TRUE(Database.useDatabase("x.db"));
    ASSERT_TRUE(Database.query("SELECT a FROM t"));
    ASSERT_TRUE(Database.fetchRow());
    EXPECT_EQ(SQLITE_BUSY, other.run("DELETE FROM t"));
    EXPECT_TRUE(Database.disconnect());
    EXPECT_EQ(before, openDescriptors());
    EXPECT_EQ(SQLITE_OK, other.run("DELETE FROM t"));
}

TEST_F(SqliteConnection, DestructionDisconnects)
{
    const std::size_t before = openDescriptors();
    auto database = std::make_unique<SQLite3>();
    database->host = "";
    ASSERT_TRUE(database->createDatabase("x.db"));
    ASSERT_TRUE(database->execute("CREATE TABLE t (a)"));
    ASSERT_TRUE(database->query("SELECT name FROM sqlite_master"));
    ASSERT_TRUE(database->fetchRow());
    EXPECT_LT(before, openDescriptors());
    database.reset();
    EXPECT_EQ(before, openDescriptors());
}

TEST_F(SqliteConnection, DestructionFinalisesTheStatementsEvenOfAConnectionThatDoesNotClose)
{
    sqlite3* handle = nullptr;
    {
        SQLite3 database;
        ASSERT_TRUE(database.createDatabase(":memory:"));
        ASSERT_TRUE(database.query("SELECT 1"));
        ASSERT_TRUE(database.fetchRow());
        ASSERT_TRUE(database.prepare("SELECT 2"));
        handle = database.handle;
        ASSERT_EQ(2U, kd_test::openStatements(handle));
        sqliteCalls.Replies["close"] = {SQLITE_BUSY, 6};
    }
    EXPECT_EQ(0U, kd_test::openStatements(handle));
    EXPECT_EQ(SQLITE_OK, sqlite3_close_v2(handle));
}

TEST_F(SqliteConnection, TenThousandRoundsLeaveNoDescriptor)
{
    makeDatabase("x.db", "CREATE TABLE t (a); INSERT INTO t VALUES (1), (2)");
    const std::size_t before = openDescriptors();
    for (int round = 0; round < 10'000; ++round) {
        ASSERT_TRUE(Database.useDatabase("x.db"));
        ASSERT_TRUE(Database.prepare("INSERT INTO t VALUES (?)"));
        ASSERT_TRUE(Database.query("SELECT a FROM t"));
        ASSERT_TRUE(Database.fetchRow());
        ASSERT_TRUE(Database.disconnect());
    }
    EXPECT_EQ(before, openDescriptors());
}

// Errors

TEST_F(SqliteConnection, SetErrorDoesNothingWithoutAConnectionOrWithoutAnError)
{
    Database.errorText = "kept";
    EXPECT_EQ("", printedBy([&] { Database.setError(); }));
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    Database.errorText = "kept";
    EXPECT_EQ("", printedBy([&] { Database.setError(); }));
    EXPECT_EQ("kept", Database.errorText);
}

TEST_F(SqliteConnection, SetErrorReportsTextAndCodeInOneLine)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    const std::string line = failureLine(1, "no such table: none");
    EXPECT_EQ(line, printedBy([&] { Database.prepare("SELECT * FROM none"); }));
    Database.errorText = "";
    EXPECT_EQ(line, printedBy([&] { Database.setError(); }));
    EXPECT_EQ("no such table: none [#1]", Database.errorText);
}

}  // namespace
