#include "mariadbcolumns.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kd_lib::exchange::detail {

namespace {

std::uint32_t numberOf(const std::string& text)
{
    return text.empty() ? 0 : static_cast<std::uint32_t>(std::min(std::stoull(text), 0xFFFFFFFFULL));
}

bool isOneOf(const std::string& word, std::initializer_list<std::string_view> words)
{
    return std::ranges::find(words, word) != words.end();
}

ExistingColumn columnOf(const std::vector<std::string>& row)
{
    using Kind = ExistingColumn::Kind;
    ExistingColumn column;
    column.Name = row[0];
    const std::string& type = row[1];
    if (isOneOf(type, {"tinyint", "smallint", "mediumint", "int", "bigint", "year"})) {
        column.Keeps = Kind::Whole;
    } else if (type == "decimal") {
        column.Keeps = Kind::Decimal;
        column.Limit = numberOf(row[2]);
    } else if (type == "float" || type == "double") {
        // float(10,2) rounds to its decimals as well.
        column.Keeps = row[2].empty() ? Kind::Float : Kind::Decimal;
        column.Limit = row[2].empty() ? (type == "float" ? 6 : 15) : numberOf(row[2]);
    } else if (isOneOf(type, {"char", "varchar", "tinytext", "text", "mediumtext", "longtext"})) {
        column.Keeps = Kind::Text;
        column.Limit = numberOf(row[3]);
    } else if (type == "date") {
        column.Keeps = Kind::Date;
    } else if (isOneOf(type, {"time", "datetime", "timestamp"})) {
        column.Keeps = Kind::Moment;
        column.Limit = numberOf(row[4]);
    }
    return column;
}

std::string from(MariadbSession& session, const std::string& table)
{
    return " FROM information_schema.columns WHERE table_schema = database() AND table_name = " +
           session.literal(table) + " ORDER BY ordinal_position";
}

}  // namespace

std::vector<ExistingColumn> columnsOfTable(MariadbSession& session, const std::string& table)
{
    std::vector<ExistingColumn> columns;
    for (const std::vector<std::string>& row :
         session.rows("SELECT column_name, data_type, numeric_scale, character_maximum_length, datetime_precision" +
                      from(session, table))) {
        columns.push_back(columnOf(row));
    }
    return columns;
}

std::vector<std::string> foreignColumns(MariadbSession& session, const std::string& table)
{
    std::vector<std::string> names;
    for (const std::vector<std::string>& row :
         session.rows("SELECT column_name, character_set_name" + from(session, table))) {
        if (!row[1].empty() && !row[1].starts_with("utf8")) {
            names.push_back(row[0]);
        }
    }
    return names;
}

}  // namespace kd_lib::exchange::detail
