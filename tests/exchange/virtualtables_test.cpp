#include <kd_lib/exchange/sqlitesource.h>
#include <kd_lib/exchange/sqlitetarget.h>
#include <kd_lib/exchange/transfer.h>
#include <kd_lib/exchange/virtualtables.h>

#include "support/dbf_builder.h"
#include "support/opened_database.h"
#include "support/scoped_directory.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace kd_lib::exchange;
using kd_test::DbfBuilder;

using Values = std::vector<std::string>;

/// The result of a statement: a text for each row, with "|" between the cells.
Values rowsOf(sqlite3* connection, const std::string& sql)
{
    Values found;
    const auto take = [](void* to, int count, char** cells, char**) {
        std::string row;
        for (int i = 0; i < count; ++i) {
            row.append(i > 0 ? "|" : "").append(cells[i] != nullptr ? cells[i] : "NULL");
        }
        static_cast<Values*>(to)->push_back(row);
        return 0;
    };
    char* reason = nullptr;
    if (sqlite3_exec(connection, sql.c_str(), take, &found, &reason) != SQLITE_OK) {
        found.emplace_back(std::string("error: ") + reason);
    }
    sqlite3_free(reason);
    return found;
}

/// An ordinary connection, as any program may have.
class Connection {
public:
    explicit Connection(const std::string& file = ":memory:")
    {
        sqlite3_open(file.c_str(), &Handle);
        VirtualTableEvents events;
        events.OnReject = [this](const Reject& reject) {
            Rejects.push_back(std::to_string(reject.Where.Record) + " " + reject.Where.Column + " " +
                              std::to_string(reject.Where.Offset.value_or(0)) + " " + reject.Bytes);
        };
        events.OnNote = [this](const std::string&, const Note& note) { Notes.push_back(note.Text); };
        registerTables(Handle, events);
    }

    ~Connection() { sqlite3_close(Handle); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    Values rows(const std::string& sql) { return rowsOf(Handle, sql); }

    Values Rejects;
    Values Notes;

private:
    sqlite3* Handle = nullptr;
};

std::string quoted(const std::string& path)
{
    return "'" + path + "'";
}

class VirtualTables : public testing::Test {
protected:
    /// Records 1 to `count`, of which each fifth is deleted.
    std::string numbers(int count)
    {
        DbfBuilder builder({{"NR", 'N', 6}, {"NAME", 'C', 10}, {"AMOUNT", 'N', 10, 2}});
        for (int i = 1; i <= count; ++i) {
            const std::string text = std::to_string(i);
            const std::vector<std::string> values = {text, "name" + text,
                                                     text + "." + std::to_string(i % 100 + 100).substr(1)};
            i % 5 == 0 ? builder.deletedRecord(values) : builder.record(values);
        }
        return Folder.write("numbers.dbf", builder.bytes());
    }

    kd_test::ScopedDirectory Folder;
};

TEST_F(VirtualTables, ValuesAreThoseOfALoad)
{
    DbfBuilder builder({{"C", 'C', 5},
                        {"N", 'N', 5},
                        {"D", 'N', 7, 2},
                        {"BIG", 'N', 20, 4},
                        {"L", 'L', 1},
                        {"DAY", 'D', 8},
                        {"HUGE", 'N', 19}});
    builder.record({"r1", "    7", "   1.50", "123456789012345.6789", "T", "20240229", "9223372036854775807"});
    builder.record({"", "", "", "", "?", "", ""});
    builder.record({"r3", "-7", "-0.07", "12.5", "n", "00010101", "9999999999999999999"});
    const std::string file = Folder.write("t.dbf", builder.bytes());
    Connection connection;
    EXPECT_EQ(connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(file) + ")"), Values{});
    const std::string shown =
        "SELECT quote(c), quote(n), quote(d), quote(big), quote(l), quote(day), quote(huge) FROM t";
    EXPECT_EQ(connection.rows(shown),
              (Values{"'r1'|7|1.5|'123456789012345.6789'|1|'2024-02-29'|9223372036854775807",
                      "''|NULL|NULL|NULL|NULL|NULL|NULL", "'r3'|-7|-0.07|12.5|0|'0001-01-01'|'9999999999999999999'"}));
    const std::string database = Folder.file("t.db");
    SqliteTarget target(database);
    transfer(*openSource(file), target);
    sqlite3* loaded = nullptr;
    sqlite3_open(database.c_str(), &loaded);
    EXPECT_EQ(connection.rows(shown), rowsOf(loaded, shown));
    EXPECT_EQ(connection.rows("SELECT name, type FROM pragma_table_info('t')"),
              rowsOf(loaded, "SELECT name, type FROM pragma_table_info('t')"));
    sqlite3_close(loaded);
}

