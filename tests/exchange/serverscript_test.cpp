#include "support/scoped_directory.h"
#include "support/shown.h"

#include <kd_lib/exchange/serverscript.h>

#include <kd_lib/exchange/error.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kd_test {

using namespace kd_lib::exchange;

std::vector<std::string> statements(const std::string& text, Engine engine, bool backslashes = false)
{
    const ScopedDirectory folder;
    ServerScript script(folder.write("script.sql", text), engine);
    std::vector<std::string> all;
    while (script.next(backslashes)) {
        all.emplace_back(script.statement());
    }
    return all;
}

using Texts = std::vector<std::string>;

TEST(ServerScript, StatementsEndAtSemicolons)
{
    for (const Engine engine : {Engine::PostgreSql, Engine::MySql}) {
        EXPECT_EQ((Texts{"a", "b 'x;y'", "c \"x;y\"", "last"}), statements("a;\nb 'x;y';; c \"x;y\";last", engine));
        EXPECT_EQ((Texts{"a /* ; */ b -- ; '\n c"}),
                  statements("-- first; '\n/* ; */ a /* ; */ b -- ; '\n c;", engine));
        EXPECT_EQ(Texts{}, statements(" ;\n-- only; this", engine));
        EXPECT_EQ((Texts{"a 'it''s; x'"}), statements("\xEF\xBB\xBF"
                                                      "a 'it''s; x';",
                                                      engine));
    }
}

TEST(ServerScript, BackslashesCountIfTheSessionSaysSo)
{
    EXPECT_EQ((Texts{"a 'x\\';b' c"}), statements("a 'x\\';b' c;", Engine::MySql, true));
    EXPECT_EQ((Texts{"a 'x\\'", "b"}), statements("a 'x\\';b;", Engine::MySql, false));
    EXPECT_EQ((Texts{"a E'x\\';b' c"}), statements("a E'x\\';b' c;", Engine::PostgreSql, false));
    EXPECT_EQ((Texts{"a e'x\\';b' c"}), statements("a e'x\\';b' c;", Engine::PostgreSql, false));
    EXPECT_EQ((Texts{"a 'x\\'", "b"}), statements("a 'x\\';b;", Engine::PostgreSql, false));
}

TEST(ServerScript, PostgresqlsOwnQuotesCommentsAndBodies)
{
    EXPECT_EQ((Texts{"f $$a;b$$", "g $x$ ; $$ ; $x$", "h $1"}),
              statements("f $$a;b$$; g $x$ ; $$ ; $x$; h $1;", Engine::PostgreSql));
    EXPECT_EQ((Texts{"h $1$$;$$", "i $9$$;$$", "j"}), statements("h $1$$;$$; i $9$$;$$; j;", Engine::PostgreSql))
        << "a parameter does not begin a text";
    EXPECT_EQ((Texts{"a$b$c", "d$b$ e"}), statements("a$b$c; d$b$ e;", Engine::PostgreSql)) << "parts of names";
    EXPECT_EQ((Texts{"\x7F$$;$$"}), statements("\x7F$$;$$;", Engine::PostgreSql));
    EXPECT_EQ((Texts{"\x80$$", "$$;"}), statements("\x80$$;$$;", Engine::PostgreSql));
    EXPECT_EQ((Texts{"a /* /* ; */ ; */ b"}), statements("a /* /* ; */ ; */ b;", Engine::PostgreSql));
    EXPECT_EQ((Texts{"create rule r do (a; b)"}), statements("create rule r do (a; b);", Engine::PostgreSql));
    EXPECT_EQ((Texts{"CREATE FUNCTION f() BEGIN ATOMIC a; CASE b END; c; END", "d"}),
              statements("CREATE FUNCTION f() BEGIN ATOMIC a; CASE b END; c; END; d;", Engine::PostgreSql));
    EXPECT_EQ((Texts{"CREATE FUNCTION f() RETURNS case", "d"}),
              statements("CREATE FUNCTION f() RETURNS case; d;", Engine::PostgreSql))
        << "a CASE counts only inside a body";
    EXPECT_EQ((Texts{"BEGIN", "END"}), statements("BEGIN; END;", Engine::PostgreSql));
    EXPECT_EQ((Texts{"a"}),
              statements("\\restrict abc\n\\set ON_ERROR_STOP on\na;\n\\unrestrict abc\n", Engine::PostgreSql));
    EXPECT_THROW(statements("a;\n\\connect other\n", Engine::PostgreSql), Error);
}

