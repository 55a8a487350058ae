#include <kd_lib/sqlliteral.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

using namespace std::string_literals;
using namespace kd_lib;

namespace {

std::string definition(const std::string& name, FIELD_TYPE type, int length, int decimals)
{
    return convertField2Sql(TableField(name, type, 3, length, decimals, false));
}

std::string literal(FIELD_TYPE type, const std::string& value)
{
    TableField field("r1c1", type, 0, 20, 0, false);
    field.Value = value;
    return convertValue2Sql(field);
}

const std::vector<FIELD_TYPE> numberTypes = {DECIMAL_TYPE, FLOAT_TYPE, SMALLINT_TYPE, INTEGER_TYPE, BIGINT_TYPE};
const std::vector<FIELD_TYPE> textTypes = {CHAR_TYPE, VARCHAR_TYPE, TEXT_TYPE};
const std::vector<FIELD_TYPE> otherTypes = {UNKNOWN_TYPE, MEMO_TYPE, BLOB_TYPE, static_cast<FIELD_TYPE>(15),
                                            static_cast<FIELD_TYPE>(-1)};

void expectLiteral(const std::vector<FIELD_TYPE>& types, const std::string& value, const std::string& expected)
{
    for (const FIELD_TYPE type : types) {
        EXPECT_EQ(expected, literal(type, value)) << static_cast<int>(type);
    }
}

std::string inSingleQuotes(const std::string& text)
{
    std::string result(1, '\'');
    result += text;
    result += '\'';
    return result;
}

struct DefinitionRow {
    FIELD_TYPE type;
    const char* expected;
};

void PrintTo(const DefinitionRow& row, std::ostream* out)
{
    *out << row.expected;
}

class Definition : public testing::TestWithParam<DefinitionRow> {};

}  // namespace

// convertField2Sql

TEST_P(Definition, IsNameTypeAndSize)
{
    EXPECT_EQ(GetParam().expected, definition("COL", GetParam().type, 8, 2));
}

INSTANTIATE_TEST_SUITE_P(
    AllTypes, Definition,
    testing::Values(DefinitionRow{UNKNOWN_TYPE, "COL unknown"}, DefinitionRow{BOOLEAN_TYPE, "COL boolean"},
                    DefinitionRow{DECIMAL_TYPE, "COL decimal(8,2)"}, DefinitionRow{FLOAT_TYPE, "COL float"},
                    DefinitionRow{SMALLINT_TYPE, "COL smallint"}, DefinitionRow{INTEGER_TYPE, "COL integer"},
                    DefinitionRow{BIGINT_TYPE, "COL bigint"}, DefinitionRow{DATE_TYPE, "COL date"},
                    DefinitionRow{TIME_TYPE, "COL time"}, DefinitionRow{TIMESTAMP_TYPE, "COL timestamp"},
                    DefinitionRow{CHAR_TYPE, "COL char(8)"}, DefinitionRow{VARCHAR_TYPE, "COL varchar(8)"},
                    DefinitionRow{TEXT_TYPE, "COL text"}, DefinitionRow{MEMO_TYPE, "COL memo"},
                    DefinitionRow{BLOB_TYPE, "COL blob"}, DefinitionRow{static_cast<FIELD_TYPE>(15), "COL unknown"}));

TEST(FieldDefinition, CharHasItsLength)
{
    EXPECT_EQ("CITY char(10)", definition("CITY", CHAR_TYPE, 10, 0));
    EXPECT_EQ("NAME char(30)", definition("NAME", CHAR_TYPE, 30, 0));
}

TEST(FieldDefinition, DecimalHasLengthAndDecimals)
{
    EXPECT_EQ("PRICE decimal(8,2)", definition("PRICE", DECIMAL_TYPE, 8, 2));
    EXPECT_EQ("PRICE decimal(0,0)", definition("PRICE", DECIMAL_TYPE, 0, 0));
    EXPECT_EQ("PRICE decimal(-8,-2)", definition("PRICE", DECIMAL_TYPE, -8, -2));
}

TEST(FieldDefinition, FloatIsTheNameAndTheWord)
{
    EXPECT_EQ("RATE float", definition("RATE", FLOAT_TYPE, 12, 4));
}

TEST(FieldDefinition, NameIsUnchanged)
{
    EXPECT_EQ("Mixed Name \"x\" date", definition("Mixed Name \"x\"", DATE_TYPE, 8, 0));
    EXPECT_EQ(" memo", definition("", MEMO_TYPE, 10, 0));
}

TEST(FieldDefinition, ValueIsNotPartOfIt)
{
    TableField field("CITY", CHAR_TYPE, 0, 10, 0, true);
    field.Value = "Oslo";
    EXPECT_EQ("CITY char(10)", convertField2Sql(field));
    EXPECT_EQ("Oslo", field.Value);
}

// Booleans

TEST(BooleanLiteral, IsOneOrZeroWhateverItsText)
{
    for (const char* text : {"T", "t", "Y", "y", "true", "YES", "1", " T "}) {
        EXPECT_EQ("1", literal(BOOLEAN_TYPE, text)) << text;
    }
    for (const char* text : {"F", "N", "?", "0", "2", "false", "NULL", "'"}) {
        EXPECT_EQ("0", literal(BOOLEAN_TYPE, text)) << text;
    }
}

