#include <kd_lib/exchange/sqlitesource.h>
#include <kd_lib/exchange/sqlitetarget.h>
#include <kd_lib/exchange/verify.h>

#include "support/memory_source.h"
#include "support/opened_database.h"
#include "support/output_text.h"
#include "support/repeated.h"
#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace kd_lib::exchange;
using kd_test::columnOf;
using kd_test::MemorySource;
using kd_test::Opened;
using kd_test::repeated;

using Row = MemorySource::Row;

TableLayout layoutOf(const Source& source, Engine engine = Engine::Sqlite)
{
    return {dialectOf(engine), source.file(), source.columns(), {}};
}

/// Compares two sources of these columns.
Verification compare(const std::vector<Column>& columns, const std::vector<Row>& inFile,
                     const std::vector<Row>& inTable, Engine engine = Engine::Sqlite)
{
    MemorySource source(columns, inFile);
    MemorySource table(columns, inTable);
    TableLayout layout = layoutOf(source, engine);
    return verify(source, table, layout);
}

bool agree(const Column& of, const Cell& inFile, const Cell& inTable)
{
    return compare({of}, {{{inFile}, {}}}, {{{inTable}, {}}}).agrees();
}

/// A source that cannot go back.
class OnePass : public MemorySource {
public:
    using MemorySource::MemorySource;

    void seek(std::uint64_t) override { throw Error(file(), "standard input is read once"); }
};

std::string differences(const Verification& found)
{
    std::string text;
    for (const ColumnDifference& difference : found.Differences) {
        text += difference.Column + " in record " + std::to_string(difference.Record) + ": " + difference.InSource +
                " and " + difference.InTable + "\n";
    }
    return text;
}

const std::vector<Column> twoColumns = {columnOf("ID", ColumnType::Number, 5), columnOf("NAME", ColumnType::Text, 10)};

std::vector<Row> people(const std::vector<std::pair<const char*, const char*>>& values)
{
    std::vector<Row> rows;
    for (const auto& [id, name] : values) {
        rows.push_back({{Cell::number(id), Cell::text(name)}, {}});
    }
    return rows;
}

TEST(Verify, EqualTablesAgree)
{
    const std::vector<std::pair<const char*, const char*>> values = {{"1", "r1c2"}, {"2", "r2c2"}};
    const Verification found = compare(twoColumns, people(values), people(values));
    EXPECT_TRUE(found.agrees());
    EXPECT_EQ(found.Records, 2U);
    EXPECT_EQ(found.Rows, 2U);
}

TEST(Verify, EmptyTablesAgree)
{
    EXPECT_TRUE(compare(twoColumns, {}, {}).agrees());
}

TEST(Verify, FirstDifferingRecordOfEachColumnIsNamed)
{
    const std::vector<std::pair<const char*, const char*>> file = {{"1", "a"}, {"2", "b"}, {"3", "c"}, {"4", "d"}};
    const std::vector<std::pair<const char*, const char*>> table = {{"1", "a"}, {"2", "x"}, {"7", "c"}, {"8", "y"}};
    const Verification found = compare(twoColumns, people(file), people(table));
    EXPECT_FALSE(found.agrees());
    EXPECT_EQ(differences(found), "ID in record 3: 3 and 7\nNAME in record 2: 'b' and 'x'\n");
}

TEST(Verify, OrderDoesNotMatter)
{
    const std::vector<std::pair<const char*, const char*>> file = {{"1", "a"}, {"2", "b"}, {"2", "b"}, {"3", "c"}};
    const std::vector<std::pair<const char*, const char*>> table = {{"2", "b"}, {"3", "c"}, {"1", "a"}, {"2", "b"}};
    EXPECT_TRUE(compare(twoColumns, people(file), people(table)).agrees());
}

TEST(Verify, DifferencesAreFoundInAnyOrder)
{
    const std::vector<std::pair<const char*, const char*>> file = {{"1", "a"}, {"2", "b"}, {"3", "c"}};
    const std::vector<std::pair<const char*, const char*>> table = {{"3", "c"}, {"2", "x"}, {"1", "a"}};
    EXPECT_EQ(differences(compare(twoColumns, people(file), people(table))), "NAME in record 2: 'b' and 'x'\n");
}

