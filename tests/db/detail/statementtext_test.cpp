#include <kd_lib/detail/statementtext.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kd_test {

using namespace kd_lib::detail;

std::string postgresql(const std::string& sql, bool backslashes = false)
{
    return readStatement(sql, SqlForm::PostgreSql, backslashes).Sql;
}

std::string mariadb(const std::string& sql, bool backslashes = true)
{
    return readStatement(sql, SqlForm::MariaDb, backslashes).Sql;
}

TEST(StatementText, NamesBecomeNumbersOrQuestionMarks)
{
    const StatementText numbered = readStatement("SELECT :a, :b, :a", SqlForm::PostgreSql, false);
    EXPECT_EQ("SELECT $1, $2, $1", numbered.Sql);
    EXPECT_EQ((std::vector<std::string>{":a", ":b"}), numbered.Names);
    EXPECT_EQ(2, numbered.number(":b"));
    EXPECT_EQ(0, numbered.number(":c"));
    EXPECT_EQ(0, numbered.number(""));
    const StatementText marked = readStatement("SELECT :a, ?, :a", SqlForm::MariaDb, true);
    EXPECT_EQ("SELECT ?, ?, ?", marked.Sql);
    EXPECT_EQ((std::vector<std::size_t>{0, 1, 0}), marked.Occurrences);
}

TEST(StatementText, NumbersOfPostgresqlStay)
{
    const StatementText text = readStatement("SELECT $2, $1, :a, $99999999999", SqlForm::PostgreSql, false);
    EXPECT_EQ("SELECT $2, $1, $3, $99999999999", text.Sql);
    EXPECT_EQ(3U, text.Names.size());
}

TEST(StatementText, TextThatIsNotAParameter)
{
    for (const std::string sql : {"a::text", "x[1:n]", "':a' \":a\" /* :a /* :b */ :c */ -- :a", "$$ :a $$ $t$ :a $t$",
                                  "b ? c", "E'\\':a'", ": a", "x:=1", "a$1", "'unended :a", "/* unended :a"}) {
        EXPECT_EQ(sql, postgresql(sql));
        EXPECT_TRUE(readStatement(sql, SqlForm::PostgreSql, false).Names.empty() || sql == "$1") << sql;
    }
    for (const std::string sql : {"':a ?' \"?\" `?` # ?", "/* ? */ -- ?", "'\\'?'", "\"\\\"?\"", "@a:=1"}) {
        EXPECT_EQ(sql, mariadb(sql));
        EXPECT_TRUE(readStatement(sql, SqlForm::MariaDb, true).Names.empty()) << sql;
    }
    EXPECT_EQ("'\\'$1", postgresql("'\\':a"));
    EXPECT_EQ("'\\':a", postgresql("'\\':a", true));
    EXPECT_EQ("'\\'?'", mariadb("'\\'?'", false));
    EXPECT_EQ("1--?", mariadb("1--:a"));
}

TEST(StatementText, BackquotesAreQuotesOfPostgresql)
{
    EXPECT_EQ("\"a\" \"b\"\"c\" '`d`'", postgresql("`a` `b\"c` '`d`'"));
    EXPECT_EQ("`a :b`", mariadb("`a :b`"));
    EXPECT_EQ("`", postgresql("`"));
}

}  // namespace kd_test