TEST(BooleanLiteral, IsNeverNull)
{
    EXPECT_EQ("0", literal(BOOLEAN_TYPE, ""));
    EXPECT_EQ("0", literal(BOOLEAN_TYPE, "   "));
}

// Numbers

TEST(NumberLiteral, OfSpacesIsNull)
{
    expectLiteral(numberTypes, "     ", "NULL");
    expectLiteral(numberTypes, "", "NULL");
    expectLiteral(numberTypes, " \t\r\n\v\f", "NULL");
}

TEST(NumberLiteral, IsTheTrimmedTextUnquoted)
{
    expectLiteral(numberTypes, "  42  ", "42");
    expectLiteral(numberTypes, "-3.25", "-3.25");
    expectLiteral(numberTypes, "\t0\n", "0");
}

TEST(NumberLiteral, IsNotChecked)
{
    expectLiteral(numberTypes, " 12 ab'; ", "12 ab';");
    expectLiteral(numberTypes, "****", "****");
}

// Dates

TEST(DateLiteral, OfEightDigitsIsCutAndQuoted)
{
    EXPECT_EQ("'2024-03-15'", literal(DATE_TYPE, "20240315"));
    EXPECT_EQ("'2024-03-15'", literal(DATE_TYPE, "  20240315  "));
}

TEST(DateLiteral, LongerThanEightCharactersIsUnchanged)
{
    EXPECT_EQ("'2024-03-15'", literal(DATE_TYPE, "2024-03-15"));
    EXPECT_EQ("'2024-03-15'", literal(DATE_TYPE, " 2024-03-15 "));
    EXPECT_EQ("'202403159'", literal(DATE_TYPE, "202403159"));
    EXPECT_EQ("'15 Mar '24'", literal(DATE_TYPE, "15 Mar '24"));
}

TEST(DateLiteral, OfSpacesIsNull)
{
    EXPECT_EQ("NULL", literal(DATE_TYPE, "        "));
    EXPECT_EQ("NULL", literal(DATE_TYPE, ""));
}

TEST(DateLiteral, OfSixCharactersEndsInAnEmptyPiece)
{
    EXPECT_EQ("'2024-03-'", literal(DATE_TYPE, "202403"));
}

TEST(DateLiteral, OfSevenCharactersHasAShortPiece)
{
    EXPECT_EQ("'2024-03-1'", literal(DATE_TYPE, "2024031"));
}

TEST(DateLiteral, ShortTextIsCutWhereverItsPiecesFall)
{
    EXPECT_EQ("'15.0-3.-24'", literal(DATE_TYPE, "15.03.24"));
}

TEST(DateLiteral, OfOneToFiveCharactersThrowsOutOfRange)
{
    for (const char* date : {"2", "20", "202", "2024", "20240", "  2024  "}) {
        EXPECT_THROW(literal(DATE_TYPE, date), std::out_of_range) << date;
    }
}

// Times

TEST(TimeLiteral, DeliberatelyHasAClosingQuoteOnly)
{
    EXPECT_EQ("12:34:56'", literal(TIME_TYPE, "123456"));
    EXPECT_EQ("12:34:56'", literal(TIME_TYPE, " 123456 "));
}

TEST(TimeLiteral, OfFourDigitsEndsInAnEmptyPiece)
{
    EXPECT_EQ("09:30:'", literal(TIME_TYPE, "0930"));
}

TEST(TimeLiteral, OfFiveDigitsHasAShortPiece)
{
    EXPECT_EQ("09:30:4'", literal(TIME_TYPE, "09304"));
}

TEST(TimeLiteral, LongerThanSixCharactersIsUnchangedWithAClosingQuoteOnly)
{
    EXPECT_EQ("12:34:56'", literal(TIME_TYPE, "12:34:56"));
    EXPECT_EQ("1234567'", literal(TIME_TYPE, " 1234567"));
}

TEST(TimeLiteral, OfSpacesIsNull)
{
    EXPECT_EQ("NULL", literal(TIME_TYPE, "      "));
    EXPECT_EQ("NULL", literal(TIME_TYPE, ""));
}

TEST(TimeLiteral, OfOneToThreeCharactersThrowsOutOfRange)
{
    for (const char* time : {"1", "12", "123", " 123 "}) {
        EXPECT_THROW(literal(TIME_TYPE, time), std::out_of_range) << time;
    }
}

// Timestamps

TEST(TimestampLiteral, IsTheTrimmedTextQuoted)
{
    EXPECT_EQ("'20240315123456'", literal(TIMESTAMP_TYPE, " 20240315123456 "));
    EXPECT_EQ("'2024-03-15 12:34:56'", literal(TIMESTAMP_TYPE, "2024-03-15 12:34:56"));
    EXPECT_EQ("'1'", literal(TIMESTAMP_TYPE, "1"));
}

