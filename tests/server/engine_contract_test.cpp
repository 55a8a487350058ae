// The common behaviour of all SQL back ends: one set of tests over SQLite in memory and the two servers, whose URIs are
// in the environment.
#include "support/console_capture.h"
#include "support/scoped_directory.h"

#include <kd_lib/mariadb.h>
#include <kd_lib/postgresql.h>
#include <kd_lib/sqliteconnection.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <tuple>
#include <type_traits>
#include <vector>

namespace kd_test {

// A client's types. A back end's class has members of no such name, so that a class derived from it can use them.
struct Connection {};
struct Statement {};
struct Words {};
struct State {};
struct Settings {};
struct Columns {};
struct Parameters {};
struct Failure {};
struct Running {};

// Not a template: names of a base that depends on a parameter would not be looked up.
#define KD_CLASS_WITH_TYPES_OF_THE_CLIENT(name, base)                                                                  \
    class name : public base {                                                                                         \
    public:                                                                                                            \
        std::tuple<Connection, Statement, Words, State, Settings, Columns, Parameters, Failure, Running> Mine;         \
    }
KD_CLASS_WITH_TYPES_OF_THE_CLIENT(ShopOnPostgresql, kd_lib::PostgreSQL);
KD_CLASS_WITH_TYPES_OF_THE_CLIENT(ShopOnMariadb, kd_lib::MariaDB);
#undef KD_CLASS_WITH_TYPES_OF_THE_CLIENT

using namespace kd_lib;

/// In KiB.
long peakMemory()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

struct OnSqlite {
    using Database = SQLite3;
    static bool open(SQLite3& database) { return database.useDatabase(":memory:"); }
    static std::string host(const SQLite3&) { return ""; }
    static constexpr const char* engine = "SQLITE3";
    static constexpr const char* longText = "TEXT";
};

struct OnPostgresql {
    using Database = PostgreSQL;
    static bool open(PostgreSQL& database) { return database.connectUri(std::getenv("KD_POSTGRESQL")); }
    static std::string host(const PostgreSQL& database) { return database.host; }
    static constexpr const char* engine = "POSTGRESQL";
    static constexpr const char* longText = "TEXT";
};

struct OnMariadb {
    using Database = MariaDB;
    static bool open(MariaDB& database) { return database.connectUri(std::getenv("KD_MARIADB")); }
    static std::string host(const MariaDB&) { return std::string(std::getenv("KD_MARIADB")).substr(uriBeforeSocket()); }
    static std::size_t uriBeforeSocket() { return std::string(std::getenv("KD_MARIADB")).find("socket=") + 7; }
    static constexpr const char* engine = "MARIADB";
    static constexpr const char* longText = "LONGTEXT";
};

template <class Engine>
class EngineContract : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(Engine::open(database)) << database.errorText;
        for (const char* table : {"t", "select", "parent"}) {
            ASSERT_TRUE(database.execute("DROP TABLE IF EXISTS `" + std::string(table) + "`")) << database.errorText;
        }
    }

    void make(const std::string& columns = "a INTEGER, b VARCHAR(40)")
    {
        ASSERT_TRUE(database.execute("CREATE TABLE t (" + columns + ")")) << database.errorText;
    }

    /// All values of a query, rows joined by "|", values by ",".
    std::string rows(const std::string& sql)
    {
        std::string all;
        EXPECT_TRUE(database.query(sql)) << database.errorText;
        while (database.fetchRow()) {
            for (std::size_t i = 0; i < database.queryColumns.size(); ++i) {
                all += database.queryColumns.List[i]->Value + (i + 1 < database.queryColumns.size() ? "," : "|");
            }
        }
        EXPECT_EQ("", database.errorText);
        database.finalize();
        return all;
    }

    /// Executes the prepared statement; SQLite's must then be reset.
    bool executePrepared()
    {
        const bool executed = database.execute();
        if constexpr (std::is_same_v<Engine, OnSqlite>) {
            database.resetResults();
        }
        return executed;
    }

    typename Engine::Database database;
};

using Engines = testing::Types<OnSqlite, OnPostgresql, OnMariadb>;
TYPED_TEST_SUITE(EngineContract, Engines);

