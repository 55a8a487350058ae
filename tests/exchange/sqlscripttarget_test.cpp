// SQL scripts: their exact text, and their effect in SQLite.
#include <kd_lib/exchange/sqlscripttarget.h>
#include <kd_lib/exchange/transfer.h>

#include "support/memory_source.h"
#include "support/output_text.h"
#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <sqlite3.h>
#include <string>
#include <vector>

namespace {

using namespace kd_lib::exchange;
using kd_test::columnOf;
using kd_test::MemorySource;
using kd_test::readFile;
using Texts = std::vector<std::string>;

const std::vector<Column> peopleColumns = {columnOf("ID", ColumnType::Number, 4),
                                           columnOf("Name", ColumnType::Text, 10)};
const std::vector<MemorySource::Row> peopleRows = {{{Cell::number("1"), Cell::text("O'Brien")}},
                                                   {{Cell::number("2"), Cell::null()}}};

std::string scriptOf(MemorySource& source, Engine engine, const TableOptions& options = {},
                     RowStyle style = RowStyle::Fastest)
{
    const kd_test::ScopedDirectory folder;
    SqlScriptTarget target(folder.file("out"), dialectOf(engine), options, style);
    transfer(source, target);
    return readFile(folder.file("out"));
}

std::string scriptOf(Engine engine, const TableOptions& options = {}, RowStyle style = RowStyle::Fastest)
{
    MemorySource source(peopleColumns, peopleRows, "people.dbf");
    return scriptOf(source, engine, options, style);
}

const TableOptions append = {{}, TableMode::Append};
const TableOptions replace = {{}, TableMode::Replace};
const TableOptions withKey = {"t", TableMode::Create, "Nr"};

TEST(SqlScriptTarget, OfPostgreSqlCopies)
{
    EXPECT_EQ(scriptOf(Engine::PostgreSql), "\\set ON_ERROR_STOP on\n"
                                            "SET client_encoding = 'UTF8';\n"
                                            "SET standard_conforming_strings = on;\n"
                                            "BEGIN;\n"
                                            "CREATE TABLE \"people\" (\n"
                                            "    \"id\" integer,\n"
                                            "    \"name\" varchar(10)\n"
                                            ");\n"
                                            "COPY \"people\" (\"id\",\"name\") FROM stdin;\n"
                                            "1\tO'Brien\n"
                                            "2\t\\N\n"
                                            "\\.\n"
                                            "COMMIT;\n");
}

TEST(SqlScriptTarget, OfPostgreSqlAppendsReplacesAndInserts)
{
    const std::string head = "SET client_encoding = 'UTF8';\n"
                             "SET standard_conforming_strings = on;\n"
                             "BEGIN;\n";
    EXPECT_EQ(scriptOf(Engine::PostgreSql, append), "\\set ON_ERROR_STOP on\n" + head +
                                                        "COPY \"people\" (\"id\",\"name\") FROM stdin;\n"
                                                        "1\tO'Brien\n"
                                                        "2\t\\N\n"
                                                        "\\.\n"
                                                        "COMMIT;\n");
    EXPECT_EQ(scriptOf(Engine::PostgreSql, replace, RowStyle::Inserts),
              head + "DROP TABLE IF EXISTS \"people\";\n"
                     "CREATE TABLE \"people\" (\n"
                     "    \"id\" integer,\n"
                     "    \"name\" varchar(10)\n"
                     ");\n"
                     "INSERT INTO \"people\" (\"id\",\"name\") VALUES\n"
                     "(1,'O''Brien'),\n"
                     "(2,NULL);\n"
                     "COMMIT;\n");
}

TEST(SqlScriptTarget, OfMySqlInserts)
{
    const std::string head = "SET NAMES utf8mb4;\n"
                             "SET SESSION sql_mode = 'STRICT_ALL_TABLES,STRICT_TRANS_TABLES,NO_ENGINE_SUBSTITUTION';\n";
    const std::string table = "    `id` int,\n"
                              "    `name` varchar(10)\n"
                              ") ENGINE=InnoDB ROW_FORMAT=DYNAMIC DEFAULT CHARSET=utf8mb4;\n";
    const std::string values = "(1,'O''Brien'),\n"
                               "(2,NULL);\n"
                               "COMMIT;\n";
    EXPECT_EQ(scriptOf(Engine::MySql), head + "CREATE TABLE `people` (\n" + table +
                                           "START TRANSACTION;\n"
                                           "INSERT INTO `people` (`id`,`name`) VALUES\n" +
                                           values);
    EXPECT_EQ(scriptOf(Engine::MySql, append),
              head + "START TRANSACTION;\nINSERT INTO `people` (`id`,`name`) VALUES\n" + values);
    EXPECT_EQ(scriptOf(Engine::MySql, replace),
              head + "DROP TABLE IF EXISTS `people_kd_new`, `people_kd_old`;\nCREATE TABLE `people_kd_new` (\n" +
                  table +
                  "START TRANSACTION;\n"
                  "INSERT INTO `people_kd_new` (`id`,`name`) VALUES\n" +
                  values +
                  "CREATE TABLE IF NOT EXISTS `people` LIKE `people_kd_new`;\n"
                  "RENAME TABLE `people` TO `people_kd_old`, `people_kd_new` TO `people`;\n"
                  "DROP TABLE `people_kd_old`;\n");
}

TEST(SqlScriptTarget, OfSqliteFillsATableThatIsRenamed)
{
    EXPECT_EQ(scriptOf(Engine::Sqlite), "PRAGMA legacy_alter_table = ON;\n"
                                        "BEGIN;\n"
                                        "CREATE TABLE \"people_kd_new\" (\n"
                                        "    \"id\" integer,\n"
                                        "    \"name\" text\n"
                                        ");\n"
                                        "INSERT INTO \"people_kd_new\" (\"id\",\"name\") VALUES\n"
                                        "(1,'O''Brien'),\n"
                                        "(2,NULL);\n"
                                        "ALTER TABLE \"people_kd_new\" RENAME TO \"people\";\n"
                                        "DROP TABLE IF EXISTS \"people_kd_new\";\n"
                                        "COMMIT;\n"
                                        "PRAGMA legacy_alter_table = OFF;\n");
    EXPECT_EQ(
        scriptOf(Engine::Sqlite, append),
        "BEGIN;\n"
        "CREATE TEMP TABLE \"people_kd_new\" (\"id\",\"name\");\n"
        "INSERT INTO temp.\"people_kd_new\" (\"id\",\"name\") VALUES\n"
        "(1,'O''Brien'),\n"
        "(2,NULL);\n"
        "INSERT INTO \"people\" (\"id\",\"name\") SELECT \"id\",\"name\" FROM temp.\"people_kd_new\" ORDER BY rowid;\n"
        "DROP TABLE IF EXISTS temp.\"people_kd_new\";\n"
        "COMMIT;\n");
}

TEST(SqlScriptTarget, WithoutRecordsCreatesTheTable)
{
    MemorySource source(peopleColumns, {}, "people.dbf");
    EXPECT_EQ(scriptOf(source, Engine::MySql).find("INSERT"), std::string::npos);
    MemorySource again(peopleColumns, {}, "people.dbf");
    EXPECT_NE(scriptOf(again, Engine::PostgreSql).find("FROM stdin;\n\\.\nCOMMIT;\n"), std::string::npos);
}

TEST(SqlScriptTarget, HasAKeyThatNoRowNames)
{
    const std::string script = scriptOf(Engine::PostgreSql, withKey);
    EXPECT_NE(script.find("    \"nr\" bigint GENERATED BY DEFAULT AS IDENTITY PRIMARY KEY,\n"), std::string::npos);
    EXPECT_NE(script.find("COPY \"t\" (\"id\",\"name\") FROM stdin;\n1\t"), std::string::npos);
}

TEST(SqlScriptTarget, CutsRowsIntoStatements)
{
    std::vector<MemorySource::Row> many(1201, peopleRows[0]);
    MemorySource source(peopleColumns, many, "people.dbf");
    const std::string script = scriptOf(source, Engine::MySql);
    std::size_t statements = 0;
    for (std::size_t at = script.find("INSERT"); at != std::string::npos; at = script.find("INSERT", at + 1)) {
        ++statements;
    }
    EXPECT_EQ(statements, 3U);

    const std::string memo(200000, 'm');
    MemorySource large({columnOf("a", ColumnType::Text)}, std::vector<MemorySource::Row>(4, {{Cell::text(memo)}}));
    const std::string largeScript = scriptOf(large, Engine::MySql);
    EXPECT_LT(largeScript.find("INSERT", largeScript.find("INSERT") + 1), 450000U) << "a statement is of limited size";
}

TEST(SqlScriptTarget, NamesTheDestinationOfTheRecords)
{
    const kd_test::ScopedDirectory folder;
    MemorySource source({columnOf("", ColumnType::Text, 5)}, {}, "People.dbf");
    SqlScriptTarget target(folder.file("out"), dialectOf(Engine::PostgreSql));
    const Tally tally = transfer(source, target);
    EXPECT_EQ(target.destination(), "table people");
    ASSERT_EQ(target.notes().size(), 1U);
    EXPECT_EQ(target.notes()[0].Text, "column 1 has no name; it becomes column_1");
    EXPECT_FALSE(tally.Loss);
}

/// A database in memory that runs scripts statement by statement.
class SqliteScripts : public testing::Test {
protected:
    SqliteScripts() { EXPECT_EQ(sqlite3_open(":memory:", &Database), SQLITE_OK); }
    ~SqliteScripts() override { sqlite3_close(Database); }