TEST(Verify, MissingAndSurplusRowsAreCounted)
{
    const std::vector<std::pair<const char*, const char*>> file = {{"1", "a"}, {"2", "b"}, {"3", "c"}};
    const std::vector<std::pair<const char*, const char*>> table = {{"1", "a"}, {"3", "c"}};
    const Verification missing = compare(twoColumns, people(file), people(table));
    EXPECT_EQ(missing.Records, 3U);
    EXPECT_EQ(missing.Rows, 2U);
    EXPECT_FALSE(missing.agrees());
    EXPECT_EQ(differences(missing), "");
    const Verification surplus = compare(twoColumns, people(table), people(file));
    EXPECT_EQ(surplus.Records, 2U);
    EXPECT_EQ(surplus.Rows, 3U);
    EXPECT_FALSE(surplus.agrees());
}

TEST(Verify, ChangedRowIsNotTakenForAMissingOne)
{
    const std::vector<std::pair<const char*, const char*>> more = {{"1", "a"}, {"2", "b"}, {"3", "c"}, {"4", "d"}};
    const std::vector<std::pair<const char*, const char*>> fewer = {{"1", "a"}, {"3", "c"}, {"4", "x"}};
    EXPECT_EQ(differences(compare(twoColumns, people(more), people(fewer))), "NAME in record 4: 'd' and 'x'\n");
    EXPECT_EQ(differences(compare(twoColumns, people(fewer), people(more))), "NAME in record 3: 'x' and 'd'\n");
}

TEST(Verify, RecordsLeftWhenNoneIsMissingAreCompared)
{
    const std::vector<std::pair<const char*, const char*>> more = {{"1", "a"}, {"2", "b"}, {"3", "c"}};
    EXPECT_EQ(differences(compare(twoColumns, people(more), people({{"9", "z"}}))),
              "ID in record 3: 3 and 9\nNAME in record 3: 'c' and 'z'\n");
    EXPECT_EQ(differences(compare(twoColumns, people({{"9", "z"}}), people(more))),
              "ID in record 1: 9 and 3\nNAME in record 1: 'z' and 'c'\n");
}

TEST(Verify, EqualRecordsAreCountedTooWhateverTheOrder)
{
    const std::vector<std::pair<const char*, const char*>> file = {{"1", "a"}, {"1", "a"}, {"2", "b"}};
    const std::vector<std::pair<const char*, const char*>> table = {{"2", "b"}, {"2", "b"}, {"1", "a"}};
    EXPECT_EQ(differences(compare(twoColumns, people(file), people(table))),
              "ID in record 2: 1 and 2\nNAME in record 2: 'a' and 'b'\n");
}

TEST(Verify, SourceThatCannotGoBackIsComparedInOrder)
{
    OnePass source(twoColumns, people({{"1", "a"}, {"2", "b"}}));
    MemorySource table(twoColumns, people({{"2", "b"}, {"1", "a"}}));
    TableLayout layout = layoutOf(source);
    EXPECT_EQ(differences(verify(source, table, layout)), "ID in record 1: 1 and 2\nNAME in record 1: 'a' and 'b'\n");
}

TEST(Verify, ManyRecordsInAnotherOrder)
{
    std::vector<std::string> numbers;
    for (int i = 0; i < 20000; ++i) {
        numbers.push_back(std::to_string(i));
    }
    std::vector<Row> file;
    std::vector<Row> table;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        file.push_back({{Cell::number(numbers[i]), Cell::text(numbers[i])}, {}});
        const std::string& other = numbers[(i * 7919 + 5) % numbers.size()];
        table.push_back(
            {{Cell::number(other), Cell::text(other == "12345" ? std::string_view("changed") : other)}, {}});
    }
    EXPECT_EQ(differences(compare(twoColumns, file, table)), "NAME in record 12346: '12345' and 'changed'\n");
}