TEST_F(VirtualTables, NumericColumnsHaveTheValuesOfASqliteTable)
{
    DbfBuilder builder({{"N", 'N', 12, 2}, {"BIG", 'N', 20, 2}, {"F", 'F', 20, 2}});
    for (const char* text :
         {"2.00", "-2.00", "0.00", "2.50", "1E+30", "1E+15", "1E+14", "-1E+20", "999999999.99", "1.5E-7"}) {
        builder.record({text, text, text});
    }
    const std::string file = Folder.write("t.dbf", builder.bytes());
    const std::string database = Folder.file("t.db");
    SqliteTarget target(database);
    transfer(*openSource(file), target);
    sqlite3* loaded = nullptr;
    sqlite3_open(database.c_str(), &loaded);
    Connection connection;
    connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(file) + ")");
    const std::string shown = "SELECT typeof(n) || n, typeof(big) || big, typeof(f) || f FROM t";
    EXPECT_EQ(connection.rows(shown), rowsOf(loaded, shown));
    EXPECT_EQ(connection.rows(shown)[0], "integer2|real2.0|real2.0");
    EXPECT_EQ(connection.rows(shown)[4].substr(0, 12), "real1.0e+30|");
    sqlite3_close(loaded);
}

TEST_F(VirtualTables, RowidIsTheRecordNumber)
{
    Connection connection;
    connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(numbers(12)) + ")");
    EXPECT_EQ(connection.rows("SELECT rowid, nr FROM t"),
              (Values{"1|1", "2|2", "3|3", "4|4", "6|6", "7|7", "8|8", "9|9", "11|11", "12|12"}));
}

TEST_F(VirtualTables, ConditionsOnRowidFindTheirRecords)
{
    Connection connection;
    connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(numbers(30)) +
                    ");"
                    "CREATE TABLE plain(rowid INTEGER PRIMARY KEY, nr); INSERT INTO plain SELECT rowid, nr FROM t");
    for (const char* value : {"1",
                              "7",
                              "5",
                              "0",
                              "-3",
                              "30",
                              "29",
                              "31",
                              "7.5",
                              "7.0",
                              "-0.5",
                              "1e30",
                              "-1e30",
                              "'7'",
                              "'7.0'",
                              "'x'",
                              "''",
                              "NULL",
                              "x'07'",
                              "9223372036854775807",
                              "-9223372036854775808",
                              "2.5"}) {
        for (const char* comparison : {"=", "<", "<=", ">", ">=", "<>", "IS", "IS NOT"}) {
            const std::string condition = std::string(" WHERE rowid ") + comparison + " " + value;
            EXPECT_EQ(connection.rows("SELECT nr FROM t" + condition),
                      connection.rows("SELECT nr FROM plain" + condition))
                << condition;
        }
    }
    for (const char* condition :
         {"rowid > 3 AND rowid <= 11", "rowid BETWEEN 4 AND 6", "rowid > 11 AND rowid < 3", "rowid = 4 AND rowid = 6",
          "rowid IN (1, 5, 30, 2, 99)", "rowid = 3 OR rowid > 27",
          "rowid > 3 AND rowid > 9 AND rowid < 20 AND rowid < 12", "nr > 10 AND rowid < 14", "rowid + 0 = 4"}) {
        const std::string where = std::string(" WHERE ") + condition;
        EXPECT_EQ(connection.rows("SELECT nr FROM t" + where), connection.rows("SELECT nr FROM plain" + where))
            << where;
    }
}

