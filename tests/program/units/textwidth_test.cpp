#include "textwidth.h"

#include <gtest/gtest.h>

namespace kd_tool {

TEST(TextWidth, AsciiTakesACellACharacter)
{
    EXPECT_EQ(textWidth(""), 0U);
    EXPECT_EQ(textWidth("r1c1"), 4U);
}

TEST(TextWidth, WideCharactersTakeTwo)
{
    EXPECT_EQ(textWidth("\xE6\x9D\xB1\xE4\xBA\xAC"), 4U);  // two ideographs
    EXPECT_EQ(textWidth("\xF0\x9F\x98\x80"), 2U);          // an emoji
    EXPECT_EQ(textWidth("\xC3\xBC"
                        "x\xD0\x96"),
              3U);  // Latin and Cyrillic letters
}

TEST(TextWidth, CombiningCharactersTakeNone)
{
    EXPECT_EQ(textWidth("u\xCC\x88"), 1U);
    EXPECT_EQ(textWidth("\xCC\x88"), 0U);
}

TEST(TextWidth, AClusterIsAsWideAsItsWidestCharacter)
{
    // A family of three joined by U+200D.
    EXPECT_EQ(textWidth("\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA6"), 2U);
    // Two regional indicators are one flag; four are two.
    EXPECT_EQ(textWidth("\xF0\x9F\x87\xAB\xF0\x9F\x87\xB7"), 2U);
    EXPECT_EQ(textWidth("\xF0\x9F\x87\xAB\xF0\x9F\x87\xB7\xF0\x9F\x87\xAB\xF0\x9F\x87\xB7"), 4U);
}

TEST(TextWidth, BytesThatAreNotUtf8TakeOneEach)
{
    EXPECT_EQ(textWidth("a\xFF\xFE"
                        "b"),
              4U);
    EXPECT_EQ(textWidth("\xE6\x9D"), 2U);
}

TEST(TextWidth, PartsEndBetweenClusters)
{
    EXPECT_EQ(fittingPart("abc", 2), "ab");
    EXPECT_EQ(fittingPart("u\xCC\x88"
                          "bc",
                          1),
              "u\xCC\x88");
    EXPECT_EQ(fittingPart("\xE6\x9D\xB1\xE4\xBA\xAC", 3), "\xE6\x9D\xB1");
    EXPECT_EQ(fittingPart("\xE6\x9D\xB1", 1), "");
    EXPECT_EQ(fittingPart("", 5), "");
}

TEST(TextWidth, ATextThatIsCutEndsWithTheMark)
{
    EXPECT_EQ(truncated("abc", 3, ">"), "abc");
    EXPECT_EQ(truncated("abcd", 3, ">"), "ab>");
    EXPECT_EQ(truncated("abcd", 3, "\xE2\x80\xA6"), "ab\xE2\x80\xA6");
    EXPECT_EQ(truncated("\xE6\x9D\xB1\xE4\xBA\xAC", 3, ">"), "\xE6\x9D\xB1>");
    EXPECT_EQ(truncated("\xE6\x9D\xB1\xE4\xBA\xAC", 2, ">"), ">");
    EXPECT_EQ(truncated("abcd", 0, ">"), "");
}

}  // namespace kd_tool
