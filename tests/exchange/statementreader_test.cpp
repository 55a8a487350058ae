#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/statementreader.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using kd_lib::exchange::Error;
using kd_lib::exchange::StatementReader;

struct Cut {
    std::string Text;
    std::uint64_t Line;

    friend bool operator==(const Cut&, const Cut&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Cut& cut)
    {
        return out << "line " << cut.Line << ": " << cut.Text;
    }
};

std::vector<Cut> cutInBlocks(std::string_view script, std::size_t blockSize)
{
    std::vector<Cut> cuts;
    StatementReader reader("s.sql");
    while (!script.empty()) {
        std::string_view block = script.substr(0, blockSize);
        script.remove_prefix(block.size());
        while (reader.next(block)) {
            cuts.push_back({reader.statement(), reader.line()});
            EXPECT_EQ(reader.number(), cuts.size());
        }
        EXPECT_TRUE(block.empty());
    }
    if (reader.finish()) {
        cuts.push_back({reader.statement(), reader.line()});
    }
    EXPECT_EQ(reader.number(), cuts.size());
    return cuts;
}

/// The statements of a script, which must not depend on the size of the blocks.
std::vector<Cut> cut(std::string_view script)
{
    const std::vector<Cut> whole = cutInBlocks(script, std::max<std::size_t>(script.size(), 1));
    for (const std::size_t size : {1U, 2U, 3U, 5U, 7U, 16U}) {
        EXPECT_EQ(cutInBlocks(script, size), whole) << "blocks of " << size;
    }
    return whole;
}

using Cuts = std::vector<Cut>;

TEST(StatementReader, CutsAtSemicolons)
{
    EXPECT_EQ(cut("r1c1;\n r2 c2 ;r3;"), (Cuts{{"r1c1;", 1}, {"r2 c2 ;", 2}, {"r3;", 2}}));
}

TEST(StatementReader, LastStatementNeedsNoSemicolon)
{
    EXPECT_EQ(cut("a;\n\nb\nc\n"), (Cuts{{"a;", 1}, {"b\nc\n", 3}}));
}

TEST(StatementReader, NothingButBlanksCommentsAndSemicolonsHoldsNoStatement)
{
    for (const char* script : {"", " \t\r\n\f", ";;;", "-- a; b", "/* a; b */", "# a; b", "-- a\n;\n/* b */ ; # c\n;",
                               "/*", "/* /", "/**", "--", "#", "\xEF\xBB\xBF", "\xEF\xBB\xBF\n-- a\n;"}) {
        EXPECT_EQ(cut(script), Cuts{}) << script;
    }
}

TEST(StatementReader, QuotesProtectSemicolonsAndCommentSigns)
{
    for (const char* statement :
         {"SELECT 'a;b--c/*d#e';", "SELECT \"a;b--c/*d#e\";", "SELECT `a;b--c/*d#e`;", "SELECT [a;b--c/*d#e];",
          "SELECT 'it''s; one';", "SELECT \"a\"\";b\";", "SELECT `a``;b`;", "SELECT '\"', \"'\", ';';",
          "SELECT '[', ';', [']], ';';", "SELECT 'a\\', ';';", "SELECT ';\n;';", "';';", "[;];"}) {
        EXPECT_EQ(cut(statement), (Cuts{{statement, 1}})) << statement;
    }
}

TEST(StatementReader, OpenQuotesReachToTheEnd)
{
    for (const char* statement : {"SELECT 'a; b", "SELECT \"a; b\n;", "SELECT `a;", "SELECT [a; b' ;"}) {
        EXPECT_EQ(cut(statement), (Cuts{{statement, 1}})) << statement;
    }
}

