#include <kd_lib/sqlliteral.h>

#include "detail/appendliterals.h"

namespace kd_lib {

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

std::string convertValue2Sql(TableField field)
{
    TableField* const one = &field;
    detail::TextBuffer sql;
    detail::appendLiterals(sql, {&one, 1});
    return std::string(sql.text());
}

}  // namespace kd_lib
