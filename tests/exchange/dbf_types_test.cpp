// Each type of field of a .dbf file, at its limits.

#include "support/reading.h"
#include "support/xbase_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace kd_lib::exchange;
using kd_test::big;
using kd_test::little;
using kd_test::littleDouble;
using kd_test::Reading;
using kd_test::XbaseFile;
using Rows = std::vector<std::vector<std::string>>;

/// A table of one column and one record.
class DbfTypes : public testing::Test {
protected:
    Reading read(const XbaseFile& file, const SourceOptions& options = {})
    {
        return kd_test::readFileAs(kd_test::rewrite(Folder, "t.dbf", file.bytes()), options);
    }

    Reading readOne(int version, XbaseFile::Field field, const std::string& bytes, const SourceOptions& options = {})
    {
        field.Name = "V";
        return read(XbaseFile(version, {field}).record({bytes}), options);
    }

    std::string cell(int version, char letter, const std::string& bytes)
    {
        return readOne(version, {"", letter, static_cast<unsigned>(bytes.size())}, bytes).only();
    }

    kd_test::ScopedDirectory Folder;
};

struct Pair {
    std::string Bytes;
    std::string Cell;
};

TEST_F(DbfTypes, TextLosesPaddingAtItsEndOnly)
{
    const std::string zero(1, '\0');
    for (const auto& [bytes, expected] : std::vector<Pair>{{"a  ", "'a'"},
                                                           {"  a", "'  a'"},
                                                           {"   ", "''"},
                                                           {zero + zero, "''"},
                                                           {"a " + zero + " " + zero, "'a'"},
                                                           {"a" + zero + "b ", "'a" + zero + "b'"},
                                                           {"x", "'x'"},
                                                           {"a\x1A", "'a\x1A'"}}) {
        EXPECT_EQ(cell(3, 'C', bytes), expected);
    }
}

TEST_F(DbfTypes, TextOfEveryLengthIsTrimmedAtEveryPlace)
{
    for (unsigned length = 1; length <= 130; ++length) {
        XbaseFile file(3, {{"B", 'C', 3}, {"V", 'C', length}, {"A", 'C', 2}});
        Rows expected;
        for (unsigned text = 0; text <= length; ++text) {
            file.record({"xyz", std::string(text, 'q'), "uv"});
            expected.push_back({"'xyz'", "'" + std::string(text, 'q') + "'", "'uv'"});
        }
        ASSERT_EQ(read(file).Rows, expected) << length;
    }
}

TEST_F(DbfTypes, NumbersInNormalFormStayAsTheyAre)
{
    for (const std::string text : {"0", "7", "12", "-1", "0.5", "-0.5", "0.00", "10", "100.10", "-999999999999999999",
                                   "99999999999999999999", "0.00000000000000000001"}) {
        for (std::size_t width = text.size(); width < text.size() + 5; ++width) {
            const std::string left = std::string(width - text.size(), ' ') + text;
            EXPECT_EQ(cell(3, 'N', left), text);
            EXPECT_EQ(cell(3, 'F', text + std::string(width - text.size(), '\0')), text);
        }
    }
}

TEST_F(DbfTypes, NumbersAreBroughtToNormalForm)
{
    for (const auto& [bytes, expected] : std::vector<Pair>{{"+5.25", "5.25"},
                                                           {"0007", "7"},
                                                           {"000", "0"},
                                                           {"-0", "0"},
                                                           {"-0.00", "0.00"},
                                                           {".5", "0.5"},
                                                           {"-.5", "-0.5"},
                                                           {"5.", "5"},
                                                           {"00.10", "0.10"},
                                                           {"1.5E+03", "1500"},
                                                           {"1.5e-01", "0.15"},
                                                           {"-007.50", "-7.50"}}) {
        EXPECT_EQ(cell(3, 'N', bytes), expected) << bytes;
    }
}

