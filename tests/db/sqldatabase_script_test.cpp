#include "support/console_capture.h"
#include "support/scoped_directory.h"
#include "support/sql_fake.h"
#include "support/sql_rights.h"

#include <kd_lib/sqldatabase.h>
#include <kd_lib/sqliteconnection.h>
#include <kd_lib/text.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

using kd_lib::SqlDatabase;
using kd_lib::SQLite3;
using kd_test::captured;
using kd_test::Console;
using kd_test::FakeSqlDatabase;
using kd_test::ScopedDirectory;
using Texts = std::vector<std::string>;

namespace {

// Script import

/// Sets HOME while it exists.
class ScopedHome {
public:
    explicit ScopedHome(const std::string& path)
    {
        const char* home = std::getenv("HOME");
        Known = home != nullptr;
        Saved = Known ? home : "";
        ::setenv("HOME", path.c_str(), 1);
    }
    ~ScopedHome() { Known ? ::setenv("HOME", Saved.c_str(), 1) : ::unsetenv("HOME"); }
    ScopedHome(const ScopedHome&) = delete;
    ScopedHome& operator=(const ScopedHome&) = delete;

private:
    std::string Saved;
    bool Known = false;
};

struct Import {
    bool Returned = false;
    Console Printed;
};

/// Runs a script of these bytes.
Import importScript(SqlDatabase& database, const std::string& script)
{
    const ScopedDirectory scratch;
    const std::string path = scratch.write("script.sql", script);
    Import import;
    import.Printed = captured([&] { import.Returned = database.importSqlFile(path);
});
const std::string progress = "Executing SQL file " + path + "\n";
EXPECT_EQ(progress, import.Printed.out.substr(0, progress.size()));
import.Printed.out.erase(0, progress.size());
return import;
}  // namespace

/// The statements that a script is split into.
Texts statementsOf(const std::string& script)
{
    FakeSqlDatabase database;
    const Import import = importScript(database, script);
    EXPECT_FALSE(import.Returned) << "it ran to its end";
    EXPECT_EQ("", import.Printed.out);
    EXPECT_EQ("", import.Printed.err);
    EXPECT_TRUE(database.Queried.empty());
    return database.Executed;
}

struct Script {
    const char* Name;
    std::string Text;
    Texts Statements;
};

void PrintTo(const Script& script, std::ostream* out)
{
    *out << script.Name;
}

class SqlDatabaseScript : public testing::TestWithParam<Script> {};

TEST_P(SqlDatabaseScript, IsSplitIntoItsStatements)
{
    EXPECT_EQ(GetParam().Statements, statementsOf(GetParam().Text));
}

const Script scripts[] = {
    {"CommentWithSemicolonAndQuotedSemicolon",
     "CREATE TABLE t (a TEXT);\n# a comment; with a semicolon\nINSERT INTO t VALUES ('x;y');\n",
     {"CREATE TABLE t (a TEXT);", "INSERT INTO t VALUES ('x;y');"}},
    {"LastStatementWithoutSemicolonIsDropped", "A;\nB;\nC", {"A;", "B;"}},
    {"OnlyStatementWithoutSemicolonIsDropped", "A", {}},
    {"EmptyFile", "", {}},
    {"BlanksOnly", " \t\r\n\v\f", {}},
    {"CommentOnly", "# nothing; here", {}},
    {"SeveralStatementsOnOneLine", "A; B;C;", {"A;", "B;", "C;"}},
    {"EmptyStatementsAreRun", ";;\n;", {";", ";", ";"}},
    {"BlanksAroundAreTrimmed", " \t\r\n\v\f A b \t ; \n B ;", {"A b \t ;", "B ;"}},
    {"LineEndsInsideStay", "A\nB\r\nC;\r\nD;", {"A\nB\r\nC;", "D;"}},
    {"CommentBehindAStatement", "A; # B;\nC;", {"A;", "C;"}},
    {"CommentInsideAStatementGoesWithItsLineEnd", "A 1#comment\nB;", {"A 1B;"}},
    {"HashInsideAComment", "# one # two\nA;", {"A;"}},
    {"QuoteInsideACommentDoesNotCount", "# it's one\nA;B;", {"A;", "B;"}},
    {"HashInsideQuotesIsText", "A '#x';B;", {"A '#x';", "B;"}},
    {"LineEndInsideQuotesIsText", "A '1\n#2;\n3';", {"A '1\n#2;\n3';"}},
    {"DoubledQuoteStaysInQuotes", "A 'it''s; x';B;", {"A 'it''s; x';", "B;"}},
    {"DoubleQuotesProtectNothing", "A \"x;y\";", {"A \"x;", "y\";"}},
    {"BackquotesProtectNothing", "A `x;y`;", {"A `x;", "y`;"}},
    {"DashesStartNoComment", "-- x; y\nA;", {"-- x;", "y\nA;"}},
    {"SlashStarStartsNoComment", "/* x; */A;", {"/* x;", "*/A;"}},
    {"BackslashEscapesNothing", "A '\\';B;", {"A '\\';", "B;"}},
    {"OpenQuoteAtTheEndIsDropped", "A;B 'x;", {"A;"}},
    {"CarriageReturnEndsNoComment", "# x\rA;\nB;", {"B;"}},
    {"ZeroAndHighBytesAreText", std::string("A \0\xff\x01;", 6), {std::string("A \0\xff\x01;", 6)}},
    {"SelectIsExecutedNotQueried", "SELECT 1;select 2;xSELECT 3;", {"SELECT 1;", "select 2;", "xSELECT 3;"}},
};

INSTANTIATE_TEST_SUITE_P(Table, SqlDatabaseScript, testing::ValuesIn(scripts),
                         [](const auto& script) { return std::string(script.param.Name); });

TEST(SqlDatabaseImport, StatementsQuotesAndCommentsMayStraddleEveryBlockBoundary)
{
    constexpr std::size_t block = 65536;
    for (std::size_t lead = block - 14; lead <= block + 2; ++lead) {
        SCOPED_TRACE(lead);
        const std::string start(lead, 'x');
        EXPECT_EQ((Texts{start + "';#'''y;", "z;"}), statementsOf(start + "';#'''y;#c;'\nz;"));
        const std::string blanks(lead, ' ');
        EXPECT_EQ((Texts{"A;", "B;"}), statementsOf(blanks + "A;" + blanks + "\n#;\n" + blanks + "B;" + blanks));
    }
}

/// The rules of a script, one character at a time.
Texts splitOneByOne(const std::string& script)
{
    Texts statements;
    std::string statement;
    bool inComment = false;
    bool inQuote = false;
    for (const char c : script) {
        inComment = inComment || (c == '#' && !inQuote);
        if (inComment) {
            inComment = c != '\n';
            continue;
        }
        statement += c;
        inQuote = inQuote != (c == '\'');
        if (c == ';' && !inQuote) {
            statements.push_back(kd_lib::allTrim(statement));
            statement.clear();
        }
    }
    return statements;
}

TEST(SqlDatabaseImport, RandomScriptsAreSplitAsIfReadOneCharacterAtATime)
{
    std::mt19937 random(20240117);
    const std::string characters("';;##\n\n \t\rAb\"`\0\xff", 17);
    for (std::size_t round = 0; round < 300; ++round) {
        // Every third script begins with a quoted text, with blanks or with a word that fills a block.
        const std::string first = round % 3 == 0 ? std::string("'\nx", 3).substr(round / 3 % 3, 1) : "";
        std::string script = first + std::string(first.empty() ? 0 : 65430, round % 2 == 0 ? ' ' : 'y');
        for (int i = 0; i < 200; ++i) {
            script += characters[random() % characters.size()];
        }
        SCOPED_TRACE(testing::PrintToString(script.substr(script.size() - 200)));
        ASSERT_EQ(splitOneByOne(script), statementsOf(script));
    }
}

TEST(SqlDatabaseImport, FileOfExactlyOneBlockIsReadOnce)
{
    const std::string script = std::string(65535, 'x') + ";";
    EXPECT_EQ(Texts{script}, statementsOf(script));
}

TEST(SqlDatabaseImport, DeliberatelyAScriptThatRunsToItsEndReturnsFalse)
{
    FakeSqlDatabase database;
    EXPECT_FALSE(importScript(database, "A;").Returned);
    EXPECT_EQ(Texts{"A;"}, database.Executed);
}

TEST(SqlDatabaseImport, DeliberatelyAScriptThatStopsAtAFailingStatementReturnsTrue)
{
    FakeSqlDatabase database;
    database.Failing = {"B;"};
    const Import import = importScript(database, "A;\nB;\nC;\n");
    EXPECT_TRUE(import.Returned);
    EXPECT_EQ("", import.Printed.out);
    EXPECT_EQ("Error executing statement\n", import.Printed.err);
    EXPECT_EQ((Texts{"A;", "B;"}), database.Executed) << "statements that ran stay, the others are not run";
}

TEST(SqlDatabaseImport, FailingLastByteOfTheFileStillReturnsTrue)
{
    FakeSqlDatabase database;
    database.Failing = {"B;"};
    EXPECT_TRUE(importScript(database, "A;B;").Returned);
}

TEST(SqlDatabaseImport, FailingStatementRollsAnOpenTransactionBack)
{
    FakeSqlDatabase database;
    database.Failing = {"B;"};
    database.beginTransaction();
    EXPECT_TRUE(importScript(database, "A;B;").Returned);
    EXPECT_EQ((Texts{"BEGIN TRANSACTION", "A;", "B;", "ROLLBACK TRANSACTION"}), database.Executed);
    EXPECT_FALSE(database.inTransaction);
    EXPECT_EQ(1U, database.Rollbacks);
}

TEST(SqlDatabaseImport, FailingStatementWithoutATransactionCallsRollbackWhichSendsNothing)
{
    FakeSqlDatabase database;
    database.Failing = {"B;"};
    importScript(database, "A;B;");
    EXPECT_EQ(1U, database.Rollbacks);
    EXPECT_EQ((Texts{"A;", "B;"}), database.Executed);
}

TEST(SqlDatabaseImport, DeliberatelyNoStatementOfAScriptIsQueried)
{
    FakeSqlDatabase database;
    database.Failing = {"SELECT 1;"};
    const Import import = importScript(database, "SELECT 1;");
    EXPECT_TRUE(database.Queried.empty());
    EXPECT_EQ("Error executing statement\n", import.Printed.err);
}

TEST(SqlDatabaseImport, MissingFileIsReportedWithThePathAsPassed)
{
    const ScopedDirectory scratch;
    const ScopedHome home(scratch.path());
    FakeSqlDatabase database;
    for (const std::string& path : {scratch.file("none.sql"), std::string("~/none.sql"), std::string()}) {
        bool returned = true;
        const Console console = captured([&] { returned = database.importSqlFile(path); });
        EXPECT_FALSE(returned);
        EXPECT_EQ("SQL file " + path + " does not exist\n", console.err);
        EXPECT_EQ("", console.out);
    }
    EXPECT_TRUE(database.Executed.empty());
}

TEST(SqlDatabaseImport, PathIsExpandedAndTheExpandedPathReported)
{
    const ScopedDirectory scratch;
    const ScopedHome home(scratch.path());
    const std::string path = scratch.write("script.sql", "A;");
    FakeSqlDatabase database;
    const Console console = captured([&] { database.importSqlFile("~/script.sql"); });
    EXPECT_EQ("Executing SQL file " + path + "\n", console.out);
    EXPECT_EQ("", console.err);
    EXPECT_EQ(Texts{"A;"}, database.Executed);
}

TEST(SqlDatabaseImport, FileThatCannotBeOpenedReturnsFalse)
{
    const ScopedDirectory scratch;
    // A socket exists and cannot be opened as a file, not even by root.
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = scratch.file("socket");
    ASSERT_LT(path.size(), sizeof address.sun_path);
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(0, ::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    FakeSqlDatabase database;
    bool returned = true;
    const Console console = captured([&] { returned = database.importSqlFile(path); });
    ::close(listener);
    EXPECT_FALSE(returned);
    EXPECT_EQ("Executing SQL file " + path + "\n", console.out);
    EXPECT_EQ("", console.err);
}

TEST(SqlDatabaseImport, DirectoryReturnsFalse)
{
    const ScopedDirectory scratch;
    FakeSqlDatabase database;
    bool returned = true;
    const Console console = captured([&] { returned = database.importSqlFile(scratch.path()); });
    EXPECT_FALSE(returned);
    EXPECT_EQ("", console.err);
    EXPECT_TRUE(database.Executed.empty());
}

TEST(SqlDatabaseImportDeathTest, ExistingFileThatMayNotBeReadIsNotReportedAsMissing)
{
    const ScopedDirectory scratch;
    const std::string path = scratch.write("script.sql", "A;");
    std::filesystem::permissions(scratch.path(), std::filesystem::perms::all);
    std::filesystem::permissions(path, std::filesystem::perms::none);
    const auto importWithoutRights = [&path] {
        kd_test::giveUpRights();
        FakeSqlDatabase database;
        const bool returned = database.importSqlFile(path);
        ::_exit(returned || !database.Executed.empty() ? 1 : 0);
    };
    EXPECT_EXIT(importWithoutRights(), testing::ExitedWithCode(0), testing::Matcher<const std::string&>(""));
}

TEST(SqlDatabaseImport, OneVeryLongStatementIsRunWhole)
{
    const std::string statement = "A '" + std::string(10'000'000, 'x') + "';";
    const Texts statements = statementsOf("# first\n" + statement + "\nB;");
    ASSERT_EQ(2U, statements.size());
    EXPECT_TRUE(statement == statements[0]);
    EXPECT_EQ("B;", statements[1]);
}

TEST(SqlDatabaseImport, MillionEmptyStatementsAreRunOneByOne)
{
    const Texts statements = statementsOf(std::string(1'000'000, ';'));
    EXPECT_EQ(1'000'000U, statements.size());
    EXPECT_EQ(";", statements.back());
}

// Script import into SQLite

class SqlDatabaseSqliteImport : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(Database.createDatabase(":memory:")); }