TYPED_TEST(EngineContract, AConnectionKnowsItsState)
{
    EXPECT_EQ(TypeParam::engine, this->database.engine);
    EXPECT_TRUE(this->database.isConnected());
    EXPECT_FALSE(this->database.isDisconnected());
    EXPECT_NE("", this->database.database);
    EXPECT_TRUE(this->database.disconnect());
    EXPECT_FALSE(this->database.isConnected());
    EXPECT_TRUE(this->database.isDisconnected());
    EXPECT_EQ("", this->database.database);
    EXPECT_FALSE(this->database.prepare("SELECT 1"));
    EXPECT_EQ("", this->database.errorText);
    EXPECT_FALSE(this->database.execute("SELECT 1"));
    EXPECT_FALSE(this->database.query("SELECT 1"));
    EXPECT_FALSE(this->database.getTableList());
    EXPECT_TRUE(this->database.disconnect());
}

TYPED_TEST(EngineContract, ConnectsWithFourSettings)
{
    if constexpr (std::is_same_v<TypeParam, OnSqlite>) {
        GTEST_SKIP() << "a file has no host";
    } else {
        typename TypeParam::Database second;
        second.port = this->database.port;
        ASSERT_TRUE(second.connect(TypeParam::host(this->database), this->database.user, this->database.password,
                                   this->database.database))
            << second.errorText;
        this->make();
        EXPECT_TRUE(second.getTableList());
        ASSERT_EQ(1U, second.tableList.size());
        EXPECT_FALSE(second.connect(TypeParam::host(this->database), "nobody_of_this_name", "S3cret", "no_such"));
        EXPECT_NE("", second.errorText);
        EXPECT_EQ(std::string::npos, second.errorText.find("S3cret"));
    }
}

TYPED_TEST(EngineContract, KeepsNoRowsThatWereFetched)
{
    const char* const sanitizers = std::getenv("KD_SANITIZE");
    if (sanitizers != nullptr && std::string(sanitizers).find("address") != std::string::npos) {
        GTEST_SKIP() << "a sanitizer keeps freed memory back";
    }
    this->make();
    std::string rows;
    for (int i = 0; i < 500; ++i) {
        rows += (i == 0 ? "(" : ",(") + std::to_string(i) + ",'" + std::string(40, 'x') + "')";
    }
    ASSERT_TRUE(this->database.execute("INSERT INTO t VALUES " + rows)) << this->database.errorText;
    ASSERT_TRUE(this->database.query("SELECT x.b, y.b FROM t x, t y"));
    ASSERT_TRUE(this->database.fetchRow());
    const long before = peakMemory();
    while (this->database.fetchRow()) {
    }
    EXPECT_EQ(250000U, this->database.rowsFetched);  // 20 MB
    EXPECT_LT(peakMemory() - before, 8192);
}

TYPED_TEST(EngineContract, AQueryHasItsColumnsBeforeItsRows)
{
    ASSERT_TRUE(this->database.query("SELECT 1 AS First, 'r1c2' AS second"));
    EXPECT_EQ(1U, this->database.resultRows);
    EXPECT_EQ(2, this->database.columnCount);
    ASSERT_EQ(2U, this->database.queryColumns.size());
    EXPECT_EQ("first", this->database.queryColumns.List[0]->Name);
    EXPECT_EQ("second", this->database.queryColumns.List[1]->Name);
    ASSERT_TRUE(this->database.fetchRow());
    EXPECT_EQ(1U, this->database.rowsFetched);
    EXPECT_EQ("1", this->database.queryColumns.getData("first"));
    EXPECT_EQ("r1c2", this->database.queryColumns.getData("second"));
    EXPECT_FALSE(this->database.fetchRow());
    EXPECT_EQ(1U, this->database.resultRows);
}

TYPED_TEST(EngineContract, AResultWithoutRowsEndsAtOnce)
{
    this->make();
    ASSERT_TRUE(this->database.query("SELECT a, b FROM t"));
    EXPECT_EQ(2, this->database.columnCount);
    EXPECT_FALSE(this->database.fetchRow());
    EXPECT_EQ(0U, this->database.resultRows);
}

