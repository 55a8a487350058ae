// Loads into both servers, and the values of the loaded tables. The URIs are in the environment.
#include "exchange/support/memory_source.h"

#include <kd_lib/exchange/mariadbserver.h>
#include <kd_lib/exchange/postgresqlserver.h>
#include <kd_lib/exchange/sqlitesource.h>
#include <kd_lib/exchange/transfer.h>
#include <kd_lib/exchange/verify.h>
#include <kd_lib/mariadb.h>
#include <kd_lib/postgresql.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace kd_test {

using namespace kd_lib::exchange;

struct OnPostgresql {
    using Database = kd_lib::PostgreSQL;
    static std::string uri() { return std::getenv("KD_POSTGRESQL"); }
    static std::unique_ptr<DatabaseServer> server(const ServerOptions& options = {})
    {
        return postgresqlServer(uri(), options);
    }
    static constexpr bool isPostgresql = true;
};

struct OnMariadb {
    using Database = kd_lib::MariaDB;
    static std::string uri() { return std::getenv("KD_MARIADB"); }
    static std::unique_ptr<DatabaseServer> server(const ServerOptions& options = {})
    {
        return mariadbServer(uri(), options);
    }
    static constexpr bool isPostgresql = false;
};

using Row = MemorySource::Row;

template <class Engine>
class ServerLoad : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(database.connectUri(Engine::uri())) << database.errorText;
        execute("DROP TABLE IF EXISTS child");
        execute("DROP TABLE IF EXISTS people");
    }

    void TearDown() override
    {
        // Whatever a test did, no temporary table of a load is left.
        EXPECT_TRUE(database.getTableList());
        for (const auto* table : database.tableList) {
            EXPECT_EQ(std::string::npos, table->Name.find("_kd_db_")) << table->Name;
        }
    }

    void execute(const std::string& sql) { ASSERT_TRUE(database.execute(sql)) << database.errorText; }

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
        return all;
    }

    Tally load(Source& source, TableOptions options = {}, const TransferOptions& transferOptions = {})
    {
        if (options.Table.empty()) {
            options.Table = "people";
        }
        const auto target = Engine::server()->target(options);
        return transfer(source, *target, transferOptions);
    }

    /// The error of a load that fails.
    Error refused(Source& source, const TableOptions& options, const TransferOptions& transferOptions = {})
    {
        try {
            load(source, options, transferOptions);
        } catch (const Error& error) {
            return error;
        }
        ADD_FAILURE() << "the load did not fail";
        return {"", ""};
    }

    typename Engine::Database database;
};

using Engines = testing::Types<OnPostgresql, OnMariadb>;
TYPED_TEST_SUITE(ServerLoad, Engines);

Column textColumn(const std::string& name, std::uint32_t width = 20)
{
    return {name, ColumnType::Text, width, 0, 'C', width};
}

Column numberColumn(const std::string& name, std::uint32_t width = 9, std::uint32_t decimals = 0)
{
    return {name, ColumnType::Number, width, decimals, 'N', width};
}

/// A number without zeros at the end of its decimals.
std::string plain(std::string_view number)
{
    std::string text(number);
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        text.erase(text.find_last_not_of('.') + 1);
    }
    return text;
}

/// Rows with a number and a text: (1, "r1"), (2, "r2"), ...
std::vector<Row> numbered(std::size_t count, std::vector<std::string>& memory)
{
    memory.clear();
    std::vector<Row> rows;
    for (std::size_t i = 1; i <= count; ++i) {
        memory.push_back(std::to_string(i));
        memory.push_back("r" + std::to_string(i));
    }
    for (std::size_t i = 0; i < count; ++i) {
        rows.push_back({{Cell::number(memory[2 * i]), Cell::text(memory[2 * i + 1])}, {}, false});
    }
    return rows;
}

const TableOptions appended = {"people", TableMode::Append, {}, NameCase::Lower};
const TableOptions replaced = {"people", TableMode::Replace, {}, NameCase::Lower};

