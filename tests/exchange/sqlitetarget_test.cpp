#include <kd_lib/exchange/sqlitesource.h>
#include <kd_lib/exchange/sqlitetarget.h>
#include <kd_lib/exchange/transfer.h>

#include "support/memory_source.h"
#include "support/opened_database.h"
#include "support/output_text.h"
#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace kd_lib::exchange;
using namespace std::chrono_literals;
using kd_test::columnOf;
using kd_test::MemorySource;
using kd_test::Opened;

using Values = std::vector<std::string>;

class SqliteTargetTest : public testing::Test {
protected:
    Tally load(MemorySource& source, const TableOptions& table = {}, std::vector<Reject>* rejects = nullptr,
               const SqliteOptions& options = {})
    {
        SqliteTarget target(Database, table, options);
        TransferOptions how;
        how.OnReject = [rejects](const Reject& reject) {
            if (rejects != nullptr) {
                rejects->push_back(reject);
            }
        };
        const Tally tally = transfer(source, target, how);
        Notes = target.notes();
        Destination = target.destination();
        return tally;
    }

    std::string failure(MemorySource& source, const TableOptions& table = {}, const SqliteOptions& options = {})
    {
        try {
            load(source, table, nullptr, options);
        } catch (const Error& error) {
            return error.what();
        }
        ADD_FAILURE() << "the load succeeded";
        return {};
    }

    Values values(const std::string& sql) const { return Opened(Database).values(sql); }

    std::vector<std::string> entries() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(Folder.path())) {
            names.push_back(entry.path().filename());
        }
        std::ranges::sort(names);
        return names;
    }

    static MemorySource people()
    {
        return MemorySource({columnOf("ID", ColumnType::Number, 5), columnOf("NAME", ColumnType::Text, 10)},
                            {{{Cell::number("7"), Cell::text("Ada")}, {}}, {{Cell::number("8"), Cell::null()}, {}}},
                            "PEOPLE.DBF");
    }

    /// The type and the text that SQLite returns for a value of a column of this type.
    std::string stored(const Column& of, const Cell& cell)
    {
        std::filesystem::remove(Database);
        MemorySource source({of}, {{{cell}, {}}}, "t.dbf");
        load(source, {}, &Rejects);
        const Values found = values("SELECT typeof(c) || ' ' || quote(c) FROM t");
        return found.empty() ? "nothing" : found.front();
    }

    kd_test::ScopedDirectory Folder;
    const std::string Database = Folder.file("x.db");
    std::vector<Note> Notes;
    std::string Destination;
    std::vector<Reject> Rejects;
};

TEST_F(SqliteTargetTest, CreatesDatabaseAndTable)
{
    MemorySource source = people();
    const Tally tally = load(source);
    EXPECT_EQ(tally.Stored, 2U);
    EXPECT_EQ(Destination, "table people");
    EXPECT_EQ(values("SELECT id || coalesce(name, '-') FROM people"), (Values{"7Ada", "8-"}));
    EXPECT_EQ(values("SELECT lower(type) FROM pragma_table_info('people')"), (Values{"integer", "text"}));
    EXPECT_EQ(values("PRAGMA integrity_check"), Values{"ok"});
    EXPECT_EQ(values("PRAGMA journal_mode"), Values{"delete"});
    EXPECT_EQ(entries(), Values{"x.db"});
}

TEST_F(SqliteTargetTest, KeyIsNumberedByTheDatabase)
{
    MemorySource source = people();
    TableOptions table;
    table.Key = "nr";
    load(source, table);
    EXPECT_EQ(values("SELECT nr || ':' || id FROM people"), (Values{"1:7", "2:8"}));
}

