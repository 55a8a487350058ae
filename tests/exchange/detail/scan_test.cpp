#include "detail/scan.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace {

using namespace kd_lib::exchange::detail;

/// The text in memory of exactly its size, so that a sanitizer sees a read beyond it.
std::vector<char> exactly(const std::string& text)
{
    return {text.begin(), text.end()};
}

bool hasMark(const std::vector<char>& text, unsigned char byte)
{
    return anySet(marksOf({text.data(), text.size()}, byte));
}

bool hasByte(const std::vector<char>& text, unsigned char byte)
{
    return containsByte({text.data(), text.size()}, byte);
}

TEST(ScanTest, FindsAByteAtEachPlaceOfEachLength)
{
    for (std::size_t size = 1; size <= 70; ++size) {
        for (std::size_t at = 0; at < size; ++at) {
            std::string text(size, 'a');
            text[at] = '|';
            ASSERT_TRUE(hasByte(exactly(text), '|')) << "place " << at << " of " << size;
            ASSERT_TRUE(hasMark(exactly(text), '|')) << "place " << at << " of " << size;
        }
    }
}

TEST(ScanTest, FindsNoByteThatIsNotThere)
{
    for (std::size_t size = 0; size <= 70; ++size) {
        for (const unsigned char byte : std::vector<unsigned char>{0x00, 0x60, 0x62, 0x80, 0xFF}) {
            ASSERT_FALSE(hasByte(exactly(std::string(size, 'a')), byte)) << size;
            ASSERT_FALSE(hasMark(exactly(std::string(size, 'a')), byte)) << size;
        }
    }
}

TEST(ScanTest, ReadsNothingAroundTheText)
{
    const std::string around(300, '|');
    for (std::size_t size = 0; size <= 70; ++size) {
        std::string bytes = around;
        bytes.replace(100, size, size, 'a');
        const std::string_view text = std::string_view(bytes).substr(100, size);
        ASSERT_FALSE(containsByte(text, '|')) << size;
        ASSERT_FALSE(anySet(marksOf(text, '|'))) << size;
    }
}

TEST(ScanTest, BytesAbove127AreFoundAsWell)
{
    EXPECT_TRUE(containsByte("caf\xC3\xA9", 0xC3));
    EXPECT_TRUE(containsByte(std::string_view("a\0b", 3), 0));
    EXPECT_FALSE(containsByte("", 0));
}

}  // namespace
