#include "detail/scriptsplitter.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using Texts = std::vector<std::string>;

/// The statements of a script that arrives in blocks of this size; the last element is the unfinished rest.
Texts statementsOf(std::string_view script, std::size_t blockSize)
{
    Texts statements;
    kd_lib::detail::ScriptSplitter splitter;
    bool complete = false;
    for (; !script.empty(); script.remove_prefix(std::min(blockSize, script.size()))) {
        std::string_view block = script.substr(0, blockSize);
        while ((complete = splitter.next(block))) {
            statements.push_back(splitter.statement());
        }
    }
    if (!splitter.statement().empty()) {
        statements.push_back("rest: " + splitter.statement());
    }
    return statements;
}

}  // namespace

TEST(ScriptSplitter, TheStatementsDoNotDependOnTheBlocks)
{
    const std::string script =
        "# head; 'quoted'\nCREATE TABLE t (a);\n\tINSERT INTO t VALUES ('a;b#c''d'); # after; it\n"
        "SELECT 1 # inside\n, 2;\n\n  COMMIT";
    const Texts expected = {"CREATE TABLE t (a);", "INSERT INTO t VALUES ('a;b#c''d');", "SELECT 1 , 2;",
                            "rest: COMMIT"};
    for (std::size_t size = 1; size <= script.size(); ++size) {
        EXPECT_EQ(statementsOf(script, size), expected) << "blocks of " << size;
    }
}

TEST(ScriptSplitter, TheTextAfterAStatementStaysInTheBlock)
{
    kd_lib::detail::ScriptSplitter splitter;
    std::string_view block = "one; two; three";
    ASSERT_TRUE(splitter.next(block));
    EXPECT_EQ(splitter.statement(), "one;");
    EXPECT_EQ(block, " two; three");
    ASSERT_TRUE(splitter.next(block));
    EXPECT_EQ(splitter.statement(), "two;");
    EXPECT_FALSE(splitter.next(block));
    EXPECT_EQ(splitter.statement(), "three");
    EXPECT_TRUE(block.empty());
}

TEST(ScriptSplitter, AnEmptyBlockCompletesNothing)
{
    kd_lib::detail::ScriptSplitter splitter;
    std::string_view block;
    EXPECT_FALSE(splitter.next(block));
    EXPECT_EQ(splitter.statement(), "");
}