    /// The values of the first row of a query, joined by commas.
    std::string row(const std::string& sql)
    {
        EXPECT_TRUE(Database.query(sql));
        EXPECT_TRUE(Database.fetchRow());
        std::string values;
        for (const kd_lib::TableField& field : Database.queryColumns) {
            values += (values.empty() ? "" : ",") + field.Value;
        }
        Database.finalize();
        return values;
    }

    SQLite3 Database;
};

TEST_F(SqlDatabaseSqliteImport, ScriptRunsToItsEnd)
{
    const Import import = importScript(Database, "CREATE TABLE t (a TEXT, b INTEGER);\n# one; comment\n"
                                                 "INSERT INTO `t` VALUES ('x;y', 1);\nINSERT INTO t VALUES ('z', 2)");
    EXPECT_FALSE(import.Returned);
    EXPECT_EQ("", import.Printed.out);
    EXPECT_EQ("", import.Printed.err);
    EXPECT_EQ("x;y,1,1", row("SELECT a, b, (SELECT count(*) FROM t) FROM t")) << "the last INSERT has no semicolon";
}

TEST_F(SqlDatabaseSqliteImport, DeliberatelyASelectWithARowFails)
{
    const Import import = importScript(Database, "CREATE TABLE t (a);\nSELECT 1;\nINSERT INTO t VALUES (1);\n");
    EXPECT_TRUE(import.Returned);
    EXPECT_EQ("another row available [#100]\n", import.Printed.out);
    EXPECT_EQ("Error executing statement\n", import.Printed.err);
    EXPECT_EQ(0, Database.getRecords("t"));
}

