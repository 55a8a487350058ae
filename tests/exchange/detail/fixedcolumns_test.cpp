#include "detail/fixedcolumns.h"

#include "support/shown.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace kd_lib::exchange::detail;

/// The columns as "NAME OFFSET+LENGTH", or the reason against the list.
std::string columnsOf(const std::string& list)
{
    std::string all;
    const std::string error = kd_test::errorOf([&] {
        for (const FixedColumn& column : parseFixedColumns("f", list)) {
            all += (all.empty() ? "" : ", ") + column.Name + ' ' + std::to_string(column.Offset) + '+' +
                   std::to_string(column.Length);
            EXPECT_EQ(column.end(), column.Offset + column.Length);
        }
    });
    return error.empty() ? all : "!";
}

TEST(FixedColumnsTest, PositionsAreTheEndsOfColumns)
{
    EXPECT_EQ(columnsOf("5|12|20"), "field#0 5+5, field#1 12+7, field#2 20+8");
    EXPECT_EQ(columnsOf("5:12;20"), columnsOf("5|12|20"));
    EXPECT_EQ(columnsOf(" 5 | 12 "), "field#0 5+5, field#1 12+7");
    EXPECT_EQ(columnsOf("5|5"), "!");
    EXPECT_EQ(columnsOf("5|4"), "!");
    EXPECT_EQ(columnsOf("0|4"), "!");
    EXPECT_EQ(columnsOf("5||6"), "!");
    EXPECT_EQ(columnsOf("1073741823"), "field#0 1073741823+1073741823");
    EXPECT_EQ(columnsOf("1073741824"), "!") << "its end is not a position in a line";
}

TEST(FixedColumnsTest, NamedRangesCountFromOne)
{
    EXPECT_EQ(columnsOf("name:1-8,town:9-24"), "name 0+8, town 8+16");
    EXPECT_EQ(columnsOf(" a : 3 , b:4 - 5"), "a 2+1, b 3+2");
    EXPECT_EQ(columnsOf("a:b:1-2"), "a:b 0+2");
    EXPECT_EQ(columnsOf("a:2147483647"), "a 2147483646+1");
    EXPECT_EQ(columnsOf("a:2147483648"), "!");
    EXPECT_EQ(columnsOf("a:0-3"), "!");
    EXPECT_EQ(columnsOf("a:3-2"), "!");
    EXPECT_EQ(columnsOf("a:3-"), "!");
    EXPECT_EQ(columnsOf("a"), "!");
    EXPECT_EQ(columnsOf("a:x"), "!");
    EXPECT_EQ(columnsOf("  "), "!");
}

}  // namespace
