#include "detail/unicode.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace kd_lib::exchange::detail;

std::vector<int> charactersOf(std::string_view text)
{
    std::vector<int> characters;
    while (!text.empty()) {
        characters.push_back(takeCharacter(text));
    }
    return characters;
}

TEST(UnicodeTest, TakesCharactersOfOneToFourBytes)
{
    EXPECT_EQ(charactersOf("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z"),
              (std::vector<int>{'a', 0xE9, 0x20AC, 0x1F600, 'z'}));
}

TEST(UnicodeTest, TakesOneByteThatBeginsNoCharacter)
{
    EXPECT_EQ(charactersOf("\xFF\xE2\x82z"), (std::vector<int>{-1, -1, -1, 'z'}));
    EXPECT_EQ(charactersOf("\xED\xA0\x80"), (std::vector<int>{-1, -1, -1})) << "half of a surrogate pair";
    EXPECT_EQ(charactersOf(std::string_view("\0", 1)), (std::vector<int>{0}));
}

TEST(UnicodeTest, TakesNoByteBeyondTheText)
{
    std::string_view rest = std::string_view("\xF0\x9F\x98\x80").substr(0, 3);
    EXPECT_EQ(takeCharacter(rest), -1);
    EXPECT_EQ(rest.size(), 2U);
}

TEST(UnicodeTest, AppendsCharacters)
{
    std::string text = "a";
    for (const int character : {0x7F, 0x80, 0x7FF, 0x800, 0xFFFF, 0x10000, 0x10FFFF}) {
        appendCharacter(text, character);
    }
    EXPECT_EQ(text, "a\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST(UnicodeTest, CountsCharacters)
{
    EXPECT_EQ(countCharacters(""), 0U);
    EXPECT_EQ(countCharacters("abc"), 3U);
    EXPECT_EQ(countCharacters("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"), 4U);
}

TEST(UnicodeTest, FirstBytesEndWithAWholeCharacter)
{
    const std::string_view text = "a\xE2\x82\xAC\xC3\xA9";
    const std::vector<std::size_t> sizes{0, 1, 1, 1, 4, 4, 6, 6};
    for (std::size_t count = 0; count < sizes.size(); ++count) {
        EXPECT_EQ(firstBytes(text, count), text.substr(0, sizes[count])) << count;
    }
    EXPECT_EQ(firstBytes("\x80\x80\x80", 2), "") << "no character begins";
}

TEST(UnicodeTest, FirstCharacters)
{
    const std::string_view text = "a\xE2\x82\xAC\xC3\xA9";
    const std::vector<std::size_t> sizes{0, 1, 4, 6, 6};
    for (std::size_t count = 0; count < sizes.size(); ++count) {
        EXPECT_EQ(firstCharacters(text, count), text.substr(0, sizes[count])) << count;
    }
}

TEST(UnicodeTest, LowerCaseOfEachLetter)
{
    EXPECT_EQ(lowerCase("AbC 1\xC3\x89\xCE\xA3"), "abc 1\xC3\xA9\xCF\x83");
    EXPECT_EQ(lowerCase("A\xFF"
                        "B"),
              "a\xEF\xBF\xBD"
              "b");
}

TEST(UnicodeTest, FoldedTextsDifferInMoreThanCase)
{
    EXPECT_EQ(caseFolded("STRASSE \xC3\x89"), caseFolded("strasse \xC3\xA9"));
    EXPECT_EQ(caseFolded("\xCF\x82"), caseFolded("\xCF\x83")) << "the two forms of the small sigma";
    EXPECT_NE(caseFolded("e"), caseFolded("\xC3\xA9"));
}

}  // namespace
