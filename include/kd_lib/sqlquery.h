/// \file
/// Composing SELECT statements.
#pragma once

#include <kd_lib/export.h>
#include <kd_lib/text.h>

#include <string>
#include <vector>

namespace kd_lib {

/// Composes the text of a SELECT statement, or of the matching row count, from pieces. It checks and
/// escapes only the values of `setInClause`; all other quoting is up to the caller. Each clause is on its
/// own line; the blanks and line ends are part of the result.
///
///     kd_lib::SqlQuery query;
///     query.setFields("name");
///     query.setTables("people");
///     query.setFilter("age > 30", "");
///     std::string sql = query.selectQuery();
///
/// Threads: one thread per object; different threads may read one object.
class KD_LIB_EXPORT SqlQuery {
public:
    std::string fields;     ///< select list
    std::string tables;     ///< FROM list
    std::string join;       ///< clause on its own line after the FROM line
    std::string filter;     ///< conditions of the WHERE clause, joined
    std::string subFilter;  ///< parenthesised conditions, joined
    std::string order;      ///< ORDER BY list
    std::string limit;      ///< text of the LIMIT clause
    bool distinct = false;  ///< SELECT DISTINCT

    SqlQuery();  ///< an empty query
    virtual ~SqlQuery();

    /// Empties every piece.
    void resetQuery();

    /// Adds `f` to the select list, after ",\n\t" if it is not the first.
    void setFields(const std::string& f);

    /// Adds `t` to the FROM list, after ",\n\t" if it is not the first.
    void setTables(const std::string& t);

    /// Adds `o` to the ORDER BY list, after "," if it is not the first.
    void setOrder(const std::string& o);

    /// Adds a condition; the conjunction of the first one is ignored.
    void setFilter(std::string condition, std::string conjunction);

    /// Adds a condition in parentheses; the conjunction of the first one is ignored.
    void setSubFilter(const std::string& condition, const std::string& conjunction);
    void setSubFilter(std::string& condition, std::string& conjunction);  ///< the same; changes no argument

    /// "IN (" and the quoted values, or "IN ()" without values. Deliberate: if any value contains a percent sign, only
    /// the first such value is used, as "IN (LIKE ('value')", with one closing parenthesis missing.
    std::string setInClause(std::vector<std::string> values) const;

    /// The SELECT statement.
    std::string selectQuery() const;

    /// The SELECT COUNT(*) statement with the same tables, join and conditions; its column is "count".
    std::string countQuery() const;

private:
    KD_LIB_LOCAL std::string conditions() const;
};

}  // namespace kd_lib