TEST_F(SqliteTargetTest, StoresTheValuesAsDocumented)
{
    const double smallest = std::numeric_limits<double>::denorm_min();
    const std::vector<std::tuple<Column, Cell, std::string>> cases = {
        {columnOf("c", ColumnType::Text, 10), Cell::text("x"), "text 'x'"},
        {columnOf("c", ColumnType::Text, 10), Cell::text(""), "text ''"},
        {columnOf("c", ColumnType::Text, 10), Cell::text({}), "text ''"},
        {columnOf("c", ColumnType::Text, 10), Cell::text("007"), "text '007'"},
        {columnOf("c", ColumnType::Text, 10), Cell::null(), "null NULL"},
        {columnOf("c", ColumnType::Number, 5), Cell::number("-123"), "integer -123"},
        {columnOf("c", ColumnType::Number, 5), Cell::number("12.00"), "integer 12"},
        {columnOf("c", ColumnType::Number, 18), Cell::number("999999999999999999"), "integer 999999999999999999"},
        {columnOf("c", ColumnType::Number, 19), Cell::number("9223372036854775807"), "integer 9223372036854775807"},
        {columnOf("c", ColumnType::Number, 20), Cell::number("-9223372036854775808"), "integer -9223372036854775808"},
        {columnOf("c", ColumnType::Number, 19), Cell::number("9223372036854775808"), "text '9223372036854775808'"},
        {columnOf("c", ColumnType::Number, 30), Cell::number("100000000000000000000"), "text '100000000000000000000'"},
        {columnOf("c", ColumnType::Number, 10, 2), Cell::number("1.50"), "real 1.5"},
        {columnOf("c", ColumnType::Number, 10, 2), Cell::number("-0.07"), "real -0.07"},
        {columnOf("c", ColumnType::Number, 10, 2), Cell::number("12"), "integer 12"},
        {columnOf("c", ColumnType::Number, 10, 2), Cell::number("12.00"), "integer 12"},
        {columnOf("c", ColumnType::Number, 12, 2), Cell::number("1000000000000000000000"), "real 1.0e+21"},
        {columnOf("c", ColumnType::Number, 15, 4), Cell::number("9999999999.9999"), "real 9999999999.9999"},
        {columnOf("c", ColumnType::Number, 20, 4), Cell::number("123456789012345.6789"), "text '123456789012345.6789'"},
        {columnOf("c", ColumnType::Number, 20, 4), Cell::number("1234567890.1234"), "real 1234567890.1234"},
        {columnOf("c", ColumnType::Number, 20, 10), Cell::number("0.0000000001"), "real 1.0e-10"},
        {columnOf("c", ColumnType::Integer), Cell::number("-2147483648"), "integer -2147483648"},
        {columnOf("c", ColumnType::BigInteger), Cell::number("9007199254740993"), "integer 9007199254740993"},
        {columnOf("c", ColumnType::Currency), Cell::number("922337203685477.5807"), "text '922337203685477.5807'"},
        {columnOf("c", ColumnType::Currency), Cell::number("-1.2500"), "real -1.25"},
        {columnOf("c", ColumnType::Float), Cell::real(0.1), "real 0.1"},
        {columnOf("c", ColumnType::Float), Cell::real(3), "real 3.0"},
        {columnOf("c", ColumnType::Float), Cell::real(smallest), "real 4.94065645841247e-324"},
        {columnOf("c", ColumnType::Float), Cell::real(std::numeric_limits<double>::infinity()), "real Inf"},
        {columnOf("c", ColumnType::Boolean), Cell::boolean(true), "integer 1"},
        {columnOf("c", ColumnType::Boolean), Cell::boolean(false), "integer 0"},
        {columnOf("c", ColumnType::Date), Cell::date({1, 2, 3}), "text '0001-02-03'"},
        {columnOf("c", ColumnType::Date), Cell::date({9999, 12, 31}), "text '9999-12-31'"},
        {columnOf("c", ColumnType::Time), Cell::time(86399999), "text '23:59:59.999'"},
        {columnOf("c", ColumnType::Time), Cell::time(3723004), "text '01:02:03.004'"},
        {columnOf("c", ColumnType::Timestamp), Cell::timestamp({{2024, 2, 29}, 0}), "text '2024-02-29 00:00:00.000'"},
        {columnOf("c", ColumnType::Bytes), Cell::bytes("\xFF"), "blob X'FF'"},
        {columnOf("c", ColumnType::Bytes), Cell::bytes({}), "blob X''"},
    };
    for (const auto& [of, cell, expected] : cases) {
        EXPECT_EQ(stored(of, cell), expected);
    }
    EXPECT_TRUE(Rejects.empty());
}