TYPED_TEST(EngineContract, AnExecutedStatementCountsItsRows)
{
    this->make();
    EXPECT_TRUE(this->database.execute("INSERT INTO t VALUES (1, 'x'), (2, 'y'), (3, 'z')"));
    EXPECT_EQ(3U, this->database.resultRows);
    EXPECT_TRUE(this->database.execute("UPDATE t SET b = 'y' WHERE a > 1"));
    EXPECT_EQ(2U, this->database.resultRows) << "even if a row has the value already";
    EXPECT_TRUE(this->database.execute("DELETE FROM t WHERE a = 7"));
    EXPECT_EQ(0U, this->database.resultRows);
    EXPECT_EQ(3, this->database.getRecords("t"));
}

TYPED_TEST(EngineContract, ParametersByNumberAndByName)
{
    this->make("a INTEGER, b VARCHAR(40), c DOUBLE PRECISION, d VARCHAR(10)");
    ASSERT_TRUE(this->database.prepare("INSERT INTO t (a, b, c, d) VALUES (:one, :two, :three, :four)"));
    EXPECT_TRUE(this->database.bind(1, 41));
    EXPECT_TRUE(this->database.bind(":two", "it's `\"\\ :one ? $1"));
    EXPECT_TRUE(this->database.bind(3, 0.1));
    EXPECT_TRUE(this->database.bindNULL(4));
    EXPECT_TRUE(this->database.execute()) << this->database.errorText;
    EXPECT_EQ("41,it's `\"\\ :one ? $1,0.1,|", this->rows("SELECT a, b, c, d FROM t"));
    EXPECT_EQ("1|", this->rows("SELECT count(*) FROM t WHERE d IS NULL"));
}

TYPED_TEST(EngineContract, MissingParametersAreReported)
{
    ASSERT_TRUE(this->database.prepare("SELECT :one"));
    const Console console = captured([this] {
        EXPECT_FALSE(this->database.bind(2, "x"));
        EXPECT_FALSE(this->database.bind(0, 1));
        EXPECT_FALSE(this->database.bind(-1, 1.0));
        EXPECT_FALSE(this->database.bind(":two", "x"));
        EXPECT_FALSE(this->database.bind("one", "x"));
        EXPECT_FALSE(this->database.bindNULL(2));
    });
    EXPECT_NE("", this->database.errorText);
    EXPECT_EQ(5, std::count(console.out.begin(), console.out.end(), '\n')) << console.out;
}

TYPED_TEST(EngineContract, TheSameNameIsOneParameter)
{
    ASSERT_TRUE(this->database.prepare("SELECT a FROM (SELECT 'x' AS a UNION SELECT 'y') AS s "
                                       "WHERE a = :name OR a < :name"));
    EXPECT_TRUE(this->database.bind(":name", "x"));
    EXPECT_FALSE(this->database.bind(2, "x"));
    ASSERT_TRUE(this->database.query()) << this->database.errorText;
    EXPECT_TRUE(this->database.fetchRow());
    EXPECT_EQ("x", this->database.queryColumns.getData(0));
    EXPECT_FALSE(this->database.fetchRow());
}

TYPED_TEST(EngineContract, NoParameterInTextsAndComments)
{
    ASSERT_TRUE(this->database.prepare("SELECT ':a' AS x, /* :b ' */ 'it''s :c' AS y -- :d '\n, :e AS z"));
    EXPECT_TRUE(this->database.bind(1, "v"));
    EXPECT_FALSE(this->database.bind(2, "v"));
    ASSERT_TRUE(this->database.query()) << this->database.errorText;
    ASSERT_TRUE(this->database.fetchRow());
    EXPECT_EQ(":a", this->database.queryColumns.getData("x"));
    EXPECT_EQ("it's :c", this->database.queryColumns.getData("y"));
    EXPECT_EQ("v", this->database.queryColumns.getData("z"));
}

TYPED_TEST(EngineContract, AnUnboundParameterIsNull)
{
    this->make();
    ASSERT_TRUE(this->database.prepare("INSERT INTO t VALUES (:a, :b)"));
    EXPECT_TRUE(this->database.bind(":a", "5"));
    EXPECT_TRUE(this->database.execute());
    EXPECT_EQ("1|", this->rows("SELECT count(*) FROM t WHERE a = 5 AND b IS NULL"));
}