TEST_F(DbfTypes, BlankNumbersAreNull)
{
    for (const std::size_t width : {1U, 8U, 16U, 17U, 20U, 32U, 33U, 40U}) {
        EXPECT_EQ(cell(3, 'N', std::string(width, ' ')), "null");
        EXPECT_EQ(cell(3, 'F', std::string(width, '\0')), "null");
    }
}

TEST_F(DbfTypes, TextThatIsNotANumberIsUnreadable)
{
    for (const std::string bytes : {"*****", "12,50", "1 2", "12.5-", "-", ".", "-.", "1.2.3", "NaN", "inf", "0x10",
                                    "1E", "--1", "1-1", "+", "\xFF"}) {
        const Reading reading = readOne(3, {"", 'N', static_cast<unsigned>(bytes.size())}, bytes);
        EXPECT_EQ(reading.only(), "unreadable") << bytes;
        EXPECT_EQ(reading.Flaws.size(), 1U) << bytes;
    }
    EXPECT_EQ(cell(3, 'N',
                   std::string("1\0"
                               "2",
                               3)),
              "unreadable");
}

TEST_F(DbfTypes, WideNumbersAreDigits)
{
    const std::string digits = "1234567890123456789012345678901234567890";
    EXPECT_EQ(cell(3, 'N', digits), digits);
    EXPECT_EQ(cell(3, 'N', std::string(60, ' ') + "-" + digits + ".5"), "-" + digits + ".5");
    EXPECT_EQ(cell(3, 'N', "  " + digits + "x"), "unreadable");
}

TEST_F(DbfTypes, LogicalLetters)
{
    for (int byte = 0; byte < 256; ++byte) {
        const std::string bytes(1, static_cast<char>(byte));
        const bool isTrue = bytes == "T" || bytes == "t" || bytes == "Y" || bytes == "y";
        const bool isFalse = bytes == "F" || bytes == "f" || bytes == "N" || bytes == "n";
        const bool isNull = byte == ' ' || byte == '?' || byte == 0;
        EXPECT_EQ(cell(3, 'L', bytes), isTrue ? "true" : isFalse ? "false" : isNull ? "null" : "unreadable") << byte;
    }
    EXPECT_EQ(cell(3, 'L', "T "), "true");
    EXPECT_EQ(cell(3, 'L', "TF"), "unreadable");
}

TEST_F(DbfTypes, Dates)
{
    for (const auto& [bytes, expected] : std::vector<Pair>{{"20240229", "2024-02-29"},
                                                           {"00010101", "0001-01-01"},
                                                           {"99991231", "9999-12-31"},
                                                           {"20000229", "2000-02-29"},
                                                           {"        ", "null"},
                                                           {"00000000", "null"},
                                                           {std::string(8, '\0'), "null"},
                                                           {"20230229", "unreadable"},
                                                           {"19000229", "unreadable"},
                                                           {"20241399", "unreadable"},
                                                           {"20240015", "unreadable"},
                                                           {"20240500", "unreadable"},
                                                           {"20240431", "unreadable"},
                                                           {"00000101", "unreadable"},
                                                           {"2024-1-1", "unreadable"},
                                                           {"202402  ", "unreadable"},
                                                           {"2024022/", "unreadable"},
                                                           {"2024022:", "unreadable"},
                                                           {"\xB2"
                                                            "0240229",
                                                            "unreadable"}}) {
        EXPECT_EQ(cell(3, 'D', bytes), expected) << bytes;
    }
}

TEST_F(DbfTypes, EveryDayOfTheCalendarAndNoOther)
{
    XbaseFile file(3, {{"V", 'D', 8}});
    std::vector<std::string> expected;
    for (const int year : {1, 1899, 1900, 1999, 2000, 2023, 2024, 9999}) {
        for (int month = 0; month <= 13; ++month) {
            for (int day = 0; day <= 32; ++day) {
                char bytes[16];
                std::snprintf(bytes, sizeof bytes, "%04d%02d%02d", year, month, day);
                file.record({bytes});
                const std::chrono::year_month_day date{std::chrono::year(year),
                                                       std::chrono::month(static_cast<unsigned>(month)),
                                                       std::chrono::day(static_cast<unsigned>(day))};
                const std::string text(bytes);
                expected.push_back(date.ok() ? text.substr(0, 4) + "-" + text.substr(4, 2) + "-" + text.substr(6)
                                             : "unreadable");
            }
        }
    }
    EXPECT_EQ(read(file).column(), expected);
}