TEST(StatementReader, CommentsInsideStatementsStay)
{
    EXPECT_EQ(cut("a -- don't; b\n c;d"), (Cuts{{"a -- don't; b\n c;", 1}, {"d", 2}}));
    EXPECT_EQ(cut("a /* don't;\n */ b;\nc"), (Cuts{{"a /* don't;\n */ b;", 1}, {"c", 3}}));
    EXPECT_EQ(cut("a /* ** / *;*/;b"), (Cuts{{"a /* ** / *;*/;", 1}, {"b", 1}}));
    EXPECT_EQ(cut("a /*/ ; */ b;"), (Cuts{{"a /*/ ; */ b;", 1}}));
    EXPECT_EQ(cut("a --; b"), (Cuts{{"a --; b", 1}}));
}

TEST(StatementReader, NumberSignCommentsAreRemoved)
{
    EXPECT_EQ(cut("# don't; a\nb # c; 'd'\ne;#f"), (Cuts{{"b \ne;", 2}}));
    EXPECT_EQ(cut("a#b\nc;"), (Cuts{{"a\nc;", 1}}));
}

TEST(StatementReader, CommentsBeforeStatementsAreRemoved)
{
    EXPECT_EQ(cut("-- it's\n/* \"; */ a;-- b\n\n /**/\tc;"), (Cuts{{"a;", 2}, {"c;", 4}}));
}

TEST(StatementReader, SingleMinusAndSlashAreOperators)
{
    EXPECT_EQ(cut("-1;-;/;a-b/c*d;- -2;-/*x*/3"),
              (Cuts{{"-1;", 1}, {"-;", 1}, {"/;", 1}, {"a-b/c*d;", 1}, {"- -2;", 1}, {"-/*x*/3", 1}}));
    EXPECT_EQ(cut("a -"), (Cuts{{"a -", 1}}));
    EXPECT_EQ(cut("/'a;b';"), (Cuts{{"/'a;b';", 1}}));
}

TEST(StatementReader, TriggersEndAfterTheEndOfTheirBody)
{
    for (const char* statement :
         {"CREATE TRIGGER t AFTER INSERT ON a BEGIN UPDATE b SET c = 1; DELETE FROM d; END;",
          "create temp trigger t after insert on a begin select 1; end;",
          "CREATE TEMPORARY/**/TRIGGER t BEGIN SELECT 1;END;",
          "CREATE -- it's\n TRIGGER t BEGIN x; -- y;\n END /*;*/ ;", "EXPLAIN CREATE TRIGGER t BEGIN x; END;",
          "EXPLAIN QUERY PLAN CREATE TRIGGER t BEGIN x; END;",
          "CREATE TRIGGER t BEGIN SELECT CASE a WHEN 1 THEN ';' ELSE 2 END; UPDATE x SET y = CASE z WHEN 3 THEN 4 END; "
          "END;",
          "CREATE TRIGGER t BEGIN x;;END;", "CREATE TRIGGER t BEGIN x; \"END\"; END;",
          "CREATE TRIGGER t BEGIN x; END a; END;", "CREATE TRIGGER t BEGIN x; ENDING; END;",
          "CREATE TRIGGER t BEGIN x; -END; END;", "CREATE TRIGGER IF NOT EXISTS t BEGIN x; END\n;"}) {
        EXPECT_EQ(
            cut(std::string(statement) + "b;"),
            (Cuts{{statement, static_cast<std::uint64_t>(1)},
                  {"b;", 1U + static_cast<std::uint64_t>(std::ranges::count(std::string_view(statement), '\n'))}}))
            << statement;
    }
}

TEST(StatementReader, OnlyCreateTriggerBeginsATrigger)
{
    for (const char* start : {"CREATE TABLE trigger(a", "CREATE \"TRIGGER\" a", "TRIGGER CREATE a", "CREATED TRIGGER a",
                              "CREATE TEMPO TRIGGER a", "DROP TRIGGER a", "EXPLAIN DROP TRIGGER a", "CREATE (TRIGGER a",
                              "CREATE TEMPORARYY TRIGGER a", "CREATE TEMPORARYTABLE TRIGGER a"}) {
        EXPECT_EQ(cut(std::string(start) + "; b; END;"), (Cuts{{std::string(start) + ";", 1}, {"b;", 1}, {"END;", 1}}))
            << start;
    }
}

