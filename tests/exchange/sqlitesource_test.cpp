#include <kd_lib/exchange/sqlitesource.h>

#include "support/opened_database.h"
#include "support/scoped_directory.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace kd_lib::exchange;
using namespace std::chrono_literals;
using kd_test::Opened;

class SqliteSourceTest : public testing::Test {
protected:
    void SetUp() override
    {
        Opened(Database).run("CREATE TABLE t(a INTEGER, b VARCHAR(5), c DOUBLE, d BLOB, e NUMERIC, f);"
                             "INSERT INTO t VALUES (-9223372036854775808, 'r1c2', 0.1, x'00FF', 5, NULL);"
                             "INSERT INTO t VALUES (NULL, '', 2, x'', 1.5, 'r2c6')");
    }

    /// The error of a statement that SQLite refuses.
    SqlError refusal(const std::string& sql)
    {
        try {
            SqliteSource rows(Database, sql);
            while (rows.next()) {
            }
        } catch (const SqlError& error) {
            return error;
        }
        ADD_FAILURE() << sql << ": no error";
        return {"", "", std::nullopt};
    }

    kd_test::ScopedDirectory Folder;
    const std::string Database = Folder.file("x.db");
};

TEST_F(SqliteSourceTest, RowsAreRecords)
{
    SqliteSource rows(Database, "SELECT * FROM t");
    ASSERT_TRUE(rows.next());
    const Record& row = rows.record();
    EXPECT_EQ(row.Number, 1U);
    EXPECT_EQ(row["a"].digits(), "-9223372036854775808");
    EXPECT_EQ(row["b"].text(), "r1c2");
    EXPECT_EQ(row["c"].real(), 0.1);
    EXPECT_EQ(row["d"].bytes(), std::string_view("\0\xFF", 2));
    EXPECT_EQ(row["e"].integer(), 5);
    EXPECT_TRUE(row["f"].isNull());
    ASSERT_TRUE(rows.next());
    EXPECT_EQ(row.Number, 2U);
    EXPECT_TRUE(row["a"].isNull());
    EXPECT_EQ(row["b"].text(), "");
    EXPECT_EQ(row["c"].real(), 2);
    EXPECT_EQ(row["d"].bytes(), "");
    EXPECT_EQ(row["e"].real(), 1.5);
    EXPECT_EQ(row["f"].text(), "r2c6");
    EXPECT_FALSE(rows.next());
    EXPECT_FALSE(rows.next());
    EXPECT_EQ(rows.recordsRead(), 2U);
}

TEST_F(SqliteSourceTest, ColumnsHaveTheTypesOfTheirDeclarations)
{
    SqliteSource rows(Database, "SELECT * FROM t");
    std::vector<ColumnType> types;
    for (const Column& column : rows.columns()) {
        types.push_back(column.Type);
    }
    EXPECT_EQ(types, (std::vector{ColumnType::BigInteger, ColumnType::Text, ColumnType::Float, ColumnType::Bytes,
                                  ColumnType::Number, ColumnType::Text}));
}

TEST_F(SqliteSourceTest, ColumnsWithoutDeclarationHaveTheTypeOfTheFirstValue)
{
    SqliteSource rows(Database, "SELECT count(*) AS n, sum(c), 'x', x'00', NULL FROM t");
    std::vector<ColumnType> types;
    for (const Column& column : rows.columns()) {
        types.push_back(column.Type);
    }
    EXPECT_EQ(types, (std::vector{ColumnType::BigInteger, ColumnType::Float, ColumnType::Text, ColumnType::Bytes,
                                  ColumnType::Text}));
    EXPECT_EQ(rows.columns()[0].Name, "n");
    EXPECT_EQ(rows.columns()[1].Name, "sum(c)");
}