TEST_F(SqliteTargetTest, ZeroBytesAreCarried)
{
    stored(columnOf("c", ColumnType::Text, 5), Cell::text(std::string_view("a\0b", 3)));
    EXPECT_EQ(values("SELECT hex(CAST(c AS BLOB)) FROM t"), Values{"610062"});
}

TEST_F(SqliteTargetTest, ValuesThatDoNotFitAreUnreadable)
{
    EXPECT_EQ(stored(columnOf("c", ColumnType::Number, 5), Cell::number("1.5")), "null NULL");
    EXPECT_EQ(stored(columnOf("c", ColumnType::Float), Cell::real(std::numeric_limits<double>::quiet_NaN())),
              "null NULL");
    EXPECT_EQ(Rejects.size(), 2U);
}

TEST_F(SqliteTargetTest, DigitsKeptAsTextAreNotedOncePerColumn)
{
    const std::string digits = "12345678901234567.8";
    MemorySource source({columnOf("A", ColumnType::Number, 20, 1), columnOf("B", ColumnType::Number, 20, 1)},
                        {{{Cell::number(digits), Cell::number("1.5")}, {}}, {{Cell::number(digits), Cell::null()}, {}}},
                        "t.dbf");
    load(source);
    ASSERT_EQ(Notes.size(), 1U);
    EXPECT_EQ(Notes[0].Text, "column a: 2 numbers are kept as text, because a SQLite number cannot hold the digits");
    EXPECT_FALSE(Notes[0].Loss);
}

TEST_F(SqliteTargetTest, DoublesArriveBitByBit)
{
    std::vector<MemorySource::Row> rows;
    std::vector<double> sent;
    double value = 1.0 / 3;
    for (int i = 0; i < 1000; ++i) {
        value = value * -1.7 + 1e-5;
        sent.push_back(value);
        rows.push_back({{Cell::real(value)}, {}});
    }
    MemorySource source({columnOf("c", ColumnType::Float)}, rows, "t.dbf");
    load(source);
    SqliteSource stored(Database, "SELECT c FROM t");
    std::vector<double> found;
    for (const Record& row : stored) {
        found.push_back(row["c"].real().value());
    }
    EXPECT_EQ(found, sent);
}

TEST_F(SqliteTargetTest, TableThatExistsIsAnErrorAndStays)
{
    Opened(Database).run("CREATE TABLE People(x); INSERT INTO People VALUES ('kept')");
    const std::string before = kd_test::readFile(Database);
    MemorySource source = people();
    EXPECT_EQ(failure(source), Database + ": table people exists already");
    EXPECT_EQ(kd_test::readFile(Database), before);
    EXPECT_EQ(entries(), Values{"x.db"});
}

TEST_F(SqliteTargetTest, SecondTableIsStoredNextToTheFirst)
{
    Opened(Database).run("CREATE TABLE other(x); INSERT INTO other VALUES ('kept')");
    MemorySource source = people();
    load(source);
    EXPECT_EQ(values("SELECT x FROM other"), Values{"kept"});
    EXPECT_EQ(values("SELECT count(*) FROM people"), Values{"2"});
}

TEST_F(SqliteTargetTest, ReplacePutsTheNewTableInPlaceOfTheOld)
{
    TableOptions table;
    table.Mode = TableMode::Replace;
    MemorySource first = people();
    load(first, table);
    Opened(Database).run("DROP TABLE people; CREATE TABLE PEOPLE(x); CREATE INDEX i ON people(x)");
    MemorySource second = people();
    load(second, table);
    EXPECT_EQ(values("SELECT id FROM people"), (Values{"7", "8"}));
    EXPECT_EQ(values("SELECT count(*) FROM sqlite_master"), Values{"1"});
}

