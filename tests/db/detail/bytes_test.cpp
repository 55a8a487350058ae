#include <kd_lib/detail/bytes.h>

#include <gtest/gtest.h>

#include <string>

using namespace kd_lib::detail;

TEST(Bytes, EverySizeIsCopiedWholeAndNothingAroundIt)
{
    for (std::size_t size = 0; size <= 70; ++size) {
        std::string from;
        for (std::size_t i = 0; i < size; ++i) {
            from += static_cast<char>('A' + i % 50);
        }
        std::string to(size + 2, '.');
        EXPECT_EQ(copyBytes(to.data() + 1, from), to.data() + 1 + size);
        EXPECT_EQ(to, "." + from + ".") << size;
    }
}

TEST(Bytes, AValueIsReplacedByTextOfAnySize)
{
    std::string value = "four";
    assignValue(value, "same");
    EXPECT_EQ(value, "same");
    assignValue(value, "longer than before");
    EXPECT_EQ(value, "longer than before");
    assignValue(value, "");
    EXPECT_EQ(value, "");
    replaceValue(value, "new");
    EXPECT_EQ(value, "new");
}

TEST(Bytes, AShorterValueKeepsItsMemory)
{
    std::string value(100, 'x');
    const char* const before = value.data();
    replaceValue(value, "short");
    EXPECT_EQ(value.data(), before);
}

TEST(Bytes, TextsOfEverySizeAreTheSameOrDifferInOneByte)
{
    for (std::size_t size = 0; size <= 70; ++size) {
        const std::string text(size, 'a');
        EXPECT_TRUE(sameBytes(text, std::string(text))) << size;
        EXPECT_FALSE(sameBytes(text, text + "a")) << size;
        for (std::size_t i = 0; i < size; ++i) {
            std::string other = text;
            other[i] = 'b';
            EXPECT_FALSE(sameBytes(text, other)) << size << ' ' << i;
        }
    }
}