TEST_F(SqliteSourceTest, DeclaredDatesAndBooleansHaveTheValuesThatSqliteStores)
{
    Opened(Database).run("CREATE TABLE u(d date, t timestamp, b boolean); INSERT INTO u VALUES ('2024-02-29', 'x', 1)");
    SqliteSource rows(Database, "SELECT * FROM u");
    EXPECT_EQ(rows.columns()[0].Type, ColumnType::Text);
    EXPECT_EQ(rows.columns()[1].Type, ColumnType::Text);
    EXPECT_EQ(rows.columns()[2].Type, ColumnType::BigInteger);
    ASSERT_TRUE(rows.next());
    EXPECT_EQ(rows.record()["b"].integer(), 1);
}

TEST_F(SqliteSourceTest, OtherDeclarationsOfTimesAndBooleans)
{
    Opened(Database).run("CREATE TABLE v(z time, m datetime, o bool)");
    SqliteSource rows(Database, "SELECT * FROM v");
    EXPECT_EQ(rows.columns()[0].Type, ColumnType::Text);
    EXPECT_EQ(rows.columns()[1].Type, ColumnType::Text);
    EXPECT_EQ(rows.columns()[2].Type, ColumnType::BigInteger);
}

TEST_F(SqliteSourceTest, ResultWithoutRows)
{
    SqliteSource rows(Database, "SELECT a FROM t WHERE 0");
    EXPECT_EQ(rows.columns().size(), 1U);
    EXPECT_FALSE(rows.next());
}

TEST_F(SqliteSourceTest, ChangingStatementsRun)
{
    SqliteSource changing(Database, "UPDATE t SET b = 'new'");
    EXPECT_TRUE(changing.columns().empty());
    EXPECT_EQ(changing.changes(), 0U);
    EXPECT_FALSE(changing.next());
    EXPECT_EQ(changing.changes(), 2U);
    EXPECT_EQ(Opened(Database).values("SELECT DISTINCT b FROM t"), std::vector<std::string>{"new"});
}

TEST_F(SqliteSourceTest, ChangingStatementsMayReturnRows)
{
    SqliteSource changing(Database, "INSERT INTO t(a) VALUES (1), (2) RETURNING a");
    EXPECT_TRUE(changing.next());
    EXPECT_TRUE(changing.next());
    try {
        changing.seek(1);
        ADD_FAILURE() << "the statement would run again";
    } catch (const Error& error) {
        EXPECT_EQ(error.what(), Database + ": the rows of a statement that changes the database can be read only once");
    }
    EXPECT_FALSE(changing.next());
    EXPECT_EQ(changing.changes(), 2U);
}

TEST_F(SqliteSourceTest, SeeksInBothDirections)
{
    SqliteSource rows(Database, "WITH c(x) AS (VALUES (11), (12), (13), (14)) SELECT x FROM c");
    const auto nextValue = [&rows] { return rows.next() ? rows.record()[0].integer().value() : 0; };
    rows.seek(3);
    EXPECT_EQ(nextValue(), 13);
    EXPECT_EQ(rows.record().Number, 3U);
    rows.seek(1);
    EXPECT_EQ(nextValue(), 11);
    EXPECT_EQ(nextValue(), 12);
    rows.seek(4);
    EXPECT_EQ(nextValue(), 14);
    EXPECT_EQ(nextValue(), 0);
    rows.seek(2);
    EXPECT_EQ(nextValue(), 12);
    rows.seek(9);
    EXPECT_EQ(nextValue(), 0);
    rows.seek(1);
    EXPECT_EQ(nextValue(), 11);
    rows.seek(1);
    EXPECT_EQ(nextValue(), 11);
}

TEST_F(SqliteSourceTest, ColumnsNotNeededAreNull)
{
    SqliteSource rows(Database, "SELECT a, b FROM t");
    rows.need({false, true});
    ASSERT_TRUE(rows.next());
    EXPECT_EQ(rows.record().Cells[0].Kind, CellKind::Null);
    EXPECT_EQ(rows.record()["b"].text(), "r1c2");
}

