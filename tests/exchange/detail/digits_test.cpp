#include "detail/digits.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

namespace {

using namespace kd_lib::exchange::detail;

std::string counted(std::string_view number)
{
    const DigitCounts counts = countDigits(number);
    return std::to_string(counts.Before) + " " + std::to_string(counts.After) + " " +
           std::to_string(counts.Significant) + " " + std::to_string(counts.ZerosAfter);
}

TEST(DigitsTest, CountsBeforeAfterSignificantAndZeros)
{
    for (const auto& [number, counts] : std::initializer_list<std::pair<std::string_view, std::string_view>>{
             {"0", "0 0 0 0"},
             {"-0.00", "0 0 0 0"},
             {"7", "1 0 1 0"},
             {"-7", "1 0 1 0"},
             {"1200", "4 0 2 0"},
             {"1205", "4 0 4 0"},
             {"12.5", "2 1 3 0"},
             {"-12.50", "2 1 3 0"},
             {"12.00", "2 0 2 0"},
             {"10.01", "2 2 4 0"},
             {"0.5", "0 1 1 0"},
             {"-0.05", "0 2 1 1"},
             {"0.0050", "0 3 1 2"},
             {"0.00507", "0 5 3 2"},
         }) {
        EXPECT_EQ(counted(number), counts) << number;
    }
}

TEST(DigitsTest, RemovesDecimalsThatAreAllZeros)
{
    for (const auto& [number, rest] : std::initializer_list<std::pair<std::string_view, std::string_view>>{
             {"12", "12"}, {"12.0", "12"}, {"-12.000", "-12"}, {"0.0", "0"}, {"-0.00", "0"}, {"-0", "-0"}}) {
        std::string_view left = number;
        EXPECT_TRUE(takeZeroDecimals(left)) << number;
        EXPECT_EQ(left, rest) << number;
    }
}

TEST(DigitsTest, OtherDecimalsStay)
{
    for (const std::string_view number : {"12.5", "12.05", "12.50", "-0.01"}) {
        std::string_view left = number;
        EXPECT_FALSE(takeZeroDecimals(left)) << number;
        EXPECT_EQ(left, number);
    }
}

TEST(DigitsTest, FitsInAnInteger)
{
    EXPECT_TRUE(fits<std::int64_t>("9223372036854775807"));
    EXPECT_FALSE(fits<std::int64_t>("9223372036854775808"));
    EXPECT_TRUE(fits<std::int64_t>("-9223372036854775808"));
    EXPECT_FALSE(fits<std::int64_t>("-9223372036854775809"));
    EXPECT_TRUE(fits<std::int16_t>("32767"));
    EXPECT_FALSE(fits<std::int16_t>("32768"));
    EXPECT_FALSE(fits<std::int16_t>("1.0"));
    EXPECT_FALSE(fits<std::int16_t>(""));
}

TEST(DigitsTest, ADoubleKeepsFifteenSignificantDigits)
{
    EXPECT_TRUE(isExactAsDouble("123456789012345"));
    EXPECT_TRUE(isExactAsDouble("-12345678901234.5"));
    EXPECT_TRUE(isExactAsDouble("0.123456789012345"));
    EXPECT_FALSE(isExactAsDouble("1234567890123456"));
    EXPECT_FALSE(isExactAsDouble("0.1234567890123456"));
    EXPECT_TRUE(isExactAsDouble("123456789012345000"));
}

TEST(DigitsTest, ADoubleKeepsNumbersOfItsRangeOnly)
{
    EXPECT_TRUE(isExactAsDouble("1" + std::string(299, '0')));
    EXPECT_FALSE(isExactAsDouble("1" + std::string(300, '0')));
    EXPECT_TRUE(isExactAsDouble("0." + std::string(290, '0') + "1"));
    EXPECT_FALSE(isExactAsDouble("0." + std::string(291, '0') + "1"));
}

TEST(DigitsTest, SqliteKeepsANumberAsAnIntegerARealOrText)
{
    using Form = SqliteForm;
    EXPECT_EQ(sqliteFormOf("12"), Form::Integer);
    EXPECT_EQ(sqliteFormOf("1.5"), Form::Real);
    EXPECT_EQ(sqliteFormOf("123456789012345"), Form::Integer);
    EXPECT_EQ(sqliteFormOf("1234567890.1234"), Form::Real);
    EXPECT_EQ(sqliteFormOf("1234567890123456"), Form::Integer);
    EXPECT_EQ(sqliteFormOf("9223372036854775807"), Form::Integer);
    EXPECT_EQ(sqliteFormOf("9223372036854775808"), Form::Text);
    EXPECT_EQ(sqliteFormOf("12345678901234.5"), Form::Real);
    EXPECT_EQ(sqliteFormOf("123456789012345.6"), Form::Text);
    EXPECT_EQ(sqliteFormOf("123456789012345.0"), Form::Real);
}

}  // namespace
