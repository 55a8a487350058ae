// Quoting as data: awkward values of every type, the expected literal, and the value that a database has after
// running the literal.

#include <kd_lib/sqliteconnection.h>
#include <kd_lib/sqlkeyword.h>
#include <kd_lib/sqlliteral.h>
#include <kd_lib/sqlquery.h>
#include <kd_lib/xbase2sql.h>

#include "support/console_capture.h"
#include "support/dbf_builder.h"
#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <cctype>
#include <ostream>
#include <string>
#include <vector>

using namespace kd_lib;

namespace {

struct LiteralRow {
    const char* name;
    FIELD_TYPE type;
    std::string value;
    std::string literal;
};

/// A literal that is a complete SQL value, with the result of its SELECT.
struct ArrivalRow {
    const char* name;
    FIELD_TYPE type;
    std::string value;
    std::string literal;
    std::string storedAs;  ///< SQLite's word for the kind of the value
    std::string arrives;   ///< NULL arrives as the empty text
};

template <class Row>
void print(const Row& row, std::ostream* out)
{
    *out << getFieldTypeName(row.type) << " \"" << row.value << '"';
}

void PrintTo(const LiteralRow& row, std::ostream* out)
{
    print(row, out);
}

void PrintTo(const ArrivalRow& row, std::ostream* out)
{
    print(row, out);
}

template <class Row>
std::string rowName(const testing::TestParamInfo<Row>& info)
{
    std::string name = getFieldTypeName(info.param.type);
    name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
    return name + info.param.name;
}

std::string literalOf(FIELD_TYPE type, const std::string& value)
{
    TableField field("v", type, 0, 30, 2, false);
    field.Value = value;
    return convertValue2Sql(field);
}

class PlainLiteral : public testing::TestWithParam<ArrivalRow> {};
class RawLiteral : public testing::TestWithParam<LiteralRow> {};

/// A table t with the column v in memory.
class QuotingDatabase : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(Db.openDatabase(":memory:", true, ""));
        ASSERT_TRUE(Db.execute("CREATE TABLE t (v)"));
    }

    bool insert(const std::string& literal) { return Db.execute("INSERT INTO t VALUES (" + literal + ")"); }

    /// The first row of a query whose column is named v; "no row" without one.
    std::string first(const std::string& sql)
    {
        const bool fetched = Db.query(sql) && Db.fetchRow();
        std::string value = fetched ? Db.queryColumns.getData("v") : "no row";
        Db.finalize();
        return value;
    }

    SQLite3 Db;
};

/// The values of a result as one text, each after a bar.
std::string column(SQLite3& db, const std::string& sql)
{
    std::string values;
    if (!db.query(sql)) {
        return "no result";
    }
    while (db.fetchRow()) {
        values += '|' + db.queryColumns.getData(0);
    }
    db.finalize();
    return values;
}

}  // namespace

// Literals that are SQL values

TEST_P(PlainLiteral, IsWrittenAndArrives)
{
    const ArrivalRow& row = GetParam();
    ASSERT_EQ(row.literal, literalOf(row.type, row.value));

    SQLite3 db;
    ASSERT_TRUE(db.openDatabase(":memory:", true, ""));
    ASSERT_TRUE(db.execute("CREATE TABLE t (v)"));
    ASSERT_TRUE(db.execute("INSERT INTO t VALUES (" + row.literal + ")"));
    ASSERT_TRUE(db.query("SELECT typeof(v) AS kind, v FROM t"));
    ASSERT_TRUE(db.fetchRow());
    EXPECT_EQ(row.storedAs, db.queryColumns.getData("kind"));
    EXPECT_EQ(row.arrives, db.queryColumns.getData("v"));
    EXPECT_FALSE(db.fetchRow());
}

INSTANTIATE_TEST_SUITE_P(Booleans, PlainLiteral,
                         testing::Values(ArrivalRow{"True", BOOLEAN_TYPE, "T", "1", "integer", "1"},
                                         ArrivalRow{"False", BOOLEAN_TYPE, "F", "0", "integer", "0"},
                                         ArrivalRow{"Empty", BOOLEAN_TYPE, "", "0", "integer", "0"},
                                         ArrivalRow{"Blanks", BOOLEAN_TYPE, "  ", "0", "integer", "0"},
                                         ArrivalRow{"Quote", BOOLEAN_TYPE, "'", "0", "integer", "0"},
                                         ArrivalRow{"Statement", BOOLEAN_TYPE, "1); DROP TABLE t; --", "0", "integer",
                                                    "0"}),
                         rowName<ArrivalRow>);

