#include "detail/utf8.h"

#include "detail/unicode.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using namespace kd_lib::exchange::detail;

/// `takeCharacter`, which uses utf8proc, must agree about a text.
void expectAlike(const std::string& text)
{
    std::string_view rest = text;
    const bool whole = takeCharacter(rest) >= 0;
    const Utf8Piece piece = firstUtf8Piece(text);
    ASSERT_EQ(piece.Whole, whole) << testing::PrintToString(text);
    if (whole) {
        ASSERT_EQ(piece.Length, text.size() - rest.size()) << testing::PrintToString(text);
        ASSERT_EQ(validUtf8Length(text.substr(0, piece.Length)), piece.Length);
        ASSERT_EQ(validUtf8Length(text.substr(0, piece.Length - 1)), 0U) << "a part of a character";
    } else {
        ASSERT_EQ(validUtf8Length(text), 0U) << testing::PrintToString(text);
    }
}

TEST(Utf8Test, EachFirstAndSecondByteWithBytesAtTheBounds)
{
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            for (const char third : {'\x7F', '\x80', '\xBF', '\xC0'}) {
                for (const char fourth : {'\x7F', '\x80', '\xBF', '\xC0'}) {
                    expectAlike({static_cast<char>(first), static_cast<char>(second), third, fourth});
                }
            }
        }
    }
}

TEST(Utf8Test, APieceEndsBeforeTheFirstByteThatDoesNotFit)
{
    EXPECT_EQ(firstUtf8Piece("\xE2\x82z").Length, 2U);
    EXPECT_EQ(firstUtf8Piece("\xF0\x9F\x98").Length, 3U);
    EXPECT_EQ(firstUtf8Piece("\xE0\x80\x80").Length, 1U);
    EXPECT_EQ(firstUtf8Piece("\xFF\x80").Length, 1U);
}

TEST(Utf8Test, TheValidLengthEndsBeforeTheFirstFault)
{
    for (std::size_t size = 0; size <= 40; ++size) {
        const std::string ascii(size, 'a');
        EXPECT_EQ(validUtf8Length(ascii), size);
        EXPECT_EQ(validUtf8Length(ascii + "\xC3\xA9"), size + 2);
        EXPECT_EQ(validUtf8Length(ascii + "\xC3"), size);
        EXPECT_EQ(validUtf8Length(ascii + "\xFF" + ascii), size);
    }
}

}  // namespace
