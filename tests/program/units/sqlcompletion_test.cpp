#include "sqlcompletion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace kd_tool {

using Texts = std::vector<std::string>;

const std::vector<SchemaColumn> shop = {
    {"clients", "id", "INTEGER"}, {"clients", "name", "TEXT"}, {"orders", "id", ""}, {"orders", "[limit]", ""}};

Texts candidates(std::string_view statement)
{
    Texts texts;
    for (const auto& [candidate, description] : sqlCandidates(statement, shop)) {
        texts.push_back(candidate);
    }
    return texts;
}

TEST(SqlCompletion, ColumnsAndTablesFollowAnyWord)
{
    EXPECT_EQ(candidates("SELECT "),
              (Texts{"SELECT id", "SELECT name", "SELECT [limit]", "SELECT clients", "SELECT orders"}));
    EXPECT_EQ(candidates("SELECT max(na"), (Texts{"SELECT max(name"}));
}

TEST(SqlCompletion, OnlyTablesFollowFromAndSimilarWords)
{
    EXPECT_EQ(candidates("SELECT id from "), (Texts{"SELECT id from clients", "SELECT id from orders"}));
    EXPECT_EQ(candidates("UPDATE o"), (Texts{"UPDATE orders"}));
}

TEST(SqlCompletion, ColumnsOfATableFollowItsDot)
{
    EXPECT_EQ(candidates("SELECT orders."), (Texts{"SELECT orders.id", "SELECT orders.[limit]"}));
    EXPECT_EQ(candidates("SELECT nothing."), Texts{});
}

TEST(SqlCompletion, WordsOfSqlHaveTheCaseOfTheirFirstLetter)
{
    EXPECT_EQ(candidates("SELECT id WH"), (Texts{"SELECT id WHERE", "SELECT id WHEN"}));
    EXPECT_EQ(candidates("select id gr"), (Texts{"select id group"}));
}

TEST(SqlCompletion, WordsOfSqlAreOffered)
{
    constexpr const char* words[] = {
        "SELECT", "FROM", "WHERE",  "GROUP",    "ORDER", "BY",   "LIMIT", "OFFSET", "JOIN",    "LEFT", "USING", "ON",
        "AS",     "AND",  "OR",     "NOT",      "NULL",  "IS",   "IN",    "LIKE",   "BETWEEN", "CASE", "WHEN",  "THEN",
        "ELSE",   "END",  "HAVING", "DISTINCT", "UNION", "WITH", "DESC",  "count(", "sum(",    "min(", "max(",  "avg("};
    for (const std::string word : words) {
        const std::string begun = "SELECT 1 " + word.substr(0, word.size() - 1);
        const Texts found = candidates(begun);
        EXPECT_NE(std::ranges::find(found, "SELECT 1 " + word), found.end()) << word;
    }
}

TEST(SqlCompletion, BracketsComeWithTheName)
{
    EXPECT_EQ(candidates("SELECT lim"), (Texts{"SELECT [limit]", "SELECT limit"}));
}

TEST(SqlCompletion, NothingInsideAText)
{
    EXPECT_EQ(candidates("SELECT 'na"), Texts{});
    EXPECT_EQ(candidates("SELECT 'it''s', na"), (Texts{"SELECT 'it''s', name"}));
}

}  // namespace kd_tool
