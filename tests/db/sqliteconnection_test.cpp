#include "support/console_capture.h"
#include "support/scoped_directory.h"
#include "support/sql_calls.h"
#include "support/sql_other_process.h"
#include "support/sql_rights.h"
#include "support/sql_slot.h"
#include "support/sql_sqlite.h"

#include <kd_lib/sqliteconnection.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>
#include <unistd.h>
#include <vector>

namespace {

using kd_lib::SQLite3;
using kd_test::bareQuery;
using kd_test::failureLine;
using kd_test::makeDatabase;
using kd_test::openDescriptors;
using kd_test::OtherProcess;
using kd_test::printedBy;
using kd_test::ScopedDirectory;
using kd_test::sqliteCalls;
using Texts = std::vector<std::string>;

static_assert(std::is_base_of_v<kd_lib::SqlDatabase, SQLite3>);
static_assert(!std::is_copy_constructible_v<SQLite3>, "a connection has one owner");
static_assert(!std::is_copy_assignable_v<SQLite3>, "a connection has one owner");

/// The working directory and the home directory are a scratch directory as long as it lives.
class InScratchDirectory : public testing::Test {
protected:
    void SetUp() override
    {
        const char* home = std::getenv("HOME");
        SavedHome = home != nullptr ? home : "";
        SavedDirectory = std::filesystem::current_path();
        std::filesystem::current_path(Scratch.path());
        ::setenv("HOME", Scratch.path().c_str(), 1);
        sqliteCalls.reset();
    }

    void TearDown() override
    {
        sqliteCalls.reset();
        std::filesystem::current_path(SavedDirectory);
        ::setenv("HOME", SavedHome.c_str(), 1);
    }

    ScopedDirectory Scratch;

private:
    std::string SavedHome;
    std::filesystem::path SavedDirectory;
};

/// An object whose `host` is empty, so that paths stand for themselves.
class SqliteConnection : public InScratchDirectory {
protected:
    SqliteConnection() { Database.host = ""; }

    Texts linkedTables() const
    {
        Texts tables;
        for (const kd_lib::DatabaseTable* table : Database.tableList) {
            tables.push_back(table->Path + ":" + table->Name);
        }
        return tables;
    }

    SQLite3 Database;
};

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

TEST(Sqlite3Object, IsDisconnectedAtFirstAndDisconnectAnswersTrue)
{
    SQLite3 database;
    EXPECT_FALSE(database.isConnected());
    EXPECT_TRUE(database.isDisconnected());
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(database.disconnect()); }));
}

TEST(Sqlite3Object, ConnectOfTheFrameAssignsTheSettingsAndOpensNothing)
{
    SQLite3 database;
    EXPECT_TRUE(database.connect());
    EXPECT_TRUE(database.connect("h", "u", "p", "d"));
    EXPECT_EQ("h", database.host);
    EXPECT_EQ("d", database.database);
    EXPECT_EQ("SQLITE3", database.engine);
    EXPECT_TRUE(database.isDisconnected());
}

TEST(Sqlite3Object, VirtualOperationsStandInTheirSlots)
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

TEST_F(SqliteConnection, CreateDatabaseMakesAMissingFile)
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
        const bool answer = Database.useDatabase("x.db");
        ::_exit(!answer && Database.errorText == "unable to open database file [#14]" ? 0 : 1);
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

TEST_F(SqliteConnection, EncodingPragmaStandsAsGivenAndIsFinalised)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    sqliteCalls.reset();
    ASSERT_TRUE(Database.openDatabase(":memory:", true, "'UTF-16be'"));
    EXPECT_EQ(Texts{"PRAGMA encoding = 'UTF-16be';"}, sqliteCalls.Prepared);
    EXPECT_EQ(nullptr, Database.statement);
}