TEST(TimestampLiteral, KeepsAQuoteInside)
{
    EXPECT_EQ("'a'b'", literal(TIMESTAMP_TYPE, "a'b"));
}

TEST(TimestampLiteral, OfSpacesIsNull)
{
    EXPECT_EQ("NULL", literal(TIMESTAMP_TYPE, "  "));
    EXPECT_EQ("NULL", literal(TIMESTAMP_TYPE, ""));
}

// Texts

TEST(TextLiteral, KeepsLeadingSpacesDropsTrailingOnesAndReplacesTheApostrophe)
{
    expectLiteral(textTypes, "  O'Brien  ", "'  O`Brien'");
}

TEST(TextLiteral, ReplacesEverySingleQuoteByAGraveAccent)
{
    expectLiteral(textTypes, "'a''b'", "'`a``b`'");
    expectLiteral(textTypes, "'", "'`'");
}

TEST(TextLiteral, EscapesNothingElse)
{
    expectLiteral(textTypes, "a\"b`c\\d;e\nf", "'a\"b`c\\d;e\nf'");
    expectLiteral(textTypes, "a\0b"s, "'a\0b'"s);
    expectLiteral(textTypes, "gr\xFC\xDF", "'gr\xFC\xDF'");
}

TEST(TextLiteral, OfBlanksIsNull)
{
    expectLiteral(textTypes, "", "NULL");
    expectLiteral(textTypes, "    ", "NULL");
    expectLiteral(textTypes, " \t\r\n\v\f", "NULL");
}

TEST(TextLiteral, TheWordNullIsAText)
{
    expectLiteral(textTypes, "NULL", "'NULL'");
}

TEST(TextLiteral, TakesTextsOfEveryLengthWithAQuoteAtEveryPlace)
{
    for (std::size_t size = 1; size <= 70; ++size) {
        std::string text;
        for (std::size_t i = 0; i < size; ++i) {
            text += static_cast<char>('a' + i % 26);
        }
        expectLiteral(textTypes, text + "   ", inSingleQuotes(text));
        for (std::size_t place = 0; place < size; ++place) {
            std::string value = text;
            std::string expected = text;
            value[place] = '\'';
            expected[place] = '`';
            ASSERT_EQ(inSingleQuotes(expected), literal(CHAR_TYPE, value)) << size << ' ' << place;
        }
    }
}

TEST(TextLiteral, OfQuotesAloneIsAsManyGraveAccents)
{
    for (std::size_t size = 1; size <= 70; ++size) {
        EXPECT_EQ(inSingleQuotes(std::string(size, '`')), literal(TEXT_TYPE, std::string(size, '\'')));
    }
}

TEST(TextLiteral, LeavesEveryOtherByte)
{
    std::string bytes;
    for (int code = 255; code >= 0; --code) {
        if (code != '\'') {
            bytes += static_cast<char>(code);
        }
    }
    expectLiteral(textTypes, bytes, inSingleQuotes(bytes));
}

// Every other type

TEST(OtherLiteral, MemoOfSpacesIsWrittenAsThoseSpaces)
{
    EXPECT_EQ("          ", literal(MEMO_TYPE, "          "));
}

TEST(OtherLiteral, IsTheValueExactlyAsItIs)
{
    expectLiteral(otherTypes, "  O'Brien  ", "  O'Brien  ");
    expectLiteral(otherTypes, "a\0b\n"s, "a\0b\n"s);
}

TEST(OtherLiteral, EmptyValueGivesEmptyTextAndNotNull)
{
    expectLiteral(otherTypes, "", "");
}

// General

TEST(ValueLiteral, LongValuesAreWhole)
{
    const std::string digits(100000, '7');
    expectLiteral(numberTypes, " " + digits + " ", digits);
    expectLiteral(otherTypes, digits, digits);
    expectLiteral(textTypes, digits + "  ", inSingleQuotes(digits));
    expectLiteral({DATE_TYPE, TIMESTAMP_TYPE}, digits, inSingleQuotes(digits));
    expectLiteral({TIME_TYPE}, digits, digits + "'");
}

TEST(ValueLiteral, LeavesTheField)
{
    TableField field("CITY", CHAR_TYPE, 0, 10, 0, false);
    field.Value = " O'Hara ";
    EXPECT_EQ("' O`Hara'", convertValue2Sql(field));
    EXPECT_EQ(" O'Hara ", field.Value);
}

TEST(ValueLiteral, LengthAndDecimalsDoNotMatter)
{
    TableField field("CITY", CHAR_TYPE, 7, 2, 1, true);
    field.Value = "Oslo";
    EXPECT_EQ("'Oslo'", convertValue2Sql(field));
}

TEST(SqlLiteral, DeliberatelyAQuoteInALongDateStays)
{
    EXPECT_EQ("'2024'03'05'", literal(DATE_TYPE, "2024'03'05"));
    EXPECT_EQ("11'12'13'", literal(kd_lib::TIME_TYPE, "11'12'13"));
    EXPECT_EQ("'2024'03'05'", literal(kd_lib::TIMESTAMP_TYPE, "2024'03'05"));
}