TEST_F(DbfTypes, DatesOfOtherLengths)
{
    EXPECT_EQ(cell(3, 'D', "20240229   "), "2024-02-29");
    EXPECT_EQ(cell(3, 'D', "202402"), "unreadable");
    EXPECT_EQ(cell(3, 'D', "  "), "null");
    XbaseFile file(3, {{"D", 'D', 7}, {"N", 'N', 1}});
    EXPECT_EQ(read(file.record({"2024022", "9"})).Rows, (Rows{{"unreadable", "9"}})) << "no digit of the next field";
}

TEST_F(DbfTypes, IntegersOfVisualFoxPro)
{
    for (const std::int64_t value : {0LL, 1LL, -1LL, 538976288LL, 2147483647LL, -2147483648LL}) {
        EXPECT_EQ(cell(0x30, 'I', little(static_cast<std::uint64_t>(value), 4)), std::to_string(value));
    }
    EXPECT_EQ(cell(3, 'I', little(7, 4)), "7");
}

TEST_F(DbfTypes, DoublesOfVisualFoxPro)
{
    for (const double value : {0.1, -1.5, 1.7976931348623157e308, 5e-324, -2.2250738585072014e-308, 33.33}) {
        char text[64];
        std::snprintf(text, sizeof text, "float %.17g", value);
        EXPECT_EQ(cell(0x30, 'B', littleDouble(value)), text);
    }
    EXPECT_EQ(cell(0x30, 'B', littleDouble(-0.0)), "float -0");
    EXPECT_EQ(cell(0x30, 'B', littleDouble(std::numeric_limits<double>::infinity())), "float inf");
    EXPECT_EQ(cell(0x30, 'B', littleDouble(std::numeric_limits<double>::quiet_NaN())), "float nan");
    EXPECT_EQ(cell(0x30, 'B', std::string(8, '\0')), "float 0");
    EXPECT_EQ(cell(0x30, 'B', std::string(8, ' ')), "null") << "a blank record";
}

TEST_F(DbfTypes, CurrencyHasFourDecimals)
{
    const auto currency = [this](std::int64_t units) {
        return cell(0x30, 'Y', little(static_cast<std::uint64_t>(units), 8));
    };
    EXPECT_EQ(currency(180000), "18.0000");
    EXPECT_EQ(currency(-10000), "-1.0000");
    EXPECT_EQ(currency(0), "0.0000");
    EXPECT_EQ(currency(1), "0.0001");
    EXPECT_EQ(currency(-1), "-0.0001");
    EXPECT_EQ(currency(100), "0.0100");
    EXPECT_EQ(currency(std::numeric_limits<std::int64_t>::max()), "922337203685477.5807");
    EXPECT_EQ(currency(std::numeric_limits<std::int64_t>::min()), "-922337203685477.5808");
}

TEST_F(DbfTypes, TimestampsOfVisualFoxPro)
{
    const auto moment = [this](std::uint64_t day, std::uint64_t milliseconds) {
        return cell(0x30, 'T', little(day, 4) + little(milliseconds, 4));
    };
    EXPECT_EQ(moment(2449678, 48939000), "1994-11-21+48939000");
    EXPECT_EQ(moment(2460375, 47655678), "2024-03-05+47655678");
    EXPECT_EQ(moment(1721426, 0), "0001-01-01+0");
    EXPECT_EQ(moment(5373484, 86399999), "9999-12-31+86399999");
    EXPECT_EQ(moment(2299161, 1), "1582-10-15+1");
    EXPECT_EQ(moment(0, 0), "null");
    EXPECT_EQ(cell(0x30, 'T', std::string(8, ' ')), "null");
    EXPECT_EQ(moment(1721425, 0), "unreadable");
    EXPECT_EQ(moment(5373485, 0), "unreadable");
    EXPECT_EQ(moment(2460375, 86400000), "unreadable");
    EXPECT_EQ(moment(2460375, 0xFFFFFFFF), "unreadable");
    EXPECT_EQ(moment(0, 1), "unreadable");
    EXPECT_EQ(moment(0xFFFFFFFF, 0), "unreadable");
}