TEST_F(VirtualTables, PlansUseTheConditions)
{
    Connection connection;
    connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(numbers(30)) + ")");
    const auto plan = [&connection](const std::string& sql) {
        return connection.rows("EXPLAIN QUERY PLAN " + sql).front();
    };
    EXPECT_NE(plan("SELECT nr FROM t WHERE rowid = 3").find("INDEX 1:"), std::string::npos);
    EXPECT_NE(plan("SELECT nr FROM t WHERE rowid > 3").find("INDEX 2:"), std::string::npos);
    EXPECT_NE(plan("SELECT nr FROM t WHERE rowid < 3").find("INDEX 4:"), std::string::npos);
    EXPECT_NE(plan("SELECT nr FROM t WHERE rowid BETWEEN 3 AND 4").find("INDEX 6:"), std::string::npos);
    EXPECT_NE(plan("SELECT nr FROM t WHERE nr = 3").find("INDEX 0:"), std::string::npos);
    EXPECT_EQ(connection.rows("EXPLAIN QUERY PLAN SELECT nr FROM t ORDER BY rowid").size(), 1U);
    EXPECT_EQ(connection.rows("EXPLAIN QUERY PLAN SELECT nr FROM t ORDER BY rowid DESC").size(), 2U);
    EXPECT_EQ(connection.rows("EXPLAIN QUERY PLAN SELECT nr FROM t ORDER BY nr").size(), 2U);
}

TEST_F(VirtualTables, OrderAndLimits)
{
    Connection connection;
    connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(numbers(9)) + ")");
    EXPECT_EQ(connection.rows("SELECT nr FROM t ORDER BY rowid LIMIT 2 OFFSET 3"), (Values{"4", "6"}));
    EXPECT_EQ(connection.rows("SELECT nr FROM t ORDER BY rowid DESC LIMIT 2"), (Values{"9", "8"}));
    EXPECT_EQ(connection.rows("SELECT name FROM t ORDER BY name DESC LIMIT 1"), Values{"name9"});
}

TEST_F(VirtualTables, ValuesOutliveTheirRecords)
{
    Connection connection;
    connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(numbers(1000)) + ")");
    EXPECT_EQ(connection.rows("SELECT min(name), max(name), count(DISTINCT name) FROM t"), Values{"name1|name999|800"});
    EXPECT_EQ(connection.rows("SELECT group_concat(name) FROM t WHERE rowid < 4"), Values{"name1,name2,name3"});
    EXPECT_EQ(connection.rows("SELECT lag(name) OVER (ORDER BY rowid) FROM t WHERE rowid < 4"),
              (Values{"NULL", "name1", "name2"}));
    EXPECT_EQ(connection.rows("SELECT nr % 2, max(amount), name FROM t GROUP BY 1"),
              (Values{"0|998.98|name998", "1|999.99|name999"}));
}

TEST_F(VirtualTables, JoinsWithItselfAndOthers)
{
    Connection connection;
    connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(numbers(200)) +
                    ");"
                    "CREATE TABLE other(n); INSERT INTO other VALUES (7), (199), (200), (NULL)");
    EXPECT_EQ(connection.rows("SELECT a.nr, b.name FROM t a JOIN t b ON b.rowid = a.nr + 1 WHERE a.nr < 7"),
              (Values{"1|name2", "2|name3", "3|name4", "6|name7"}));
    EXPECT_EQ(connection.rows("SELECT n, name FROM other LEFT JOIN t ON t.rowid = n"),
              (Values{"7|name7", "199|name199", "200|NULL", "NULL|NULL"}));
    EXPECT_EQ(connection.rows("SELECT name FROM t WHERE nr IN (SELECT n FROM other)"), (Values{"name7", "name199"}));
    EXPECT_EQ(connection.rows("SELECT (SELECT count(*) FROM t b WHERE b.nr < a.nr) FROM t a WHERE a.nr IN (1, 7, 199)"),
              (Values{"0", "5", "159"}));
    EXPECT_EQ(connection.rows("SELECT count(*) FROM t a, t b WHERE a.nr = b.nr"), Values{"160"});
}

TEST_F(VirtualTables, UnusedColumnsAreNotDecoded)
{
    DbfBuilder builder({{"A", 'N', 5}, {"B", 'N', 5}});
    builder.record({"1", "x"}).record({"y", "2"});
    Connection connection;
    connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(Folder.write("t.dbf", builder.bytes())) + ")");
    EXPECT_EQ(connection.rows("SELECT count(*) FROM t"), Values{"2"});
    EXPECT_EQ(connection.Rejects, Values{});
    EXPECT_EQ(connection.rows("SELECT a FROM t"), (Values{"1", "NULL"}));
    EXPECT_EQ(connection.Rejects, Values{"2 A 109 y    "});
    EXPECT_EQ(connection.rows("SELECT count(*) FROM t WHERE b = 2"), Values{"1"});
    EXPECT_EQ(connection.Rejects, (Values{"2 A 109 y    ", "1 B 103 x    "}));
}