TEST_F(SqlDatabaseSqliteImport, SelectWithoutARowSucceeds)
{
    const Import import = importScript(Database, "CREATE TABLE t (a);\nSELECT a FROM t;\nINSERT INTO t VALUES (1);\n");
    EXPECT_FALSE(import.Returned);
    EXPECT_EQ("", import.Printed.err);
    EXPECT_EQ(1, Database.getRecords("t"));
}

TEST_F(SqlDatabaseSqliteImport, FailureOutsideATransactionKeepsEarlierStatements)
{
    const Import import = importScript(Database, "CREATE TABLE t (a);\nINSERT INTO t VALUES (1);\n"
                                                 "INSERT INTO u VALUES (2);\nINSERT INTO t VALUES (3);");
    EXPECT_TRUE(import.Returned);
    EXPECT_EQ("no such table: u [#1]\n", import.Printed.out);
    EXPECT_EQ("Error executing statement\n", import.Printed.err);
    EXPECT_EQ("no such table: u [#1]", Database.errorText);
    EXPECT_EQ("1,1", row("SELECT count(*), max(a) FROM t"));
}

TEST_F(SqlDatabaseSqliteImport, FailureInsideATransactionRollsBackAndKeepsTheReason)
{
    struct Case {
        const char* Failing;
        const char* Reason;
    };
    Database.execute("CREATE TABLE t (a UNIQUE)");
    for (const Case& script : {Case{"INSERT INTO u VALUES (2);", "no such table: u [#1]"},
                               Case{"INSERT INTO t VALUES (1);", "UNIQUE constraint failed: t.a [#19]"}}) {
        SCOPED_TRACE(script.Failing);
        Database.beginTransaction();
        const Import import = importScript(Database, std::string("INSERT INTO t VALUES (1);\n") + script.Failing);
        EXPECT_TRUE(import.Returned);
        EXPECT_EQ(script.Reason + std::string("\n"), import.Printed.out);
        EXPECT_EQ("Error executing statement\n", import.Printed.err);
        EXPECT_FALSE(Database.inTransaction);
        EXPECT_EQ(script.Reason, Database.errorText);
        EXPECT_EQ(0, Database.getRecords("t"));
    }
}

