#include "detail/convertedinput.h"

#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <string>

using kd_lib::exchange::CodePage;
using kd_lib::exchange::EncodingErrors;
using Outcome = CodePage::Decoded::Outcome;
using namespace kd_lib::exchange::detail;

namespace {

constexpr std::size_t room = 64;  // the smallest permitted count

/// The whole text, taken in pieces as small as possible.
std::string textOf(const std::string& bytes, const char* encoding)
{
    const kd_test::ScopedDirectory folder;
    InputFile file(folder.write("t", bytes));
    ConvertedInput input(file, CodePage(encoding));
    std::string all;
    char piece[room];
    for (std::size_t got = input.readSome(piece, room); got > 0; got = input.readSome(piece, room)) {
        all.append(piece, got);
    }
    EXPECT_EQ(input.readSome(piece, room), 0U);
    return all;
}

std::string replaced(std::string_view text, EncodingErrors onError = EncodingErrors::Replace)
{
    std::string scratch;
    return std::string(decodeMarked(text, onError, scratch).Text);
}

TEST(ConvertedInput, Utf16InBothOrders)
{
    EXPECT_EQ(textOf(std::string("a\0\xE9\0\xAC\x20", 6), "utf-16le"), "a\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(textOf(std::string("\xFE\xFF\0a", 4), "utf-16"), "\xEF\xBB\xBF"
                                                               "a");
    EXPECT_EQ(textOf(std::string("\xFF\xFE"
                                 "a\0",
                                 4),
                     "utf-16"),
              "\xEF\xBB\xBF"
              "a");
    EXPECT_EQ(textOf(std::string("a\0", 2), "utf-16"), "a");
    EXPECT_EQ(textOf("", "utf-16"), "");
}

TEST(ConvertedInput, NamesWithoutAHyphenFindTheByteOrderToo)
{
    const std::string marked = "\xEF\xBB\xBF"
                               "a";
    EXPECT_EQ(textOf(std::string("\xFE\xFF\0a", 4), "utf16"), marked);
    EXPECT_EQ(textOf(std::string("a\0", 2), "utf16"), "a");
    EXPECT_EQ(textOf(std::string("\0\0\xFE\xFF\0\0\0a", 8), "utf32"), marked);
    EXPECT_EQ(textOf(std::string("a\0\0\0", 4), "utf32"), "a");
}

TEST(ConvertedInput, BytesThatBecomeSeveralCharacters)
{
    std::string bytes;
    std::string expected;
    for (int i = 0; i < 200; ++i) {
        bytes += i % 3 == 0 ? "\x82x" : "\x82";
        expected += i % 3 == 0 ? "\u0BB8\u0BCD\u0BB0\u0BC0x" : "\u0BB8\u0BCD\u0BB0\u0BC0";
    }
    EXPECT_EQ(textOf(bytes, "tscii"), expected);
}

TEST(ConvertedInput, Utf32InBothOrders)
{
    const std::string marked = "\xEF\xBB\xBF"
                               "a";
    EXPECT_EQ(textOf(std::string("\0\0\xFE\xFF\0\0\0a", 8), "utf-32"), marked);
    EXPECT_EQ(textOf(std::string("\xFF\xFE\0\0a\0\0\0", 8), "utf-32"), marked);
    EXPECT_EQ(textOf(std::string("a\0\0\0", 4), "utf-32"), "a");
}

TEST(ConvertedInput, LongTextsInSmallPieces)
{
    std::string bytes;
    std::string expected;
    for (int i = 0; i < 100000; ++i) {
        bytes += std::string("\x3D\xD8\x00\xDE"
                             "x\0",
                             6);  // U+1F600 and x
        expected += "\xF0\x9F\x98\x80x";
    }
    EXPECT_TRUE(textOf(bytes, "utf-16le") == expected);
}

TEST(ConvertedInput, BytesThatTheEncodingLacksAreMarked)
{
    const std::string text = textOf(std::string("a\0\0\xDC"
                                                "b\0\0\xD8",
                                                8),
                                    "utf-16le");
    EXPECT_EQ(text, "a\xFF"
                    "00\xFE"
                    "DCb\xFF"
                    "00\xFE"
                    "D8");
    EXPECT_EQ(replaced(text), "a\xEF\xBF\xBD"
                              "b\xEF\xBF\xBD");
    EXPECT_EQ(replaced(text, EncodingErrors::Escape), "a\\x00\\xDCb\\x00\\xD8");
    EXPECT_EQ(replaced(text, EncodingErrors::Strict), "");
    EXPECT_EQ(replaced("abc"), "abc");
    EXPECT_EQ(textOf(std::string("a\0b", 3), "utf-16le"), "a\xFF"
                                                          "62");
    std::string scratch;
    EXPECT_EQ(decodeMarked(text, EncodingErrors::Strict, scratch).Result, Outcome::Failed);
    EXPECT_EQ(decodeMarked(text, EncodingErrors::Replace, scratch).FirstUnknown, 1U);
}

TEST(ConvertedInput, OnlyTheByteThatThePageLacksIsMarked)
{
    EXPECT_EQ(textOf("\xC1\x41\xC2", "ebcdic-us"), "A\xFF"
                                                   "41"
                                                   "B");
    EXPECT_EQ(textOf("a\xFFxy", "iso-2022-jp"), "a\xFF"
                                                "FFxy");
}

TEST(ConvertedInput, SizesInTheFile)
{
    const kd_test::ScopedDirectory folder;
    InputFile file(folder.write("t", "x"));
    const auto size = [&file](const char* encoding, std::string_view text) {
        return ConvertedInput(file, CodePage(encoding)).sizeInFile(text);
    };
    EXPECT_EQ(size("utf-16le", "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"), 10U);
    EXPECT_EQ(size("utf-16le", "a\xFF"
                               "00\xFE"
                               "DCb"),
              6U);
    EXPECT_EQ(size("utf-32le", "a\xF0\x9F\x98\x80"), 8U);
    EXPECT_EQ(size("ebcdic-us", "ab"), 2U);
    EXPECT_FALSE(size("iso-2022-jp", "ab"));
}

}  // namespace
