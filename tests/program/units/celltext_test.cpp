#include "celltext.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kd_tool {

using kd_lib::exchange::Cell;

std::string shown(const Cell& cell)
{
    std::string text;
    appendCellText(text, cell);
    return text;
}

TEST(CellText, ValuesAsPeopleReadThem)
{
    EXPECT_EQ(shown(Cell::null()), "NULL");
    EXPECT_EQ(shown(Cell::text("")), "");
    EXPECT_EQ(shown(Cell::text("r1c1 \\ x")), "r1c1 \\ x");
    EXPECT_EQ(shown(Cell::number("-12.50")), "-12.50");
    EXPECT_EQ(shown(Cell::boolean(true)), "true");
    EXPECT_EQ(shown(Cell::boolean(false)), "false");
    EXPECT_EQ(shown(Cell::date({815, 3, 9})), "0815-03-09");
    EXPECT_EQ(shown(Cell::time(86399000)), "23:59:59");
    EXPECT_EQ(shown(Cell::time(61007)), "00:01:01.007");
    EXPECT_EQ(shown(Cell::timestamp({{2024, 2, 29}, 45296000})), "2024-02-29 12:34:56");
    EXPECT_EQ(shown(Cell::bytes(std::string_view("\x00\x1F\xFF", 3))), "x'001FFF'");
    EXPECT_EQ(shown(Cell::bytes("")), "x''");
}

TEST(CellText, FloatsAreTheShortestTextThatGivesThemBack)
{
    EXPECT_EQ(shown(Cell::real(0.1)), "0.1");
    EXPECT_EQ(shown(Cell::real(-2.5e300)), "-2.5e+300");
    EXPECT_EQ(shown(Cell::real(std::nan(""))), "NaN");
    EXPECT_EQ(shown(Cell::real(std::numeric_limits<double>::infinity())), "Infinity");
    EXPECT_EQ(shown(Cell::real(-std::numeric_limits<double>::infinity())), "-Infinity");
}

TEST(CellText, ControlBytesDoNotReachTheTerminal)
{
    EXPECT_EQ(shown(Cell::text("a\nb\r\tc")), "a\\nb\\r\\tc");
    EXPECT_EQ(shown(Cell::text("\x1b[2J\x7f")), "\\x1b[2J\\x7f");
    EXPECT_EQ(shown(Cell::text(std::string_view("a\0b", 3))), "a\\x00b");
    EXPECT_EQ(shown(Cell::text("\xC2\x9B"
                               "2J \xC3\xBC")),
              "\xC2\\x9b2J \xC3\xBC");
}

}  // namespace kd_tool
