#include "detail/inspection.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace kd_lib::exchange;
using detail::cellMeaning;
using detail::quotedBeginning;

TEST(InspectionTest, LongTextsAreCutBetweenCharacters)
{
    const std::string text = "begin" + std::string(55, 'x');
    EXPECT_EQ(quotedBeginning(text), '"' + text + '"');
    EXPECT_EQ(quotedBeginning(text + "y"), '"' + text + "\"... (61 bytes)");
    EXPECT_EQ(quotedBeginning(text.substr(0, 59) + "\xC3\xA9"), '"' + text.substr(0, 59) + "\"... (61 bytes)");
    EXPECT_EQ(quotedBeginning(""), "\"\"");
}

TEST(InspectionTest, MeaningsOfCells)
{
    EXPECT_EQ(cellMeaning(Cell::null()), "NULL");
    EXPECT_EQ(cellMeaning(Cell::text("a")), "\"a\"");
    EXPECT_EQ(cellMeaning(Cell::number("1.50")), "1.50");
    EXPECT_EQ(cellMeaning(Cell::real(1.5)), "1.5");
    EXPECT_EQ(cellMeaning(Cell::boolean(true)), "true");
    EXPECT_EQ(cellMeaning(Cell::boolean(false)), "false");
    EXPECT_EQ(cellMeaning(Cell::date({2024, 2, 29})), "2024-02-29");
    EXPECT_EQ(cellMeaning(Cell::timestamp({{2024, 2, 29}, 3661001})), "2024-02-29 01:01:01.001");
    EXPECT_EQ(cellMeaning(Cell::bytes("abc")), "3 bytes");
    EXPECT_EQ(cellMeaning(Cell::unreadable()), "unreadable");
}

}  // namespace