INSTANTIATE_TEST_SUITE_P(Numbers, PlainLiteral,
                         testing::Values(ArrivalRow{"Empty", DECIMAL_TYPE, "", "NULL", "null", ""},
                                         ArrivalRow{"Blanks", DECIMAL_TYPE, "        ", "NULL", "null", ""},
                                         ArrivalRow{"Padded", DECIMAL_TYPE, "   12.50", "12.50", "real", "12.5"},
                                         ArrivalRow{"Negative", DECIMAL_TYPE, " -0.25 ", "-0.25", "real", "-0.25"},
                                         ArrivalRow{"Blanks", FLOAT_TYPE, "  ", "NULL", "null", ""},
                                         ArrivalRow{"Exponent", FLOAT_TYPE, "1.5e3", "1.5e3", "real", "1500.0"},
                                         ArrivalRow{"Blanks", SMALLINT_TYPE, "  ", "NULL", "null", ""},
                                         ArrivalRow{"Padded", SMALLINT_TYPE, "  7", "7", "integer", "7"},
                                         ArrivalRow{"Blanks", INTEGER_TYPE, "    ", "NULL", "null", ""},
                                         ArrivalRow{"BothSides", INTEGER_TYPE, "  42  ", "42", "integer", "42"},
                                         ArrivalRow{"LeadingZeros", INTEGER_TYPE, "0042", "0042", "integer", "42"},
                                         ArrivalRow{"Blanks", BIGINT_TYPE, " ", "NULL", "null", ""},
                                         ArrivalRow{"Largest", BIGINT_TYPE, "9223372036854775807",
                                                    "9223372036854775807", "integer", "9223372036854775807"}),
                         rowName<ArrivalRow>);

INSTANTIATE_TEST_SUITE_P(
    DatesAndTimestamps, PlainLiteral,
    testing::Values(ArrivalRow{"Empty", DATE_TYPE, "", "NULL", "null", ""},
                    ArrivalRow{"Blanks", DATE_TYPE, "        ", "NULL", "null", ""},
                    ArrivalRow{"Compact", DATE_TYPE, "20240315", "'2024-03-15'", "text", "2024-03-15"},
                    ArrivalRow{"Long", DATE_TYPE, "2024-03-15", "'2024-03-15'", "text", "2024-03-15"},
                    ArrivalRow{"WithoutDay", DATE_TYPE, "202403", "'2024-03-'", "text", "2024-03-"},
                    ArrivalRow{"Blanks", TIME_TYPE, "      ", "NULL", "null", ""},
                    ArrivalRow{"Empty", TIMESTAMP_TYPE, "", "NULL", "null", ""},
                    ArrivalRow{"Blanks", TIMESTAMP_TYPE, "  ", "NULL", "null", ""},
                    ArrivalRow{"Padded", TIMESTAMP_TYPE, " 2024-03-15 12:34:56 ", "'2024-03-15 12:34:56'", "text",
                               "2024-03-15 12:34:56"}),
    rowName<ArrivalRow>);