TEST_F(SqliteTargetTest, FailedReplaceLeavesTheOldTable)
{
    Opened(Database).run("CREATE TABLE people(x); INSERT INTO people VALUES ('kept')");
    TableOptions table;
    table.Mode = TableMode::Replace;
    MemorySource source = people();
    source.FailsAt = 2;
    EXPECT_EQ(failure(source, table), "PEOPLE.DBF: record 2: Input/output error");
    EXPECT_EQ(values("SELECT x FROM people"), Values{"kept"});
    EXPECT_EQ(entries(), Values{"x.db"});
}

TEST_F(SqliteTargetTest, FailedLoadIntoANewDatabaseLeavesNothing)
{
    MemorySource source = people();
    source.FailsAt = 2;
    failure(source);
    EXPECT_EQ(entries(), Values{});
}

TEST_F(SqliteTargetTest, UnfinishedTargetLeavesNothing)
{
    {
        MemorySource source = people();
        SqliteTarget target(Database);
        target.begin(source.file(), source.columns());
        ASSERT_TRUE(source.next());
        target.write(source.record());
        EXPECT_FALSE(std::filesystem::exists(Database));
    }
    EXPECT_EQ(entries(), Values{});
}

TEST_F(SqliteTargetTest, AppendMatchesColumnsByName)
{
    Opened(Database).run("CREATE TABLE people(Name TEXT, extra DEFAULT 'e', \"ID\" INTEGER);"
                         "INSERT INTO people VALUES ('first', NULL, 1)");
    TableOptions table;
    table.Mode = TableMode::Append;
    MemorySource source = people();
    load(source, table);
    EXPECT_EQ(values("SELECT id || coalesce(name, '-') || coalesce(extra, '-') FROM people"),
              (Values{"1first-", "7Adae", "8-e"}));
}

TEST_F(SqliteTargetTest, AppendNeedsTheTableAndItsColumns)
{
    TableOptions table;
    table.Mode = TableMode::Append;
    MemorySource first = people();
    EXPECT_EQ(failure(first, table), Database + ": there is no table people");
    EXPECT_EQ(entries(), Values{});
    Opened(Database).run("CREATE TABLE people(id)");
    MemorySource second = people();
    EXPECT_EQ(failure(second, table), Database + ": table people has no column name");
}