TYPED_TEST(ServerLoad, EveryKindOfValueComesBack)
{
    const std::vector<Column> columns = {textColumn("T", 60),
                                         numberColumn("WHOLE", 9),
                                         numberColumn("WIDE", 20),
                                         numberColumn("DEC", 12, 2),
                                         {"FLT", ColumnType::Float, 0, 0, 'B', 8},
                                         {"YES", ColumnType::Boolean, 0, 0, 'L', 1},
                                         {"DAY", ColumnType::Date, 0, 0, 'D', 8},
                                         {"AT", ColumnType::Timestamp, 0, 0, 'T', 8},
                                         {"HOUR", ColumnType::Time, 0, 0, 0, 0},
                                         {"RAW", ColumnType::Bytes, 0, 0, 'G', 0},
                                         {"CASH", ColumnType::Currency, 0, 0, 'Y', 8}};
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    const std::string awkward = "tab\tline\nreturn\r back\\slash 'q' \"d\" `b` \\N \xc3\xa4\xf0\x9f\x98\x80 ";
    const std::vector<Cell> first = {Cell::text(awkward),
                                     Cell::number("-123456789"),
                                     Cell::number("12345678901234567890"),
                                     Cell::number("-1234567.05"),
                                     Cell::real(0.1),
                                     Cell::boolean(true),
                                     Cell::date({1, 1, 1}),
                                     Cell::timestamp({{9999, 12, 31}, 86399999}),
                                     Cell::time(1),
                                     Cell::bytes(all),
                                     Cell::number("-922337203685477.5808")};
    const std::vector<Cell> second = {Cell::text(""),
                                      Cell::number("0"),
                                      Cell::number("0"),
                                      Cell::number("0.00"),
                                      Cell::real(-1.7976931348623157e308),
                                      Cell::boolean(false),
                                      Cell::date({9999, 12, 31}),
                                      Cell::timestamp({{1970, 1, 1}, 0}),
                                      Cell::time(0),
                                      Cell::bytes(""),
                                      Cell::number("0.0000")};
    const std::vector<Cell> none(columns.size());
    MemorySource source(columns, {{first, {}, false}, {second, {}, false}, {none, {}, false}});
    EXPECT_EQ(3U, this->load(source).Stored);

    const auto table = TypeParam::server()->table(
        "people", {"t", "whole", "wide", "dec", "flt", "yes", "day", "at", "hour", "raw", "cash"});
    for (const std::vector<Cell>& expected : {first, second, none}) {
        ASSERT_TRUE(table->next());
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const Cell& cell = table->record().Cells[i];
            ASSERT_EQ(expected[i].Kind, cell.Kind) << columns[i].Name << " " << cell.Text;
            switch (cell.Kind) {
            case CellKind::Float:
                EXPECT_EQ(expected[i].Float, cell.Float);
                break;
            case CellKind::Boolean:
                EXPECT_EQ(expected[i].Boolean, cell.Boolean);
                break;
            case CellKind::Date:
                EXPECT_EQ(expected[i].Moment.Day, cell.Moment.Day);
                break;
            case CellKind::Timestamp:
                EXPECT_EQ(expected[i].Moment.Day, cell.Moment.Day);
                [[fallthrough]];
            case CellKind::Time:
                EXPECT_EQ(expected[i].Moment.Milliseconds, cell.Moment.Milliseconds);
                break;
            case CellKind::Number:
                EXPECT_EQ(plain(expected[i].Text), plain(cell.Text)) << columns[i].Name;
                break;
            default:
                EXPECT_EQ(expected[i].Text, cell.Text) << columns[i].Name;
            }
        }
    }
    EXPECT_FALSE(table->next());

    MemorySource again(columns, {{first, {}, false}, {second, {}, false}, {none, {}, false}});
    const auto rows = TypeParam::server()->table(
        "people", {"t", "whole", "wide", "dec", "flt", "yes", "day", "at", "hour", "raw", "cash"});
    TableLayout layout(TypeParam::server()->dialect(), "people.dbf", columns, {});
    EXPECT_TRUE(verify(again, *rows, layout).agrees());
}

