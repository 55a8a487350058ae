#include <kd_lib/blanks.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using namespace kd_lib;

TEST(Blanks, AreSixBytesOfAll)
{
    std::string found;
    for (int byte = 0; byte < 256; ++byte) {
        if (isBlank(static_cast<char>(byte))) {
            found += static_cast<char>(byte);
        }
    }
    EXPECT_EQ("\t\n\v\f\r ", found);
}

TEST(Blanks, ViewsAreTheTrimmedTextWithoutACopy)
{
    const std::string text = "  r1c1  ";
    EXPECT_EQ("r1c1", allTrimView(text));
    EXPECT_EQ("  r1c1", rightTrimView(text));
    EXPECT_EQ(text.data() + 2, allTrimView(text).data());
    EXPECT_EQ(text.data(), rightTrimView(text).data());
}

TEST(Blanks, SizesAreThoseOfTheRest)
{
    EXPECT_EQ(0U, leadingBlanks(""));
    EXPECT_EQ(0U, leadingBlanks("x "));
    EXPECT_EQ(0U, sizeWithoutTrailingBlanks(""));
    EXPECT_EQ(2U, sizeWithoutTrailingBlanks(" x"));
    for (std::size_t count = 1; count <= 40; ++count) {
        const std::string blanks(count, ' ');
        EXPECT_EQ(count, leadingBlanks(blanks + "x ")) << count;
        EXPECT_EQ(count + 1, leadingBlanks(blanks + "\t")) << count;
        EXPECT_EQ(2U, sizeWithoutTrailingBlanks(" x" + blanks)) << count;
        EXPECT_EQ(0U, sizeWithoutTrailingBlanks("\t" + blanks)) << count;
    }
}

TEST(Blanks, ViewsReadNothingBesideTheirText)
{
    constexpr std::size_t margin = 64;
    for (std::size_t size = 1; size <= 40; ++size) {
        const std::string buffer(margin + size + margin, ' ');
        const std::string_view blanks = std::string_view(buffer).substr(margin, size);
        EXPECT_EQ(size, leadingBlanks(blanks)) << size;
        EXPECT_EQ(0U, sizeWithoutTrailingBlanks(blanks)) << size;

        std::string surrounded = buffer;
        surrounded.replace(margin, size, std::string(size, 'x') + " ");
        const std::string_view value = std::string_view(surrounded).substr(margin, size + 1);
        EXPECT_EQ(size, rightTrimView(value).size()) << size;
        EXPECT_EQ(size, allTrimView(value).size()) << size;
    }
}

}  // namespace