TEST_F(DbfTypes, NumbersOfDBase7)
{
    EXPECT_EQ(cell(4, 'I', "\x7F\xFF\xFF\xFF"), "-1");
    EXPECT_EQ(cell(4, 'I', big(0x80000001, 4)), "1");
    EXPECT_EQ(cell(4, 'I', "\xFF\xFF\xFF\xFF"), "2147483647");
    EXPECT_EQ(cell(4, 'I', big(1, 4)), "-2147483647");
    EXPECT_EQ(cell(4, 'I', std::string(4, '\0')), "null");
    EXPECT_EQ(cell(0x8C, '+', big(0x8000000A, 4)), "10");
    EXPECT_EQ(cell(4, '+', std::string(4, '\0')), "null");
    EXPECT_EQ(cell(4, 'O', big(0xBFF0000000000000, 8)), "float 1");
    EXPECT_EQ(cell(4, 'O', big(0x400FFFFFFFFFFFFF, 8)), "float -1");
    EXPECT_EQ(cell(4, 'O', big(0x3F970051EB851EB7, 8)), "float -199.99000000000001");
    EXPECT_EQ(cell(4, 'O', big(0x8000000000000000, 8)), "float 0");
    EXPECT_EQ(cell(4, 'O', big(0x7FFFFFFFFFFFFFFF, 8)), "float -0");
    EXPECT_EQ(cell(4, 'O', std::string(8, '\0')), "null");
    EXPECT_EQ(cell(0x30, 'O', big(0xBFF0000000000000, 8)), "float 1");
}

TEST_F(DbfTypes, TimestampsOfDBase7)
{
    const auto moment = [this](double milliseconds) {
        return cell(4, '@', big(std::bit_cast<std::uint64_t>(milliseconds), 8));
    };
    EXPECT_EQ(cell(4, '@', std::string("\x42\xCC\x41\x8B\xA9\x9A\0\0", 8)), "1970-01-01+0");
    EXPECT_EQ(cell(4, '@', std::string("\x42\xC9\xD1\x04\x5F\x8E\x64\0", 8)), "1800-01-01+3661000");
    EXPECT_EQ(moment(86400000), "0001-01-01+0");
    EXPECT_EQ(moment(86400000.0 * 3652059 + 86399999), "9999-12-31+86399999");
    EXPECT_EQ(moment(86400000 + 0.25), "0001-01-01+0");
    EXPECT_EQ(moment(0), "null");
    EXPECT_EQ(cell(4, '@', std::string(8, ' ')), "null");
    EXPECT_EQ(moment(86399999), "unreadable");
    EXPECT_EQ(moment(86400000.0 * 3652060), "unreadable");
    EXPECT_EQ(moment(-1), "unreadable");
    EXPECT_EQ(moment(1e300), "unreadable");
    EXPECT_EQ(moment(std::numeric_limits<double>::quiet_NaN()), "unreadable");
    EXPECT_EQ(moment(std::numeric_limits<double>::infinity()), "unreadable");
}

TEST_F(DbfTypes, TimestampsOfDBase7OutsideTheCalendarHaveTheReason)
{
    for (const double milliseconds : {-1.0, 1e300}) {
        const Reading reading = readOne(4, {"", '@', 8}, big(std::bit_cast<std::uint64_t>(milliseconds), 8));
        EXPECT_EQ(reading.Flaws.at(0), "1 V: a moment outside the years 1 to 9999");
    }
}