TEST_F(SqliteConnection, EncodingWithoutAConnectionFailsSilentlyAndTheOpenGoesOn)
{
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.openDatabase("x.db", true, "'UTF-16le'")); }));
    EXPECT_EQ("UTF-8\n", bareQuery(Database.handle, "PRAGMA encoding"));
    EXPECT_EQ("", Database.errorText);
}

TEST_F(SqliteConnection, FailingEncodingPragmaIsReportedAndTheOpenGoesOn)
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

TEST_F(SqliteConnection, DisconnectKeepsSettingsAndLinkedTablesUnlikeTheFrame)
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

TEST_F(SqliteConnection, DisconnectLosesAnOpenTransaction)
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
    sqliteCalls.Answers["close"] = {SQLITE_BUSY, 100};
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
    sqliteCalls.Answers["close"] = {SQLITE_BUSY, 5};
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
    sqliteCalls.Answers["close"] = {SQLITE_MISUSE, 1};
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
        sqliteCalls.Answers["close"] = {SQLITE_BUSY, 6};
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

// Attaching

TEST_F(SqliteConnection, AttachWithoutAConnectionIsReported)
{
    EXPECT_EQ("No main database has been opened\n", printedBy([&] { EXPECT_FALSE(Database.attach("a.db", "a")); }));
    EXPECT_EQ("No main database has been opened", Database.errorText);
    EXPECT_TRUE(sqliteCalls.Prepared.empty());
}

TEST_F(SqliteConnection, AttachAddsASchemaAndDetachRemovesIt)
{
    makeDatabase("a.db", "CREATE TABLE t (x); INSERT INTO t VALUES (7)");
    ASSERT_TRUE(Database.createDatabase("main.db"));
    EXPECT_FALSE(Database.isAttached("extra"));
    sqliteCalls.reset();
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.attach("a.db", "extra")); }));
    EXPECT_EQ("ATTACH DATABASE 'a.db' AS extra;", sqliteCalls.Prepared.at(0));
    EXPECT_EQ(nullptr, Database.statement);
    EXPECT_TRUE(Database.isAttached("extra"));
    EXPECT_EQ(1, Database.getRecords("extra.t"));
    EXPECT_EQ("main.db", Database.database);
    sqliteCalls.reset();
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.detach("extra")); }));
    EXPECT_EQ("DETACH DATABASE extra;", sqliteCalls.Prepared.at(0));
    EXPECT_EQ(nullptr, Database.statement);
    EXPECT_FALSE(Database.isAttached("extra"));
}

TEST_F(SqliteConnection, AttachExpandsTheHomeAndDoesNotApplyTheHost)
{
    makeDatabase("a.db", "CREATE TABLE t (x)");
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    Database.host = "elsewhere";
    EXPECT_TRUE(Database.attach("~/a.db", "home"));
    EXPECT_TRUE(Database.attach("a.db", "here"));
    EXPECT_EQ(0, Database.getRecords("home.t"));
    EXPECT_EQ(0, Database.getRecords("here.t"));
    EXPECT_EQ("", Database.errorText);
}

TEST_F(SqliteConnection, FailedAttachIsReportedOnce)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    std::filesystem::create_directory("directory");
    EXPECT_EQ(failureLine(14, "unable to open database: directory"),
              printedBy([&] { EXPECT_FALSE(Database.attach("directory", "a")); }));
    EXPECT_EQ("unable to open database: directory [#14]", Database.errorText);
    EXPECT_EQ(nullptr, Database.statement);
    EXPECT_EQ(failureLine(1, "database main is already in use"),
              printedBy([&] { EXPECT_FALSE(Database.attach(":memory:", "main")); }));
}

