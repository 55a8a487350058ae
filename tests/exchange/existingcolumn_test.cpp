#include <kd_lib/exchange/existingcolumn.h>

#include "support/shown.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace kd_lib::exchange;
using Kind = ExistingColumn::Kind;

/// The result for a cell in a column: the cell, or the reason why it is refused.
std::string fitted(ExistingColumn column, const Cell& cell, Engine engine = Engine::PostgreSql)
{
    column.Name = "a";
    const std::vector<Column> columns{{.Name = "a"}};
    const TableLayout layout(dialectOf(engine), "t", columns, {});
    const ExistingColumns existing(layout, {column}, "db");
    Record record;
    record.Columns = &columns;
    record.Cells = {cell};
    existing.fit(record, engine);
    return record.Flaws.empty() ? kd_test::shown(record.Cells[0]) : record.Flaws[0].Reason;
}

std::string fitted(Kind kind, std::uint32_t limit, const Cell& cell, Engine engine = Engine::PostgreSql)
{
    return fitted(ExistingColumn{{}, kind, limit}, cell, engine);
}

constexpr const char* moreDigits = "more digits than the column holds";

TEST(ExistingColumnTest, ATextHasALimitOfCharacters)
{
    EXPECT_EQ(fitted(Kind::Text, 3, Cell::text("abc")), "<abc>");
    EXPECT_EQ(fitted(Kind::Text, 3, Cell::text("abcd")), "longer than the column");
    EXPECT_EQ(fitted(Kind::Text, 3, Cell::text("abc ")), "longer than the column");
    EXPECT_EQ(fitted(Kind::Text, 3, Cell::text("\xC3\xA9\xC3\xA9\xC3\xA9")), "<\xC3\xA9\xC3\xA9\xC3\xA9>");
    EXPECT_EQ(fitted(Kind::Text, 0, Cell::text("abcd")), "<abcd>") << "of any length";
    EXPECT_EQ(fitted(Kind::Other, 3, Cell::text("abcd")), "<abcd>") << "refused by the server";
}

TEST(ExistingColumnTest, AZeroByteIsNotATextOfPostgreSql)
{
    const Cell cell = Cell::text(std::string_view("a\0b", 3));
    EXPECT_EQ(fitted(Kind::Text, 0, cell), "a zero byte in a text");
    EXPECT_EQ(fitted(Kind::Text, 0, cell, Engine::MySql), std::string("<a\0b>", 5));
}

TEST(ExistingColumnTest, AWholeNumberLosesDecimalsThatAreZero)
{
    EXPECT_EQ(fitted(Kind::Whole, 0, Cell::number("12")), "12");
    EXPECT_EQ(fitted(Kind::Whole, 0, Cell::number("12.00")), "12");
    EXPECT_EQ(fitted(Kind::Whole, 0, Cell::number("12.50")), "a column of whole numbers does not hold decimals");
}

TEST(ExistingColumnTest, ADecimalHasALimitOfDecimals)
{
    EXPECT_EQ(fitted(Kind::Decimal, 2, Cell::number("1.25")), "1.25");
    EXPECT_EQ(fitted(Kind::Decimal, 2, Cell::number("1.250")), "1.250");
    EXPECT_EQ(fitted(Kind::Decimal, 2, Cell::number("1.255")), moreDigits);
}

TEST(ExistingColumnTest, AFloatHasALimitOfDigits)
{
    EXPECT_EQ(fitted(Kind::Float, 6, Cell::number("123456")), "123456");
    EXPECT_EQ(fitted(Kind::Float, 6, Cell::number("1234567")), moreDigits);
    EXPECT_EQ(fitted(Kind::Float, 6, Cell::number("1234560")), "1234560");
    EXPECT_EQ(fitted(Kind::Float, 15, Cell::number("123456789012345")), "123456789012345");
    EXPECT_EQ(fitted(Kind::Float, 15, Cell::number("1234567890123456")), moreDigits);
    EXPECT_EQ(fitted(Kind::Float, 14, Cell::number("123456789012345")), moreDigits);
    EXPECT_EQ(fitted(Kind::Other, 6, Cell::number("12345678901234567")), "12345678901234567");
}

TEST(ExistingColumnTest, ABinaryNumberIntoColumnsOfDigits)
{
    EXPECT_EQ(fitted(Kind::Whole, 1, Cell::real(12)), "12f");
    EXPECT_EQ(fitted(Kind::Whole, 1, Cell::real(12.5)), moreDigits);
    EXPECT_EQ(fitted(Kind::Decimal, 1, Cell::real(12.5)), "12.5f");
    EXPECT_EQ(fitted(Kind::Decimal, 1, Cell::real(-12.25)), moreDigits);
    EXPECT_EQ(fitted(Kind::Decimal, 2, Cell::real(-12.25)), "-12.25f");
    EXPECT_EQ(fitted(Kind::Other, 0, Cell::real(12.5)), "12.5f");
}

TEST(ExistingColumnTest, ABinaryNumberIntoAFloatOfSinglePrecision)
{
    const double fine = 1.0 + 1.0 / (1 << 30);
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(fitted(Kind::Float, 6, Cell::real(0.5)), "0.5f");
    EXPECT_EQ(fitted(Kind::Float, 6, Cell::real(fine)), moreDigits);
    EXPECT_EQ(fitted(Kind::Float, 14, Cell::real(fine)), moreDigits);
    EXPECT_EQ(fitted(Kind::Float, 15, Cell::real(0.5 + 1.0 / (1 << 30))), "0.50000000093132257f");
    EXPECT_EQ(fitted(Kind::Float, 6, Cell::real(infinity)), "inff");
    EXPECT_EQ(fitted(Kind::Float, 6, Cell::real(std::numeric_limits<double>::quiet_NaN())), "nanf");
}