TEST(ServerScript, MysqlsCommentsAndDelimiters)
{
    EXPECT_EQ((Texts{"a", "b"}), statements("# x; y\na;\n#\nb", Engine::MySql));
    EXPECT_EQ((Texts{"/*!40101 SET NAMES utf8 */", "a--1"}),
              statements("/*!40101 SET NAMES utf8 */; a--1;", Engine::MySql));
    EXPECT_EQ((Texts{"a; b", "c"}), statements("delimiter //\na; b//\nDELIMITER ;\nc;", Engine::MySql));
    EXPECT_THROW(statements("DELIMITER \n a;", Engine::MySql), Error);
}

TEST(ServerScript, RowsOfACopyAreReturnedUnchanged)
{
    const ScopedDirectory folder;
    std::string rows;
    for (int i = 0; i < 20000; ++i) {
        rows += std::to_string(i) + "\tit's; \\N\n";
    }
    ServerScript script(
        folder.write("script.sql", "COPY t FROM stdin;\n" + rows + "\\.\nCOPY u FROM stdin;\n\\.\nlast;"),
        Engine::PostgreSql);
    ASSERT_TRUE(script.next(false));
    EXPECT_EQ("COPY t FROM stdin", script.statement());
    std::string all;
    for (std::string_view piece = script.copyRows(); !piece.empty(); piece = script.copyRows()) {
        EXPECT_EQ('\n', piece.back());
        all += piece;
    }
    EXPECT_TRUE(rows == all);
    ASSERT_TRUE(script.next(false));
    EXPECT_EQ("COPY u FROM stdin", script.statement());
    EXPECT_EQ(2U, script.number());
    EXPECT_EQ(20003U, script.line());
    EXPECT_EQ("", script.copyRows());
    ASSERT_TRUE(script.next(false));
    EXPECT_EQ("last", script.statement());
    EXPECT_EQ(20005U, script.line());
    EXPECT_FALSE(script.next(false));
}

TEST(ServerScript, StatementsLongerThanABlock)
{
    const std::string text = "a '" + std::string(300000, ';') + "'";
    EXPECT_EQ((Texts{text, "b"}), statements(text + ";b;", Engine::PostgreSql));
    EXPECT_EQ((Texts{"a '" + std::string(70000, 'x')}), statements("a '" + std::string(70000, 'x'), Engine::MySql));
}

/// The error of a script whose only statement has `size` bytes and ends with "//", 13 bytes after the script's beginning.
std::string errorOfSize(std::size_t size, std::size_t longest)
{
    const ScopedDirectory folder;
    const std::string file = folder.write("script.sql", "DELIMITER //\n" + std::string(size, 'x') + "//");
    ServerScript script(file, Engine::MySql, longest);
    return errorOf([&] {
        EXPECT_TRUE(script.next(false));
        EXPECT_EQ(size, script.statement().size());
    });
}

TEST(ServerScript, StatementsHaveALongestSize)
{
    constexpr std::size_t toEndOfBlock = 65536 - 13;
    for (const std::size_t longest : {std::size_t{100}, toEndOfBlock - 1, toEndOfBlock, toEndOfBlock + 1}) {
        const std::string error = "line 2: a statement of more than " + std::to_string(longest) + " bytes";
        EXPECT_EQ("", errorOfSize(longest, longest));
        EXPECT_TRUE(errorOfSize(longest + 1, longest).ends_with("/script.sql: " + error)) << longest;
    }
    EXPECT_EQ(1'000'000'000U, ServerScript::longestStatement);
}

TEST(ServerScript, NoMoreIsReadOfAStatementThatIsTooLong)
{
    const ScopedDirectory folder;
    ServerScript script(folder.write("script.sql", std::string(1'000'000, 'x')), Engine::PostgreSql, 1000);
    EXPECT_NE("", errorOf([&] { script.next(false); }));
    EXPECT_EQ(65536U, script.position());
}

}  // namespace kd_test