TEST_F(SqliteConnection, PathOfAttachCannotBreakOutOfItsQuotes)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    ASSERT_TRUE(Database.execute("CREATE TABLE t (a)"));
    for (const std::string& path :
         {std::string("a'b.db"), std::string("' AS x; DROP TABLE t; --"), std::string("two\nlines;.db"),
          std::string("\"quoted\".db"), std::string("\x01\x1b\x7f.db")}) {
        SCOPED_TRACE(path);
        EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.attach(path, "other")); }));
        EXPECT_TRUE(std::filesystem::exists(path));
        EXPECT_TRUE(Database.detach("other"));
        EXPECT_EQ("1\n", bareQuery(Database.handle, "SELECT count(*) FROM sqlite_master"));
    }
}

TEST_F(SqliteConnection, PathOfAttachWithAZeroByteIsRefused)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    EXPECT_EQ(failureLine(1, "unrecognized token: \"'a\""),
              printedBy([&] { EXPECT_FALSE(Database.attach(std::string("a\0b", 3), "other")); }));
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST_F(SqliteConnection, DeliberatelyABackquoteInThePathOfAttachBecomesADoubleQuote)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    EXPECT_TRUE(Database.attach("a`b.db", "other"));
    EXPECT_TRUE(std::filesystem::exists("a\"b.db"));
    EXPECT_FALSE(std::filesystem::exists("a`b.db"));
}

TEST_F(SqliteConnection, AliasStandsInTheStatementAsItIs)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    EXPECT_TRUE(Database.attach(":memory:", "`two words`"));
    EXPECT_TRUE(Database.isAttached("two words"));
    EXPECT_TRUE(Database.detach("`two words`"));
    EXPECT_EQ(failureLine(1, "near \"words\": syntax error"),
              printedBy([&] { EXPECT_FALSE(Database.attach(":memory:", "two words")); }));
}

TEST_F(SqliteConnection, DetachOfAnUnknownSchemaIsReportedOnce)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    EXPECT_EQ(failureLine(1, "no such database: none"), printedBy([&] { EXPECT_FALSE(Database.detach("none")); }));
    EXPECT_EQ(nullptr, Database.statement);
}

TEST_F(SqliteConnection, DetachWithoutAConnectionFailsSilently)
{
    EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(Database.detach("a")); }));
    EXPECT_EQ("", Database.errorText);
}

// Extensions

TEST_F(SqliteConnection, EnableLoadAnswersFalseAndChangesNothing)
{
    Database.errorText = "kept";
    EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(Database.enableLoad()); }));
    EXPECT_FALSE(Database.loadEnabled);
    EXPECT_EQ("kept", Database.errorText);
}

TEST_F(SqliteConnection, LoadExtensionAlwaysAnswersFalse)
{
    EXPECT_EQ("Enable SQLite3 to load extensions\n", printedBy([&] { EXPECT_FALSE(Database.loadExtension("x")); }));
    EXPECT_EQ("Enable SQLite3 to load extensions", Database.errorText);
    Database.loadEnabled = true;
    EXPECT_EQ("Enabling extension failed\n", printedBy([&] { EXPECT_FALSE(Database.loadExtension("x")); }));
    EXPECT_EQ("Enabling extension failed", Database.errorText);
    EXPECT_TRUE(Database.loadEnabled);
}

// Lists

TEST_F(SqliteConnection, DatabaseListHoldsTheSchemaNames)
{
    ASSERT_TRUE(Database.createDatabase("x.db"));
    Database.databaseList = {"old"};
    EXPECT_TRUE(Database.getDatabaseList());
    EXPECT_EQ(Texts{"main"}, Database.databaseList);
    EXPECT_EQ(nullptr, Database.statement);
    ASSERT_TRUE(Database.attach(":memory:", "Second"));
    ASSERT_TRUE(Database.attach(":memory:", "third"));
    EXPECT_TRUE(Database.getDatabaseList());
    EXPECT_EQ((Texts{"main", "Second", "third"}), Database.databaseList);
}

TEST_F(SqliteConnection, DatabaseListWithoutAConnectionIsEmptyAndFalse)
{
    Database.databaseList = {"old"};
    EXPECT_EQ("", printedBy([&] {
                  EXPECT_FALSE(Database.getDatabaseList());
                  EXPECT_FALSE(Database.isAttached("main"));
              }));
    EXPECT_TRUE(Database.databaseList.empty());
}