TEST(Verify, NumbersAgreeByValue)
{
    const Column number = columnOf("C", ColumnType::Number, 30, 4);
    EXPECT_TRUE(agree(number, Cell::number("1.50"), Cell::real(1.5)));
    EXPECT_TRUE(agree(number, Cell::number("1.50"), Cell::number("1.5")));
    EXPECT_TRUE(agree(number, Cell::number("1.50"), Cell::text("1.5000")));
    EXPECT_TRUE(agree(number, Cell::number("12.00"), Cell::number("12")));
    EXPECT_TRUE(agree(number, Cell::number("0"), Cell::real(-0.0)));
    EXPECT_TRUE(agree(number, Cell::number("100000000000000000000"), Cell::text("100000000000000000000")));
    EXPECT_TRUE(agree(number, Cell::number("100000000000000000000"), Cell::real(1e20)));
    EXPECT_TRUE(agree(number, Cell::number("123456789012345.6789"), Cell::text("123456789012345.6789")));
    EXPECT_FALSE(agree(number, Cell::number("123456789012345.6789"), Cell::real(123456789012345.6789)));
    EXPECT_FALSE(agree(number, Cell::number("9007199254740993"), Cell::real(9007199254740993.0)));
    EXPECT_TRUE(agree(number, Cell::number("9007199254740993"), Cell::number("9007199254740993")));
    EXPECT_FALSE(agree(number, Cell::number("1.5"), Cell::number("1.6")));
    EXPECT_FALSE(agree(number, Cell::number("1"), Cell::number("-1")));
    EXPECT_FALSE(agree(number, Cell::number("1"), Cell::text("one")));
    EXPECT_FALSE(agree(number, Cell::number("0"), Cell::null()));
    EXPECT_FALSE(agree(number, Cell::number("0"), Cell::bytes("0")));
}

TEST(Verify, DoublesAgreeBitByBit)
{
    const Column real = columnOf("C", ColumnType::Float);
    EXPECT_TRUE(agree(real, Cell::real(0.1), Cell::real(0.1)));
    EXPECT_FALSE(agree(real, Cell::real(0.1), Cell::real(std::nextafter(0.1, 1))));
    EXPECT_TRUE(agree(real, Cell::real(0.1 + 0.2), Cell::text("0.30000000000000004")));
    EXPECT_TRUE(agree(real, Cell::real(1e300), Cell::text("1e+300")));
    EXPECT_TRUE(agree(real, Cell::real(3), Cell::number("3")));
    EXPECT_FALSE(agree(real, Cell::real(3), Cell::text("three")));
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(agree(real, Cell::real(infinity), Cell::text("Infinity")));
    EXPECT_FALSE(agree(real, Cell::real(infinity), Cell::real(-infinity)));
}

TEST(Verify, NotANumberAgreesWithItselfIfTheTargetHoldsIt)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<Column> columns = {columnOf("C", ColumnType::Float)};
    EXPECT_TRUE(compare(columns, {{{Cell::real(nan)}, {}}}, {{{Cell::text("NaN")}, {}}}, Engine::PostgreSql).agrees());
    EXPECT_TRUE(compare(columns, {{{Cell::real(nan)}, {}}}, {{{Cell::null()}, {}}}, Engine::Sqlite).agrees());
}

TEST(Verify, FormsOfDatabasesAgree)
{
    const Column boolean = columnOf("C", ColumnType::Boolean);
    const Column time = columnOf("C", ColumnType::Time);
    const Column timestamp = columnOf("C", ColumnType::Timestamp);
    for (const char* yes : {"1", "t", "true"}) {
        EXPECT_TRUE(agree(boolean, Cell::boolean(true), Cell::text(yes)));
        EXPECT_FALSE(agree(boolean, Cell::boolean(false), Cell::text(yes)));
    }
    EXPECT_TRUE(agree(boolean, Cell::boolean(false), Cell::number("0")));
    EXPECT_FALSE(agree(boolean, Cell::boolean(true), Cell::number("2")));
    EXPECT_FALSE(agree(boolean, Cell::boolean(false), Cell::null()));
    EXPECT_TRUE(agree(columnOf("C", ColumnType::Date), Cell::date({2024, 2, 10}), Cell::text("2024-02-10")));
    EXPECT_FALSE(agree(columnOf("C", ColumnType::Date), Cell::date({2024, 2, 10}), Cell::text("2024-02-01")));
    EXPECT_TRUE(agree(time, Cell::time(3600000), Cell::text("01:00:00")));
    EXPECT_TRUE(agree(time, Cell::time(3600100), Cell::text("01:00:00.1")));
    EXPECT_FALSE(agree(time, Cell::time(3600100), Cell::text("01:00:00.01")));
    EXPECT_TRUE(agree(timestamp, Cell::timestamp({{2024, 2, 10}, 0}), Cell::text("2024-02-10 00:00:00.000")));
    EXPECT_TRUE(agree(timestamp, Cell::timestamp({{2024, 2, 10}, 0}), Cell::text("2024-02-10 00:00:00")));
    EXPECT_TRUE(agree(timestamp, Cell::timestamp({{2024, 2, 10}, 5}), Cell::timestamp({{2024, 2, 10}, 5})));
}

