#include <kd_lib/sqlquery.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

using kd_lib::SqlQuery;

static_assert(std::has_virtual_destructor_v<SqlQuery>);

namespace {

/// The query of the worked example.
SqlQuery people()
{
    SqlQuery query;
    query.setFields("id");
    query.setFields("name");
    query.setTables("people");
    query.setFilter("age > 30", "IGNORED");
    query.setFilter("city = 'Oslo'", "AND");
    query.setOrder("name");
    query.limit = "10";
    return query;
}

void addSubFilter(SqlQuery& query, std::string condition, std::string conjunction)
{
    query.setSubFilter(condition, conjunction);
}

/// Field f of table t, to which a test adds one piece.
SqlQuery simple()
{
    SqlQuery query;
    query.setFields("f");
    query.setTables("t");
    return query;
}

}  // namespace

// Construction and reset

TEST(SqlQuery, NewObjectIsEmpty)
{
    const SqlQuery query;
    for (const std::string* piece :
         {&query.fields, &query.tables, &query.join, &query.filter, &query.subFilter, &query.order, &query.limit}) {
        EXPECT_EQ("", *piece);
    }
    EXPECT_FALSE(query.distinct);
}

TEST(SqlQuery, NewObjectSelectsNothingFromNothing)
{
    EXPECT_EQ("SELECT \n  FROM  \n", SqlQuery().selectQuery());
}

TEST(SqlQuery, ResetEmptiesEveryPiece)
{
    SqlQuery query = people();
    addSubFilter(query, "a = 1", "");
    query.join = "JOIN towns";
    query.distinct = true;
    query.resetQuery();
    EXPECT_EQ("SELECT \n  FROM  \n", query.selectQuery());
    EXPECT_EQ("SELECT  COUNT(*) AS count  FROM \n", query.countQuery());
    EXPECT_FALSE(query.distinct);
}

TEST(SqlQuery, IsFilledAgainAfterReset)
{
    SqlQuery query = people();
    query.resetQuery();
    query.setFields("town");
    query.setFilter("a = 1", "AND");
    EXPECT_EQ("town", query.fields);
    EXPECT_EQ(" a = 1\n", query.filter);
}

// Setters

TEST(SqlQuery, ThreeFieldsAreJoinedByCommaLineFeedTab)
{
    SqlQuery query;
    query.setFields("id");
    query.setFields("name");
    query.setFields("age");
    EXPECT_EQ("id,\n\tname,\n\tage", query.fields);
}

TEST(SqlQuery, TablesAreJoinedByCommaLineFeedTab)
{
    SqlQuery query;
    query.setTables("people");
    EXPECT_EQ("people", query.tables);
    query.setTables("towns");
    EXPECT_EQ("people,\n\ttowns", query.tables);
}

TEST(SqlQuery, OrderIsJoinedByACommaWithoutABlank)
{
    SqlQuery query;
    query.setOrder("name");
    query.setOrder("age");
    EXPECT_EQ("name,age", query.order);
}

TEST(SqlQuery, FilterPiecesBeginWithABlankAndEndTheirLine)
{
    SqlQuery query;
    query.setFilter("a = 1", "OR");
    EXPECT_EQ(" a = 1\n", query.filter);
    query.setFilter("b = 2", "OR");
    query.setFilter("c = 3", "AND");
    EXPECT_EQ(" a = 1\n OR b = 2\n AND c = 3\n", query.filter);
}

TEST(SqlQuery, ConjunctionOfTheFirstFilterIsNeverWritten)
{
    SqlQuery query = simple();
    query.setFilter("a = 1", "FIRSTCONJUNCTION");
    addSubFilter(query, "b = 2", "FIRSTCONJUNCTION");
    EXPECT_EQ(std::string::npos, query.selectQuery().find("FIRSTCONJUNCTION"));
    EXPECT_EQ(std::string::npos, query.countQuery().find("FIRSTCONJUNCTION"));
}

TEST(SqlQuery, SubFilterDeliberatelyHasNoBlankBetweenConjunctionAndParenthesis)
{
    SqlQuery query;
    addSubFilter(query, "a = 1", "OR");
    EXPECT_EQ(" (a = 1)\n", query.subFilter);
    addSubFilter(query, "b = 2", "OR");
    EXPECT_EQ(" (a = 1)\n OR(b = 2)\n", query.subFilter);
}