TEST_F(SqliteConnection, TableListLinksTheTablesOfTheMainSchema)
{
    makeDatabase("x.db", "CREATE TABLE Zebra (a); CREATE TABLE apple (b); CREATE VIEW v AS SELECT 1;"
                         "CREATE INDEX i ON apple (b)");
    ASSERT_TRUE(Database.useDatabase("x.db"));
    ASSERT_TRUE(Database.attach(":memory:", "other"));
    ASSERT_TRUE(Database.execute("CREATE TABLE other.hidden (a)"));
    Database.linkTable("old");
    EXPECT_TRUE(Database.getTableList());
    EXPECT_EQ((Texts{"x.db:Zebra", "x.db:apple"}), linkedTables());
    EXPECT_EQ(nullptr, Database.statement);
}

TEST_F(SqliteConnection, TableListOfAnEmptyDatabaseIsEmptyAndTrue)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    Database.linkTable("old");
    EXPECT_TRUE(Database.getTableList());
    EXPECT_TRUE(Database.tableList.empty());
}

TEST_F(SqliteConnection, TableListWithoutAConnectionIsEmptyAndFalse)
{
    Database.linkTable("old");
    EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(Database.getTableList()); }));
    EXPECT_TRUE(Database.tableList.empty());
}

TEST_F(SqliteConnection, DeliberatelyColumnListDropsTheLinkedTablesAndKeepsTheLastRowOnly)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    Database.execute("CREATE TABLE t (first INTEGER PRIMARY KEY, last VARCHAR(7) NOT NULL DEFAULT 'x')");
    ASSERT_TRUE(Database.getTableList());
    ASSERT_EQ(1U, Database.tableList.size());
    EXPECT_TRUE(Database.getColumnList("t"));
    EXPECT_TRUE(Database.tableList.empty());
    EXPECT_EQ(nullptr, Database.statement);
    const Texts names = {"cid", "name", "type", "notnull", "dflt_value", "pk"};
    const Texts lastRow = {"1", "last", "VARCHAR(7)", "1", "'x'", "0"};
    ASSERT_EQ(names.size(), Database.queryColumns.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(names[i], Database.queryColumns.get(i)->Name);
        EXPECT_EQ(lastRow[i], Database.queryColumns.getData(i));
    }
    EXPECT_EQ(2U, Database.resultRows);
}

TEST_F(SqliteConnection, ColumnListOfAMissingTableIsTrueWithoutValues)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.getColumnList("none")); }));
    EXPECT_EQ(6U, Database.queryColumns.size());
    EXPECT_EQ("", Database.queryColumns.getData("name"));
}

TEST_F(SqliteConnection, ColumnListThatFailsIsFalseAndDropsTheLinkedTablesToo)
{
    Database.linkTable("old");
    EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(Database.getColumnList("t")); })) << "no connection";
    EXPECT_TRUE(Database.tableList.empty());
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    EXPECT_EQ(failureLine(1, "near \"b\": syntax error"),
              printedBy([&] { EXPECT_FALSE(Database.getColumnList("a b")); }));
}

TEST_F(SqliteConnection, DeliberatelyTheEndOfAListEndsAnOpenTransaction)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    Database.beginTransaction();
    EXPECT_TRUE(Database.isAttached("main"));
    EXPECT_FALSE(Database.inTransaction);
    EXPECT_NE(0, sqlite3_get_autocommit(Database.handle));
}

TEST_F(SqliteConnection, RecordsAreCountedAndTheCountFinalised)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    Database.execute("CREATE TABLE t (a)");
    EXPECT_EQ(0, Database.getRecords("t"));
    Database.execute("INSERT INTO t VALUES (1), (2), (3)");
    kd_lib::SqlDatabase& base = Database;
    EXPECT_EQ(3, base.getRecords("t"));
    EXPECT_EQ(nullptr, Database.statement);
    EXPECT_EQ(2, Database.getRecords("t WHERE a > 1")) << "the table's text stands as it is";
}

