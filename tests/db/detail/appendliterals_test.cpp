#include "detail/appendliterals.h"

#include <kd_lib/sqlliteral.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

using kd_lib::TableField;
using kd_lib::detail::appendLiterals;
using kd_lib::detail::TextBuffer;

namespace {

TableField fieldOf(kd_lib::FIELD_TYPE type, const std::string& value)
{
    TableField field("f", type, 0, static_cast<int>(value.size()), 0, false);
    field.Value = value;
    return field;
}

}  // namespace

TEST(AppendLiterals, TheLiteralsAreThoseOfConvertValue2SqlWithCommasBetween)
{
    std::vector<TableField> fields = {fieldOf(kd_lib::CHAR_TYPE, "it's"),     fieldOf(kd_lib::INTEGER_TYPE, " 12 "),
                                      fieldOf(kd_lib::DATE_TYPE, "20240131"), fieldOf(kd_lib::TIME_TYPE, "235959"),
                                      fieldOf(kd_lib::BOOLEAN_TYPE, "T"),     fieldOf(kd_lib::CHAR_TYPE, "   "),
                                      fieldOf(kd_lib::MEMO_TYPE, "raw")};
    std::vector<TableField*> list;
    std::string expected;
    for (TableField& field : fields) {
        list.push_back(&field);
        expected += (expected.empty() ? "" : ",") + convertValue2Sql(field);
    }
    TextBuffer sql;
    sql.append("(");
    appendLiterals(sql, list);
    EXPECT_EQ(sql.text(), "(" + expected);
    EXPECT_EQ(sql.text(), "('it`s',12,'2024-01-31',23:59:59',1,NULL,raw");
}

TEST(AppendLiterals, NoFieldsAppendNothing)
{
    TextBuffer sql;
    appendLiterals(sql, {});
    EXPECT_EQ(sql.text(), "");
    sql.append("x");
    appendLiterals(sql, {});
    EXPECT_EQ(sql.text(), "x");
}

TEST(AppendLiterals, AValueThatThrowsLeavesTheTextBeforeItsRecord)
{
    TableField good = fieldOf(kd_lib::CHAR_TYPE, "good");
    TableField bad = fieldOf(kd_lib::DATE_TYPE, "123");
    TextBuffer sql;
    sql.append("before ");
    EXPECT_THROW(appendLiterals(sql, std::vector<TableField*>{&good, &bad}), std::out_of_range);
    EXPECT_EQ(sql.text().substr(0, 7), "before ");
}