TEST(Verify, TextsAndBytesAgreeByteByByte)
{
    const Column text = columnOf("C", ColumnType::Text, 10);
    EXPECT_FALSE(agree(text, Cell::text(""), Cell::null()));
    EXPECT_FALSE(agree(text, Cell::text("a"), Cell::text("a ")));
    EXPECT_FALSE(agree(text, Cell::text("1.0"), Cell::number("1")));
    EXPECT_FALSE(agree(text, Cell::text("a"), Cell::bytes("a")));
    EXPECT_TRUE(agree(columnOf("C", ColumnType::Bytes), Cell::bytes("a"), Cell::bytes("a")));
    EXPECT_FALSE(agree(columnOf("C", ColumnType::Bytes), Cell::bytes("a"), Cell::bytes("b")));
}

TEST(Verify, NeighbouringCellsAreNotMixedUp)
{
    const std::vector<Column> texts = {columnOf("A", ColumnType::Text, 10), columnOf("B", ColumnType::Text, 10)};
    const std::vector<Row> file = {{{Cell::text("ab"), Cell::text("c")}, {}}, {{Cell::text("x"), Cell::text("y")}, {}}};
    const std::vector<Row> table = {{{Cell::text("x"), Cell::text("y")}, {}},
                                    {{Cell::text("a"), Cell::text("bc")}, {}}};
    EXPECT_EQ(differences(compare(texts, file, table)), "A in record 1: 'ab' and 'a'\nB in record 1: 'c' and 'bc'\n");
}

TEST(Verify, UnreadableCellsAgreeWithNull)
{
    const std::vector<Column> columns = {columnOf("C", ColumnType::Number, 5)};
    const std::vector<Row> file = {{{Cell::unreadable()}, {{0, FlawKind::Unreadable, "not a number"}}},
                                   {{Cell::number("1.5")}, {}}};
    const std::vector<Row> table = {{{Cell::null()}, {}}, {{Cell::null()}, {}}};
    const Verification found = compare(columns, file, table);
    EXPECT_TRUE(found.agrees());
    EXPECT_EQ(found.Rejects, 2U);
}

TEST(Verify, RejectsAreReportedOnce)
{
    MemorySource source(twoColumns,
                        {{{Cell::unreadable(), Cell::text("a")}, {{0, FlawKind::Unreadable, "not a number"}}}});
    MemorySource table(twoColumns, people({{"1", "a"}}));
    TableLayout layout = layoutOf(source);
    int told = 0;
    TransferOptions options;
    options.OnReject = [&told](const Reject&) { ++told; };
    EXPECT_EQ(differences(verify(source, table, layout, options)), "ID in record 1: NULL and 1\n");
    EXPECT_EQ(told, 1);
}

TEST(Verify, SkippedRecordsAreNotExpected)
{
    MemorySource source(twoColumns,
                        {{{Cell::unreadable(), Cell::text("a")}, {{0, FlawKind::Unreadable, "not a number"}}},
                         {{Cell::number("2"), Cell::text("b")}, {}}});
    MemorySource table(twoColumns, people({{"2", "b"}}));
    TableLayout layout = layoutOf(source);
    TransferOptions options;
    options.Policy = OnError::Skip;
    const Verification found = verify(source, table, layout, options);
    EXPECT_TRUE(found.agrees());
    EXPECT_EQ(found.Records, 1U);
}