// A backquote arrives as a double quote: `prepare` replaces it in the statement.
INSTANTIATE_TEST_SUITE_P(
    Texts, PlainLiteral,
    testing::Values(ArrivalRow{"Empty", CHAR_TYPE, "", "NULL", "null", ""},
                    ArrivalRow{"Blanks", CHAR_TYPE, "     ", "NULL", "null", ""},
                    ArrivalRow{"EveryBlank", CHAR_TYPE, " \t\r\n\v\f", "NULL", "null", ""},
                    ArrivalRow{"Plain", CHAR_TYPE, "Oslo", "'Oslo'", "text", "Oslo"},
                    ArrivalRow{"BlanksAround", CHAR_TYPE, "  Oslo   ", "'  Oslo'", "text", "  Oslo"},
                    ArrivalRow{"Quote", CHAR_TYPE, "  O'Brien  ", "'  O`Brien'", "text", "  O\"Brien"},
                    ArrivalRow{"QuoteAlone", CHAR_TYPE, "'", "'`'", "text", "\""},
                    ArrivalRow{"TwoQuotes", CHAR_TYPE, "''", "'``'", "text", "\"\""},
                    ArrivalRow{"QuotesAround", CHAR_TYPE, "'Oslo'", "'`Oslo`'", "text", "\"Oslo\""},
                    ArrivalRow{"GraveAccent", CHAR_TYPE, "O`Brien", "'O`Brien'", "text", "O\"Brien"},
                    ArrivalRow{"DoubleQuote", CHAR_TYPE, "5\" pipe", "'5\" pipe'", "text", "5\" pipe"},
                    ArrivalRow{"Backslash", CHAR_TYPE, "a\\", "'a\\'", "text", "a\\"},
                    ArrivalRow{"BackslashAndQuote", CHAR_TYPE, "a\\'b", "'a\\`b'", "text", "a\\\"b"},
                    ArrivalRow{"LineEnd", CHAR_TYPE, "a\nb", "'a\nb'", "text", "a\nb"},
                    ArrivalRow{"Semicolon", CHAR_TYPE, "a;b", "'a;b'", "text", "a;b"},
                    ArrivalRow{"Comment", CHAR_TYPE, "a -- b /* c", "'a -- b /* c'", "text", "a -- b /* c"},
                    ArrivalRow{"Percent", CHAR_TYPE, "100%", "'100%'", "text", "100%"},
                    ArrivalRow{"Parameter", CHAR_TYPE, "?1 :a @b $c", "'?1 :a @b $c'", "text", "?1 :a @b $c"},
                    ArrivalRow{"ControlBytes", CHAR_TYPE, "a\x01\x1B\x7F", "'a\x01\x1B\x7F'", "text", "a\x01\x1B\x7F"},
                    ArrivalRow{"HighBytes", CHAR_TYPE, "gr\xC3\xBC\xC3\x9F", "'gr\xC3\xBC\xC3\x9F'", "text",
                               "gr\xC3\xBC\xC3\x9F"},
                    ArrivalRow{"WordNull", CHAR_TYPE, "NULL", "'NULL'", "text", "NULL"},
                    ArrivalRow{"Number", CHAR_TYPE, "0042", "'0042'", "text", "0042"},
                    ArrivalRow{"Statement", CHAR_TYPE, "'); DROP TABLE t; --", "'`); DROP TABLE t; --'", "text",
                               "\"); DROP TABLE t; --"},
                    ArrivalRow{"Blanks", VARCHAR_TYPE, "  ", "NULL", "null", ""},
                    ArrivalRow{"Quote", VARCHAR_TYPE, " O'Hara ", "' O`Hara'", "text", " O\"Hara"},
                    ArrivalRow{"Blanks", TEXT_TYPE, "  ", "NULL", "null", ""},
                    ArrivalRow{"Quote", TEXT_TYPE, " it's ", "' it`s'", "text", " it\"s"}),
    rowName<ArrivalRow>);

INSTANTIATE_TEST_SUITE_P(OtherTypes, PlainLiteral,
                         testing::Values(ArrivalRow{"BlockNumber", MEMO_TYPE, "        17", "        17", "integer",
                                                    "17"},
                                         ArrivalRow{"HexText", BLOB_TYPE, "x'4142'", "x'4142'", "blob", "AB"},
                                         ArrivalRow{"Quoted", UNKNOWN_TYPE, "'r1c1'", "'r1c1'", "text", "r1c1"}),
                         rowName<ArrivalRow>);

// Literals that are not complete SQL values

TEST_P(RawLiteral, IsWrittenUnchanged)
{
    EXPECT_EQ(GetParam().literal, literalOf(GetParam().type, GetParam().value));
}

INSTANTIATE_TEST_SUITE_P(
    AllTypes, RawLiteral,
    testing::Values(LiteralRow{"Words", INTEGER_TYPE, " ab c ", "ab c"},
                    LiteralRow{"Stars", DECIMAL_TYPE, "*****", "*****"}, LiteralRow{"Quote", FLOAT_TYPE, "1'2", "1'2"},
                    LiteralRow{"Comma", SMALLINT_TYPE, "1,5", "1,5"},
                    LiteralRow{"Semicolon", BIGINT_TYPE, "1;2", "1;2"},
                    LiteralRow{"QuoteInside", DATE_TYPE, "15 Mar '24", "'15 Mar '24'"},
                    LiteralRow{"GraveAccent", DATE_TYPE, "`0240315", "'`024-03-15'"},
                    LiteralRow{"Compact", TIME_TYPE, "123456", "12:34:56'"},
                    LiteralRow{"WithoutSeconds", TIME_TYPE, "0930", "09:30:'"},
                    LiteralRow{"Long", TIME_TYPE, "12:34:56", "12:34:56'"},
                    LiteralRow{"QuoteInside", TIMESTAMP_TYPE, "a'b", "'a'b'"},
                    LiteralRow{"ZeroByte", CHAR_TYPE, std::string("a\0'b", 4), std::string("'a\0`b'", 6)},
                    LiteralRow{"Empty", MEMO_TYPE, "", ""}, LiteralRow{"Blanks", MEMO_TYPE, "          ", "          "},
                    LiteralRow{"Quote", BLOB_TYPE, "it's", "it's"}, LiteralRow{"Blanks", UNKNOWN_TYPE, " a ", " a "}),
    rowName<LiteralRow>);

// Several in one database