TEST(ExistingColumnTest, MySqlHasNeitherInfinityNorNaN)
{
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(fitted(Kind::Other, 0, Cell::real(infinity), Engine::MySql), "the target has no infinity");
    EXPECT_EQ(fitted(Kind::Other, 0, Cell::real(-infinity), Engine::MySql), "the target has no infinity");
    EXPECT_EQ(fitted(Kind::Other, 0, Cell::real(std::numeric_limits<double>::quiet_NaN()), Engine::MySql),
              "the target has no NaN");
    EXPECT_EQ(fitted(Kind::Other, 0, Cell::real(1.5), Engine::MySql), "1.5f");
    EXPECT_EQ(fitted(Kind::Other, 0, Cell::real(infinity)), "inff");
}

TEST(ExistingColumnTest, AColumnOfDatesHoldsNoTime)
{
    EXPECT_EQ(fitted(Kind::Date, 0, Cell::timestamp({{2024, 2, 29}, 0})), "2024-02-29 00:00:00.000");
    EXPECT_EQ(fitted(Kind::Date, 0, Cell::timestamp({{2024, 2, 29}, 1})),
              "a column of dates does not hold a time of the day");
    EXPECT_EQ(fitted(Kind::Date, 0, Cell::date({2024, 2, 29})), "2024-02-29");
}

TEST(ExistingColumnTest, AMomentHasALimitOfDigitsOfASecond)
{
    const char* const more = "more digits of the second than the column holds";
    const auto outcome = [](std::uint32_t limit, std::uint32_t milliseconds) {
        return fitted(Kind::Moment, limit, Cell::time(milliseconds));
    };
    EXPECT_EQ(outcome(0, 2000), "0000-00-00 00:00:02.000");
    EXPECT_EQ(outcome(0, 2100), more);
    EXPECT_EQ(outcome(1, 2100), "0000-00-00 00:00:02.100");
    EXPECT_EQ(outcome(1, 2110), more);
    EXPECT_EQ(outcome(2, 2110), "0000-00-00 00:00:02.110");
    EXPECT_EQ(outcome(2, 2111), more);
    EXPECT_EQ(outcome(3, 2111), "0000-00-00 00:00:02.111");
    EXPECT_EQ(outcome(6, 2111), "0000-00-00 00:00:02.111");
    EXPECT_EQ(fitted(Kind::Moment, 0, Cell::timestamp({{2024, 2, 29}, 2100})), more);
    EXPECT_EQ(fitted(Kind::Other, 0, Cell::time(2111)), "0000-00-00 00:00:02.111");
}

TEST(ExistingColumnTest, OtherCellsAreLeftToTheServer)
{
    EXPECT_EQ(fitted(Kind::Whole, 0, Cell::null()), "NULL");
    EXPECT_EQ(fitted(Kind::Text, 1, Cell::bytes("abc")), "[abc]");
    EXPECT_EQ(fitted(Kind::Whole, 0, Cell::boolean(true)), "true");
}

TEST(ExistingColumnTest, IsFoundByNameThenWithoutRegardToCase)
{
    const std::vector<ExistingColumn> columns{{"NAME"}, {"name"}, {"Count"}};
    EXPECT_EQ(&findColumn(columns, "name", "t", "db"), &columns[1]);
    EXPECT_EQ(&findColumn(columns, "Name", "t", "db"), &columns[0]);
    EXPECT_EQ(&findColumn(columns, "COUNT", "t", "db"), &columns[2]);
    EXPECT_EQ(kd_test::errorOf([&] { findColumn(columns, "size", "t", "db"); }), "db: table t has no column size");
    EXPECT_EQ(kd_test::errorOf([&] { findColumn({}, "size", "t", "db"); }), "db: there is no table t");
}

TEST(ExistingColumnTest, AreSelectedByTheirNamesInTheTable)
{
    const std::vector<ExistingColumn> found{{"Name"}, {"count"}};
    EXPECT_EQ(selectColumns(Engine::PostgreSql, found, {"COUNT", "name"}, "t", "db"),
              "SELECT \"count\",\"Name\" FROM \"t\"");
    EXPECT_EQ(selectColumns(Engine::MySql, found, {"name"}, "t", "db"), "SELECT `Name` FROM `t`");
}

TEST(ExistingColumnTest, ColumnsAreInTheOrderOfTheSource)
{
    const std::vector<Column> source{{.Name = "b"}, {.Name = "a"}};
    const TableLayout layout(dialectOf(Engine::PostgreSql), "t", source, {});
    const ExistingColumns existing(layout, {{"a", Kind::Whole}, {"c"}, {"b", Kind::Text, 1}}, "db");
    ASSERT_EQ(existing.all().size(), 2U);
    EXPECT_EQ(existing.all()[0].Name, "b");
    EXPECT_EQ(existing.all()[1].Name, "a");
    Record record;
    record.Columns = &source;
    record.Cells = {Cell::text("ab"), Cell::number("1.5")};
    existing.fit(record, Engine::PostgreSql);
    ASSERT_EQ(record.Flaws.size(), 2U);
    EXPECT_EQ(record.Flaws[0].Column, 0U);
    EXPECT_EQ(record.Flaws[1].Column, 1U);
    EXPECT_THROW(ExistingColumns(layout, {{"a"}}, "db"), Error);
}

}  // namespace