TEST(SqlQuery, SubFilterMayGrowByItself)
{
    SqlQuery query;
    std::string conjunction = "AND";
    query.setSubFilter(query.subFilter, conjunction);
    EXPECT_EQ(" ()\n", query.subFilter);
    query.setSubFilter(query.subFilter, query.subFilter);
    EXPECT_EQ(" ()\n  ()\n( ()\n)\n", query.subFilter);
}

TEST(SqlQuery, SubFilterLeavesItsArguments)
{
    SqlQuery query;
    std::string condition = "a = 1";
    std::string conjunction = "OR";
    query.setSubFilter(condition, conjunction);
    query.setSubFilter(condition, conjunction);
    EXPECT_EQ("a = 1", condition);
    EXPECT_EQ("OR", conjunction);
}

TEST(SqlQuery, EmptyPiecesAreLaidOutLikeAllOthers)
{
    SqlQuery query;
    query.setFields("");
    query.setFields("f");
    query.setFields("");
    EXPECT_EQ("f,\n\t", query.fields);
    query.setFilter("", "AND");
    query.setFilter("", "");
    EXPECT_EQ(" \n  \n", query.filter);
    addSubFilter(query, "", "AND");
    addSubFilter(query, "", "");
    EXPECT_EQ(" ()\n ()\n", query.subFilter);
}

// selectQuery

TEST(SelectQuery, OfTheWorkedExample)
{
    EXPECT_EQ("SELECT id,\n"
              "\tname\n"
              "  FROM  people\n"
              " WHERE  age > 30\n"
              " AND city = 'Oslo'\n"
              "\n"
              " ORDER BY name\n"
              " LIMIT 10\n",
              people().selectQuery());
}

TEST(SelectQuery, OfFieldsAndTablesAlone)
{
    EXPECT_EQ("SELECT f\n  FROM  t\n", simple().selectQuery());
}

TEST(SelectQuery, WritesDistinctBeforeTheFields)
{
    SqlQuery query = simple();
    query.distinct = true;
    EXPECT_EQ("SELECT DISTINCT f\n  FROM  t\n", query.selectQuery());
}

TEST(SelectQuery, WritesTheFromLineWithoutTables)
{
    SqlQuery query;
    query.setFields("1");
    EXPECT_EQ("SELECT 1\n  FROM  \n", query.selectQuery());
}

TEST(SelectQuery, WritesTheJoinOnASeparateLine)
{
    SqlQuery query = simple();
    query.join = "JOIN u ON u.id = t.id";
    query.setFilter("a = 1", "");
    EXPECT_EQ("SELECT f\n  FROM  t\n JOIN u ON u.id = t.id\n WHERE  a = 1\n\n", query.selectQuery());
}

TEST(SelectQuery, FilterDeliberatelyLeavesAnEmptyLine)
{
    SqlQuery query = simple();
    query.setFilter("a = 1", "");
    EXPECT_EQ("SELECT f\n  FROM  t\n WHERE  a = 1\n\n", query.selectQuery());
}

TEST(SelectQuery, SubFilterWithoutFilterIsTheWhereClause)
{
    SqlQuery query = simple();
    addSubFilter(query, "a = 1", "");
    addSubFilter(query, "b = 2", "OR");
    EXPECT_EQ("SELECT f\n  FROM  t\n WHERE ( (a = 1)\n OR(b = 2)\n)\n", query.selectQuery());
}

TEST(SelectQuery, SubFilterAfterAFilterIsJoinedByAnd)
{
    SqlQuery query = simple();
    query.setFilter("a = 1", "");
    addSubFilter(query, "b = 2", "");
    addSubFilter(query, "c = 3", "OR");
    EXPECT_EQ("SELECT f\n  FROM  t\n WHERE  a = 1\n\n  AND ( (b = 2)\n OR(c = 3)\n)\n", query.selectQuery());
}

TEST(SelectQuery, WritesOrderAndLimitAlone)
{
    SqlQuery query = simple();
    query.setOrder("name");
    query.setOrder("age");
    EXPECT_EQ("SELECT f\n  FROM  t\n ORDER BY name,age\n", query.selectQuery());
    query.order.clear();
    query.limit = "10, 5";
    EXPECT_EQ("SELECT f\n  FROM  t\n LIMIT 10, 5\n", query.selectQuery());
}