TEST_F(SqliteTargetTest, AppendedValuesThatTheColumnWouldChangeAreUnreadable)
{
    struct Case {
        const char* Declared;
        Column Of;
        Cell Value;
        const char* Stored;
    };
    const Column text = columnOf("c", ColumnType::Text, 30);
    const Column number = columnOf("c", ColumnType::Number, 30, 4);
    const Column real = columnOf("c", ColumnType::Float);
    const std::vector<Case> cases = {
        {"INTEGER", text, Cell::text("007"), "null NULL"},
        {"INTEGER", text, Cell::text("07"), "null NULL"},
        {"INTEGER", text, Cell::text(" 7"), "null NULL"},
        {"INTEGER", text, Cell::text("1e3"), "null NULL"},
        {"INTEGER", text, Cell::text("-0"), "null NULL"},
        {"INTEGER", text, Cell::text("1.50"), "null NULL"},
        {"INTEGER", text, Cell::text("1.0"), "null NULL"},
        {"DOUBLE", text, Cell::text("7"), "null NULL"},
        {"DOUBLE", text, Cell::text("7.0"), "real 7.0"},
        {"INTEGER", text, Cell::text("7"), "integer 7"},
        {"NUMERIC", text, Cell::text("1.5"), "real 1.5"},
        {"NUMERIC", text, Cell::text("12345678901234567.8"), "null NULL"},
        {"INTEGER", text, Cell::text("abc"), "text 'abc'"},
        {"INTEGER", text, Cell::text("1-2"), "text '1-2'"},
        {"INTEGER", text, Cell::text(""), "text ''"},
        {"INTEGER", text, Cell::text("."), "text '.'"},
        {"INTEGER", text, Cell::text("-e5"), "text '-e5'"},
        {"VARCHAR(3)", text, Cell::text("007"), "text '007'"},
        {"", text, Cell::text("007"), "text '007'"},
        {"NUMERIC", number, Cell::number("123456789012345.6789"), "null NULL"},
        {"NUMERIC", number, Cell::number("9007199254740993"), "integer 9007199254740993"},
        {"REAL", number, Cell::number("9007199254740993"), "null NULL"},
        {"REAL", number, Cell::number("12"), "real 12.0"},
        {"", number, Cell::number("123456789012345.6789"), "text '123456789012345.6789'"},
        {"CHAR(30)", number, Cell::number("1.50"), "text '1.50'"},
        {"TEXT", number, Cell::number("12"), "text '12'"},
        {"TEXT", real, Cell::real(0.1 + 0.2), "text '0.30000000000000004'"},
        {"INT", real, Cell::real(3), "integer 3"},
        {"DATE", columnOf("c", ColumnType::Date), Cell::date({2024, 2, 29}), "text '2024-02-29'"},
        {"BLOB", columnOf("c", ColumnType::Bytes), Cell::bytes("1"), "blob X'31'"},
    };
    TableOptions table;
    table.Mode = TableMode::Append;
    for (const Case& of : cases) {
        std::filesystem::remove(Database);
        Opened(Database).run(std::string("CREATE TABLE t(c ") + of.Declared + ")");
        MemorySource source({of.Of}, {{{of.Value}, {}}}, "t.dbf");
        std::vector<Reject> rejects;
        load(source, table, &rejects);
        EXPECT_EQ(values("SELECT typeof(c) || ' ' || quote(c) FROM t"), Values{of.Stored})
            << of.Declared << ' ' << of.Value.Text;
        EXPECT_EQ(rejects.size(), std::string(of.Stored) == "null NULL" ? 1U : 0U)
            << of.Declared << ' ' << of.Value.Text;
    }
}

TEST_F(SqliteTargetTest, RejectsSayWhyAnAppendedValueIsUnreadable)
{
    TableOptions table;
    table.Mode = TableMode::Append;
    Opened(Database).run("CREATE TABLE t(a integer, b numeric, c real)");
    MemorySource source({columnOf("a", ColumnType::Text, 30), columnOf("b", ColumnType::Number, 30, 4),
                         columnOf("c", ColumnType::Float)},
                        {{{Cell::text("007"), Cell::number("123456789012345.6789"),
                           Cell::real(std::numeric_limits<double>::quiet_NaN())},
                          {}}},
                        "t.dbf");
    std::vector<Reject> rejects;
    load(source, table, &rejects);
    Values reasons;
    for (const Reject& reject : rejects) {
        reasons.push_back(reject.Reason);
    }
    EXPECT_EQ(reasons, (Values{"the column would change the text to another number",
                               "more digits than the column holds", "the target has no NaN"}));
}

TEST_F(SqliteTargetTest, AppendedDigitsKeptAsTextAreNoted)
{
    Opened(Database).run("CREATE TABLE t(c)");
    TableOptions table;
    table.Mode = TableMode::Append;
    MemorySource source({columnOf("C", ColumnType::Number, 30, 4)}, {{{Cell::number("123456789012345.6789")}, {}}},
                        "t.dbf");
    load(source, table);
    ASSERT_EQ(Notes.size(), 1U);
    EXPECT_EQ(Notes[0].Text, "column c: 1 number is kept as text, because a SQLite number cannot hold the digits");
}

TEST_F(SqliteTargetTest, ConstraintNamesTheRecord)
{
    Opened(Database).run("CREATE TABLE people(id, name NOT NULL)");
    TableOptions table;
    table.Mode = TableMode::Append;
    MemorySource source = people();
    EXPECT_EQ(failure(source, table),
              "PEOPLE.DBF: record 2: " + Database + ": NOT NULL constraint failed: people.name");
    EXPECT_EQ(values("SELECT count(*) FROM people"), Values{"0"});
}