TEST(Verify, LongValuesAreShownAroundTheDifference)
{
    const std::string common(1000, 'x');
    const Verification found = compare({columnOf("C", ColumnType::Text)}, {{{Cell::text(common + "one")}, {}}},
                                       {{{Cell::text(common + "two")}, {}}});
    const std::string shown = "..." + std::string(40, 'x');
    EXPECT_EQ(differences(found), "C in record 1: " + shown + "one' and " + shown + "two'\n");
}

TEST(Verify, ValuesAreShownFromTheirBeginningIfTheDifferenceIsNear)
{
    const std::string common(159, 'x');
    const Verification found = compare({columnOf("C", ColumnType::Text)}, {{{Cell::text(common + "one")}, {}}},
                                       {{{Cell::text(common + "two")}, {}}});
    EXPECT_EQ(differences(found), "C in record 1: '" + common + "one' and '" + common + "two'\n");
}

TEST(Verify, LongValuesAreCutBetweenCharacters)
{
    const auto euros = [](std::size_t count) { return repeated("\u20AC", count); };
    const std::string one = euros(1000) + "one" + euros(100);
    const std::string two = euros(1000) + "two" + euros(100);
    const Verification found =
        compare({columnOf("C", ColumnType::Text)}, {{{Cell::text(one)}, {}}}, {{{Cell::text(two)}, {}}});
    EXPECT_EQ(differences(found), "C in record 1: ..." + euros(13) + "one" + euros(53) + "... and ..." + euros(13) +
                                      "two" + euros(53) + "...\n");
}

TEST(Verify, ColumnsMustBeTheSame)
{
    MemorySource source(twoColumns);
    MemorySource table({twoColumns[0]});
    TableLayout layout = layoutOf(source);
    EXPECT_THROW(verify(source, table, layout), Error);
}

TEST(Verify, StopEndsIt)
{
    std::vector<Row> rows(5000, Row{{Cell::number("1"), Cell::text("a")}, {}});
    MemorySource source(twoColumns, rows);
    MemorySource table(twoColumns, rows);
    TableLayout layout = layoutOf(source);
    std::stop_source stop;
    TransferOptions options;
    options.Stop = stop.get_token();
    stop.request_stop();
    EXPECT_THROW(verify(source, table, layout, options), Stopped);
}

TEST(Verify, LoadedTableAgreesUntilItIsChanged)
{
    const kd_test::ScopedDirectory folder;
    const std::string database = folder.file("x.db");
    const std::vector<Column> columns = {
        columnOf("N", ColumnType::Number, 20, 4), columnOf("T", ColumnType::Text, 10),
        columnOf("B", ColumnType::Boolean),       columnOf("D", ColumnType::Date),
        columnOf("R", ColumnType::Float),         columnOf("TS", ColumnType::Timestamp)};
    std::vector<Row> rows;
    for (const char* digits : {"1.5000", "123456789012345.6789", "-7", "0.1000"}) {
        rows.push_back({{Cell::number(digits), Cell::text(digits), Cell::boolean(true), Cell::date({2024, 2, 29}),
                         Cell::real(0.1), Cell::timestamp({{1999, 12, 31}, 500})},
                        {}});
    }
    rows.push_back({std::vector<Cell>(6), {}});
    const auto verified = [&] {
        MemorySource source(columns, rows, "t.dbf");
        TableLayout layout = layoutOf(source);
        std::vector<std::string> names;
        for (const TargetColumn& of : layout.columns()) {
            names.push_back(of.Name);
        }
        const auto table = SqliteSource::ofTable(database, layout.table(), names);
        return verify(source, *table, layout);
    };
    {
        MemorySource source(columns, rows, "t.dbf");
        SqliteTarget target(database);
        transfer(source, target);
    }
    EXPECT_TRUE(verified().agrees()) << differences(verified());
    Opened(database).run("UPDATE t SET t = 'changed' WHERE rowid = 2");
    EXPECT_EQ(differences(verified()), "T in record 2: '123456789012345.6789' and 'changed'\n");
    Opened(database).run("DELETE FROM t WHERE rowid = 1");
    EXPECT_EQ(differences(verified()),
              "N in record 1: 1.5000 and '123456789012345.6789'\nT in record 1: '1.5000' and 'changed'\n");
}

}  // namespace
