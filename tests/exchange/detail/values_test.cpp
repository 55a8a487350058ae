#include "detail/values.h"

#include "detail/moments.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

using kd_lib::exchange::Cell;
using kd_lib::exchange::CellKind;
using kd_lib::exchange::ColumnType;
using kd_lib::exchange::Date;
using kd_lib::exchange::Timestamp;
using namespace kd_lib::exchange::detail;

namespace {

constexpr std::string_view twoZeros("\0\0", 2);

std::string shown(const Converted& converted)
{
    const Cell& cell = converted.Value;
    EXPECT_EQ(converted.Problem != nullptr, cell.Kind == CellKind::Unreadable);
    char text[timestampSize];
    switch (cell.Kind) {
    case CellKind::Null:
        return "NULL";
    case CellKind::Unreadable:
        return converted.Problem;
    case CellKind::Boolean:
        return cell.Boolean ? "true" : "false";
    case CellKind::Float:
        return std::to_string(cell.Float);
    case CellKind::Date:
        return {text, putDate(text, cell.Moment.Day)};
    case CellKind::Time:
        return {text, putTime(text, cell.Moment.Milliseconds)};
    case CellKind::Timestamp:
        return {text, putTimestamp(text, cell.Moment, ' ')};
    default:
        return std::string(cell.Text);
    }
}

std::string number(std::string_view text)
{
    std::string scratch;
    return shown(numberOf(text, scratch));
}

std::string whole(std::string_view text)
{
    std::string scratch;
    return shown(wholeNumberOf(text, scratch));
}

std::string converted(const Cell& cell, ColumnType to)
{
    static std::string scratch;
    scratch = "what was there before";
    return shown(convert(cell, to, scratch));
}

TEST(Values, NumbersInNormalFormAreViewed)
{
    std::string scratch;
    for (const std::string_view text :
         {"0", "7", "-7", "1250.75", "-0.5", "0.00", "10.00", "123456789012345678901234567890"}) {
        const Converted result = numberOf(text, scratch);
        EXPECT_EQ(result.Value.Text, text);
        EXPECT_EQ(result.Value.Text.data(), text.data());
    }
    EXPECT_EQ(scratch, "");
}

TEST(Values, NumbersByTheirValue)
{
    EXPECT_EQ(number("+5"), "5");
    EXPECT_EQ(number("007"), "7");
    EXPECT_EQ(number("-007.10"), "-7.10");
    EXPECT_EQ(number(".5"), "0.5");
    EXPECT_EQ(number("-.5"), "-0.5");
    EXPECT_EQ(number("5."), "5");
    EXPECT_EQ(number("-0"), "0");
    EXPECT_EQ(number("-0.00"), "0.00");
    EXPECT_EQ(number("-.0"), "0.0");
    EXPECT_EQ(number("000"), "0");
    EXPECT_EQ(number("  12 "), "12");
    EXPECT_EQ(number(std::string_view("\0 12\0 ", 6)), "12");
}

TEST(Values, ExponentsAreExpanded)
{
    EXPECT_EQ(number("1.5E+03"), "1500");
    EXPECT_EQ(number("1.5e3"), "1500");
    EXPECT_EQ(number("1.50E+01"), "15.0");
    EXPECT_EQ(number("1.5E-03"), "0.0015");
    EXPECT_EQ(number("-1.5E-03"), "-0.0015");
    EXPECT_EQ(number("12345E-2"), "123.45");
    EXPECT_EQ(number("12345E-5"), "0.12345");
    EXPECT_EQ(number("0.0015E3"), "1.5");
    EXPECT_EQ(number(".001E3"), "1");
    EXPECT_EQ(number("0E+5"), "0");
    EXPECT_EQ(number("0.00E+1"), "0.0");
    EXPECT_EQ(number("-0E-2"), "0.00");
    EXPECT_EQ(number("1E0"), "1");
    EXPECT_EQ(number("1E+1000").size(), 1001U);
    EXPECT_EQ(number("1E-1000").size(), 1002U);
}

TEST(Values, AHugeExponentAllocatesNothing)
{
    std::string scratch;
    for (const char* text : {"1E+999999999", "1E-999999999", "1E+1001", "1E-1001", "1E99999999999999999999999"}) {
        EXPECT_EQ(shown(numberOf(text, scratch)), "the exponent is too large") << text;
    }
    EXPECT_LT(scratch.capacity(), 100U);
}

TEST(Values, TextsThatAreNotNumbers)
{
    for (const char* text : {"1,5",
                             "1 2",
                             "NaN",
                             "abc",
                             "-",
                             "+",
                             ".",
                             "-.",
                             "E5",
                             "1E",
                             "1E+",
                             "--1",
                             "+-1",
                             "1-",
                             "1.2.3",
                             "0x10",
                             "$5",
                             "1e5e5",
                             "inf",
                             "\xC2\xA0"
                             "5"}) {
        EXPECT_EQ(number(text), "not a number") << text;
    }
    EXPECT_EQ(number("****"), "asterisks in place of a number that was too wide");
    EXPECT_EQ(number(""), "NULL");
    EXPECT_EQ(number("   "), "NULL");
    EXPECT_EQ(number(twoZeros), "NULL");
}

TEST(Values, WholeNumbersHave64Bits)
{
    EXPECT_EQ(whole("42"), "42");
    EXPECT_EQ(whole("42.00"), "42");
    EXPECT_EQ(whole("4.2E1"), "42");
    EXPECT_EQ(whole("42.5"), "not a whole number");
    EXPECT_EQ(whole("9223372036854775807"), "9223372036854775807");
    EXPECT_EQ(whole("-9223372036854775808"), "-9223372036854775808");
    EXPECT_EQ(whole("9223372036854775808"), "the number does not fit in 64 bits");
    EXPECT_EQ(whole(std::string_view("429999999999999999999", 2)), "42") << "the text ends there";
    EXPECT_EQ(whole("x"), "not a number");
    EXPECT_EQ(whole(" "), "NULL");
}

TEST(Values, Floats)
{
    EXPECT_EQ(floatOf("1.5").Value.Float, 1.5);
    EXPECT_EQ(floatOf(" +.5e1 ").Value.Float, 5.0);
    EXPECT_EQ(floatOf("5.").Value.Float, 5.0);
    EXPECT_TRUE(std::signbit(floatOf("-0").Value.Float));
    EXPECT_TRUE(std::isnan(floatOf("NaN").Value.Float));
    EXPECT_EQ(floatOf("-Infinity").Value.Float, -std::numeric_limits<double>::infinity());
    EXPECT_EQ(floatOf("+inf").Value.Float, std::numeric_limits<double>::infinity());
    EXPECT_EQ(shown(floatOf("1e999")), "the number is outside the range of a double");
    for (const char* text : {"+-1", "1,5", "nan(1)", "0x1p3", "1 2", "infin", "-", "."}) {
        EXPECT_EQ(shown(floatOf(text)), "not a number") << text;
    }
    EXPECT_EQ(shown(floatOf(" ")), "NULL");
}

TEST(Values, Booleans)
{
    for (const char* text : {"T", "t", "Y", "y"}) {
        EXPECT_EQ(shown(logicalOf(text)), "true") << text;
    }
    for (const char* text : {"F", "f", "N", "n"}) {
        EXPECT_EQ(shown(logicalOf(text)), "false") << text;
    }
    EXPECT_EQ(shown(logicalOf("?")), "NULL");
    EXPECT_EQ(shown(logicalOf(" ")), "NULL");
    EXPECT_EQ(shown(logicalOf(twoZeros)), "NULL");
    for (const char* text : {"1", "0", "J", "true", "TT"}) {
        EXPECT_EQ(shown(logicalOf(text)), "not a boolean") << text;
    }
    EXPECT_EQ(shown(booleanOf("TRUE")), "true");
    EXPECT_EQ(shown(booleanOf("no")), "false");
    EXPECT_EQ(shown(booleanOf("1")), "true");
    EXPECT_EQ(shown(booleanOf("f")), "false");
    EXPECT_EQ(shown(booleanOf("")), "NULL");
    EXPECT_EQ(shown(booleanOf("2")), "not a boolean");
}

TEST(Values, DatesOfEightDigits)
{
    EXPECT_EQ(shown(eightDigitDateOf("20240229")), "2024-02-29");
    EXPECT_EQ(shown(eightDigitDateOf("00010101")), "0001-01-01");
    EXPECT_EQ(shown(eightDigitDateOf("99991231")), "9999-12-31");
    for (const char* text : {"        ", "00000000", ""}) {
        EXPECT_EQ(shown(eightDigitDateOf(text)), "NULL") << text;
    }
    for (const char* text : {"20241399", "20230229", "19000229", "00000101", "20240001", "20240100", "20240431",
                             "2024010", "2024-01-01", "2024 101", "x0240101"}) {
        EXPECT_EQ(shown(eightDigitDateOf(text)), "not a date") << text;
    }
    EXPECT_EQ(shown(eightDigitDateOf("20000229")), "2000-02-29");
}

TEST(Values, DatesTimesTimestamps)
{
    EXPECT_EQ(shown(dateOf("2024-02-29")), "2024-02-29");
    EXPECT_EQ(shown(dateOf("20240229")), "2024-02-29");
    EXPECT_EQ(shown(dateOf("2023-02-29")), "not a date");
    EXPECT_EQ(shown(dateOf("2024-2-29")), "not a date");
    EXPECT_EQ(shown(dateOf("2024/02/29")), "not a date");
    EXPECT_EQ(shown(timeOf("23:59")), "23:59:00.000");
    EXPECT_EQ(shown(timeOf("23:59:58")), "23:59:58.000");
    EXPECT_EQ(shown(timeOf("23:59:58.1")), "23:59:58.100");
    EXPECT_EQ(shown(timeOf("00:00:00.123000")), "00:00:00.123");
    EXPECT_EQ(shown(timeOf(" ")), "NULL");
    for (const char* text :
         {"24:00", "23:60", "23:59:60", "23:59:58.1234", "23:59:58.", "23-59", "1:00", "23:59:5", "12"}) {
        EXPECT_EQ(shown(timeOf(text)), "not a time") << text;
    }
    EXPECT_EQ(shown(timestampOf("2024-03-05T13:14:15.678")), "2024-03-05 13:14:15.678");
    EXPECT_EQ(shown(timestampOf("2024-03-05 13:14")), "2024-03-05 13:14:00.000");
    EXPECT_EQ(shown(timestampOf("2024-03-05")), "2024-03-05 00:00:00.000");
    EXPECT_EQ(shown(timestampOf("")), "NULL");
    for (const char* text :
         {"2024-03-05T13:14:15Z", "2024-03-05 13:14:15+01:00", "2024-03-05x13:14", "2024-03-05T", "13:14"}) {
        EXPECT_EQ(shown(timestampOf(text)), "not a timestamp") << text;
    }
}

TEST(Values, OneOperationForAllTypes)
{
    std::string scratch;
    EXPECT_EQ(shown(valueOf(ColumnType::Text, " a ", scratch)), " a ");
    EXPECT_EQ(shown(valueOf(ColumnType::Bytes, " a ", scratch)), " a ");
    EXPECT_EQ(valueOf(ColumnType::Bytes, "a", scratch).Value.Kind, CellKind::Bytes);
    EXPECT_EQ(shown(valueOf(ColumnType::Number, " .5 ", scratch)), "0.5");
    EXPECT_EQ(shown(valueOf(ColumnType::BigInteger, "5.0", scratch)), "5");
    EXPECT_EQ(shown(valueOf(ColumnType::Boolean, "yes", scratch)), "true");
    EXPECT_EQ(shown(valueOf(ColumnType::Date, "20240101", scratch)), "2024-01-01");
    EXPECT_EQ(shown(valueOf(ColumnType::Time, "01:02", scratch)), "01:02:00.000");
    EXPECT_EQ(shown(valueOf(ColumnType::Timestamp, "2024-01-01", scratch)), "2024-01-01 00:00:00.000");
    EXPECT_EQ(valueOf(ColumnType::Float, "2", scratch).Value.Float, 2.0);
}

TEST(Values, CellsOfOtherTypes)
{
    const Date day = {2024, 3, 5};
    EXPECT_EQ(converted(Cell::text("20240305"), ColumnType::Date), "2024-03-05");
    EXPECT_EQ(converted(Cell::number("5.00"), ColumnType::BigInteger), "5");
    EXPECT_EQ(converted(Cell::number("5.01"), ColumnType::BigInteger), "not a whole number");
    EXPECT_EQ(converted(Cell::number("20240305"), ColumnType::Date), "2024-03-05");
    EXPECT_EQ(converted(Cell::number("1"), ColumnType::Boolean), "true");
    EXPECT_EQ(converted(Cell::real(1.5), ColumnType::Number), "1.5");
    EXPECT_EQ(converted(Cell::real(1e300), ColumnType::Number).size(), 301U);
    EXPECT_EQ(converted(Cell::real(5e-324), ColumnType::Number).size(), 326U);
    EXPECT_EQ(converted(Cell::real(-0.0), ColumnType::Number), "0");
    EXPECT_EQ(converted(Cell::real(-1.7976931348623157e308), ColumnType::Number).size(), 310U);
    EXPECT_EQ(converted(Cell::real(-3), ColumnType::BigInteger), "-3");
    EXPECT_EQ(converted(Cell::real(std::nan("")), ColumnType::Number), "not a number");
    EXPECT_EQ(converted(Cell::real(std::nan("")), ColumnType::Text), "NaN");
    EXPECT_EQ(converted(Cell::real(-std::numeric_limits<double>::infinity()), ColumnType::Text), "-Infinity");
    EXPECT_EQ(converted(Cell::real(1000000), ColumnType::Text), "1000000");
    EXPECT_EQ(converted(Cell::real(0.001), ColumnType::Text), "0.001");
    EXPECT_EQ(converted(Cell::real(1e300), ColumnType::Text), "1e+300");
    EXPECT_EQ(converted(Cell::real(-1e-30), ColumnType::Text), "-1e-30");
    EXPECT_EQ(converted(Cell::real(0), ColumnType::Text), "0");
    EXPECT_EQ(converted(Cell::boolean(true), ColumnType::BigInteger), "1");
    EXPECT_EQ(converted(Cell::boolean(false), ColumnType::Text), "false");
    EXPECT_EQ(converted(Cell::boolean(true), ColumnType::Date), "a value of another type");
    EXPECT_EQ(converted(Cell::real(20240305), ColumnType::Date), "a value of another type");
    EXPECT_EQ(converted(Cell::date(day), ColumnType::Timestamp), "2024-03-05 00:00:00.000");
    EXPECT_EQ(converted(Cell::date(day), ColumnType::Text), "2024-03-05");
    EXPECT_EQ(converted(Cell::date(day), ColumnType::Number), "a value of another type");
    EXPECT_EQ(converted(Cell::timestamp({day, 0}), ColumnType::Date), "2024-03-05");
    EXPECT_EQ(converted(Cell::timestamp({day, 1}), ColumnType::Date), "it has a time of the day");
    EXPECT_EQ(converted(Cell::timestamp({day, 1}), ColumnType::Text), "2024-03-05T00:00:00.001");
    EXPECT_EQ(converted(Cell::time(1), ColumnType::Bytes), "00:00:00.001");
    EXPECT_EQ(converted(Cell::bytes("abc"), ColumnType::Text), "abc");
    EXPECT_EQ(converted(Cell::bytes("\xFF"), ColumnType::Text), "the bytes are not UTF-8");
    EXPECT_EQ(converted(Cell::null(), ColumnType::Date), "NULL");
    std::string scratch;
    EXPECT_EQ(convert(Cell::unreadable(), ColumnType::Date, scratch).Value.Kind, CellKind::Unreadable);
}

}  // namespace