TEST_F(SqlDatabaseSqliteImport, TransactionThatTheScriptBeganItselfIsNotRolledBack)
{
    importScript(Database, "CREATE TABLE t (a);BEGIN;INSERT INTO t VALUES (1);INSERT INTO u VALUES (2);COMMIT;");
    EXPECT_FALSE(Database.inTransaction);
    EXPECT_EQ(1, Database.getRecords("t")) << "the script's own transaction is still open";
    EXPECT_TRUE(Database.execute("ROLLBACK"));
    EXPECT_EQ(0, Database.getRecords("t"));
}

TEST_F(SqlDatabaseSqliteImport, EmptyStatementStopsTheScriptWithoutAReason)
{
    const Import import = importScript(Database, std::string(1'000'000, ';'));
    EXPECT_TRUE(import.Returned);
    EXPECT_EQ("", import.Printed.out);
    EXPECT_EQ("Error executing statement\n", import.Printed.err);
    EXPECT_EQ("", Database.errorText);
}

TEST_F(SqlDatabaseSqliteImport, OneVeryLongStatementIsStoredWhole)
{
    const Import import = importScript(Database, "CREATE TABLE t (a TEXT);\nINSERT INTO t VALUES ('" +
                                                     std::string(10'000'000, 'x') + ";');\n");
    EXPECT_FALSE(import.Returned);
    EXPECT_EQ("", import.Printed.err);
    EXPECT_EQ("10000001,;", row("SELECT length(a), substr(a, -1) FROM t"));
}

TEST_F(SqlDatabaseSqliteImport, ScriptOfManyStatementsIsOneCurrentStatement)
{
    std::string script = "CREATE TABLE t (a INTEGER);\nBEGIN;\n";
    for (int i = 1; i <= 20'000; ++i) {
        script += "INSERT INTO t VALUES (" + std::to_string(i) + ");\n";
    }
    EXPECT_FALSE(importScript(Database, script + "COMMIT;\n").Returned);
    EXPECT_EQ("20000,200010000", row("SELECT count(*), sum(a) FROM t"));
}

}  // namespace