TEST_F(SqliteSourceTest, RefusedStatementsNameThePlace)
{
    EXPECT_STREQ(refusal("SELECT a,\n nowhere FROM t").what(), (Database + ": no such column: nowhere").c_str());
    EXPECT_EQ(refusal("SELECT a,\n nowhere FROM t").At, 11U);
    EXPECT_EQ(refusal("SELEC 1").Reason, "near \"SELEC\": syntax error");
    EXPECT_EQ(refusal("SELECT 1; SELECT 2").Reason, "the text holds more than one statement");
    EXPECT_EQ(refusal("CREATE TRIGGER x AFTER INSERT ON t BEGIN SELECT 1; END; SELECT 2").Reason,
              "the text holds more than one statement");
    EXPECT_EQ(refusal("").Reason, "the text holds no SQL statement");
    EXPECT_EQ(refusal("-- a; b\n;").Reason, "the text holds no SQL statement");
    EXPECT_EQ(refusal(std::string("SELECT 1\0 + 1", 13)).At, 8U);
    EXPECT_EQ(refusal("INSERT INTO t SELECT abs(-9223372036854775808)").Reason,
              "table t has 6 columns but 1 values were supplied");
    EXPECT_EQ(refusal("UPDATE t SET a = abs(-9223372036854775808)").Reason, "integer overflow");
}

TEST_F(SqliteSourceTest, CommentsAndTriggersAreOneStatement)
{
    SqliteSource first(Database, "-- it's\nSELECT 1 -- ; SELECT 2\n; /* ; */ -- end");
    EXPECT_TRUE(first.next());
    SqliteSource second(Database, "CREATE TRIGGER x AFTER INSERT ON t BEGIN SELECT 1; END;");
    EXPECT_FALSE(second.next());
}

TEST_F(SqliteSourceTest, FilesThatCannotBeOpened)
{
    EXPECT_THROW(SqliteSource(Folder.file("none.db"), "SELECT 1"), Error);
    EXPECT_FALSE(std::filesystem::exists(Folder.file("none.db")));
    const std::string text = Folder.write("text.db", std::string(4096, 'x'));
    EXPECT_THROW(SqliteSource(text, "SELECT * FROM t"), SqlError);
}

TEST_F(SqliteSourceTest, TableInTheOrderOfItsRowids)
{
    Opened(Database).run("CREATE TABLE u(n); INSERT INTO u(rowid, n) VALUES (9, 'last'), (1, 'first');"
                         "CREATE TABLE w(k PRIMARY KEY, n) WITHOUT ROWID; INSERT INTO w VALUES (2, 'b'), (1, 'a');"
                         "CREATE VIEW v AS SELECT n FROM u WHERE n = 'last'");
    const auto firstOf = [this](const std::string& table) {
        const auto rows = SqliteSource::ofTable(Database, table, {"n"});
        return rows->next() ? std::string(rows->record()["n"].text().value()) : std::string();
    };
    EXPECT_EQ(firstOf("U"), "first");
    EXPECT_EQ(firstOf("w"), "a");
    EXPECT_EQ(firstOf("v"), "last");
}

TEST_F(SqliteSourceTest, TableWithoutAColumnIsAnError)
{
    EXPECT_THROW(SqliteSource::ofTable(Database, "t", {"a", "nowhere"}), SqlError);
    EXPECT_THROW(SqliteSource::ofTable(Database, "nowhere", {"a"}), SqlError);
}

TEST_F(SqliteSourceTest, OtherConnectionsCanBeUsed)
{
    sqlite3* connection = nullptr;
    ASSERT_EQ(sqlite3_open(":memory:", &connection), SQLITE_OK);
    {
        SqliteSource rows(connection, "memory", "SELECT 7");
        ASSERT_TRUE(rows.next());
        EXPECT_EQ(rows.record()[0].integer(), 7);
        EXPECT_EQ(rows.file(), "memory");
    }
    EXPECT_EQ(sqlite3_close(connection), SQLITE_OK);
}

TEST_F(SqliteSourceTest, StopEndsALongStatement)
{
    std::stop_source stop;
    SqliteOptions options;
    options.Stop = stop.get_token();
    const std::jthread later([&stop] {
        std::this_thread::sleep_for(50ms);
        stop.request_stop();
    });
    EXPECT_THROW(SqliteSource(Database,
                              "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c) SELECT count(*) FROM c",
                              options),
                 Stopped);
}

}  // namespace