TEST_F(SqliteTargetTest, NamesAreQuoted)
{
    MemorySource source({columnOf("order", ColumnType::Text, 5), columnOf("a\"b", ColumnType::Text, 5),
                         columnOf("x); DROP TABLE t; --", ColumnType::Text, 5)},
                        {{{Cell::text("r1c1"), Cell::text("r1c2"), Cell::text("r1c3")}, {}}}, "select.dbf");
    load(source);
    EXPECT_EQ(values("SELECT \"order\" || \"a\"\"b\" || \"x); drop table t; --\" FROM \"select\""),
              Values{"r1c1r1c2r1c3"});
}

TEST_F(SqliteTargetTest, LockedDatabaseIsAnError)
{
    Opened other(Database);
    other.run("CREATE TABLE x(n); BEGIN IMMEDIATE");
    SqliteOptions options;
    options.Patience = 30ms;
    MemorySource source = people();
    EXPECT_EQ(failure(source, {}, options), Database + ": database is locked");
}

TEST_F(SqliteTargetTest, OtherFilesAreNotDatabases)
{
    Folder.write("x.db", std::string(4096, 'x'));
    MemorySource source = people();
    EXPECT_EQ(failure(source), Database + ": file is not a database");
    EXPECT_EQ(kd_test::readFile(Database), std::string(4096, 'x'));
}

TEST_F(SqliteTargetTest, TableGoesIntoTheDatabaseThatAppearedMeanwhile)
{
    MemorySource source = people();
    SqliteTarget target(Database);
    target.begin(source.file(), source.columns());
    while (source.next()) {
        target.write(source.record());
    }
    Opened(Database).run("CREATE TABLE other(x); INSERT INTO other VALUES ('kept')");
    target.finish();
    EXPECT_EQ(values("SELECT x FROM other"), Values{"kept"});
    EXPECT_EQ(values("SELECT id || coalesce(name, '-') FROM people"), (Values{"7Ada", "8-"}));
    EXPECT_EQ(entries(), Values{"x.db"});
}

TEST_F(SqliteTargetTest, TableThatAppearedMeanwhileStays)
{
    MemorySource source = people();
    SqliteTarget target(Database);
    target.begin(source.file(), source.columns());
    Opened(Database).run("CREATE TABLE people(x); INSERT INTO people VALUES ('kept')");
    try {
        target.finish();
        FAIL() << "no error";
    } catch (const Error& error) {
        EXPECT_EQ(error.what(), Database + ": table people exists already");
    }
    target.abandon();
    EXPECT_EQ(values("SELECT x FROM people"), Values{"kept"});
    EXPECT_EQ(entries(), Values{"x.db"});
}

TEST_F(SqliteTargetTest, EmptyDatabaseFileThatExistsIsUsedInPlace)
{
    Folder.write("x.db", "");
    MemorySource failing = people();
    failing.FailsAt = 1;
    failure(failing);
    EXPECT_EQ(kd_test::readFile(Database), "");
    MemorySource source = people();
    load(source);
    EXPECT_EQ(values("SELECT count(*) FROM people"), Values{"2"});
}

class SqliteBatchTest : public SqliteTargetTest {
protected:
    /// Loads a table of one record into the batch.
    static void load(SqliteBatch& batch, const std::string& table, TableMode mode = TableMode::Create,
                     std::uint64_t failsAt = 0)
    {
        MemorySource source({columnOf("N", ColumnType::Text, 10)}, {{{Cell::null()}, {}}}, table + ".dbf");
        source.Rows[0].Cells[0] = Cell::text(source.file());
        source.FailsAt = failsAt;
        TableOptions options;
        options.Mode = mode;
        SqliteTarget target(batch, options);
        transfer(source, target);
    }
};

TEST_F(SqliteBatchTest, TablesAppearTogether)
{
    {
        SqliteBatch batch(Database);
        load(batch, "a");
        load(batch, "b");
        EXPECT_FALSE(std::filesystem::exists(Database));
        batch.finish();
    }
    EXPECT_EQ(values("SELECT a.n || b.n FROM a, b"), Values{"a.dbfb.dbf"});
    EXPECT_EQ(entries(), Values{"x.db"});
}

