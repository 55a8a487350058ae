#include "columnwidths.h"

#include <gtest/gtest.h>

namespace kd_tool {

using Widths = std::vector<std::size_t>;

TEST(ColumnWidths, WithoutALimitEachColumnHasTheWidthThatItNeeds)
{
    EXPECT_EQ(columnWidths({{3, true}, {400, true}, {5, false}}, 0, 2), (Widths{3, 400, 5}));
    EXPECT_EQ(columnWidths({}, 0, 2), Widths{});
}

TEST(ColumnWidths, TextThatFitsIsNotCut)
{
    EXPECT_EQ(columnWidths({{10, true}, {8, false}}, 20, 2), (Widths{10, 8}));
}

TEST(ColumnWidths, TheWidestTextsAreCutFirst)
{
    EXPECT_EQ(columnWidths({{10, true}, {50, true}, {8, false}}, 40, 2), (Widths{10, 18, 8}));
    EXPECT_EQ(columnWidths({{60, true}, {50, true}, {9, true}}, 40, 2), (Widths{14, 13, 9}));
}

TEST(ColumnWidths, NumbersStayWhole)
{
    EXPECT_EQ(columnWidths({{30, false}, {30, true}}, 40, 2), (Widths{30, 8}));
}

TEST(ColumnWidths, ColumnsWithoutRoomAreLeftOut)
{
    EXPECT_EQ(columnWidths({{20, true}, {20, true}, {20, true}, {20, true}}, 16, 2), (Widths{7, 7}));
    EXPECT_EQ(columnWidths({{20, false}, {20, true}}, 24, 2).size(), 1U);
}

TEST(ColumnWidths, AtLeastOneColumnRemains)
{
    EXPECT_EQ(columnWidths({{20, false}, {20, false}}, 12, 2), (Widths{12}));
    EXPECT_EQ(columnWidths({{20, true}}, 3, 2), (Widths{3}));
}

TEST(ColumnWidths, NoRoomIsExceeded)
{
    for (std::size_t room = 1; room < 120; ++room) {
        const Widths widths = columnWidths({{5, true}, {40, true}, {12, false}, {3, true}, {25, true}}, room, 2);
        ASSERT_FALSE(widths.empty());
        std::size_t sum = 2 * (widths.size() - 1);
        for (const std::size_t width : widths) {
            sum += width;
        }
        EXPECT_LE(sum, room);
    }
}

}  // namespace kd_tool