TEST_F(VirtualTables, RejectsAndNotesAreReportedOnce)
{
    DbfBuilder builder({{"A", 'N', 5}});
    builder.record({"x"}).deletedRecord({"1"}).record({"2"});
    Connection connection;
    // SQLite refuses a table of the file's name, but this one has another.
    connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(Folder.write("sqlite_t.dbf", builder.bytes())) + ")");
    for (int i = 0; i < 3; ++i) {
        connection.rows("SELECT * FROM t a, t b WHERE a.a > 0 OR b.a > 0");
    }
    EXPECT_EQ(connection.Rejects.size(), 1U);
    EXPECT_EQ(connection.Notes, Values{"1 deleted record left out"});
}

TEST_F(VirtualTables, AJoinByRowidReadsOneTableThroughAndSeeksInTheOther)
{
    Connection connection;
    connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(numbers(100)) + ")");
    const std::string join = "SELECT count(*) FROM t a, t b WHERE a.rowid = b.nr";
    const Values plan = connection.rows("EXPLAIN QUERY PLAN " + join);
    ASSERT_EQ(plan.size(), 2U);
    EXPECT_NE(plan[0].find("SCAN b VIRTUAL TABLE INDEX 0:"), std::string::npos) << plan[0];
    EXPECT_NE(plan[1].find("SCAN a VIRTUAL TABLE INDEX 1:"), std::string::npos) << plan[1];
    EXPECT_EQ(connection.rows(join), Values{"80"});
}

TEST_F(VirtualTables, NumbersThatTheColumnCannotHoldAreNull)
{
    DbfBuilder builder({{"A", 'N', 5}});
    builder.record({"1.5"}).record({"2.0"});
    Connection connection;
    connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(Folder.write("t.dbf", builder.bytes())) + ")");
    EXPECT_EQ(connection.rows("SELECT quote(a) FROM t"), (Values{"NULL", "2"}));
    EXPECT_EQ(connection.Rejects.size(), 1U);
}

TEST_F(VirtualTables, TablesCannotBeChanged)
{
    Connection connection;
    connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(numbers(3)) + ")");
    EXPECT_EQ(connection.rows("INSERT INTO t VALUES (1, 'x', 2)"), Values{"error: table t may not be modified"});
    EXPECT_EQ(connection.rows("DELETE FROM t"), Values{"error: table t may not be modified"});
    EXPECT_EQ(connection.rows("DROP TABLE t"), Values{});
    EXPECT_TRUE(std::filesystem::exists(Folder.file("numbers.dbf")));
}

TEST_F(VirtualTables, ModuleIsNotATable)
{
    Connection connection;
    EXPECT_EQ(connection.rows("SELECT * FROM kd"), Values{"error: no such table: kd"});
}

TEST_F(VirtualTables, ChangedFileIsReadAgain)
{
    Connection connection;
    connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(numbers(3)) + ")");
    EXPECT_EQ(connection.rows("SELECT count(*) FROM t"), Values{"3"});
    numbers(7);
    EXPECT_EQ(connection.rows("SELECT count(*), max(name) FROM t"), Values{"6|name7"});
    Folder.write("numbers.dbf", DbfBuilder({{"OTHER", 'C', 3}}).record({"x"}).bytes());
    EXPECT_EQ(connection.rows("SELECT count(*) FROM t"),
              Values{"error: " + Folder.file("numbers.dbf") +
                     ": the columns of the file have changed; create the table again"});
    std::filesystem::remove(Folder.file("numbers.dbf"));
    EXPECT_EQ(connection.rows("SELECT count(*) FROM t"),
              Values{"error: " + Folder.file("numbers.dbf") + ": No such file or directory"});
}

TEST_F(VirtualTables, FileThatShrinksWhileItIsReadDoesNotCrash)
{
    Connection connection;
    const std::string file = numbers(20000);
    connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(file) + ")");
    connection.rows("SELECT count(*) FROM t WHERE rowid < 3");
    std::filesystem::resize_file(file, 1000);
    const Values found = connection.rows("SELECT count(*) FROM t");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_NE(found[0], "16000");
}