TYPED_TEST(ServerLoad, InfinitiesAndNaNAsTheServerHasThem)
{
    const double infinity = std::numeric_limits<double>::infinity();
    MemorySource source({{"F", ColumnType::Float, 0, 0, 'B', 8}}, {{{Cell::real(infinity)}, {}, false},
                                                                   {{Cell::real(-infinity)}, {}, false},
                                                                   {{Cell::real(std::nan(""))}, {}, false}});
    EXPECT_EQ(TypeParam::isPostgresql ? 0U : 3U, this->load(source).Rejects);
    EXPECT_EQ(TypeParam::isPostgresql ? "Infinity|-Infinity|NaN|" : "|||", this->rows("SELECT f FROM people"));
}

TYPED_TEST(ServerLoad, ATableThatExistsIsAnErrorAndStaysUntouched)
{
    std::vector<std::string> memory;
    this->execute("CREATE TABLE people (n INTEGER)");
    this->execute("INSERT INTO people VALUES (7)");
    MemorySource source({numberColumn("N"), textColumn("T")}, numbered(2, memory));
    const Error error = this->refused(source, {});
    EXPECT_EQ("table people exists already", error.Reason);
    EXPECT_EQ(std::string::npos, std::string(error.what()).find("secret"));
    EXPECT_EQ("7|", this->rows("SELECT n FROM people"));
}

TYPED_TEST(ServerLoad, AReplacedTableIsExchangedWholeOrNotAtAll)
{
    std::vector<std::string> memory;
    this->execute("CREATE TABLE people (old INTEGER)");
    this->execute("INSERT INTO people VALUES (7)");
    MemorySource failing({numberColumn("N"), textColumn("T")}, numbered(3, memory));
    failing.FailsAt = 3;
    this->refused(failing, replaced);
    EXPECT_EQ("7|", this->rows("SELECT old FROM people"));

    MemorySource source({numberColumn("N"), textColumn("T")}, numbered(3, memory));
    TableOptions withKey = replaced;
    withKey.Key = "id";
    for (int round = 0; round < 2; ++round) {
        MemorySource rows({numberColumn("N"), textColumn("T")}, numbered(3, memory));
        EXPECT_EQ(3U, this->load(rows, withKey).Stored);
        EXPECT_EQ("1,1,r1|2,2,r2|3,3,r3|", this->rows("SELECT id, n, t FROM people ORDER BY id"));
    }
    this->execute("INSERT INTO people (n) VALUES (9)");
    EXPECT_EQ("4|", this->rows("SELECT id FROM people WHERE n = 9"));
    if (TypeParam::isPostgresql) {
        EXPECT_EQ("people_id_seq|people_pkey|",
                  this->rows("SELECT relname FROM pg_class WHERE relname ~ '^people_' ORDER BY 1"));
    }
}

TYPED_TEST(ServerLoad, ReplaceCreatesAMissingTable)
{
    std::vector<std::string> memory;
    MemorySource source({numberColumn("N"), textColumn("T")}, numbered(1, memory));
    EXPECT_EQ(1U, this->load(source, replaced).Stored);
    EXPECT_EQ("1,r1|", this->rows("SELECT n, t FROM people"));
}

TYPED_TEST(ServerLoad, ATableThatSomethingRefersToIsNotReplaced)
{
    std::vector<std::string> memory;
    this->execute("CREATE TABLE people (n INTEGER PRIMARY KEY)");
    this->execute("INSERT INTO people VALUES (1)");
    this->execute("CREATE TABLE child (n INTEGER, FOREIGN KEY (n) REFERENCES people (n))");
    this->execute("INSERT INTO child VALUES (1)");
    MemorySource source({numberColumn("N"), textColumn("T")}, numbered(1, memory));
    this->refused(source, replaced);
    EXPECT_EQ("1|", this->rows("SELECT n FROM people"));
    EXPECT_FALSE(this->database.execute("DELETE FROM people"));
}