TEST_F(SqliteConnection, RecordsOfAMissingTableAreZeroAndReportedOnce)
{
    EXPECT_EQ("", printedBy([&] { EXPECT_EQ(0, Database.getRecords("t")); })) << "no connection";
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    EXPECT_EQ(failureLine(1, "no such table: none"), printedBy([&] { EXPECT_EQ(0, Database.getRecords("none")); }));
    EXPECT_EQ("no such table: none [#1]", Database.errorText);
}

TEST_F(SqliteConnection, FirstValueThatIsNoCountThrowsTheStandardException)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    Database.execute("CREATE TABLE t (a)");
    EXPECT_THROW(Database.getRecords("t UNION SELECT 'many' ORDER BY 1 DESC"), std::invalid_argument);
    EXPECT_THROW(Database.getRecords("t UNION SELECT '99999999999999999999' ORDER BY 1 DESC"), std::out_of_range);
    EXPECT_EQ(0, Database.getRecords("t"));
}

TEST_F(SqliteConnection, RecordsCountedInATransactionLeaveItOpen)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    Database.execute("CREATE TABLE t (a)");
    Database.beginTransaction();
    Database.execute("INSERT INTO t VALUES (1)");
    EXPECT_EQ(1, Database.getRecords("t"));
    EXPECT_TRUE(Database.inTransaction);
    Database.rollback();
    EXPECT_EQ(0, Database.getRecords("t"));
}

TEST_F(SqliteConnection, StorageClassesAreMappedByTheirCodes)
{
    struct Case {
        int Code;
        int Type;
        const char* Name;
    };
    for (const Case& row : {Case{-1, 0, "unknown"}, Case{0, 0, "unknown"}, Case{1, 5, "integer"}, Case{2, 3, "float"},
                            Case{3, 12, "text"}, Case{4, 14, "blob"}, Case{5, 15, "unknown"}, Case{6, 0, "unknown"}}) {
        SCOPED_TRACE(row.Code);
        const kd_lib::FIELD_TYPE type = Database.convertFieldType(row.Code);
        EXPECT_EQ(row.Type, static_cast<int>(type));
        EXPECT_EQ(row.Name, kd_lib::getFieldTypeName(type));
    }
}

// Damaged files and locks

TEST_F(SqliteConnection, FileThatIsNoDatabaseOpensAndFailsAtItsFirstStatement)
{
    const std::string line = failureLine(26, "file is not a database");
    Scratch.write("x.db", std::string(4096, 'x'));
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.useDatabase("x.db")); }));
    EXPECT_EQ(line, printedBy([&] { EXPECT_FALSE(Database.getTableList()); }));
    EXPECT_EQ(line, printedBy([&] { EXPECT_EQ(0, Database.getRecords("t")); }));
    EXPECT_EQ(line, printedBy([&] { EXPECT_FALSE(Database.execute("CREATE TABLE t (a)")); }));
    EXPECT_EQ("file is not a database [#26]", Database.errorText);
    EXPECT_TRUE(Database.disconnect());
    EXPECT_EQ(std::string(4096, 'x'), kd_test::readFile("x.db"));
}

TEST_F(SqliteConnection, EmptyFileIsAnEmptyDatabase)
{
    Scratch.write("x.db", "");
    EXPECT_TRUE(Database.useDatabase("x.db"));
    EXPECT_TRUE(Database.getTableList());
    EXPECT_TRUE(Database.tableList.empty());
}

