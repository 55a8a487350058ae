#include <kd_lib/exchange/record.h>

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace {

using namespace kd_lib::exchange;
using namespace std::chrono;

/// A record of one cell in a column of this type.
class OneCell {
public:
    OneCell(ColumnType type, Cell cell) : Columns{{"Price", type, 0, 0, 0, 0}}
    {
        TheRecord.Number = 7;
        TheRecord.Cells = {cell};
        TheRecord.Columns = &Columns;
    }
    Value value() const { return TheRecord["Price"]; }

    std::vector<Column> Columns;
    Record TheRecord;
};

std::string failure(const std::function<void()>& work)
{
    try {
        work();
    } catch (const Error& error) {
        return error.what();
    }
    return "no error";
}

TEST(RecordTest, GivesEachKindOfCell)
{
    EXPECT_EQ(OneCell(ColumnType::Text, Cell::text("rope")).value().text(), "rope");
    EXPECT_EQ(OneCell(ColumnType::Number, Cell::number("-12.50")).value().digits(), "-12.50");
    EXPECT_EQ(OneCell(ColumnType::Float, Cell::real(0.25)).value().real(), 0.25);
    EXPECT_EQ(OneCell(ColumnType::Boolean, Cell::boolean(true)).value().boolean(), true);
    EXPECT_EQ(OneCell(ColumnType::Date, Cell::date({2024, 2, 29})).value().date(), 2024y / February / 29);
    EXPECT_EQ(OneCell(ColumnType::Time, Cell::time(3661001)).value().time(), 3661001ms);
    EXPECT_EQ(OneCell(ColumnType::Bytes, Cell::bytes({"\0a", 2})).value().bytes(), std::string_view("\0a", 2));
    const auto moment = OneCell(ColumnType::Timestamp, Cell::timestamp({{1970, 1, 2}, 5})).value().timestamp();
    EXPECT_EQ(moment->time_since_epoch(), 24h + 5ms);
}

TEST(RecordTest, NullIsNothingForEveryForm)
{
    const OneCell cell(ColumnType::Number, Cell::null());
    EXPECT_TRUE(cell.value().isNull());
    EXPECT_FALSE(cell.value().text());
    EXPECT_FALSE(cell.value().digits());
    EXPECT_FALSE(cell.value().integer());
    EXPECT_FALSE(cell.value().real());
    EXPECT_FALSE(cell.value().boolean());
    EXPECT_FALSE(cell.value().date());
    EXPECT_FALSE(cell.value().time());
    EXPECT_FALSE(cell.value().timestamp());
    EXPECT_FALSE(cell.value().bytes());
}

TEST(RecordTest, WholeNumbersFitOrFail)
{
    const auto integer = [](const char* digits) {
        return OneCell(ColumnType::Number, Cell::number(digits)).value().integer();
    };
    EXPECT_EQ(integer("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(integer("12.00"), 12);
    EXPECT_EQ(failure([&] { integer("9223372036854775808"); }),
              "record 7, column Price: the number does not fit in 64 bits");
    EXPECT_EQ(failure([&] { integer("1.5"); }), "record 7, column Price: the number has decimals");
}

TEST(RecordTest, ScaledNumbersAreExact)
{
    const auto scaled = [](const char* digits, unsigned decimals) {
        return OneCell(ColumnType::Number, Cell::number(digits)).value().scaled(decimals);
    };
    EXPECT_EQ(scaled("12.5", 2), 1250);
    EXPECT_EQ(scaled("-0.07", 2), -7);
    EXPECT_EQ(scaled("3", 4), 30000);
    EXPECT_EQ(scaled("1.2500", 2), 125);
    EXPECT_EQ(scaled("92233720368547758.07", 2), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(failure([&] { scaled("1.005", 2); }), "record 7, column Price: the number has more than 2 decimals");
    EXPECT_EQ(failure([&] { scaled("92233720368547758.08", 2); }),
              "record 7, column Price: the number does not fit in 64 bits");
    EXPECT_FALSE(OneCell(ColumnType::Number, Cell::null()).value().scaled(2));
}

TEST(RecordTest, ExactNumbersBecomeTheNearestDouble)
{
    EXPECT_EQ(OneCell(ColumnType::Number, Cell::number("0.1")).value().real(), 0.1);
    EXPECT_EQ(failure([] { OneCell(ColumnType::Number, Cell::number("1" + std::string(400, '0'))).value().real(); }),
              "record 7, column Price: the number is outside the range of a double");
}

TEST(RecordTest, AnotherTypeIsAnError)
{
    const OneCell cell(ColumnType::Number, Cell::number("20240229"));
    EXPECT_EQ(failure([&] { cell.value().date(); }), "record 7, column Price: the column holds values of type number");
    EXPECT_EQ(failure([&] { cell.value().text(); }), "record 7, column Price: the column holds values of type number");
}

TEST(RecordTest, AnUnreadableCellIsNeverNull)
{
    OneCell cell(ColumnType::Number, Cell::number("1"));
    cell.TheRecord.reject(0, "not a number");
    ASSERT_EQ(cell.TheRecord.Flaws.size(), 1U);
    EXPECT_EQ(cell.TheRecord.Flaws[0].Reason, "not a number");
    EXPECT_EQ(cell.TheRecord.Flaws[0].Kind, FlawKind::Unreadable);
    EXPECT_EQ(failure([&] { cell.value().isNull(); }), "record 7, column Price: the cell is unreadable");
    EXPECT_EQ(failure([&] { cell.value().real(); }), "record 7, column Price: the cell is unreadable");
}

/// A record that views `columns`.
Record textRecord(const std::vector<Column>& columns, const std::vector<Cell>& cells)
{
    Record record;
    record.Columns = &columns;
    record.Cells = cells;
    return record;
}

TEST(RecordTest, NamesAreExactFirstAndThenWithoutCase)
{
    const std::vector<Column> columns{{.Name = "a"}, {.Name = "A"}};
    const Record record = textRecord(columns, {Cell::text("small"), Cell::text("large")});
    EXPECT_EQ(record["A"].text(), "large");
    EXPECT_EQ(record["a"].text(), "small");
    EXPECT_EQ(record[1].text(), "large");
    EXPECT_EQ(OneCell(ColumnType::Text, Cell::text("x")).TheRecord["pRICE"].text(), "x");
    EXPECT_EQ(failure([&] { record["b"]; }), "column b: no such column");
}

TEST(RecordTest, OnlyLettersHaveACase)
{
    const std::vector<Column> columns{{.Name = "AZ"}, {.Name = "@["}};
    const Record record = textRecord(columns, {Cell::text("letters"), Cell::text("marks")});
    EXPECT_EQ(record["az"].text(), "letters");
    EXPECT_EQ(record["@["].text(), "marks");
    EXPECT_EQ(failure([&] { record["`{"]; }), "column `{: no such column");
}

TEST(ErrorTest, IsOneLineOfPlaceAndReason)
{
    EXPECT_STREQ(Error("a.dbf", "No such file or directory").what(), "a.dbf: No such file or directory");
    const Error error({"a.dbf", 3, "BORN", 119}, "not a date");
    EXPECT_STREQ(error.what(), "a.dbf: record 3, column BORN, byte 119: not a date");
    EXPECT_EQ(error.Reason, "not a date");
    EXPECT_EQ(error.Where.Record, 3U);
}

}  // namespace