TEST(SelectQuery, WritesEveryPieceInItsPlace)
{
    SqlQuery query = people();
    query.setTables("towns");
    query.join = "JOIN lands";
    query.distinct = true;
    addSubFilter(query, "a = 1", "");
    EXPECT_EQ("SELECT DISTINCT id,\n"
              "\tname\n"
              "  FROM  people,\n"
              "\ttowns\n"
              " JOIN lands\n"
              " WHERE  age > 30\n"
              " AND city = 'Oslo'\n"
              "\n"
              "  AND ( (a = 1)\n"
              ")\n"
              " ORDER BY name\n"
              " LIMIT 10\n",
              query.selectQuery());
}

TEST(SelectQuery, ChangesNothing)
{
    const SqlQuery query = people();
    const std::string first = query.selectQuery();
    query.countQuery();
    EXPECT_EQ(first, query.selectQuery());
}

// countQuery

TEST(CountQuery, OfATableAlone)
{
    SqlQuery query;
    query.setTables("people");
    EXPECT_EQ("SELECT  COUNT(*) AS count  FROM people\n", query.countQuery());
}

TEST(CountQuery, DistinctIsDeliberatelyFollowedByTwoBlanks)
{
    SqlQuery query;
    query.setTables("people");
    query.distinct = true;
    EXPECT_EQ("SELECT DISTINCT  COUNT(*) AS count  FROM people\n", query.countQuery());
}

TEST(CountQuery, HasConditionsButNoFieldsOrderAndLimit)
{
    SqlQuery query = people();
    query.join = "JOIN lands";
    addSubFilter(query, "a = 1", "");
    EXPECT_EQ("SELECT  COUNT(*) AS count  FROM people\n"
              " JOIN lands\n"
              " WHERE  age > 30\n"
              " AND city = 'Oslo'\n"
              "\n"
              "  AND ( (a = 1)\n"
              ")\n",
              query.countQuery());
}

TEST(CountQuery, SubFilterWithoutFilterIsTheWhereClause)
{
    SqlQuery query;
    query.setTables("t");
    addSubFilter(query, "a = 1", "");
    EXPECT_EQ("SELECT  COUNT(*) AS count  FROM t\n WHERE ( (a = 1)\n)\n", query.countQuery());
}

// setInClause

TEST(InClause, ListsTheValuesInQuotes)
{
    EXPECT_EQ("IN ('x', 'y')", SqlQuery().setInClause({"x", "y"}));
    EXPECT_EQ("IN ('x')", SqlQuery().setInClause({"x"}));
    EXPECT_EQ("IN ('x', 'y', 'z')", SqlQuery().setInClause({"x", "y", "z"}));
}

TEST(InClause, PercentSignAnywhereDeliberatelyGivesLikeWithAnOpenParenthesis)
{
    EXPECT_EQ("IN (LIKE ('y%')", SqlQuery().setInClause({"x", "y%"}));
    EXPECT_EQ("IN (LIKE ('%x')", SqlQuery().setInClause({"%x", "y"}));
    EXPECT_EQ("IN (LIKE ('%')", SqlQuery().setInClause({"%"}));
}

TEST(InClause, FirstValueWithAPercentSignDropsAllOthers)
{
    EXPECT_EQ("IN (LIKE ('b%b')", SqlQuery().setInClause({"a", "b%b", "c%", "d"}));
}

TEST(InClause, WithoutValuesIsEmpty)
{
    EXPECT_EQ("IN ()", SqlQuery().setInClause({}));
}

TEST(InClause, QuotesInsideAreDoubled)
{
    EXPECT_EQ("IN ('O''Brien', '')", SqlQuery().setInClause({"O'Brien", ""}));
    EXPECT_EQ("IN (LIKE ('O''B%')", SqlQuery().setInClause({"O'B%"}));
}

TEST(InClause, LeavesTheQuery)
{
    SqlQuery query = people();
    const std::string before = query.selectQuery();
    query.setInClause({"x", "y%"});
    EXPECT_EQ(before, query.selectQuery());
}

TEST(SqlQuerySubFilter, TakesConstantTextsAndLiterals)
{
    SqlQuery query;
    const std::string condition = "a = 1";
    query.setSubFilter(condition, "AND");
    query.setSubFilter("b = 2", std::string("OR"));
    EXPECT_EQ(" (a = 1)\n OR(b = 2)\n", query.subFilter);
}
