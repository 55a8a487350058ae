#include "detail/comparablevalue.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using namespace kd_lib::exchange;
using detail::equalValues;

bool equal(ColumnType type, const Cell& a, const Cell& b)
{
    std::string scratch;
    const bool found = equalValues(type, a, b, scratch);
    std::string first;
    std::string second;
    detail::appendComparable(first, type, a);
    detail::appendComparable(second, type, b);
    EXPECT_EQ(first == second, found) << "the forms are equal if the values are";
    return found;
}

TEST(ComparableValueTest, BooleansAsDatabasesReturnThem)
{
    for (const char* const yes : {"1", "t", "true"}) {
        EXPECT_TRUE(equal(ColumnType::Boolean, Cell::boolean(true), Cell::text(yes))) << yes;
        EXPECT_TRUE(equal(ColumnType::Boolean, Cell::boolean(true), Cell::number(yes))) << yes;
        EXPECT_FALSE(equal(ColumnType::Boolean, Cell::boolean(false), Cell::text(yes))) << yes;
    }
    for (const char* const no : {"0", "f", "false"}) {
        EXPECT_TRUE(equal(ColumnType::Boolean, Cell::boolean(false), Cell::text(no))) << no;
        EXPECT_FALSE(equal(ColumnType::Boolean, Cell::boolean(true), Cell::text(no))) << no;
    }
    for (const char* const other : {"", "2", "x", "no", "F", "falsee"}) {
        EXPECT_FALSE(equal(ColumnType::Boolean, Cell::boolean(false), Cell::text(other))) << other;
        EXPECT_FALSE(equal(ColumnType::Boolean, Cell::boolean(true), Cell::text(other))) << other;
    }
    EXPECT_FALSE(equal(ColumnType::Boolean, Cell::boolean(false), Cell::null()));
}

TEST(ComparableValueTest, NumbersByTheirValue)
{
    EXPECT_TRUE(equal(ColumnType::Number, Cell::number("1.50"), Cell::text("1.5")));
    EXPECT_TRUE(equal(ColumnType::Number, Cell::number("1.50"), Cell::real(1.5)));
    EXPECT_TRUE(equal(ColumnType::Number, Cell::number("100"), Cell::text("1e2")));
    EXPECT_FALSE(equal(ColumnType::Number, Cell::number("100"), Cell::text("10")));
    EXPECT_FALSE(equal(ColumnType::Number, Cell::number("1"), Cell::text("1x")));
    EXPECT_FALSE(equal(ColumnType::Number, Cell::number("12345678901234567890"), Cell::text("12345678901234567891")));
    EXPECT_TRUE(equal(ColumnType::Number, Cell::number("12345678901234567890.0"), Cell::text("12345678901234567890")));
    EXPECT_TRUE(equal(ColumnType::Float, Cell::real(0.0), Cell::real(-0.0)));
}

TEST(ComparableValueTest, NumbersAndTextsAreReadInAColumnOfDoubles)
{
    EXPECT_TRUE(equal(ColumnType::Float, Cell::number("0.12345678901234567"), Cell::real(0.12345678901234567)));
    EXPECT_TRUE(equal(ColumnType::Float, Cell::text("1e2"), Cell::real(100)));
    EXPECT_FALSE(equal(ColumnType::Float, Cell::bytes("1.5"), Cell::real(1.5))) << "bytes have no value as a number";
}

TEST(ComparableValueTest, ValuesThatAreNotMomentsDifferInAColumnOfMoments)
{
    for (const ColumnType type : {ColumnType::Date, ColumnType::Time, ColumnType::Timestamp}) {
        EXPECT_FALSE(equal(type, Cell::number("1"), Cell::number("2")));
        EXPECT_FALSE(equal(type, Cell::number("1"), Cell::null()));
        EXPECT_FALSE(equal(type, Cell::bytes("a"), Cell::bytes("b")));
        EXPECT_TRUE(equal(type, Cell::number("1"), Cell::number("1.0")));
    }
}

TEST(ComparableValueTest, BytesAreShownInHexadecimal)
{
    EXPECT_EQ(detail::shownValue(Cell::bytes(std::string_view("\x00\x0A\x5F\xFF", 4))), "x'000a5fff'");
    EXPECT_EQ(detail::shownValue(Cell::bytes("")), "x''");
}

}  // namespace
