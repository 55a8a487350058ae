#include <kd_lib/sqlliteral.h>

#include <string_view>

namespace kd_lib {

namespace {

constexpr const char* nullLiteral = "NULL";

constexpr std::size_t compactDateLength = 8;
constexpr std::size_t compactTimeLength = 6;

/// At most `length` characters from `position`; as std::string::substr, a position behind the end
/// throws std::out_of_range.
std::string_view piece(std::string_view text, std::size_t position, std::size_t length)
{
    return text.substr(position, length);
}

void appendDate(std::string& sql, std::string_view date)
{
    sql += '\'';
    if (date.size() <= compactDateLength) {
        sql += piece(date, 0, 4);
        sql += '-';
        sql += piece(date, 4, 2);
        sql += '-';
        sql += piece(date, 6, 2);
    } else {
        sql += date;
    }
    sql += '\'';
}

void appendTime(std::string& sql, std::string_view time)
{
    // Deliberate: no quote in front, unlike a date.
    if (time.size() <= compactTimeLength) {
        sql += piece(time, 0, 2);
        sql += ':';
        sql += piece(time, 2, 2);
        sql += ':';
        sql += piece(time, 4, 2);
    } else {
        sql += time;
    }
    sql += '\'';
}

void appendText(std::string& sql, std::string_view text)
{
    sql += '\'';
    for (std::size_t quote = 0; (quote = text.find('\'')) != std::string_view::npos;) {
        sql += text.substr(0, quote);
        sql += '`';
        text.remove_prefix(quote + 1);
    }
    sql += text;
    sql += '\'';
}

}  // namespace

std::string convertField2Sql(TableField field)
{
    std::string sql = field.Name + ' ' + getFieldTypeName(field.Type);
    if (field.Type == CHAR_TYPE || field.Type == VARCHAR_TYPE) {
        sql += '(' + std::to_string(field.Length) + ')';
    } else if (field.Type == DECIMAL_TYPE) {
        sql += '(' + std::to_string(field.Length) + ',' + std::to_string(field.Decimals) + ')';
    }
    return sql;
}

void appendValue2Sql(std::string& sql, const TableField& field)
{
    switch (field.Type) {
    case BOOLEAN_TYPE:
        sql += stringToBool(field.Value) ? '1' : '0';
        return;
    case DECIMAL_TYPE:
    case FLOAT_TYPE:
    case SMALLINT_TYPE:
    case INTEGER_TYPE:
    case BIGINT_TYPE:
    case DATE_TYPE:
    case TIME_TYPE:
    case TIMESTAMP_TYPE:
    case CHAR_TYPE:
    case VARCHAR_TYPE:
    case TEXT_TYPE:
        break;
    default:
        sql += field.Value;
        return;
    }
    const std::string_view trimmed = allTrimView(field.Value);
    if (trimmed.empty()) {
        sql += nullLiteral;
        return;
    }
    switch (field.Type) {
    case DATE_TYPE:
        appendDate(sql, trimmed);
        break;
    case TIME_TYPE:
        appendTime(sql, trimmed);
        break;
    case TIMESTAMP_TYPE:
        sql += '\'';
        sql += trimmed;
        sql += '\'';
        break;
    case CHAR_TYPE:
    case VARCHAR_TYPE:
    case TEXT_TYPE:
        appendText(sql, rightTrimView(field.Value));
        break;
    default:
        sql += trimmed;
        break;
    }
}

std::string convertValue2Sql(TableField field)
{
    std::string sql;
    appendValue2Sql(sql, field);
    return sql;
}

}  // namespace kd_lib
