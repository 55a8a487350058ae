// Names, types and checks of tables in SQLite, PostgreSQL and MySQL.
#include <kd_lib/exchange/tablelayout.h>

#include "support/output_text.h"
#include "support/repeated.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

using namespace kd_lib::exchange;
using kd_test::columnOf;
using kd_test::repeated;

namespace {

const Dialect& sqlite = dialectOf(Engine::Sqlite);
const Dialect& postgreSql = dialectOf(Engine::PostgreSql);
const Dialect& mySql = dialectOf(Engine::MySql);

std::vector<Column> named(const std::vector<std::string>& names)
{
    std::vector<Column> columns;
    for (const std::string& name : names) {
        columns.push_back(columnOf(name));
    }
    return columns;
}

std::vector<std::string> namesIn(const TableLayout& layout)
{
    std::vector<std::string> names;
    for (const TargetColumn& target : layout.columns()) {
        names.push_back(target.Name);
    }
    return names;
}

std::vector<std::string> namesIn(const Dialect& dialect, const std::vector<std::string>& names,
                                 const TableOptions& options = {})
{
    return namesIn(TableLayout(dialect, "a.dbf", named(names), options));
}

std::string tableOf(const Dialect& dialect, const std::string& file, const std::string& table = {},
                    NameCase names = NameCase::Lower)
{
    return TableLayout(dialect, file, named({"a"}), {table, TableMode::Create, {}, names}).table();
}

std::vector<std::string> textsOf(const std::vector<Note>& notes)
{
    std::vector<std::string> texts;
    for (const Note& note : notes) {
        EXPECT_FALSE(note.Loss);
        texts.push_back(note.Text);
    }
    return texts;
}

using Texts = std::vector<std::string>;

struct TypeCase {
    Column From;
    const char* Sqlite;
    const char* PostgreSql;
    const char* MySql;
};

const std::vector<TypeCase> typeCases = {
    {columnOf("", ColumnType::Text, 20), "text", "varchar(20)", "varchar(20)"},
    {columnOf("", ColumnType::Text, 16383), "text", "varchar(16383)", "varchar(16383)"},
    {columnOf("", ColumnType::Text, 16384), "text", "varchar(16384)", "longtext"},
    {columnOf("", ColumnType::Text, 10485760), "text", "varchar(10485760)", "longtext"},
    {columnOf("", ColumnType::Text, 10485761), "text", "text", "longtext"},
    {columnOf("", ColumnType::Text), "text", "text", "longtext"},
    {columnOf("", ColumnType::Number, 1), "integer", "integer", "int"},
    {columnOf("", ColumnType::Number, 9), "integer", "integer", "int"},
    {columnOf("", ColumnType::Number, 10), "integer", "bigint", "bigint"},
    {columnOf("", ColumnType::Number, 18), "integer", "bigint", "bigint"},
    {columnOf("", ColumnType::Number, 19), "", "numeric", "decimal(19)"},
    {columnOf("", ColumnType::Number, 80), "", "numeric", "decimal(65)"},
    {columnOf("", ColumnType::Number, 3, 1), "numeric", "numeric", "decimal(5,2)"},
    {columnOf("", ColumnType::Number, 15, 2), "numeric", "numeric", "decimal(29,14)"},
    {columnOf("", ColumnType::Number, 16, 2), "", "numeric", "decimal(31,15)"},
    {columnOf("", ColumnType::Number, 20, 4), "", "numeric", "decimal(39,19)"},
    {columnOf("", ColumnType::Number, 31, 4), "", "numeric", "decimal(61,30)"},
    {columnOf("", ColumnType::Number, 40, 4), "", "numeric", "decimal(65,30)"},
    {columnOf("", ColumnType::Number), "", "numeric", "decimal(65,30)"},
    {columnOf("", ColumnType::Integer), "integer", "integer", "int"},
    {columnOf("", ColumnType::BigInteger), "integer", "bigint", "bigint"},
    {columnOf("", ColumnType::Currency), "", "numeric(19,4)", "decimal(19,4)"},
    {columnOf("", ColumnType::Float), "real", "double precision", "double"},
    {columnOf("", ColumnType::Boolean), "boolean", "boolean", "boolean"},
    {columnOf("", ColumnType::Date), "date", "date", "date"},
    {columnOf("", ColumnType::Time), "text", "time(3)", "time(3)"},
    {columnOf("", ColumnType::Timestamp), "timestamp", "timestamp(3)", "datetime(3)"},
    {columnOf("", ColumnType::Bytes), "blob", "bytea", "longblob"},
};

std::string typeOf(const Dialect& dialect, const Column& from)
{
    return TableLayout(dialect, "a.dbf", {from}, {}).columns().front().Type;
}

TEST(TableLayoutTypes, AreThoseOfTheDialect)
{
    for (const TypeCase& row : typeCases) {
        SCOPED_TRACE(typeName(row.From.Type) + ' ' + std::to_string(row.From.Width));
        EXPECT_EQ(typeOf(sqlite, row.From), row.Sqlite);
        EXPECT_EQ(typeOf(postgreSql, row.From), row.PostgreSql);
        EXPECT_EQ(typeOf(mySql, row.From), row.MySql);
    }
}

TEST(TableLayoutTypes, MySqlGetsLongTextIfTheRowWouldBeTooLong)
{
    const TableLayout layout(mySql, "a.dbf",
                             {columnOf("a", ColumnType::Text, 100), columnOf("b", ColumnType::Text, 16000),
                              columnOf("c", ColumnType::Text, 400)},
                             {});
    EXPECT_EQ(layout.columns()[0].Type, "varchar(100)");
    EXPECT_EQ(layout.columns()[1].Type, "longtext") << "4 x 16500 bytes are more than 65535; the longest goes";
    EXPECT_EQ(layout.columns()[2].Type, "varchar(400)");
}

TEST(TableLayoutTypes, MySqlMayFillTheRowToItsLastByte)
{
    const auto typeAmong = [](std::uint32_t width, std::vector<Column> others) {
        others.insert(others.begin(), columnOf("a", ColumnType::Text, width));
        return TableLayout(mySql, "a.dbf", others, {}).columns()[0].Type;
    };
    const Column longText = columnOf("b");
    const Column number = columnOf("c", ColumnType::Float);
    const Column flag = columnOf("d", ColumnType::Boolean);
    // 1 byte of bits, 4 x 16380 + 2 of the varchar and 12 of the pointer are 65535.
    EXPECT_EQ(typeAmong(16380, {longText}), "varchar(16380)");
    EXPECT_EQ(typeAmong(16380, {longText, flag}), "longtext");
    // 1 byte of bits, 4 x 16381 + 2 of the varchar and 8 of the number are 65535.
    EXPECT_EQ(typeAmong(16381, {number}), "varchar(16381)");
    EXPECT_EQ(typeAmong(16381, {number, flag}), "longtext");
}

TEST(TableLayoutTypes, MySqlGetsLongTextIfThePageWouldBeTooShort)
{
    const std::vector<Column> columns(33, columnOf("a", ColumnType::Text, 63));
    const TableLayout layout(mySql, "a.dbf", columns, {});
    EXPECT_EQ(layout.columns()[0].Type, "longtext");
    EXPECT_EQ(layout.columns()[1].Type, "longtext");
    EXPECT_EQ(layout.columns()[2].Type, "varchar(63)");
    const std::vector<Column> fewer(32, columnOf("a", ColumnType::Text, 63));
    EXPECT_EQ(TableLayout(mySql, "a.dbf", fewer, {}).columns()[0].Type, "varchar(63)");
}

TEST(TableLayoutTypes, MySqlMayFillThePageToItsLastByte)
{
    // 24 bytes of the row, 5 of its bits, 32 x 253 of texts and 1 of a boolean are 8126.
    std::vector<Column> columns(32, columnOf("a", ColumnType::Text, 63));
    columns.push_back(columnOf("b", ColumnType::Boolean));
    EXPECT_EQ(TableLayout(mySql, "a.dbf", columns, {}).columns()[0].Type, "varchar(63)");
    columns.push_back(columnOf("c", ColumnType::Boolean));
    EXPECT_EQ(TableLayout(mySql, "a.dbf", columns, {}).columns()[0].Type, "longtext");
}

TEST(TableLayoutTypes, MySqlIsSetToBeLenientWithManyColumns)
{
    const auto lenient = [](std::size_t count, const Column& of) {
        const TableLayout layout(mySql, "a.dbf", std::vector<Column>(count, of), {});
        return layout.session().back() == "SET SESSION innodb_strict_mode = 0";
    };
    EXPECT_FALSE(lenient(382, columnOf("a", ColumnType::Text, 10)));
    EXPECT_TRUE(lenient(383, columnOf("a", ColumnType::Text, 10)));
    EXPECT_TRUE(lenient(300, columnOf("a", ColumnType::Number)));
}

TEST(TableLayoutNames, AreLowerCaseOfUnicode)
{
    EXPECT_EQ(namesIn(postgreSql, {"NAME", "\xC3\x84RGER", "\xD0\x98\xD0\x9C\xD0\xAF"}),
              (Texts{"name", "\xC3\xA4rger", "\xD0\xB8\xD0\xBC\xD1\x8F"}));
    EXPECT_EQ(namesIn(postgreSql, {"NAME"}, {{}, TableMode::Create, {}, NameCase::Keep}), Texts{"NAME"});
}

TEST(TableLayoutNames, ThatAreRepeatedAreNumbered)
{
    EXPECT_EQ(namesIn(sqlite, {"A", "a", "B", "A"}), (Texts{"a", "a_2", "b", "a_3"}));
    EXPECT_EQ(namesIn(sqlite, {"a", "A", "a_2"}), (Texts{"a", "a_3", "a_2"})) << "a name that is unique stays";
    EXPECT_EQ(namesIn(sqlite, {"A", "a"}, {{}, TableMode::Create, {}, NameCase::Keep}), (Texts{"A", "a_2"}));
    EXPECT_EQ(namesIn(mySql, {"\xC3\x84", "\xC3\xA4"}, {{}, TableMode::Create, {}, NameCase::Keep}),
              (Texts{"\xC3\x84", "\xC3\xA4_2"}));
}

TEST(TableLayoutNames, ThatAreEmptyGetTheNumberOfTheirColumn)
{
    EXPECT_EQ(namesIn(sqlite, {"", "a", ""}), (Texts{"column_1", "a", "column_3"}));
    EXPECT_EQ(namesIn(sqlite, {"column_2", ""}), (Texts{"column_2", "column_2_2"}));
}

TEST(TableLayoutNames, AreCutBetweenCharacters)
{
    EXPECT_EQ(namesIn(postgreSql, {repeated("x", 63)}), Texts{repeated("x", 63)});
    EXPECT_EQ(namesIn(postgreSql, {repeated("x", 64)}), Texts{repeated("x", 63)});
    EXPECT_EQ(namesIn(postgreSql, {repeated("\xC3\xA4", 32)}), Texts{repeated("\xC3\xA4", 31)});
    EXPECT_EQ(namesIn(mySql, {repeated("\xC3\xA4", 65)}), Texts{repeated("\xC3\xA4", 64)});
    EXPECT_EQ(namesIn(sqlite, {repeated("x", 300)}), Texts{repeated("x", 300)});
}

/// A character of two or three bytes.
std::string utf8Of(unsigned character)
{
    const auto rest = [](unsigned bits) { return static_cast<char>(0x80U | (bits & 0x3FU)); };
    if (character < 0x800U) {
        return {static_cast<char>(0xC0U | character >> 6U), rest(character)};
    }
    return {static_cast<char>(0xE0U | character >> 12U), rest(character >> 6U), rest(character)};
}

// MySQL names a table's file with three bytes for the letters of these ranges, and with five for others: 64 characters
// or 50 in the 251 bytes that a name may have.
TEST(TableLayoutNames, OfMySqlTablesAreCutByTheBytesOfTheirFiles)
{
    const std::pair<unsigned, unsigned> ranges[] = {{0xC0, 0xD6},   {0xD8, 0xF6},   {0xF8, 0x12F},    {0x131, 0x1BE},
                                                    {0x38E, 0x3A1}, {0x3A3, 0x3CE}, {0x3FB, 0x481},   {0x48A, 0x4CE},
                                                    {0x531, 0x555}, {0x561, 0x585}, {0x1E00, 0x1E9B}, {0x1EA0, 0x1EF9}};
    const auto kept = [](unsigned character) {
        const std::string one = utf8Of(character);
        return mySql.cutTableName(repeated(one, 64)).size() / one.size();
    };
    for (const auto& [first, last] : ranges) {
        EXPECT_EQ(kept(first), 64U) << first;
        EXPECT_EQ(kept(last), 64U) << last;
        EXPECT_EQ(kept(first - 1), 50U) << first - 1;
        EXPECT_EQ(kept(last + 1), 50U) << last + 1;
    }
}

TEST(TableLayoutNames, AreCutWithRoomForASuffix)
{
    const std::string longName(300, 'n');
    EXPECT_EQ(62U, dialectOf(Engine::MySql).cutName(longName, 2).size());
    EXPECT_EQ(61U, dialectOf(Engine::PostgreSql).cutName(longName, 2).size());
    EXPECT_EQ(300U, dialectOf(Engine::Sqlite).cutName(longName, 2).size());
}

TEST(TableLayoutNames, StayUniqueWhenTheyAreCut)
{
    const std::string longName = repeated("x", 70);
    EXPECT_EQ(namesIn(postgreSql, {longName + "a", longName + "b"}),
              (Texts{repeated("x", 63), repeated("x", 61) + "_2"}));
}

TEST(TableLayoutNames, ThatTheDatabaseRefusesChangeLittle)
{
    EXPECT_EQ(namesIn(postgreSql, {"CTID", "xmin", "oid"}), (Texts{"_ctid", "_xmin", "oid"}));
    EXPECT_EQ(namesIn(sqlite, {"ctid", "rowid"}), (Texts{"ctid", "rowid"}));
    EXPECT_EQ(namesIn(mySql, {"a  ", "b\xF0\x9F\x98\x80", "DB_ROW_ID", "  ", "c\n\t", "FTS_DOC_ID"}),
              (Texts{"a", "b_", "_db_row_id", "column_4", "c", "_fts_doc_id"}));
    EXPECT_EQ(namesIn(postgreSql, {"a  ", "b\xF0\x9F\x98\x80"}), (Texts{"a  ", "b\xF0\x9F\x98\x80"}));
    EXPECT_EQ(namesIn(postgreSql, {std::string("a\0b", 3)}), Texts{"a_b"});
    EXPECT_EQ(namesIn(sqlite, {"a\r\nb"}), Texts{"a\nb"});
    EXPECT_EQ(namesIn(postgreSql, {"a\r\nb"}), Texts{"a\r\nb"});
}

TEST(TableLayoutNames, ChangesAreNotes)
{
    const TableLayout layout(mySql, "a.dbf", named({"A", "a", "", "b ", repeated("x", 65)}), {});
    EXPECT_EQ(textsOf(layout.notes()),
              (Texts{"column b  becomes b: the database does not accept such a name",
                     "column " + repeated("x", 65) + " becomes " + repeated("x", 64) + ": the name is too long",
                     "column a becomes a_2: the name comes twice", "column 3 has no name; it becomes column_3"}));
}

TEST(TableLayoutTable, IsNamedAfterTheFile)
{
    EXPECT_EQ(tableOf(sqlite, "People.DBF"), "people");
    EXPECT_EQ(tableOf(sqlite, "/old/a.b.dbf"), "a.b");
    EXPECT_EQ(tableOf(sqlite, "people"), "people");
    EXPECT_EQ(tableOf(sqlite, "old.d/.dbf"), ".dbf");
    EXPECT_EQ(tableOf(sqlite, "-"), "stdin");
    EXPECT_EQ(tableOf(mySql, "a/ .dbf"), "table_1") << "nothing is left of the name";
    EXPECT_EQ(tableOf(sqlite, "People.DBF", {}, NameCase::Keep), "People");
    EXPECT_EQ(tableOf(sqlite, "People.DBF", "Taken.As Written"), "Taken.As Written");
}

TEST(TableLayoutTable, DoesNotTakeTheNameOfASystemTable)
{
    EXPECT_EQ(tableOf(sqlite, "SQLITE_x.dbf"), "_sqlite_x");
    EXPECT_EQ(tableOf(sqlite, "a.dbf", "Sqlite_x"), "_Sqlite_x");
    EXPECT_EQ(tableOf(postgreSql, "pg_class.dbf"), "_pg_class");
    EXPECT_EQ(tableOf(postgreSql, "a.dbf", "pg_mine"), "pg_mine");
    EXPECT_EQ(tableOf(postgreSql, repeated("x", 64)), repeated("x", 63));
    EXPECT_EQ(tableOf(mySql, "a.dbf", "b "), "b");
}

TEST(TableLayoutTable, OfMySqlIsAFileToo)
{
    const auto ideographs = [](std::size_t count) { return repeated("\xE4\xB8\xAD", count); };
    EXPECT_EQ(tableOf(mySql, "a.dbf", ideographs(50)), ideographs(50)) << "5 bytes each, of 251";
    EXPECT_EQ(tableOf(mySql, "a.dbf", ideographs(51)), ideographs(50));
    EXPECT_EQ(tableOf(mySql, "a.dbf", repeated("\xC3\xA4", 64)), repeated("\xC3\xA4", 64)) << "3 bytes each";
    EXPECT_EQ(mySql.nameWithSuffix(ideographs(50), "_kd_new"), ideographs(48) + "_kd_new");
    EXPECT_EQ(postgreSql.nameWithSuffix(repeated("x", 63), "_kd_new"), repeated("x", 56) + "_kd_new");
    EXPECT_EQ(namesIn(mySql, {ideographs(64)}), Texts{ideographs(64)}) << "columns are in no file name";
}

TEST(TableLayoutTable, HasAsManyColumnsAsTheDatabaseAccepts)
{
    const auto fails = [](const Dialect& dialect, std::size_t count, const TableOptions& options = {}) {
        try {
            const TableLayout layout(dialect, "a.csv", std::vector<Column>(count, columnOf("a")), options);
            return std::string();
        } catch (const Error& error) {
            return std::string(error.what());
        }
    };
    EXPECT_EQ(fails(postgreSql, 1600), "");
    EXPECT_EQ(fails(postgreSql, 1601), "a.csv: 1601 columns; a table of postgresql has at most 1600");
    EXPECT_EQ(fails(sqlite, 2000), "");
    EXPECT_EQ(fails(sqlite, 2000, {{}, TableMode::Create, "id"}),
              "a.csv: 2001 columns; a table of sqlite has at most 2000");
    EXPECT_EQ(fails(mySql, 1018), "a.csv: 1018 columns; a table of mysql has at most 1017");
    EXPECT_EQ(fails(sqlite, 0), "a.csv: there are no columns to carry");
}

TEST(TableLayoutSql, CreatesTheTable)
{
    const std::vector<Column> columns = {columnOf("ORDER", ColumnType::Text, 8),
                                         columnOf("a\"b`", ColumnType::Number, 20)};
    EXPECT_EQ(TableLayout(sqlite, "t.dbf", columns, {}).createTable("t"),
              "CREATE TABLE \"t\" (\n    \"order\" text,\n    \"a\"\"b`\"\n)");
    EXPECT_EQ(TableLayout(mySql, "t.dbf", columns, {}).createTable("t"),
              "CREATE TABLE `t` (\n    `order` varchar(8),\n    `a\"b``` decimal(20)\n) ENGINE=InnoDB "
              "ROW_FORMAT=DYNAMIC DEFAULT CHARSET=utf8mb4");
    EXPECT_EQ(TableLayout(postgreSql, "t.dbf", columns, {}).columnList(), "\"order\",\"a\"\"b`\"");
}

TEST(TableLayoutSql, HasAKeyThatTheDatabaseNumbers)
{
    const TableOptions options = {"t", TableMode::Create, "ID"};
    const TableLayout layout(postgreSql, "t.dbf", named({"id", "a"}), options);
    EXPECT_EQ(layout.key(), "id");
    EXPECT_EQ(layout.createTable("t"), "CREATE TABLE \"t\" (\n    \"id\" bigint GENERATED BY DEFAULT AS IDENTITY "
                                       "PRIMARY KEY,\n    \"id_2\" text,\n    \"a\" text\n)");
    EXPECT_EQ(layout.columnList(), "\"id_2\",\"a\"");
    EXPECT_EQ(TableLayout(sqlite, "t.dbf", named({"a"}), options).createTable("t"),
              "CREATE TABLE \"t\" (\n    \"id\" integer PRIMARY KEY,\n    \"a\" text\n)");
    EXPECT_EQ(TableLayout(sqlite, "t.dbf", named({"id"}), {"t", TableMode::Append, "id"}).columnList(), "\"id\"");
}

/// The result for a cell in a table of one column: the reason why it is refused, or its text.
std::string fitted(const Dialect& dialect, const Column& of, const Cell& cell)
{
    const std::vector<Column> columns = {of};
    TableLayout layout(dialect, "a.dbf", columns, {});
    Record record;
    record.Columns = &columns;
    record.Cells = {cell};
    layout.fit(record);
    if (record.Flaws.empty()) {
        return std::string(record.Cells[0].Text);
    }
    EXPECT_EQ(record.Cells[0].Kind, CellKind::Unreadable);
    return record.Flaws[0].Reason;
}

constexpr const char* notWhole = "a column of whole numbers does not hold decimals";
constexpr const char* tooLarge = "outside the range of the column";
constexpr const char* tooMany = "more digits than the column holds";

TEST(TableLayoutFit, WholeNumbersOf32Bits)
{
    const Column n9 = columnOf("a", ColumnType::Number, 9);
    for (const Dialect* dialect : {&postgreSql, &mySql}) {
        EXPECT_EQ(fitted(*dialect, n9, Cell::number("-99999999")), "-99999999");
        EXPECT_EQ(fitted(*dialect, n9, Cell::number("2147483647")), "2147483647");
        EXPECT_EQ(fitted(*dialect, n9, Cell::number("2147483648")), tooLarge);
        EXPECT_EQ(fitted(*dialect, n9, Cell::number("-2147483649")), tooLarge);
        EXPECT_EQ(fitted(*dialect, n9, Cell::number("1.5")), notWhole);
        EXPECT_EQ(fitted(*dialect, n9, Cell::number("15.00")), "15");
        EXPECT_EQ(fitted(*dialect, n9, Cell::number("1000000000000")), tooLarge);
    }
    EXPECT_EQ(fitted(sqlite, n9, Cell::number("1000000000000")), "1000000000000");
    EXPECT_EQ(fitted(sqlite, n9, Cell::number("1.5")), notWhole);
    EXPECT_EQ(fitted(sqlite, columnOf("a", ColumnType::Integer), Cell::number("4294967296")), tooLarge);
}

TEST(TableLayoutFit, WholeNumbersOf64Bits)
{
    const Column n18 = columnOf("a", ColumnType::Number, 18);
    for (const Dialect* dialect : {&postgreSql, &mySql, &sqlite}) {
        EXPECT_EQ(fitted(*dialect, n18, Cell::number("9223372036854775807")), "9223372036854775807");
        EXPECT_EQ(fitted(*dialect, n18, Cell::number("9223372036854775808")), tooLarge);
        EXPECT_EQ(fitted(*dialect, n18, Cell::number("0.1")), notWhole);
    }
}

TEST(TableLayoutFit, DecimalsOfMySql)
{
    const Column n5 = columnOf("a", ColumnType::Number, 5, 2);
    for (const char* const digits : {"99999", "-9999", "0.999", "-0.99", "9.999", "0", "12.5"}) {
        EXPECT_EQ(fitted(mySql, n5, Cell::number(digits)), digits);
    }
    EXPECT_EQ(fitted(mySql, n5, Cell::number("100000")), tooMany);
    EXPECT_EQ(fitted(mySql, n5, Cell::number("0.00001")), tooMany);
    EXPECT_EQ(fitted(mySql, n5, Cell::number("1.50000000")), "1.50000000");
    EXPECT_EQ(fitted(mySql, columnOf("a", ColumnType::Number, 20), Cell::number("1.5")), tooMany);
    EXPECT_EQ(fitted(mySql, columnOf("a", ColumnType::Number), Cell::number(repeated("9", 35))), repeated("9", 35));
    EXPECT_EQ(fitted(mySql, columnOf("a", ColumnType::Number), Cell::number(repeated("9", 36))), tooMany);
}

TEST(TableLayoutFit, NumericOfPostgreSql)
{
    const Column any = columnOf("a", ColumnType::Number);
    EXPECT_EQ(fitted(postgreSql, any, Cell::number(repeated("9", 131072))).size(), 131072U);
    EXPECT_EQ(fitted(postgreSql, any, Cell::number(repeated("9", 131073))), tooMany);
    EXPECT_EQ(fitted(postgreSql, any, Cell::number("0." + repeated("1", 16383))).size(), 16385U);
    EXPECT_EQ(fitted(postgreSql, any, Cell::number("0." + repeated("1", 16384))), tooMany);
}

TEST(TableLayoutFit, NumericOfSqlite)
{
    const Column n15 = columnOf("a", ColumnType::Number, 15, 2);
    EXPECT_EQ(fitted(sqlite, n15, Cell::number("123456789012.34")), "123456789012.34");
    EXPECT_EQ(fitted(sqlite, n15, Cell::number("1" + repeated("0", 99))).size(), 100U);
    EXPECT_EQ(fitted(sqlite, n15, Cell::number("1" + repeated("0", 400))), tooMany);
    EXPECT_EQ(fitted(sqlite, n15, Cell::number("0." + repeated("0", 400) + "1")), tooMany);
    EXPECT_EQ(fitted(sqlite, n15, Cell::number("1234567890123456.7")), tooMany);
}

TEST(TableLayoutFit, DigitsKeptAsTextAreNoted)
{
    const std::vector<Column> columns = {columnOf("Big", ColumnType::Number, 20, 4)};
    TableLayout layout(sqlite, "a.dbf", columns, {});
    Record record;
    record.Columns = &columns;
    for (const char* const digits : {"123456789012345.6789", "9223372036854775807", "0.5", "9223372036854775808"}) {
        record.Cells = {Cell::number(digits)};
        layout.fit(record);
        EXPECT_TRUE(record.Flaws.empty());
        EXPECT_EQ(record.Cells[0].Text, digits);
    }
    EXPECT_EQ(textsOf(layout.notes()),
              Texts{"column big: 2 numbers are kept as text, because a SQLite number cannot hold the digits"});
}

TEST(TableLayoutFit, Texts)
{
    const std::string zero("a\0b", 3);
    const Column c3 = columnOf("a", ColumnType::Text, 3);
    EXPECT_EQ(fitted(postgreSql, c3, Cell::text(zero)), "a zero byte in a text");
    EXPECT_EQ(fitted(postgreSql, columnOf("a"), Cell::text(repeated("x", 40) + zero)), "a zero byte in a text");
    EXPECT_EQ(fitted(mySql, c3, Cell::text(zero)), zero);
    EXPECT_EQ(fitted(sqlite, c3, Cell::text(zero)), zero);
    EXPECT_EQ(fitted(postgreSql, c3, Cell::text("\xC3\xA4\xC3\xA4\xC3\xA4")), "\xC3\xA4\xC3\xA4\xC3\xA4");
    EXPECT_EQ(fitted(mySql, c3, Cell::text("abcd")), "longer than the column");
    EXPECT_EQ(fitted(postgreSql, c3, Cell::text("abcd")), "longer than the column");
    EXPECT_EQ(fitted(sqlite, c3, Cell::text("abcd")), "abcd");
    EXPECT_EQ(fitted(postgreSql, c3, Cell::null()), "");
}

TEST(TableLayoutFit, ChecksPlainRecordsToo)
{
    const std::vector<Column> columns = {columnOf("a", ColumnType::Text, 3), columnOf("b", ColumnType::Number, 9)};
    TableLayout layout(postgreSql, "a.dbf", columns, {});
    const std::string room = "abcd1.5.............................................................";
    const auto flaws = [&](std::size_t textSize, std::size_t numberSize) {
        Record record;
        record.Columns = &columns;
        record.Plain = true;
        record.Cells = {Cell::text(std::string_view(room).substr(0, textSize)),
                        Cell::number(std::string_view(room).substr(4, numberSize))};
        layout.fit(record);
        return record.Flaws.size();
    };
    EXPECT_EQ(flaws(3, 1), 0U) << "the point after the number is not its own";
    EXPECT_EQ(flaws(4, 1), 1U);
    EXPECT_EQ(flaws(3, 3), 1U);
    EXPECT_EQ(flaws(4, 3), 2U);
}

TEST(TableLayoutFit, FloatsWithoutDigits)
{
    const Column b = columnOf("a", ColumnType::Float);
    const Cell nan = Cell::real(std::numeric_limits<double>::quiet_NaN());
    const Cell infinity = Cell::real(-std::numeric_limits<double>::infinity());
    EXPECT_EQ(fitted(postgreSql, b, nan), "");
    EXPECT_EQ(fitted(postgreSql, b, infinity), "");
    EXPECT_EQ(fitted(sqlite, b, nan), "the target has no NaN");
    EXPECT_EQ(fitted(sqlite, b, infinity), "");
    EXPECT_EQ(fitted(mySql, b, nan), "the target has no NaN");
    EXPECT_EQ(fitted(mySql, b, infinity), "the target has no infinity");
    EXPECT_EQ(fitted(mySql, b, Cell::real(1.5)), "");
}

}  // namespace
