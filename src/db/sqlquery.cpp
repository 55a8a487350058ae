#include <kd_lib/sqlquery.h>

#include <algorithm>
#include <utility>

namespace kd_lib {

namespace {

void addItem(std::string& list, const std::string& separator, const std::string& item)
{
    list += list.empty() ? item : separator + item;
}

}  // namespace

SqlQuery::SqlQuery()
{
    resetQuery();
}

SqlQuery::~SqlQuery() = default;

void SqlQuery::resetQuery()
{
    for (std::string* piece : {&fields, &tables, &join, &filter, &subFilter, &order, &limit}) {
        piece->clear();
    }
    distinct = false;
}

void SqlQuery::setFields(const std::string& f)
{
    addItem(fields, ",\n\t", f);
}

void SqlQuery::setTables(const std::string& t)
{
    addItem(tables, ",\n\t", t);
}

void SqlQuery::setOrder(const std::string& o)
{
    addItem(order, ",", o);
}

void SqlQuery::setFilter(std::string condition, std::string conjunction)
{
    filter += filter.empty() ? " " : " " + conjunction + " ";
    filter += condition + "\n";
}

void SqlQuery::setSubFilter(std::string& condition, std::string& conjunction)
{
    setSubFilter(std::as_const(condition), std::as_const(conjunction));
}

void SqlQuery::setSubFilter(const std::string& condition, const std::string& conjunction)
{
    // Deliberate: no blank between the conjunction and the parenthesis.
    const std::string before = subFilter.empty() ? " (" : " " + conjunction + "(";
    subFilter += before + condition + ")\n";
}

std::string SqlQuery::setInClause(std::vector<std::string> values) const
{
    const auto pattern = std::find_if(values.begin(), values.end(),
                                      [](const std::string& value) { return value.find('%') != std::string::npos; });
    std::string clause = "IN (";
    if (pattern != values.end()) {
        // Deliberate: the parenthesis of IN stays open.
        return clause + "LIKE (" + inQuotes(*pattern, '\'') + ")";
    }
    const char* separator = "";
    for (const std::string& value : values) {
        clause += separator + inQuotes(value, '\'');
        separator = ", ";
    }
    return clause + ")";
}

std::string SqlQuery::conditions() const
{
    std::string text;
    if (!join.empty()) {
        text += " " + join + "\n";
    }
    if (!filter.empty()) {
        text += " WHERE " + filter + "\n";
    }
    if (!subFilter.empty()) {
        text += (filter.empty() ? " WHERE (" : "  AND (") + subFilter + ")\n";
    }
    return text;
}

std::string SqlQuery::selectQuery() const
{
    std::string text = "SELECT ";
    text += distinct ? "DISTINCT " : "";
    text += fields + "\n  FROM  " + tables + "\n" + conditions();
    if (!order.empty()) {
        text += " ORDER BY " + order + "\n";
    }
    if (!limit.empty()) {
        text += " LIMIT " + limit + "\n";
    }
    return text;
}

std::string SqlQuery::countQuery() const
{
    std::string text = "SELECT ";
    text += distinct ? "DISTINCT " : "";
    return text + " COUNT(*) AS count  FROM " + tables + "\n" + conditions();
}

}  // namespace kd_lib