TEST_F(DbfTypes, BinaryFlagMakesBytesOfText)
{
    const std::string bytes("\xFF\0 a ", 5);
    EXPECT_EQ(readOne(0x30, {"", 'C', 5, 0, 4}, bytes).only(), "bytes FF 00 20 61 20");
    EXPECT_EQ(readOne(0x30, {"", 'C', 5, 0, 6}, bytes).only(), "bytes FF 00 20 61 20");
    EXPECT_EQ(readOne(3, {"", 'C', 3, 0, 4}, "ab ").only(), "'ab'") << "byte 18 has no meaning in dBase III";
}

TEST_F(DbfTypes, UnknownTypesAreBytesWithOneNote)
{
    const Reading reading = readOne(0x31, {"", '7', 3}, "a\xFF ");
    EXPECT_EQ(reading.only(), "bytes 61 FF 20");
    EXPECT_EQ(reading.Notes, (std::vector<std::string>{"column V: type 7 of 3 bytes is not known; carried as bytes"}));
    EXPECT_EQ(cell(3, 'V', "ab "), "bytes 61 62 20") << "V is Visual FoxPro's only";
    EXPECT_EQ(cell(3, 'Q', "ab "), "bytes 61 62 20");
    EXPECT_EQ(cell(0x30, 'I', "ab"), "bytes 61 62") << "an integer has four bytes";
    EXPECT_EQ(cell(0x30, 'Y', "1234567"), "bytes 31 32 33 34 35 36 37");
    EXPECT_EQ(cell(0x30, 'T', "123456789"), "bytes 31 32 33 34 35 36 37 38 39");
    EXPECT_EQ(cell(4, '@', "1234"), "bytes 31 32 33 34");
    EXPECT_EQ(cell(4, 'O', "1234"), "bytes 31 32 33 34");
}

TEST_F(DbfTypes, FieldsWithoutLength)
{
    XbaseFile file(0x30, {{"C", 'C', 0}, {"N", 'N', 0}, {"L", 'L', 0}, {"D", 'D', 0}, {"I", 'I', 0}, {"X", 'C', 1}});
    file.record({"", "", "", "", "", "x"});
    EXPECT_EQ(read(file).Rows, (Rows{{"''", "null", "null", "null", "bytes", "'x'"}}));
}

TEST_F(DbfTypes, VaryingFieldsAndNullFlags)
{
    XbaseFile file(0x32,
                   {{"V", 'V', 10, 0, 2}, {"I", 'I', 4, 0, 2}, {"Q", 'Q', 10, 0, 2}, {"_NullFlags", '0', 1, 0, 5}});
    file.record({"qwe" + std::string(6, '\0') + "\x03", little(1, 4), "\x01\x02       \x02", "\x09"});
    file.record({"", little(2, 4), "", "\x1B"});
    file.record({"0123456 89", little(3, 4), "0123456789", "\x04"});
    file.record({"blank  in\x09", little(3, 4), "x        " + std::string(1, '\0'), "\x09"});
    const Reading reading = read(file);
    EXPECT_EQ(reading.Names, (std::vector<std::string>{"V", "I", "Q"}));
    EXPECT_EQ(reading.Rows, (Rows{{"'qwe'", "1", "bytes 01 02"},
                                  {"null", "2", "null"},
                                  {"'0123456 89'", "null", "bytes 30 31 32 33 34 35 36 37 38 39"},
                                  {"'blank  in'", "3", "bytes"}}));
    EXPECT_EQ(reading.Flaws, std::vector<std::string>{});
}

TEST_F(DbfTypes, LengthOfVaryingFieldAboveTheField)
{
    XbaseFile file(0x32, {{"V", 'V', 5}, {"_NullFlags", '0', 1, 0, 5}});
    file.record({"abcd\x05", "\x01"}).record({"abcd\x04", "\x01"}).record({"abcd\xFF", "\x01"});
    const Reading reading = read(file);
    EXPECT_EQ(reading.column(), (std::vector<std::string>{"unreadable", "'abcd'", "unreadable"}));
    EXPECT_EQ(reading.Flaws.front(), "1 V: the value's length is greater than that of its field");
}