TEST_F(QuotingDatabase, NoTextLiteralRunsAnotherStatement)
{
    for (const char* value : {"'); DROP TABLE t; --", "', (SELECT 1)); --", "\\'); DELETE FROM t; --",
                              "`); DROP TABLE t; --", "\"); DROP TABLE t; --", "'';DROP TABLE t;''"}) {
        for (const FIELD_TYPE type : {CHAR_TYPE, VARCHAR_TYPE, TEXT_TYPE}) {
            EXPECT_TRUE(insert(literalOf(type, value))) << value;
        }
    }
    EXPECT_EQ("18", first("SELECT count(*) AS v FROM t"));
    EXPECT_EQ("0", first("SELECT count(*) AS v FROM t WHERE typeof(v) <> 'text'"));
}

TEST_F(QuotingDatabase, TimeLiteralDeliberatelyIsNotAnSqlValue)
{
    const std::string literal = literalOf(TIME_TYPE, "123456");
    const kd_test::Console console = kd_test::captured([this, &literal] { EXPECT_FALSE(insert(literal)); });
    EXPECT_NE("", console.out);
    EXPECT_EQ("0", first("SELECT count(*) AS v FROM t"));
}

TEST_F(QuotingDatabase, InClauseFindsExactlyItsValues)
{
    for (const char* literal : {"'r1c1'", "'O''Brien'", "'r3c1'", "''"}) {
        ASSERT_TRUE(insert(literal));
    }
    const std::string clause = SqlQuery().setInClause({"O'Brien", "", "x') OR ('1'='1"});
    EXPECT_EQ("IN ('O''Brien', '', 'x'') OR (''1''=''1')", clause);
    EXPECT_EQ("||O'Brien", column(Db, "SELECT v FROM t WHERE v " + clause + " ORDER BY v"));
}

TEST_F(QuotingDatabase, CheckedNamesAreColumnNames)
{
    TableFields fields;
    for (const char* name : {"Order", "SELECT", "price", "Table"}) {
        fields.add(name);
    }
    SqlKeyword().checkReserved(fields.List);
    std::string names;
    for (const TableField& field : fields) {
        names += (names.empty() ? "" : ", ") + field.Name;
    }
    EXPECT_EQ("\"order\", \"select\", price, \"table\"", names);
    ASSERT_TRUE(Db.execute("CREATE TABLE named (" + names + ")"));
    ASSERT_TRUE(Db.execute("INSERT INTO named (" + names + ") VALUES ('r1c1', 'r1c2', 'r1c3', 'r1c4')"));
    EXPECT_EQ("r1c2", first("SELECT \"select\" AS v FROM named"));
    EXPECT_EQ("|r1c1", column(Db, "SELECT " + names + " FROM named"));
}

TEST_F(QuotingDatabase, DeliberatelyANumberIsWrittenIntoAScriptUncheckedAndExecuted)
{
    const kd_test::ScopedDirectory directory;
    directory.write("stock.dbf", kd_test::DbfBuilder({{"QTY", 'N', 26}}).record({"0);DROP TABLE precious;--"}).bytes());
    ASSERT_TRUE(Db.execute("CREATE TABLE precious (a)"));
    xBase2Sql table("stock");
    table.Path = directory.path();
    kd_test::captured([&] { Db.importSqlFile(table.convert()); });
    EXPECT_EQ("0", first("SELECT count(*) AS v FROM sqlite_master WHERE name = 'precious'"));
    EXPECT_EQ("0", first("SELECT qty AS v FROM stock"));
}

TEST_F(QuotingDatabase, BoundValuesArriveUnchanged)
{
    ASSERT_TRUE(Db.prepare("INSERT INTO t VALUES (:v)"));
    ASSERT_TRUE(Db.bind(1, std::string("  O'Brien `\"; --  ")));
    ASSERT_TRUE(Db.execute());
    EXPECT_EQ("  O'Brien `\"; --  ", first("SELECT v FROM t"));
}

TEST_F(QuotingDatabase, BuiltQueryRuns)
{
    ASSERT_TRUE(Db.execute("CREATE TABLE people (id, name, city, age)"));
    ASSERT_TRUE(Db.execute("INSERT INTO people VALUES (1, 'Ann', 'Oslo', 41), (2, 'Bea', 'Oslo', 29),"
                           " (3, 'Cid', 'Rome', 52), (4, 'Dan', 'Oslo', 63)"));
    SqlQuery query;
    query.setFields("name");
    query.setFields("id");
    query.setTables("people");
    query.setFilter("age > 30", "");
    query.setFilter("city = 'Oslo'", "AND");
    std::string condition = "id < 9";
    std::string conjunction = "OR";
    query.setSubFilter(condition, conjunction);
    query.setOrder("name DESC");
    EXPECT_EQ("|Dan|Ann", column(Db, query.selectQuery()));
    EXPECT_EQ("|2", column(Db, query.countQuery()));
    query.limit = "1";
    EXPECT_EQ("|Dan", column(Db, query.selectQuery()));
}