TEST_F(SqliteBatchTest, FailedTableDoesNotStopTheOthers)
{
    SqliteBatch batch(Database);
    load(batch, "a");
    EXPECT_THROW(load(batch, "b", TableMode::Create, 1), Error);
    EXPECT_THROW(load(batch, "a"), Error);
    load(batch, "c");
    batch.finish();
    EXPECT_EQ(values("SELECT name FROM sqlite_master"), (Values{"a", "c"}));
    EXPECT_EQ(values("SELECT n FROM a"), Values{"a.dbf"});
    EXPECT_EQ(values("PRAGMA integrity_check"), Values{"ok"});
}

TEST_F(SqliteBatchTest, RolledBackTableOfManyPagesLeavesASoundDatabase)
{
    std::vector<MemorySource::Row> rows(20000, MemorySource::Row{{Cell::text("a text of some length")}, {}});
    SqliteBatch batch(Database);
    load(batch, "a");
    for (const std::uint64_t failsAt : {20000U, 0U}) {
        MemorySource source({columnOf("N", ColumnType::Text, 30)}, rows, "large.dbf");
        source.FailsAt = failsAt;
        SqliteTarget target(batch);
        try {
            transfer(source, target);
        } catch (const Error&) {
            EXPECT_NE(failsAt, 0U);
        }
    }
    load(batch, "b");
    batch.finish();
    EXPECT_EQ(values("SELECT count(*) FROM large"), Values{"20000"});
    EXPECT_EQ(values("SELECT a.n || b.n FROM a, b"), Values{"a.dbfb.dbf"});
    EXPECT_EQ(values("PRAGMA integrity_check"), Values{"ok"});
}

TEST_F(SqliteBatchTest, NewDatabaseWithoutATableDoesNotAppear)
{
    SqliteBatch batch(Database);
    EXPECT_THROW(load(batch, "a", TableMode::Create, 1), Error);
    batch.finish();
    EXPECT_FALSE(std::filesystem::exists(Database));
}

TEST_F(SqliteBatchTest, UnfinishedBatchLeavesNothing)
{
    {
        SqliteBatch batch(Database);
        load(batch, "a");
    }
    EXPECT_EQ(entries(), Values{});
}

TEST_F(SqliteBatchTest, ExistingDatabaseHasEachTableAtOnce)
{
    Opened(Database).run("CREATE TABLE b(x); INSERT INTO b VALUES ('kept')");
    SqliteBatch batch(Database);
    load(batch, "a");
    EXPECT_EQ(values("SELECT n FROM a"), Values{"a.dbf"});
    EXPECT_THROW(load(batch, "b"), Error);
    load(batch, "c");
    EXPECT_EQ(values("SELECT b.x || c.n FROM b, c"), Values{"keptc.dbf"});
    load(batch, "b", TableMode::Replace);
    load(batch, "c", TableMode::Append);
    batch.finish();
    EXPECT_EQ(values("SELECT b.n || c.n FROM b, c"), (Values{"b.dbfc.dbf", "b.dbfc.dbf"}));
}

TEST_F(SqliteBatchTest, TablesGoIntoTheDatabaseThatAppearedMeanwhile)
{
    SqliteBatch batch(Database);
    load(batch, "a");
    load(batch, "b");
    load(batch, "c");
    load(batch, "c", TableMode::Append);
    Opened(Database).run("CREATE TABLE b(x); INSERT INTO b VALUES ('kept')");
    try {
        batch.finish();
        FAIL() << "no error";
    } catch (const Error& error) {
        EXPECT_EQ(error.what(), Database + ": table b exists already");
    }
    EXPECT_EQ(values("SELECT a.n || b.x || c.n FROM a, b, c"), (Values{"a.dbfkeptc.dbf", "a.dbfkeptc.dbf"}));
    EXPECT_EQ(values("PRAGMA integrity_check"), Values{"ok"});
}

}  // namespace