TYPED_TEST(ServerLoad, RecordsAreAppendedByTheNamesOfTheirColumns)
{
    std::vector<std::string> memory;
    this->execute("CREATE TABLE people (more INTEGER DEFAULT 5, t VARCHAR(9), N BIGINT)");
    this->execute("INSERT INTO people VALUES (1, 'first', 7)");
    MemorySource source({numberColumn("N"), textColumn("T")}, numbered(2, memory));
    EXPECT_EQ(2U, this->load(source, appended).Stored);
    EXPECT_EQ("1,first,7|5,r1,1|5,r2,2|", this->rows("SELECT more, t, n FROM people ORDER BY t"));
}

TYPED_TEST(ServerLoad, ColumnsThatAppendDoesNotFind)
{
    std::vector<std::string> memory;
    MemorySource source({numberColumn("N"), textColumn("T")}, numbered(2, memory));
    EXPECT_EQ("there is no table people", this->refused(source, appended).Reason);
    this->execute("CREATE TABLE people (n BIGINT)");
    EXPECT_EQ("table people has no column t", this->refused(source, appended).Reason);
    EXPECT_EQ("", this->rows("SELECT n FROM people"));
}

TYPED_TEST(ServerLoad, ARefusedRecordIsNamedAndNothingStays)
{
    std::vector<std::string> memory;
    this->execute("CREATE TABLE people (n INTEGER PRIMARY KEY, t VARCHAR(20))");
    this->execute("INSERT INTO people VALUES (400, 'kept')");
    std::vector<Row> rows = numbered(1000, memory);
    rows[10].Deleted = rows[20].Deleted = true;
    MemorySource source({numberColumn("N"), textColumn("T")}, rows);
    const Error error = this->refused(source, appended);
    EXPECT_EQ(400U, error.Where.Record) << error.what();
    EXPECT_EQ("memory.dbf", error.Where.File);
    EXPECT_NE(std::string::npos, error.Reason.find("400")) << error.what();
    EXPECT_EQ("400,kept|", this->rows("SELECT n, t FROM people"));
}

TYPED_TEST(ServerLoad, ARecordThatRefersToNothingIsNamed)
{
    std::vector<std::string> memory;
    this->execute("CREATE TABLE people (n INTEGER PRIMARY KEY)");
    this->execute("INSERT INTO people VALUES (1), (2), (3), (5)");
    this->execute("CREATE TABLE child (n INTEGER, t VARCHAR(20), FOREIGN KEY (n) REFERENCES people (n))");
    MemorySource source({numberColumn("N"), textColumn("T")}, numbered(6, memory));
    TableOptions options = appended;
    options.Table = "child";
    const Error error = this->refused(source, options);
    EXPECT_EQ(4U, error.Where.Record) << error.what();
    EXPECT_EQ("", this->rows("SELECT n FROM child"));
}

TYPED_TEST(ServerLoad, AMissingValueIsNamedWithItsColumn)
{
    this->execute("CREATE TABLE people (n INTEGER NOT NULL, t VARCHAR(20))");
    MemorySource source({numberColumn("NUM"), textColumn("T")}, {{{Cell::number("1"), Cell::text("a")}, {}, false},
                                                                 {{Cell::null(), Cell::text("b")}, {}, false}});
    source.Rows[0].Cells[0] = Cell::number("1");
    TableOptions options = appended;
    MemorySource named({{"N", ColumnType::Number, 9, 0, 'N', 9}, textColumn("T")}, source.Rows);
    const Error error = this->refused(named, options);
    EXPECT_EQ(2U, error.Where.Record) << error.what();
    EXPECT_EQ("N", error.Where.Column) << error.what();
    EXPECT_EQ("", this->rows("SELECT n FROM people"));
}