    /// Runs all statements, even after an error, as the sqlite3 shell does. Returns the errors.
    Texts run(const std::string& script)
    {
        Texts errors;
        const char* rest = script.c_str();
        while (*rest != '\0') {
            sqlite3_stmt* statement = nullptr;
            const char* tail = nullptr;
            if (sqlite3_prepare_v2(Database, rest, -1, &statement, &tail) != SQLITE_OK) {
                errors.emplace_back(sqlite3_errmsg(Database));
                // The shell ends a statement where a line ends with ";".
                const char* const end = std::strstr(rest, ";\n");
                tail = end != nullptr ? end + 2 : rest + std::strlen(rest);
            } else if (statement != nullptr) {
                while (sqlite3_step(statement) == SQLITE_ROW) {
                }
                if (sqlite3_finalize(statement) != SQLITE_OK) {
                    errors.emplace_back(sqlite3_errmsg(Database));
                }
            }
            rest = tail;
        }
        return errors;
    }

    /// The rows of a query, cells with "|" between them, each in SQLite's quote() form.
    Texts query(const std::string& sql)
    {
        Texts found;
        const auto add = [](void* to, int count, char** values, char**) {
            std::string row;
            for (int i = 0; i < count; ++i) {
                row += (i > 0 ? "|" : "") + std::string(values[i] != nullptr ? values[i] : "NULL");
            }
            static_cast<Texts*>(to)->push_back(row);
            return 0;
        };
        char* message = nullptr;
        EXPECT_EQ(sqlite3_exec(Database, sql.c_str(), add, &found, &message), SQLITE_OK) << message;
        sqlite3_free(message);
        return found;
    }