TEST_F(VirtualTables, ArgumentsAreTheOptionsOfSources)
{
    DbfBuilder builder({{"NAME", 'C', 6}, {"A\"B,C", 'N', 5}});
    builder.record({"\x86", "1"}).deletedRecord({"r2", "2"});
    const std::string file = Folder.write("t.dbf", builder.bytes());
    struct Case {
        const char* Arguments;
        const char* Sql;
        Values Found;
    };
    const Case cases[] = {
        {"", "SELECT hex(name) FROM t", {"E280A0"}},
        {", encoding=cp852", "SELECT name FROM t", {"\xC4\x87"}},
        {", encoding=ascii, encoding_errors=replace", "SELECT name FROM t", {"\xEF\xBF\xBD"}},
        {", encoding=ascii, encoding_errors=escape", "SELECT name FROM t", {"\\x86"}},
        {", Encoding = 'cp852'", "SELECT name FROM t", {"\xC4\x87"}},
        {", deleted=keep", "SELECT \"a\"\"b,c\" FROM t", {"1", "2"}},
        {", deleted=MARK", "SELECT _deleted FROM t", {"0", "1"}},
        {", deleted=skip", "SELECT \"a\"\"b,c\" FROM t", {"1"}},
        {", names=lower", "SELECT name FROM pragma_table_info('t')", {"name", "a\"b,c"}},
        {", names=keep, deleted=keep", "SELECT name FROM pragma_table_info('t')", {"NAME", "A\"B,C"}},
        {", select=name", "SELECT count(*) FROM pragma_table_info('t')", {"1"}},
        {", type='A\"B,C=text'", "SELECT typeof(\"a\"\"b,c\") FROM t", {"text"}},
        {", type=\"A\"\"B,C=float\", type='NAME=bytes'",
         "SELECT typeof(\"a\"\"b,c\") || typeof(name) FROM t",
         {"realblob"}},
        {", from=dbf, no_memo=1", "SELECT count(*) FROM t", {"1"}},
    };
    for (const Case& of : cases) {
        Connection connection;
        EXPECT_EQ(connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(file) + of.Arguments + ")"), Values{})
            << of.Arguments;
        EXPECT_EQ(connection.rows(of.Sql), of.Found) << of.Arguments;
    }
}

TEST_F(VirtualTables, ColumnsAreSelectedInTheirOrder)
{
    const std::string file = Folder.write("t.csv", "A,B,C\n1,2,3\n");
    Connection connection;
    EXPECT_EQ(connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(file) + ", select='c,a')"), Values{});
    EXPECT_EQ(connection.rows("SELECT * FROM t"), Values{"3|1"});
}

TEST_F(VirtualTables, AKindCanBeNamedForAFileWithAnyExtension)
{
    const std::string file = Folder.write("kinds.data", "a,b\tc\n1,2\t3\n");
    const std::pair<const char*, const char*> cases[] = {{"csv", "a|b\tc"}, {"tsv", "a,b|c"}};
    for (const auto& [kind, columns] : cases) {
        Connection connection;
        connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(file) + ", from=" + kind + ")");
        EXPECT_EQ(connection.rows("SELECT group_concat(name, '|') FROM pragma_table_info('t')"), Values{columns});
    }
}

TEST_F(VirtualTables, ArgumentsLoseOnlyQuotes)
{
    const std::string file = Folder.write("n.csv", "a\nNaN\nx\n");
    Connection connection;
    connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(file) + ", null=NaN)");
    EXPECT_EQ(connection.rows("SELECT a FROM t WHERE a IS NOT NULL"), Values{"x"});
    connection.rows("CREATE VIRTUAL TABLE u USING kd(" + quoted(file) + ", null='x')");
    EXPECT_EQ(connection.rows("SELECT a FROM u WHERE a IS NOT NULL"), Values{"NaN"});
}