TEST_F(DbfTypes, NullFlagsOfManyFieldsInAnyPlace)
{
    std::vector<XbaseFile::Field> fields{{"_NullFlags", '0', 2, 0, 5}};
    std::vector<std::string> values{std::string("\x02\x01", 2)};
    std::vector<std::string> expected;
    for (int i = 0; i < 9; ++i) {
        fields.push_back({"N" + std::to_string(i), 'N', 2, 0, 2});
        values.push_back(std::to_string(i + 10));
        expected.push_back(i == 1 || i == 8 ? "null" : values.back());
    }
    EXPECT_EQ(read(XbaseFile(0x30, fields).record(values)).Rows, (Rows{expected}));
}

TEST_F(DbfTypes, NullFlagsTooShort)
{
    std::vector<XbaseFile::Field> fields;
    std::vector<std::string> values;
    for (int i = 0; i < 9; ++i) {
        fields.push_back({"N" + std::to_string(i), 'N', 1, 0, 2});
        values.push_back(std::to_string(i));
    }
    fields.push_back({"_NullFlags", '0', 1, 0, 5});
    values.push_back("\x81");
    const Reading reading = read(XbaseFile(0x30, fields).record(values));
    EXPECT_EQ(reading.Rows, (Rows{{"null", "1", "2", "3", "4", "5", "6", "null", "8"}}));
    EXPECT_EQ(reading.Notes, (std::vector<std::string>{
                                 "loss: the null flags have 1 byte, too few for 9 bits; some NULLs are not known"}));
}

TEST_F(DbfTypes, NullFlagsTooShortForVaryingFields)
{
    const auto notes = [this](unsigned count) {
        std::vector<XbaseFile::Field> fields;
        for (unsigned i = 0; i < count; ++i) {
            fields.push_back({"V" + std::to_string(i), 'V', 1});
        }
        fields.push_back({"_NullFlags", '0', 1, 0, 5});
        return read(XbaseFile(0x32, fields)).Notes;
    };
    EXPECT_EQ(notes(8), std::vector<std::string>{});
    EXPECT_EQ(notes(9), (std::vector<std::string>{
                            "loss: the null flags have 1 byte, too few for 9 bits; some NULLs are not known"}));
}

TEST_F(DbfTypes, VaryingWithoutNullFlagsFillsItsField)
{
    EXPECT_EQ(cell(0x30, 'V', "ab  c"), "'ab  c'");
    EXPECT_EQ(cell(0x32, 'Q', "a "), "bytes 61 20");
}

TEST_F(DbfTypes, WideText)
{
    XbaseFile file(3, {{"ID", 'N', 4}, {"T", 'C', 1040}, {"X", 'C', 300}, {"Y", 'C', 8, 2}});
    file.Fields[3].Decimals = 0;
    file.record({"   1", std::string(1039, 'a') + "b", std::string(300, 'c'), "12345678"});
    EXPECT_EQ(read(file).Rows,
              (Rows{{"1", "'" + std::string(1039, 'a') + "b'", "'" + std::string(300, 'c') + "'", "'12345678'"}}));
}

TEST_F(DbfTypes, DecimalsOfTextHaveNoMeaningIfTheRecordLengthShowsIt)
{
    XbaseFile narrow(3, {{"A", 'C', 8, 2}, {"B", 'C', 4, 7}});
    narrow.record({"abcdefgh", "wxyz"});
    EXPECT_EQ(read(narrow).Rows, (Rows{{"'abcdefgh'", "'wxyz'"}}));
    XbaseFile mixed(3, {{"A", 'C', 8, 2}, {"B", 'C', 300}, {"C", 'C', 3, 5}});
    mixed.record({"abcdefgh", std::string(300, 'b'), "xyz"});
    EXPECT_EQ(read(mixed).Rows, (Rows{{"'abcdefgh'", "'" + std::string(300, 'b') + "'", "'xyz'"}}));
}