    sqlite3* Database = nullptr;
};

const Texts twoRows = {"1|'O''Brien'", "2|NULL"};
constexpr const char* allRows = "SELECT quote(id), quote(name) FROM people ORDER BY rowid";

TEST_F(SqliteScripts, CreateTheTable)
{
    EXPECT_EQ(run(scriptOf(Engine::Sqlite)), Texts{});
    EXPECT_EQ(query(allRows), twoRows);
    EXPECT_EQ(query("SELECT name, sql FROM sqlite_schema"),
              Texts{"people|CREATE TABLE \"people\" (\n    \"id\" integer,\n    \"name\" text\n)"});
}

TEST_F(SqliteScripts, LeaveAnExistingTable)
{
    run("CREATE TABLE People (id, name); INSERT INTO people VALUES (9, 'old');\n");
    EXPECT_EQ(run(scriptOf(Engine::Sqlite)).size(), 1U);
    EXPECT_EQ(query(allRows), Texts{"9|'old'"});
    EXPECT_EQ(query("SELECT name FROM sqlite_schema"), Texts{"People"});
    EXPECT_EQ(sqlite3_get_autocommit(Database), 1);
}

TEST_F(SqliteScripts, ReplaceATable)
{
    EXPECT_EQ(run(scriptOf(Engine::Sqlite, replace)), Texts{}) << "there is none yet";
    run("DROP TABLE people; CREATE TABLE people (other); CREATE VIEW v AS SELECT * FROM people;\n");
    EXPECT_EQ(run(scriptOf(Engine::Sqlite, replace)), Texts{});
    EXPECT_EQ(query("SELECT quote(id), quote(name) FROM v"), twoRows);
    EXPECT_EQ(query("SELECT name FROM sqlite_schema ORDER BY name"), (Texts{"people", "v"}));
}

TEST_F(SqliteScripts, KeepTheOldTableWhenTheyFailInTheMiddle)
{
    run("CREATE TABLE people (id, name); INSERT INTO people VALUES (9, 'old');\n");
    std::string script = scriptOf(Engine::Sqlite, replace);
    // SQLite does this itself when the disk is full.
    script.insert(script.find("INSERT"), "ROLLBACK;\n");
    EXPECT_FALSE(run(script).empty());
    EXPECT_EQ(query(allRows), Texts{"9|'old'"});
    EXPECT_EQ(query("SELECT name FROM sqlite_schema"), Texts{"people"});
}

TEST_F(SqliteScripts, AppendByName)
{
    run("CREATE TABLE people (name text, more int DEFAULT 7, id integer); INSERT INTO people VALUES ('old', 1, 0);\n");
    EXPECT_EQ(run(scriptOf(Engine::Sqlite, append)), Texts{});
    EXPECT_EQ(query("SELECT quote(id), quote(name), more FROM people ORDER BY rowid"),
              (Texts{"0|'old'|1", "1|'O''Brien'|7", "2|NULL|7"}));
    EXPECT_EQ(query("SELECT name FROM sqlite_temp_schema"), Texts{});
}

TEST_F(SqliteScripts, AppendAllOrNothing)
{
    run("CREATE TABLE people (id integer CHECK (id <> 2), name); INSERT INTO people VALUES (9, 'old');\n");
    EXPECT_EQ(run(scriptOf(Engine::Sqlite, append)).size(), 1U);
    EXPECT_EQ(query(allRows), Texts{"9|'old'"});
    run("DROP TABLE people; CREATE TABLE people (id integer);\n");
    EXPECT_FALSE(run(scriptOf(Engine::Sqlite, append)).empty()) << "there is no column of the name";
    EXPECT_EQ(query("SELECT * FROM people"), Texts{});
    EXPECT_EQ(sqlite3_get_autocommit(Database), 1);
}

TEST_F(SqliteScripts, NumberTheKey)
{
    EXPECT_EQ(run(scriptOf(Engine::Sqlite, withKey)), Texts{});
    EXPECT_EQ(query("SELECT nr, id FROM t"), (Texts{"1|1", "2|2"}));
}

/// Values as they arrive: literal, type in SQLite.
TEST_F(SqliteScripts, CarryEveryValue)
{
    const std::vector<Column> of = {columnOf("t", ColumnType::Text),         columnOf("n", ColumnType::Number, 20, 4),
                                    columnOf("f", ColumnType::Float),        columnOf("b", ColumnType::Bytes),
                                    columnOf("x", ColumnType::Timestamp),    columnOf("l", ColumnType::Boolean),
                                    columnOf("m", ColumnType::Number, 10, 2)};
    const std::string zero("a\0b\r\n", 5);
    const auto day = Cell::timestamp({{2024, 2, 29}, 1});
    const std::string words = "\\r\\0\r" + zero;
    std::string manyReturns;
    for (int i = 0; i < 3000; ++i) {
        manyReturns += "line\r\n";
    }
    std::vector<MemorySource::Row> values = {
        {{Cell::text(zero), Cell::number("123456789012345.6789"), Cell::real(1e300), Cell::bytes(zero), day,
          Cell::boolean(true), Cell::number("12.50")}},
        {{Cell::text(manyReturns), Cell::number("0.5"), Cell::real(-5), Cell::bytes(""), Cell::null(),
          Cell::boolean(false), Cell::number("-7")}},
        {{Cell::text(words), Cell::number("9223372036854775807"), Cell::real(std::numeric_limits<double>::infinity()),
          Cell::null(), Cell::null(), Cell::null(), Cell::null()}}};
    MemorySource source(of, values);
    EXPECT_EQ(run(scriptOf(source, Engine::Sqlite)), Texts{});
    EXPECT_EQ(
        query("SELECT hex(t), quote(n), typeof(f), f, quote(b), quote(x), quote(l), typeof(m), m FROM memory "
              "WHERE rowid = 1"),
        Texts{"6100620D0A|'123456789012345.6789'|real|1.0e+300|X'6100620D0A'|'2024-02-29 00:00:00.001'|1|real|12.5"});
    EXPECT_EQ(
        query("SELECT length(t), t = replace('" + std::string(1, 'x') +
              "', 'x', replace(hex(zeroblob(1500)), '00', "
              "'line' || char(13, 10) || 'line' || char(13, 10))), quote(n), typeof(f), quote(b), quote(l), typeof(m) "
              "FROM memory WHERE rowid = 2"),
        Texts{"18000|1|0.5|real|X''|0|integer"});
    EXPECT_EQ(query("SELECT hex(t), quote(n), f FROM memory WHERE rowid = 3"),
              Texts{"5C725C300D6100620D0A|9223372036854775807|Inf"});
}

}  // namespace