TEST_F(VirtualTables, InvalidArgumentsAreErrors)
{
    const std::string file = numbers(1);
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"", "the name of a file is missing"},
        {quoted(file) + ", colour=blue", "unknown argument colour=blue"},
        {quoted(file) + ", " + quoted(file), "unknown argument " + quoted(file)},
        {quoted(file) + ", deleted=maybe", "deleted=maybe makes no sense"},
        {quoted(file) + ", deleted=keep, deleted=skip", "argument deleted is given twice"},
        {quoted(file) + ", type=NR", "type=NR makes no sense"},
        {quoted(file) + ", header=perhaps", "header=perhaps makes no sense"},
        {"deleted=keep", "the name of a file is missing"},
        {"7", "7: the kind of the file is not known by its name"},
        {quoted(Folder.file("none.dbf")), Folder.file("none.dbf") + ": No such file or directory"},
        {"'-', from=dbf", "-: standard input can be read only once; a table must be a file"},
    };
    for (const auto& [arguments, reason] : cases) {
        Connection connection;
        EXPECT_EQ(connection.rows("CREATE VIRTUAL TABLE t USING kd(" + arguments + ")"), Values{"error: " + reason});
        EXPECT_EQ(connection.rows("SELECT count(*) FROM sqlite_master"), Values{"0"});
    }
}

TEST_F(VirtualTables, FileNamesWithQuotes)
{
    const std::string file = Folder.write("it's \"one\", a=b.dbf", DbfBuilder({{"A", 'C', 3}}).record({"x"}).bytes());
    std::string name = quoted(Folder.path() + "/it''s \"one\", a=b.dbf");
    Connection connection;
    EXPECT_EQ(connection.rows("CREATE VIRTUAL TABLE t USING kd(" + name + ")"), Values{});
    EXPECT_EQ(connection.rows("SELECT a FROM t"), Values{"x"});
}

TEST_F(VirtualTables, TablesOfADatabaseFileStay)
{
    const std::string database = Folder.file("x.db");
    const std::string file = numbers(3);
    {
        Connection connection(database);
        connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(file) +
                        ");"
                        "CREATE VIEW v AS SELECT name FROM t WHERE nr > 1");
    }
    Connection connection(database);
    EXPECT_EQ(connection.rows("SELECT * FROM v"), (Values{"name2", "name3"}));
    connection.rows("ALTER TABLE t RENAME TO u");
    EXPECT_EQ(connection.rows("SELECT count(*) FROM t").size(), 1U);
}

TEST_F(VirtualTables, PipesAreReadOnce)
{
    const std::string pipe = Folder.file("pipe.dbf");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const std::string bytes = DbfBuilder({{"A", 'C', 3}}).record({"r1"}).record({"r2"}).bytes();
    const std::jthread writer([&] { Folder.write("pipe.dbf", bytes); });
    Connection connection;
    EXPECT_EQ(connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(pipe) + ")"), Values{});
    EXPECT_EQ(connection.rows("SELECT a FROM t"), (Values{"r1", "r2"}));
}

TEST_F(VirtualTables, ManyColumns)
{
    std::vector<kd_test::DbfColumn> columns;
    std::vector<std::string> values;
    for (int i = 0; i < 100; ++i) {
        columns.push_back({"C" + std::to_string(i), 'C', 4});
        values.push_back("v" + std::to_string(i));
    }
    const std::string file = Folder.write("wide.dbf", DbfBuilder(columns).record(values).bytes());
    Connection connection;
    connection.rows("CREATE VIRTUAL TABLE t USING kd(" + quoted(file) + ")");
    EXPECT_EQ(connection.rows("SELECT c0, c62, c63, c64, c99 FROM t"), Values{"v0|v62|v63|v64|v99"});
    EXPECT_EQ(connection.rows("SELECT c99 FROM t WHERE c1 = 'v1'"), Values{"v99"});
}

class TableConnectionTest : public VirtualTables {
protected:
    VirtualTableEvents events()
    {
        VirtualTableEvents events;
        events.OnNote = [this](const std::string& file, const Note& note) {
            Notes.push_back(std::filesystem::path(file).filename().string() + ": " + note.Text +
                            (note.Loss ? " (loss)" : ""));
        };
        return events;
    }

    Values Notes;
};

TEST_F(TableConnectionTest, FilesAreTables)
{
    const std::string people = Folder.write(
        "PEOPLE.DBF", DbfBuilder({{"ID", 'N', 3}, {"NAME", 'C', 5}}).record({"1", "Ada"}).record({"2", "Ben"}).bytes());
    const std::string orders = Folder.write("orders.csv", "id,item\n2,bolt\n2,nut\n");
    TableConnection tables({{people, {}, {}, false}, {orders, "o", {}, false}}, events());
    EXPECT_EQ(tables.tables(), (Values{"people", "o"}));
    EXPECT_EQ(rowsOf(tables.handle(), "SELECT name, item FROM people JOIN o USING (id)"),
              (Values{"Ben|bolt", "Ben|nut"}));
    EXPECT_EQ(rowsOf(tables.handle(), "SELECT \"nowhere\" FROM people"), Values{"error: no such column: nowhere"});
    SqliteSource rows(tables.handle(), "people", "SELECT name FROM people WHERE id = 2");
    ASSERT_TRUE(rows.next());
    EXPECT_EQ(rows.record()[0].text(), "Ben");
}