TYPED_TEST(EngineContract, NotANumberBindsNull)
{
    this->make();
    ASSERT_TRUE(this->database.prepare("INSERT INTO t VALUES (:a, 'x')"));
    EXPECT_TRUE(this->database.bind(1, std::numeric_limits<double>::quiet_NaN()));
    EXPECT_TRUE(this->database.execute());
    EXPECT_EQ("1|", this->rows("SELECT count(*) FROM t WHERE a IS NULL"));
}

TYPED_TEST(EngineContract, ABoundTextEndsAtItsFirstZeroByte)
{
    this->make();
    ASSERT_TRUE(this->database.prepare("INSERT INTO t VALUES (1, :b)"));
    EXPECT_TRUE(this->database.bind(1, std::string("ab\0cd", 5)));
    EXPECT_TRUE(this->database.execute());
    EXPECT_EQ("ab|", this->rows("SELECT b FROM t"));
}

TYPED_TEST(EngineContract, APreparedStatementRunsAgain)
{
    this->make();
    ASSERT_TRUE(this->database.prepare("INSERT INTO t VALUES (:a, :b)"));
    for (int i = 1; i <= 3; ++i) {
        EXPECT_TRUE(this->database.bind(":a", std::to_string(i)));
        EXPECT_TRUE(this->database.bind(":b", "r" + std::to_string(i)));
        EXPECT_TRUE(this->executePrepared()) << this->database.errorText;
    }
    EXPECT_EQ("1,r1|2,r2|3,r3|", this->rows("SELECT a, b FROM t ORDER BY a"));
}

TYPED_TEST(EngineContract, APreparedInsertFromTheColumnsOfAResult)
{
    this->make();
    EXPECT_FALSE(this->database.prepareInsert("t"));
    ASSERT_TRUE(this->database.query("SELECT a, b FROM t"));
    ASSERT_TRUE(this->database.prepareInsert("t")) << this->database.errorText;
    EXPECT_EQ(0U, this->database.queryColumns.size());
    for (int i = 1; i <= 2; ++i) {
        TableFields fields;
        fields.add(":a");
        fields.add(":b");
        fields.List[0]->Value = std::to_string(i);
        fields.List[1]->Value = "r" + std::to_string(i);
        EXPECT_TRUE(this->database.preparedRecord(fields)) << this->database.errorText;
    }
    EXPECT_FALSE(this->database.preparedRecord({}));
    EXPECT_EQ("1,r1|2,r2|", this->rows("SELECT a, b FROM t ORDER BY a"));
}

TYPED_TEST(EngineContract, NamesInBackquotesAreNames)
{
    ASSERT_TRUE(this->database.execute("CREATE TABLE `select` (`order` INTEGER)")) << this->database.errorText;
    ASSERT_TRUE(this->database.execute("INSERT INTO `select` (`order`) VALUES (7)"));
    EXPECT_EQ("7|", this->rows("SELECT `order` FROM `select`"));
}

TYPED_TEST(EngineContract, TextsInUtf8)
{
    this->make();
    const std::string text = "\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80";
    ASSERT_TRUE(this->database.execute("DROP TABLE t"));
    ASSERT_TRUE(this->database.execute(
        "CREATE TABLE t (a INTEGER, b VARCHAR(9)" +
        std::string(TypeParam::engine == std::string("MARIADB") ? ") DEFAULT CHARSET utf8mb4" : ")")));
    ASSERT_TRUE(this->database.prepare("INSERT INTO t VALUES (1, :b)"));
    EXPECT_TRUE(this->database.bind(":b", text));
    EXPECT_TRUE(this->database.execute()) << this->database.errorText;
    EXPECT_EQ(text + "|", this->rows("SELECT b FROM t"));
    EXPECT_EQ("4|", this->rows(TypeParam::engine == std::string("SQLITE3") ? "SELECT length(b) + 1 FROM t"
                                                                           : "SELECT char_length(b) + 1 FROM t"));
}

