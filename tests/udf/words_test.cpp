#include <kd_lib/detail/words.h>

#include <gtest/gtest.h>

#include <array>
#include <string>

using namespace kd_lib::detail;

TEST(Words, AValueIsReadAtAnyAddress)
{
    const std::string bytes = "xx\x01\x01\x01\x01\x01\x01\x01\x01";
    EXPECT_EQ(valueAt<Word>(bytes.data() + 2), 0x0101010101010101U);
    EXPECT_EQ(valueAt<HalfWord>(bytes.data() + 3), 0x01010101U);
}

TEST(Words, AWrittenValueIsReadBackAndNothingElseChanges)
{
    std::string bytes(10, '.');
    putValue(bytes.data() + 1, Word{0x1122334455667788U});
    EXPECT_EQ(valueAt<Word>(bytes.data() + 1), 0x1122334455667788U);
    EXPECT_EQ(bytes.front(), '.');
    EXPECT_EQ(bytes.back(), '.');
}

TEST(Words, TheFirstByteInMemoryIsTheLowestOfALittleEndianWord)
{
    const auto word = valueAt<Word>("a\0\0\0\0\0\0\0");
    EXPECT_EQ(word, littleEndian ? Word{'a'} : Word{'a'} << 56U);
}

TEST(Words, AVectorHoldsSixteenBytesInTheirOrder)
{
    const std::string bytes = "0123456789abcdef";
    const auto vector = valueAt<SixteenBytes>(bytes.data());
    std::array<char, vectorSize> copy{};
    putValue(copy.data(), vector);
    EXPECT_EQ(std::string(copy.begin(), copy.end()), bytes);
    EXPECT_EQ(vector[15], 'f');
}