TYPED_TEST(ServerLoad, ValueThatAnExistingColumnWouldChangeIsUnreadable)
{
    this->execute(TypeParam::isPostgresql
                      ? "CREATE TABLE people (d NUMERIC(9,2), w INTEGER, t VARCHAR(3), day DATE, s TIMESTAMP(0))"
                      : "CREATE TABLE people (d DECIMAL(9,2), w INTEGER, t VARCHAR(3), day DATE, s DATETIME)");
    const std::vector<Column> columns = {numberColumn("D", 9, 4),
                                         numberColumn("W", 9, 2),
                                         textColumn("T"),
                                         {"DAY", ColumnType::Timestamp, 0, 0, 'T', 8},
                                         {"S", ColumnType::Timestamp, 0, 0, 'T', 8}};
    const Date day = {2024, 2, 29};
    const std::vector<Cell> good = {Cell::number("1.2500"), Cell::number("5.00"),
                                    Cell::text("\xc3\xa4\xc3\xb6\xc3\xbc"), Cell::timestamp({day, 0}),
                                    Cell::timestamp({day, 5000})};
    const std::vector<Cell> bad = {Cell::number("1.255"), Cell::number("5.5"), Cell::text("a    "),
                                   Cell::timestamp({day, 1000}), Cell::timestamp({day, 5001})};
    MemorySource source(columns, {{good, {}, false}, {bad, {}, false}});
    const Tally tally = this->load(source, appended);
    EXPECT_EQ(5U, tally.Rejects);
    EXPECT_EQ(2U, tally.Stored);
    EXPECT_EQ("1.25,5,\xc3\xa4\xc3\xb6\xc3\xbc,2024-02-29,2024-02-29 00:00:05|,,,,|",
              this->rows("SELECT d, w, t, day, s FROM people"));
}

TYPED_TEST(ServerLoad, ManyRowsInSeveralChunksKeepTheirOrder)
{
    std::vector<std::string> memory;
    constexpr std::size_t count = 200000;
    MemorySource source({numberColumn("N"), textColumn("T")}, numbered(count, memory));
    EXPECT_EQ(count, this->load(source).Stored);
    EXPECT_EQ("200000,20000100000,200000|", this->rows("SELECT count(*), sum(n), count(DISTINCT t) FROM people"));
    const auto table = TypeParam::server()->table("people", {"n"});
    for (std::uint64_t i = 1; i <= count; ++i) {
        ASSERT_TRUE(table->next());
        ASSERT_EQ(std::to_string(i), table->record().Cells[0].Text);
    }
    EXPECT_FALSE(table->next());
}

TYPED_TEST(ServerLoad, AnEmptySourceCreatesAnEmptyTable)
{
    MemorySource source({numberColumn("N"), textColumn("T")});
    EXPECT_EQ(0U, this->load(source).Stored);
    EXPECT_EQ("0|", this->rows("SELECT count(*) FROM people"));
}

TYPED_TEST(ServerLoad, ALoadThatIsStoppedLeavesNothing)
{
    std::vector<std::string> memory;
    MemorySource source({numberColumn("N"), textColumn("T")}, numbered(100000, memory));
    std::stop_source stop;
    TransferOptions options;
    options.Stop = stop.get_token();
    options.OnProgress = [&stop](const Progress& progress) {
        if (progress.Records > 70000) {
            stop.request_stop();
        }
    };
    const auto server = TypeParam::server({stop.get_token()});
    const auto target = server->target({"people", TableMode::Create, {}, NameCase::Lower});
    EXPECT_THROW(transfer(source, *target, options), Stopped);
    EXPECT_FALSE(this->database.query("SELECT * FROM people") && this->database.fetchRow());
}

TYPED_TEST(ServerLoad, AQueryHasTypedColumnsAndCanBeReadAgain)
{
    std::vector<std::string> memory;
    MemorySource source({numberColumn("N"), textColumn("T")}, numbered(5, memory));
    this->load(source);
    const auto result = TypeParam::server()->query("SELECT n, t FROM people ORDER BY n");
    ASSERT_EQ(2U, result->columns().size());
    EXPECT_EQ("n", result->columns()[0].Name);
    EXPECT_EQ(ColumnType::Integer, result->columns()[0].Type);
    EXPECT_EQ(ColumnType::Text, result->columns()[1].Type);
    ASSERT_TRUE(result->next());
    ASSERT_TRUE(result->next());
    EXPECT_EQ("2", result->record().Cells[0].Text);
    EXPECT_EQ(2U, result->record().Number);
    result->seek(4);
    ASSERT_TRUE(result->next());
    EXPECT_EQ("4", result->record().Cells[0].Text);
    EXPECT_EQ(4U, result->record().Number);
    result->seek(1);
    std::string all;
    while (result->next()) {
        all += result->record().Cells[1].Text;
    }
    EXPECT_EQ("r1r2r3r4r5", all);
    result->seek(5);
    ASSERT_TRUE(result->next());
    EXPECT_EQ("5", result->record().Cells[0].Text);
    EXPECT_FALSE(result->next());
}