TYPED_TEST(EngineContract, AFailureIsReportedOnceAndTextAndCodeAreKept)
{
    const Console console = captured([this] { EXPECT_FALSE(this->database.query("SELECT a FROM missing")); });
    EXPECT_EQ(this->database.errorText + "\n", console.out);
    EXPECT_EQ("", console.err);
    EXPECT_NE(std::string::npos, this->database.errorText.find("missing")) << this->database.errorText;
    EXPECT_NE(std::string::npos, this->database.errorText.find(" [#")) << this->database.errorText;
    EXPECT_TRUE(this->database.query("SELECT 1"));
    EXPECT_EQ("", this->database.errorText);
}

TYPED_TEST(EngineContract, TwoStatementsInOneAreNotBothRun)
{
    this->make();
    captured([this] { this->database.execute("INSERT INTO t VALUES (1, 'x'); INSERT INTO t VALUES (2, 'y')"); });
    EXPECT_EQ("0|", this->rows("SELECT count(*) FROM t WHERE a = 2"));
}

TYPED_TEST(EngineContract, ATransactionEndsOrRollsBack)
{
    this->make();
    this->database.beginTransaction();
    EXPECT_TRUE(this->database.inTransaction);
    EXPECT_TRUE(this->database.execute("INSERT INTO t VALUES (1, 'x')"));
    this->database.rollback();
    EXPECT_FALSE(this->database.inTransaction);
    EXPECT_EQ(0, this->database.getRecords("t"));

    this->database.beginTransaction();
    this->database.beginTransaction();
    EXPECT_TRUE(this->database.execute("INSERT INTO t VALUES (2, 'y')"));
    this->database.endTransaction();
    this->database.endTransaction();
    this->database.rollback();
    EXPECT_EQ(1, this->database.getRecords("t"));
}

TYPED_TEST(EngineContract, AFailingStatementRollsTheTransactionBack)
{
    this->make("a INTEGER PRIMARY KEY, b VARCHAR(40)");
    this->database.beginTransaction();
    EXPECT_TRUE(this->database.execute("INSERT INTO t VALUES (1, 'x')"));
    captured([this] { EXPECT_FALSE(this->database.execute("INSERT INTO t VALUES (1, 'y')")); });
    EXPECT_FALSE(this->database.inTransaction);
    EXPECT_NE("", this->database.errorText);
    EXPECT_EQ(0, this->database.getRecords("t"));
}

TYPED_TEST(EngineContract, TheEndOfTheRowsEndsTheTransaction)
{
    this->make();
    this->database.beginTransaction();
    EXPECT_TRUE(this->database.execute("INSERT INTO t VALUES (1, 'x')"));
    EXPECT_EQ("1|", this->rows("SELECT a FROM t"));
    EXPECT_FALSE(this->database.inTransaction);
    this->database.disconnect();
}

TYPED_TEST(EngineContract, AnUnfinishedResultDoesNotHinderTheNextStatement)
{
    this->make();
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(this->database.execute("INSERT INTO t VALUES (" + std::to_string(i) + ", 'x')"));
    }
    ASSERT_TRUE(this->database.query("SELECT a FROM t ORDER BY a"));
    ASSERT_TRUE(this->database.fetchRow());
    ASSERT_TRUE(this->database.fetchRow());
    EXPECT_EQ("20|", this->rows("SELECT count(*) FROM t"));
    ASSERT_TRUE(this->database.query("SELECT a FROM t"));
    ASSERT_TRUE(this->database.fetchRow());
    EXPECT_TRUE(this->database.disconnect());
}