TEST_F(TableConnectionTest, OptionsOfEachFile)
{
    const std::string text = Folder.write("parts.txt", "bolt 7\nnut  9\n");
    FileTableOptions parts = {text, {}, {}, false};
    parts.Options.FixedColumns = "name:1-4,qty:6-6";
    TableConnection tables({parts}, events());
    EXPECT_EQ(rowsOf(tables.handle(), "SELECT qty FROM parts WHERE name = 'nut'"), Values{"9"});
}

TEST_F(TableConnectionTest, EqualNamesAreNumbered)
{
    const std::string csv = Folder.write("t.csv", "a\n1\n");
    const std::string tsv = Folder.write("T.tsv", "a\n2\n");
    TableConnection tables({{csv, {}, {}, false}, {tsv, {}, {}, false}, {csv, "t_2", {}, false}}, events());
    EXPECT_EQ(tables.tables(), (Values{"t", "t_2", "t_2_2"}));
    EXPECT_EQ(rowsOf(tables.handle(), "SELECT t.a, t_2.a FROM t, t_2"), Values{"1|2"});
    EXPECT_EQ(Notes, (Values{"T.tsv: its table is t_2, because another is t",
                             "t.csv: its table is t_2_2, because another is t_2"}));
}

TEST_F(TableConnectionTest, FileThatCannotBeOpenedIsAnError)
{
    try {
        TableConnection({{Folder.file("none.dbf"), {}, {}, false}});
        FAIL() << "no error";
    } catch (const Error& error) {
        EXPECT_EQ(error.what(), Folder.file("none.dbf") + ": No such file or directory");
    }
}

TEST_F(TableConnectionTest, FolderOfTables)
{
    numbers(3);
    Folder.write("b.CSV", "x\n1\n");
    Folder.write("damaged.dbf", "x");
    Folder.write("notes.txt", "no columns");
    Folder.write("readme.md", "nothing");
    std::filesystem::create_directory(Folder.file("folder.dbf"));
    TableConnection tables(tableFilesIn(Folder.path()), events());
    EXPECT_EQ(tables.tables(), (Values{"b", "numbers"}));
    ASSERT_EQ(Notes.size(), 1U);
    EXPECT_EQ(Notes[0].substr(0, 23), "damaged.dbf: left out: ");
    EXPECT_TRUE(Notes[0].ends_with(" (loss)"));
}

TEST_F(TableConnectionTest, FoldersWithoutTables)
{
    EXPECT_THROW(tableFilesIn(Folder.path()), Error);
    EXPECT_THROW(tableFilesIn(Folder.file("none")), Error);
    EXPECT_THROW(tableFilesIn(Folder.write("a.csv", "x\n")), Error);
}

TEST_F(TableConnectionTest, TextsWithFixedColumnsBelongToAFolderWhoseColumnsAreNamed)
{
    Folder.write("parts.txt", "bolt 7\n");
    SourceOptions options;
    options.FixedColumns = "name:1-4,qty:6-6";
    EXPECT_EQ(tableFilesIn(Folder.path(), options).size(), 1U);
}

TEST_F(TableConnectionTest, StopEndsAStatement)
{
    std::stop_source stop;
    TableConnection tables({{numbers(100), {}, {}, false}}, {}, stop.get_token());
    stop.request_stop();
    EXPECT_THROW(
        {
            SqliteSource rows(tables.handle(), "numbers", "SELECT count(*) FROM numbers a, numbers b, numbers c");
            rows.next();
        },
        Stopped);
}

TEST_F(TableConnectionTest, ReadErrorsEndTheStatement)
{
    Folder.write("t.csv", "a\n\"open\n");
    TableConnection tables({{Folder.file("t.csv"), {}, {}, false}});
    const Values found = rowsOf(tables.handle(), "SELECT a FROM t");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].substr(0, 7 + Folder.file("t.csv").size()), "error: " + Folder.file("t.csv"));
}

}  // namespace
