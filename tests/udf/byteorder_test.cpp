#include <kd_lib/byteorder.h>

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>

using kd_lib::rotate2b;
using kd_lib::rotate4b;

namespace {

constexpr bool littleEndianHost = std::endian::native == std::endian::little;

/// As a reader does: copies bytes raw from a file, then converts them to host order.
short shortFromFile(std::array<unsigned char, 2> bytes)
{
    short raw = 0;
    std::memcpy(&raw, bytes.data(), bytes.size());
    return rotate2b(raw);
}

unsigned int intFromFile(std::array<unsigned char, 4> bytes)
{
    unsigned int raw = 0;
    std::memcpy(&raw, bytes.data(), bytes.size());
    return rotate4b(raw);
}

}  // namespace

TEST(ByteOrder, TwoFileBytesGiveTheNumberOnEveryHost)
{
    EXPECT_EQ(225, shortFromFile({0xE1, 0x00}));
    EXPECT_EQ(0x0201, shortFromFile({0x01, 0x02}));
    EXPECT_EQ(-2, shortFromFile({0xFE, 0xFF}));
    EXPECT_EQ(std::numeric_limits<short>::max(), shortFromFile({0xFF, 0x7F}));
    EXPECT_EQ(std::numeric_limits<short>::min(), shortFromFile({0x00, 0x80}));
}

TEST(ByteOrder, FourFileBytesGiveTheNumberOnEveryHost)
{
    EXPECT_EQ(1000U, intFromFile({0xE8, 0x03, 0x00, 0x00}));
    EXPECT_EQ(0x04030201U, intFromFile({0x01, 0x02, 0x03, 0x04}));
    EXPECT_EQ(0xFFFFFFFEU, intFromFile({0xFE, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(0x80000000U, intFromFile({0x00, 0x00, 0x00, 0x80}));
}

TEST(ByteOrder, LittleEndianHostKeepsItsInput)
{
    if constexpr (littleEndianHost) {
        EXPECT_EQ(225, rotate2b(225));
        EXPECT_EQ(258, rotate2b(258));
        EXPECT_EQ(-3, rotate2b(-3));
        EXPECT_EQ(1000U, rotate4b(1000U));
        EXPECT_EQ(16909060U, rotate4b(16909060U));
        EXPECT_EQ(0xFFFFFFFFU, rotate4b(0xFFFFFFFFU));
    } else {
        GTEST_SKIP() << "a big-endian host";
    }
}

TEST(ByteOrder, BigEndianHostExchangesTheBytes)
{
    if constexpr (littleEndianHost) {
        GTEST_SKIP() << "a little-endian host";
    } else {
        EXPECT_EQ(513, rotate2b(258));
        EXPECT_EQ(67305985U, rotate4b(16909060U));
    }
}

TEST(ByteOrder, AppliedTwiceGivesTheInputBack)
{
    for (int value = std::numeric_limits<short>::min(); value <= std::numeric_limits<short>::max(); ++value) {
        const auto v = static_cast<short>(value);
        ASSERT_EQ(v, rotate2b(rotate2b(v)));
    }
    for (const unsigned int v : {0U, 1U, 0x01020304U, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(v, rotate4b(rotate4b(v)));
    }
}
