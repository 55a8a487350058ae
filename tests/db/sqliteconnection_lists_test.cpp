#include "support/console_capture.h"
#include "support/scoped_directory.h"
#include "support/sql_calls.h"
#include "support/sql_connection.h"
#include "support/sql_other_process.h"
#include "support/sql_sqlite.h"

#include <kd_lib/sqliteconnection.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

using kd_lib::SQLite3;
using kd_test::bareQuery;
using kd_test::failureLine;
using kd_test::makeDatabase;
using kd_test::OtherProcess;
using kd_test::printedBy;
using kd_test::sqliteCalls;
using Texts = std::vector<std::string>;
using namespace kd_test;

namespace {

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

TEST_F(SqliteConnection, AliasGoesIntoTheStatementUnchanged)
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

TEST_F(SqliteConnection, EnableLoadReturnsFalseAndChangesNothing)
{
    Database.errorText = "kept";
    EXPECT_EQ("", printedBy([&] { EXPECT_FALSE(Database.enableLoad()); }));
    EXPECT_FALSE(Database.loadEnabled);
    EXPECT_EQ("kept", Database.errorText);
}

TEST_F(SqliteConnection, LoadExtensionAlwaysReturnsFalse)
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

TEST_F(SqliteConnection, ColumnListOfAMissingTableReturnsTrueWithoutValues)
{
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    EXPECT_EQ("", printedBy([&] { EXPECT_TRUE(Database.getColumnList("none")); }));
    EXPECT_EQ(6U, Database.queryColumns.size());
    EXPECT_EQ("", Database.queryColumns.getData("name"));
}

TEST_F(SqliteConnection, ColumnListThatFailsReturnsFalseAndDropsTheLinkedTablesToo)
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
    EXPECT_EQ(2, Database.getRecords("t WHERE a > 1")) << "the table's text is unchanged";
}

TEST_F(SqliteConnection, RecordsOfAMissingTableAreZeroAndReportedOnce)
{
    EXPECT_EQ("", printedBy([&] { EXPECT_EQ(0, Database.getRecords("t")); })) << "no connection";
    ASSERT_TRUE(Database.createDatabase(":memory:"));
    EXPECT_EQ(failureLine(1, "no such table: none"), printedBy([&] { EXPECT_EQ(0, Database.getRecords("none")); }));
    EXPECT_EQ("no such table: none [#1]", Database.errorText);
}

TEST_F(SqliteConnection, FirstValueThatIsNotACountThrowsTheStandardException)
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

TEST_F(SqliteConnection, FileThatIsNotADatabaseOpensAndFailsAtItsFirstStatement)
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

TEST_F(SqliteConnection, CutFileFailsWithOneLinePerStatement)
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