TYPED_TEST(EngineContract, LongTextsArriveWhole)
{
    this->make("a INTEGER, b " + std::string(TypeParam::longText));
    const std::string text(3000000, 'x');
    ASSERT_TRUE(this->database.prepare("INSERT INTO t VALUES (:a, :b)"));
    for (const char* number : {"1", "2"}) {
        EXPECT_TRUE(this->database.bind(":a", number));
        EXPECT_TRUE(this->database.bind(":b", text + number));
        EXPECT_TRUE(this->executePrepared()) << this->database.errorText;
    }
    ASSERT_TRUE(this->database.prepare("SELECT b, a FROM t WHERE a > :zero ORDER BY a"));
    EXPECT_TRUE(this->database.bind(1, 0));
    ASSERT_TRUE(this->database.query());
    for (const char* number : {"1", "2"}) {
        ASSERT_TRUE(this->database.fetchRow());
        EXPECT_TRUE(this->database.queryColumns.getData("b") == text + number);
        EXPECT_EQ(number, this->database.queryColumns.getData("a"));
    }
    EXPECT_FALSE(this->database.fetchRow());
}

TYPED_TEST(EngineContract, TheTablesAreListed)
{
    this->make();
    EXPECT_TRUE(this->database.getTableList());
    ASSERT_EQ(1U, this->database.tableList.size());
    EXPECT_EQ("t", this->database.tableList[0]->Name);
    EXPECT_EQ(this->database.database, this->database.tableList[0]->Path);
}

TYPED_TEST(EngineContract, TheDatabasesAreListed)
{
    EXPECT_TRUE(this->database.getDatabaseList());
    EXPECT_FALSE(this->database.databaseList.empty());
    EXPECT_FALSE(this->database.isAttached("no such database"));
    EXPECT_TRUE(this->database.isAttached(this->database.databaseList.front()));
}

TYPED_TEST(EngineContract, TheColumnsOfATableHaveWordsThatAreTypes)
{
    this->make("a INTEGER NOT NULL, b DECIMAL(9,2), c SMALLINT, d DATE, PRIMARY KEY (a)");
    EXPECT_TRUE(this->database.getColumnList("t"));
    EXPECT_EQ("d", this->database.queryColumns.getData("name"));
    EXPECT_EQ(DATE_TYPE, this->database.convertSql2FieldType(this->database.queryColumns.getData("type")));
    EXPECT_EQ("0", this->database.queryColumns.getData("pk"));
}

TYPED_TEST(EngineContract, AListingIsTheSame)
{
    this->make();
    ASSERT_TRUE(this->database.execute("INSERT INTO t VALUES (1, 'r1'), (2, NULL)"));
    ASSERT_TRUE(this->database.query("SELECT a, b FROM t ORDER BY a"));
    const Console console = captured([this] { EXPECT_TRUE(this->database.queryResults()); });
    EXPECT_EQ("a b\n1 r1\n2 \n", console.out);
    EXPECT_EQ(2U, this->database.resultRows);
    EXPECT_FALSE(this->database.query("") && this->database.queryResults() && this->database.rowsFetched > 0);
}

TYPED_TEST(EngineContract, AScriptIsRunStatementByStatement)
{
    ScopedDirectory folder;
    const std::string path = folder.path() + "/script.sql";
    std::ofstream(path) << "# a comment; with a semicolon\nCREATE TABLE t (a INTEGER, b VARCHAR(40));\n"
                           "INSERT INTO t VALUES (1, 'a;b');\nINSERT INTO t VALUES (2, '#c');\n";
    captured([&] { EXPECT_FALSE(this->database.importSqlFile(path)) << "deliberate: the result is inverted"; });
    EXPECT_EQ("1,a;b|2,#c|", this->rows("SELECT a, b FROM t ORDER BY a"));

    std::ofstream(path) << "INSERT INTO t VALUES (3, 'd');\nINSERT INTO missing VALUES (1);\n"
                           "INSERT INTO t VALUES (4, 'e');\n";
    const Console console = captured([&] { EXPECT_TRUE(this->database.importSqlFile(path)); });
    EXPECT_EQ("Error executing statement\n", console.err);
    EXPECT_EQ(3, this->database.getRecords("t"));
}

TEST(ClassesOfClients, UseTypesWithTheNamesOfTheirChoice)
{
    EXPECT_FALSE(ShopOnPostgresql().isConnected());
    EXPECT_FALSE(ShopOnMariadb().isConnected());
}

TYPED_TEST(EngineContract, AnExecuteWithoutAStatementFails)
{
    captured([this] {
        this->database.finalize();
        EXPECT_FALSE(this->database.fetchRow());
    });
}

}  // namespace kd_test