TYPED_TEST(ServerLoad, AChangingStatementNeverRunsAgain)
{
    this->execute("CREATE TABLE people (n INTEGER)");
    std::vector<std::string> statements = {"INSERT INTO people VALUES (1), (2) RETURNING n"};
    if (TypeParam::isPostgresql) {
        statements.emplace_back("WITH s AS (INSERT INTO people VALUES (3), (4) RETURNING n) SELECT n FROM s");
    }
    for (const std::string& statement : statements) {
        const auto result = TypeParam::server()->query(statement);
        ASSERT_TRUE(result->next());
        EXPECT_THROW(result->seek(1), SqlError) << statement;
    }
    EXPECT_EQ(TypeParam::isPostgresql ? "1|2|3|4|" : "1|2|", this->rows("SELECT n FROM people ORDER BY n"));
}

TYPED_TEST(ServerLoad, AStatementWithoutRowsReportsItsChanges)
{
    this->execute("CREATE TABLE people (n INTEGER)");
    const auto result = TypeParam::server()->query("INSERT INTO people VALUES (1), (2)");
    EXPECT_TRUE(result->columns().empty());
    EXPECT_FALSE(result->next());
    EXPECT_EQ(2U, result->changes());
    EXPECT_EQ("1|2|", this->rows("SELECT n FROM people ORDER BY n"));
    EXPECT_THROW(TypeParam::server()->query("SELECT broken FROM people"), SqlError);
    EXPECT_THROW(TypeParam::server()->query("DELETE FROM people; DELETE FROM people"), SqlError);
    EXPECT_EQ("1|2|", this->rows("SELECT n FROM people ORDER BY n"));
}

TYPED_TEST(ServerLoad, VerifyReportsTheFirstRecordOfEachColumn)
{
    std::vector<std::string> memory;
    const std::vector<Column> columns = {numberColumn("N"), textColumn("T")};
    MemorySource source(columns, numbered(9, memory));
    this->load(source);
    this->execute("UPDATE people SET t = 'x' WHERE n IN (4, 6)");
    TableLayout layout(TypeParam::server()->dialect(), "people.dbf", columns, {});
    source.seek(1);
    const auto table = TypeParam::server()->table("people", {"n", "t"});
    const Verification found = verify(source, *table, layout);
    ASSERT_EQ(1U, found.Differences.size());
    EXPECT_EQ("T", found.Differences[0].Column);
    EXPECT_EQ(4U, found.Differences[0].Record);
    EXPECT_EQ(9U, found.Rows);
}

TYPED_TEST(ServerLoad, AMissingTableToRead)
{
    EXPECT_THROW(TypeParam::server()->table("people", {"n"}), Error);
    this->execute("CREATE TABLE people (n INTEGER)");
    EXPECT_THROW(TypeParam::server()->table("people", {"n", "missing"}), Error);
}

TYPED_TEST(ServerLoad, TablesWithAwkwardNames)
{
    const std::string name = "a.b \"c\" `d` 'e'";
    std::vector<std::string> memory;
    MemorySource source({numberColumn("order by"), textColumn("a\"`b")}, numbered(2, memory));
    for (const TableMode mode : {TableMode::Create, TableMode::Append, TableMode::Replace}) {
        MemorySource again({numberColumn("order by"), textColumn("a\"`b")}, numbered(2, memory));
        EXPECT_EQ(2U, this->load(again, {name, mode, {}, NameCase::Lower}).Stored);
    }
    const auto table = TypeParam::server()->table(name, {"order by", "a\"`b"});
    EXPECT_TRUE(table->next());
    EXPECT_EQ("r1", table->record().Cells[1].Text);
    this->execute("DROP TABLE " + TypeParam::server()->dialect().quoteName(name));
}

}  // namespace kd_test
