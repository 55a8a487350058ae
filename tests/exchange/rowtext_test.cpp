// The exact text of rows, for each type, value and form.
#include <kd_lib/exchange/rowtext.h>

#include "support/output_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

using namespace kd_lib::exchange;
using kd_test::columnOf;
using kd_test::recordOf;
using kd_test::TextBlock;

namespace {

using Limits = std::numeric_limits<double>;

std::string copyOf(const Cell& cell)
{
    TextBlock out;
    writeCopyRow(recordOf({cell}), out);
    return out.text();
}

std::string loadDataOf(const Cell& cell)
{
    TextBlock out;
    writeLoadDataRow(recordOf({cell}), out);
    return out.text();
}

std::string csvOf(const Cell& cell)
{
    TextBlock out;
    writeCsvRow(recordOf({cell}), out);
    return out.text();
}

std::string jsonOf(const Cell& cell)
{
    TextBlock out;
    JsonRow({"a"}).write(recordOf({cell}), out);
    return out.text();
}

std::string literalOf(Engine engine, const Cell& cell, const Column& column = columnOf("a", ColumnType::Text))
{
    TextBlock out;
    writeInsertRow(TableLayout(dialectOf(engine), "t.dbf", {column}, {}), recordOf({cell}), out);
    return out.text();
}

struct FormCase {
    Cell From;
    std::string Copy;
    std::string LoadData;
    std::string Csv;
    std::string Json;
    std::string Sqlite;
    std::string PostgreSql;
    std::string MySql;
};

std::string text(const char* bytes, std::size_t size)
{
    return {bytes, size};
}

const std::string zeroInside = text("a\0b", 3);
const std::string everyByte = text("\0\xFF'\\\n", 5);

std::vector<FormCase> formCases()
{
    return {
        {Cell::null(), "\\N", "\\N", "", "null", "NULL", "NULL", "NULL"},
        {Cell::text(""), "", "", "\"\"", "\"\"", "''", "''", "''"},
        {Cell::text("abc"), "abc", "abc", "abc", "\"abc\"", "'abc'", "'abc'", "'abc'"},
        {Cell::text("O'Brien"), "O'Brien", "O'Brien", "O'Brien", "\"O'Brien\"", "'O''Brien'", "'O''Brien'",
         "'O''Brien'"},
        {Cell::text("a\\b"), "a\\\\b", "a\\\\b", "a\\b", "\"a\\\\b\"", "'a\\b'", "'a\\b'", "'a\\\\b'"},
        {Cell::text("\\N"), "\\\\N", "\\\\N", "\\N", "\"\\\\N\"", "'\\N'", "'\\N'", "'\\\\N'"},
        {Cell::text("NULL"), "NULL", "NULL", "NULL", "\"NULL\"", "'NULL'", "'NULL'", "'NULL'"},
        {Cell::text("a\tb"), "a\\tb", "a\\tb", "a\tb", "\"a\\tb\"", "'a\tb'", "'a\tb'", "'a\tb'"},
        {Cell::text("a\nb"), "a\\nb", "a\\nb", "\"a\nb\"", "\"a\\nb\"", "'a\nb'", "'a\nb'", "'a\nb'"},
        {Cell::text("a\r\nb"), "a\\r\\nb", "a\\r\\nb", "\"a\r\nb\"", "\"a\\r\\nb\"",
         "replace('a\\r\nb','\\r',char(13))", "E'a\\r\nb'", "'a\\r\nb'"},
        {Cell::text("it's\r"), "it's\\r", "it's\\r", "\"it's\r\"", "\"it's\\r\"", "replace('it''s\\r','\\r',char(13))",
         "E'it''s\\r'", "'it''s\\r'"},
        {Cell::text(zeroInside), zeroInside, "a\\0b", zeroInside, "\"a\\u0000b\"", "replace('a\\0b','\\0',char(0))",
         "'" + zeroInside + "'", "'a\\0b'"},
        {Cell::text("a,b"), "a,b", "a,b", "\"a,b\"", "\"a,b\"", "'a,b'", "'a,b'", "'a,b'"},
        {Cell::text("a\"b"), "a\"b", "a\"b", "\"a\"\"b\"", "\"a\\\"b\"", "'a\"b'", "'a\"b'", "'a\"b'"},
        {Cell::text("=1+1"), "=1+1", "=1+1", "=1+1", "\"=1+1\"", "'=1+1'", "'=1+1'", "'=1+1'"},
        {Cell::text(" a "), " a ", " a ", " a ", "\" a \"", "' a '", "' a '", "' a '"},
        {Cell::text("\x01\x1F\x7F"), "\x01\x1F\x7F", "\x01\x1F\x7F", "\x01\x1F\x7F", "\"\\u0001\\u001f\x7F\"",
         "'\x01\x1F\x7F'", "'\x01\x1F\x7F'", "'\x01\x1F\x7F'"},
        {Cell::text("\xC3\xA4\xF0\x9F\x98\x80"), "\xC3\xA4\xF0\x9F\x98\x80", "\xC3\xA4\xF0\x9F\x98\x80",
         "\xC3\xA4\xF0\x9F\x98\x80", "\"\xC3\xA4\xF0\x9F\x98\x80\"", "'\xC3\xA4\xF0\x9F\x98\x80'",
         "'\xC3\xA4\xF0\x9F\x98\x80'", "'\xC3\xA4\xF0\x9F\x98\x80'"},
        {Cell::number("-12.50"), "-12.50", "-12.50", "-12.50", "-12.50", "-12.50", "-12.50", "-12.50"},
        {Cell::real(0.1), "0.1", "0.1", "0.1", "0.1", "0.1", "'0.1'", "0.1e0"},
        {Cell::real(-5), "-5", "-5", "-5", "-5", "-5.0", "'-5'", "-5e0"},
        {Cell::real(-0.0), "-0", "-0", "-0", "-0", "-0.0", "'-0'", "-0e0"},
        {Cell::real(1e300), "1e+300", "1e+300", "1e+300", "1e+300", "1e+300", "'1e+300'", "1e+300"},
        {Cell::real(Limits::max()), "1.7976931348623157e+308", "1.7976931348623157e+308", "1.7976931348623157e+308",
         "1.7976931348623157e+308", "1.7976931348623157e+308", "'1.7976931348623157e+308'", "1.7976931348623157e+308"},
        {Cell::real(Limits::denorm_min()), "5e-324", "5e-324", "5e-324", "5e-324", "5e-324", "'5e-324'", "5e-324"},
        {Cell::boolean(true), "t", "1", "true", "true", "1", "true", "1"},
        {Cell::boolean(false), "f", "0", "false", "false", "0", "false", "0"},
        {Cell::date({2024, 2, 29}), "2024-02-29", "2024-02-29", "2024-02-29", "\"2024-02-29\"", "'2024-02-29'",
         "'2024-02-29'", "'2024-02-29'"},
        {Cell::date({1, 1, 1}), "0001-01-01", "0001-01-01", "0001-01-01", "\"0001-01-01\"", "'0001-01-01'",
         "'0001-01-01'", "'0001-01-01'"},
        {Cell::time(86399999), "23:59:59.999", "23:59:59.999", "23:59:59.999", "\"23:59:59.999\"", "'23:59:59.999'",
         "'23:59:59.999'", "'23:59:59.999'"},
        {Cell::timestamp({{9999, 12, 31}, 47655006}), "9999-12-31 13:14:15.006", "9999-12-31 13:14:15.006",
         "9999-12-31T13:14:15.006", "\"9999-12-31T13:14:15.006\"", "'9999-12-31 13:14:15.006'",
         "'9999-12-31 13:14:15.006'", "'9999-12-31 13:14:15.006'"},
        {Cell::bytes(""), "\\\\x", "", "\"\"", "\"\"", "x''", "'\\x'", "x''"},
        {Cell::bytes(everyByte), "\\\\x00ff275c0a", "\\0\xFF'\\\\\\n", "AP8nXAo=", "\"AP8nXAo=\"", "x'00ff275c0a'",
         "'\\x00ff275c0a'", "x'00ff275c0a'"},
        {Cell::bytes("abc"), "\\\\x616263", "abc", "YWJj", "\"YWJj\"", "x'616263'", "'\\x616263'", "x'616263'"},
        {Cell::bytes("abcd"), "\\\\x61626364", "abcd", "YWJjZA==", "\"YWJjZA==\"", "x'61626364'", "'\\x61626364'",
         "x'61626364'"},
    };
}

TEST(RowText, IsExactInEveryForm)
{
    for (const FormCase& row : formCases()) {
        SCOPED_TRACE(row.Copy);
        EXPECT_EQ(copyOf(row.From), row.Copy + "\n");
        EXPECT_EQ(loadDataOf(row.From), row.LoadData + "\n");
        EXPECT_EQ(csvOf(row.From), row.Csv + "\n");
        EXPECT_EQ(jsonOf(row.From), "{\"a\":" + row.Json + "}\n");
        EXPECT_EQ(literalOf(Engine::Sqlite, row.From), "(" + row.Sqlite + ")");
        EXPECT_EQ(literalOf(Engine::PostgreSql, row.From), "(" + row.PostgreSql + ")");
        EXPECT_EQ(literalOf(Engine::MySql, row.From), "(" + row.MySql + ")");
    }
}

TEST(RowText, FloatsWithoutDigitsHaveWords)
{
    EXPECT_EQ(copyOf(Cell::real(Limits::quiet_NaN())), "NaN\n");
    EXPECT_EQ(copyOf(Cell::real(Limits::infinity())), "Infinity\n");
    EXPECT_EQ(copyOf(Cell::real(-Limits::infinity())), "-Infinity\n");
    EXPECT_EQ(literalOf(Engine::PostgreSql, Cell::real(Limits::quiet_NaN())), "('NaN')");
    EXPECT_EQ(literalOf(Engine::PostgreSql, Cell::real(-Limits::infinity())), "('-Infinity')");
    EXPECT_EQ(literalOf(Engine::Sqlite, Cell::real(Limits::infinity())), "(9e999)");
    EXPECT_EQ(literalOf(Engine::Sqlite, Cell::real(-Limits::infinity())), "(-9e999)");
}

TEST(RowText, BytesEndWithinALongerText)
{
    const std::string_view whole = "abcdef";
    EXPECT_EQ(csvOf(Cell::bytes(whole.substr(0, 1))), "YQ==\n");
    EXPECT_EQ(csvOf(Cell::bytes(whole.substr(0, 2))), "YWI=\n");
    EXPECT_EQ(jsonOf(Cell::bytes(whole.substr(0, 3))), "{\"a\":\"YWJj\"}\n");
    EXPECT_EQ(jsonOf(Cell::bytes(whole.substr(0, 4))), "{\"a\":\"YWJjZA==\"}\n");
    EXPECT_EQ(copyOf(Cell::bytes(whole.substr(0, 2))), "\\\\x6162\n");
}

TEST(RowText, CellsHaveSeparators)
{
    const Record record = recordOf({Cell::text("a"), Cell::null(), Cell::number("1")});
    TextBlock copy;
    writeCopyRow(record, copy);
    EXPECT_EQ(copy.text(), "a\t\\N\t1\n");
    TextBlock csv;
    writeCsvRow(record, csv);
    EXPECT_EQ(csv.text(), "a,,1\n");
    TextBlock json;
    JsonRow({"x", "y\"", "z"}).write(record, json);
    EXPECT_EQ(json.text(), "{\"x\":\"a\",\"y\\\"\":null,\"z\":1}\n");
}

TEST(RowText, SqliteKeepsLongDigitsAsText)
{
    const Column wide = columnOf("a", ColumnType::Number, 20, 4);
    EXPECT_EQ(literalOf(Engine::Sqlite, Cell::number("123456789012345.6789"), wide), "('123456789012345.6789')");
    EXPECT_EQ(literalOf(Engine::Sqlite, Cell::number("12345.6789"), wide), "(12345.6789)");
    EXPECT_EQ(literalOf(Engine::Sqlite, Cell::number("9223372036854775807"), wide), "(9223372036854775807)");
    EXPECT_EQ(literalOf(Engine::Sqlite, Cell::number("9223372036854775808"), wide), "('9223372036854775808')");
    const Column narrow = columnOf("a", ColumnType::Number, 10, 2);
    EXPECT_EQ(literalOf(Engine::Sqlite, Cell::number("100000000000000000000"), narrow), "(100000000000000000000)");
}

TEST(RowText, SqliteFindsAWordThatTheTextDoesNotHold)
{
    EXPECT_EQ(literalOf(Engine::Sqlite, Cell::text("\\r\r")), "(replace('\\r\\r10','\\r10',char(13)))");
    EXPECT_EQ(literalOf(Engine::Sqlite, Cell::text("\\r10\\r\r")), "(replace('\\r10\\r\\r11','\\r11',char(13)))");
    const std::string both("\\0\r\0", 4);
    EXPECT_EQ(literalOf(Engine::Sqlite, Cell::text(both)),
              "(replace(replace('\\0\\r\\010','\\010',char(0)),'\\r',char(13)))");
}

TEST(RowText, PostgreSqlWritesReturnsOfLongTextsAsEscapes)
{
    const std::string text(5000, 'x');
    EXPECT_EQ(literalOf(Engine::PostgreSql, Cell::text(text)), "('" + text + "')");
    EXPECT_EQ(literalOf(Engine::PostgreSql, Cell::text(text + '\r')), "(E'" + text + "\\r')");
    const std::string other(5000, 'a');
    EXPECT_EQ(literalOf(Engine::PostgreSql, Cell::text(other + '\r')), "(E'" + other + "\\r')");
}

/// Special bytes at every place of texts, with all sizes around those of the words and vectors that are copied at once.
TEST(RowText, FindsSpecialBytesWhereverTheyAre)
{
    for (std::size_t size = 1; size <= 70; ++size) {
        for (std::size_t at = 0; at < size; ++at) {
            std::string from;
            for (std::size_t i = 0; i < size; ++i) {
                from += static_cast<char>('A' + i % 23);
            }
            from[at] = '"';
            std::string doubled = from;
            doubled.insert(at, 1, '"');
            ASSERT_EQ(csvOf(Cell::text(from)), '"' + doubled + "\"\n");
            from[at] = '\t';
            std::string escaped = from;
            escaped.replace(at, 1, "\\t");
            ASSERT_EQ(copyOf(Cell::text(from)), escaped + '\n');
        }
    }
}

/// A plain record gets the same text by another path.
TEST(RowText, PlainRecordsAreWrittenInTheSameForm)
{
    const std::string specials = "a\"',\\b";
    const TableLayout sqlite(dialectOf(Engine::Sqlite), "t.dbf", {columnOf("a", ColumnType::Text)}, {});
    const TableLayout postgreSql(dialectOf(Engine::PostgreSql), "t.dbf", {columnOf("a", ColumnType::Text)}, {});
    const TableLayout mySql(dialectOf(Engine::MySql), "t.dbf", {columnOf("a", ColumnType::Text)}, {});
    const auto textOf = [&](const Record& record) {
        TextBlock out;
        writeCopyRow(record, out);
        writeLoadDataRow(record, out);
        writeCsvRow(record, out);
        JsonRow({"a", "b"}).write(record, out);
        for (const TableLayout* layout : {&postgreSql, &mySql}) {
            writeInsertRow(*layout, record, out);
        }
        return out.text();
    };
    for (std::size_t size = 0; size <= 40; ++size) {
        // Characters after the end of the text do not belong to it.
        std::string room(80, '"');
        for (std::size_t at = 0; at <= size; ++at) {
            for (const char special : specials) {
                std::fill_n(room.begin(), size, 'x');
                room[at] = special;
                Record record = recordOf({Cell::text(std::string_view(room).substr(0, size)), Cell::number("12.5")});
                std::string number("-120.5          ................", 32);
                record.Cells[1].Text = std::string_view(number).substr(0, 6);
                const std::string expected = textOf(record);
                record.Plain = true;
                ASSERT_EQ(textOf(record), expected) << size << ' ' << at << ' ' << special;
                record.Cells.pop_back();
                TextBlock out;
                writeInsertRow(sqlite, record, out);
                ASSERT_EQ(out.text(), literalOf(Engine::Sqlite, record.Cells[0]));
            }
        }
    }
}

TEST(RowText, TextsOfOneEscapedCharacterAlone)
{
    for (const auto& [c, letter] : {std::pair{'\n', 'n'}, {'\r', 'r'}, {'\t', 't'}, {'\\', '\\'}}) {
        std::string escaped;
        for (std::size_t size = 1; size <= 40; ++size) {
            escaped += {'\\', letter};
            ASSERT_EQ(copyOf(Cell::text(std::string(size, c))), escaped + '\n') << size << letter;
        }
    }
}

TEST(RowText, LongTextsAreWrittenInPieces)
{
    std::string from;
    std::string copied;
    for (int i = 0; i < 20000; ++i) {
        from += "a\nbc";
        copied += "a\\nbc";
    }
    EXPECT_EQ(copyOf(Cell::text(from)), copied + '\n');
    const std::string plain(100000, 'x');
    EXPECT_EQ(copyOf(Cell::text(plain)), plain + '\n');
    EXPECT_EQ(literalOf(Engine::MySql, Cell::bytes(std::string(50000, 'a'))).size(), 5U + 100000U);
    EXPECT_EQ(csvOf(Cell::bytes(std::string(50000, 'a'))).size(), 66668U + 1U);
}

}  // namespace