TEST(StatementReader, EachCharacterOfAWordBelongsToIt)
{
    for (const char c : std::string("azAZ09_$\x80\xFF")) {
        const std::string start = std::string("CREATE TRIGGER") + c + " a;";
        EXPECT_EQ(cut(start + " b; END;"), (Cuts{{start, 1}, {"b;", 1}, {"END;", 1}})) << c;
    }
    for (const char c : std::string(":@^{~\x7F")) {
        const std::string trigger = std::string("CREATE TRIGGER") + c + " a; b; END;";
        EXPECT_EQ(cut(trigger), (Cuts{{trigger, 1}})) << c;
    }
}

TEST(StatementReader, TriggerThatNeverEndsIsTheRest)
{
    EXPECT_EQ(cut("CREATE TRIGGER t BEGIN x; END"), (Cuts{{"CREATE TRIGGER t BEGIN x; END", 1}}));
    EXPECT_EQ(cut("CREATE TRIGGER t BEGIN x; y;"), (Cuts{{"CREATE TRIGGER t BEGIN x; y;", 1}}));
}

TEST(StatementReader, ByteOrderMarkAtTheBeginningIsRemoved)
{
    EXPECT_EQ(cut("\xEF\xBB\xBF\nCREATE TRIGGER t BEGIN x; END;b"),
              (Cuts{{"CREATE TRIGGER t BEGIN x; END;", 2}, {"b", 2}}));
    EXPECT_EQ(cut("a;\xEF\xBB\xBF"
                  "b;"),
              (Cuts{{"a;", 1},
                    {"\xEF\xBB\xBF"
                     "b;",
                     1}}));
    EXPECT_EQ(cut("\xEF\xBB"
                  "a;"),
              (Cuts{{"\xEF\xBB"
                     "a;",
                     1}}));
    EXPECT_EQ(cut("\xEF\xBB"), (Cuts{{"\xEF\xBB", 1}}));
}

TEST(StatementReader, CountsLinesInsideEverything)
{
    EXPECT_EQ(cut("'\n\n';--\n/*\n\n*/#\n\"\n\"\n;\nx"), (Cuts{{"'\n\n';", 1}, {"\"\n\"\n;", 7}, {"x", 10}}));
}

TEST(StatementReader, BytesOfAnyKindAreCarried)
{
    const std::string text("\0\xFF\x80;", 4);
    EXPECT_EQ(cut(text), (Cuts{{text, 1}}));
}

TEST(StatementReader, LongStatementIsAnError)
{
    for (const std::size_t blockSize : {1U, 100U}) {
        StatementReader reader("s.sql", 10);
        const std::string script = "123456789;\n 1234567890;";
        std::string_view rest = script;
        std::vector<std::string> cuts;
        try {
            while (!rest.empty()) {
                std::string_view block = rest.substr(0, blockSize);
                rest.remove_prefix(block.size());
                while (reader.next(block)) {
                    cuts.push_back(reader.statement());
                }
            }
            FAIL() << "no error";
        } catch (const Error& error) {
            EXPECT_STREQ(error.what(), "s.sql: statement 2, line 2: longer than 10 bytes");
        }
        EXPECT_EQ(cuts, std::vector<std::string>{"123456789;"});
    }
}

TEST(StatementReader, CommentsBetweenStatementsMayBeOfAnyLength)
{
    StatementReader reader("s.sql", 4);
    const std::string script = "/*" + std::string(100000, 'x') + "*/ ab;--" + std::string(100000, 'y');
    std::string_view block = script;
    ASSERT_TRUE(reader.next(block));
    EXPECT_EQ(reader.statement(), "ab;");
    EXPECT_FALSE(reader.next(block));
    EXPECT_FALSE(reader.finish());
}

}  // namespace