TEST_F(DbfTypes, ColumnsHaveTheirTypes)
{
    XbaseFile file(0x30, {{"NAME", 'C', 20}, {"QTY", 'N', 8, 2}, {"SEEN", 'T', 8}, {"NOTE", 'M', 4}});
    const auto source = openSource(kd_test::rewrite(Folder, "t.dbf", file.bytes()));
    const std::vector<Column>& columns = source->columns();
    ASSERT_EQ(columns.size(), 4U);
    EXPECT_EQ(columns[0].Name, "NAME");
    EXPECT_EQ(columns[0].Type, ColumnType::Text);
    EXPECT_EQ(columns[0].Width, 20U);
    EXPECT_EQ(columns[0].Letter, 'C');
    EXPECT_EQ(columns[0].SourceLength, 20U);
    EXPECT_EQ(columns[1].Type, ColumnType::Number);
    EXPECT_EQ(columns[1].Width, 8U);
    EXPECT_EQ(columns[1].Decimals, 2U);
    EXPECT_EQ(columns[2].Type, ColumnType::Timestamp);
    EXPECT_EQ(columns[3].Type, ColumnType::Text);
    EXPECT_EQ(columns[3].Width, 0U) << "a memo is of any length";
    EXPECT_EQ(columns[3].SourceLength, 4U);
}

TEST_F(DbfTypes, TypesThatTheOptionsGive)
{
    const auto as = [this](char letter, const std::string& bytes, const char* type, int version = 3) {
        SourceOptions options;
        options.Types = {{"V", type}};
        const Reading reading = readOne(version, {"", letter, static_cast<unsigned>(bytes.size())}, bytes, options);
        return reading.only() + (reading.Flaws.empty() ? "" : " flawed");
    };
    EXPECT_EQ(as('N', " ** ", "text"), "'**'");
    EXPECT_EQ(as('N', " 007", "text"), "'007'");
    EXPECT_EQ(as('D', "20230229", "text"), "'20230229'");
    EXPECT_EQ(as('D', "        ", "text"), "''");
    EXPECT_EQ(as('D', "20240229", "timestamp"), "2024-02-29+0");
    EXPECT_EQ(as('L', "?", "text"), "'?'");
    EXPECT_EQ(as('C', " 12.0 ", "integer"), "12");
    EXPECT_EQ(as('C', " 12.5 ", "integer"), "unreadable flawed");
    EXPECT_EQ(as('C', "2024-02-29", "date"), "2024-02-29");
    EXPECT_EQ(as('C', "yes", "boolean"), "true");
    EXPECT_EQ(as('C', "   ", "number"), "null");
    EXPECT_EQ(as('N', "20240229", "date"), "2024-02-29");
    EXPECT_EQ(as('N', "1.5", "float"), "float 1.5");
    EXPECT_EQ(as('N', " 12 ", "bytes"), "bytes 20 31 32 20");
    EXPECT_EQ(as('I', little(5, 4), "text", 0x30), "'5'");
    EXPECT_EQ(as('I', little(5, 4), "bytes", 0x30), "bytes 05 00 00 00");
    EXPECT_EQ(as('T', little(2460375, 4) + little(0, 4), "date", 0x30), "2024-03-05");
    EXPECT_EQ(as('T', little(2460375, 4) + little(86400000, 4), "text", 0x30), "'D78A2500005C2605'");
    EXPECT_EQ(as('T', little(2460375, 4) + little(86400000, 4), "date", 0x30), "unreadable flawed");
    EXPECT_EQ(as('7', "ab ", "text"), "'ab'");
    EXPECT_EQ(as('7', " 12", "number"), "12");
    EXPECT_EQ(as('C', "ab ", "text"), "'ab'") << "its own type";
}

}  // namespace