TEST_F(SqliteConnection, CutFileFailsWithOneLineAStatement)
{
    makeDatabase("x.db", "PRAGMA page_size = 512; CREATE TABLE t (a); WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL "
                         "SELECT i + 1 FROM n WHERE i < 500) INSERT INTO t SELECT 'value ' || i FROM n");
    const std::string whole = kd_test::readFile("x.db");
    struct Case {
        std::size_t Size;
        std::string Line;
    };
    const std::string malformed = failureLine(11, "database disk image is malformed");
    for (const Case& cut : {Case{1, failureLine(1, "no such table: t")}, Case{99, malformed}, Case{511, malformed},
                            Case{512, malformed}, Case{whole.size() / 2, malformed}}) {
        SCOPED_TRACE(cut.Size);
        Scratch.write("cut.db", whole.substr(0, cut.Size));
        ASSERT_TRUE(Database.useDatabase("cut.db"));
        EXPECT_EQ(cut.Line, printedBy([&] { EXPECT_EQ(0, Database.getRecords("t")); }));
        EXPECT_EQ(cut.Line, printedBy([&] { EXPECT_FALSE(Database.execute("INSERT INTO t VALUES (1)")); }));
        EXPECT_TRUE(Database.disconnect());
    }
}

TEST_F(SqliteConnection, EveryCutOfAFileIsSurvived)
{
    makeDatabase("x.db", "PRAGMA page_size = 512; CREATE TABLE t (a, b UNIQUE);"
                         "INSERT INTO t VALUES ('r1c1', 'r1c2'), ('r2c1', hex(zeroblob(1500)))");
    const std::string whole = kd_test::readFile("x.db");
    for (std::size_t size = 0; size < whole.size(); size += 13) {
        SCOPED_TRACE(size);
        Scratch.write("cut.db", whole.substr(0, size));
        printedBy([&] {
            EXPECT_TRUE(Database.useDatabase("cut.db"));
            Database.getTableList();
            Database.getColumnList("t");
            Database.getRecords("t");
            if (Database.query("SELECT * FROM t")) {
                Database.queryResults();
            }
            Database.finalize();
            Database.execute("INSERT INTO t VALUES (1, 2)");
            EXPECT_TRUE(Database.disconnect());
        });
    }
}

TEST_F(SqliteConnection, DatabaseLockedByAnotherProcessFailsUntilItIsFree)
{
    OtherProcess other("x.db");
    ASSERT_EQ(SQLITE_OK, other.run("CREATE TABLE t (a); BEGIN EXCLUSIVE"));
    const std::string line = failureLine(5, "database is locked");
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.useDatabase("x.db")); }));
    EXPECT_EQ(line, printedBy([&] { EXPECT_FALSE(Database.getTableList()); }));
    EXPECT_EQ(line, printedBy([&] { EXPECT_EQ(0, Database.getRecords("t")); }));
    EXPECT_EQ(line, printedBy([&] { EXPECT_FALSE(Database.execute("INSERT INTO t VALUES (1)")); }));
    EXPECT_EQ("database is locked [#5]", Database.errorText);
    ASSERT_EQ(SQLITE_OK, other.run("COMMIT"));
    EXPECT_TRUE(Database.execute("INSERT INTO t VALUES (1)"));
    EXPECT_EQ(1, Database.getRecords("t"));
}

TEST_F(SqliteConnection, ScriptIntoALockedDatabaseStopsAtItsFirstStatement)
{
    OtherProcess other("x.db");
    ASSERT_EQ(SQLITE_OK, other.run("CREATE TABLE t (a); BEGIN EXCLUSIVE"));
    ASSERT_TRUE(Database.useDatabase("x.db"));
    Scratch.write("script.sql", "INSERT INTO t VALUES (1);\nINSERT INTO t VALUES (2);\n");
    const kd_test::Console console = kd_test::captured([&] { EXPECT_TRUE(Database.importSqlFile("script.sql")); });
    EXPECT_EQ("Executing SQL file script.sql\n" + failureLine(5, "database is locked"), console.out);
    EXPECT_EQ("Error executing statement\n", console.err);
}

}  // namespace
