#include "detail/quotes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

using kd_lib::detail::copyTurningQuotes;

TEST(Quotes, EveryQuoteBecomesABackquoteAtEveryPlaceOfEverySize)
{
    for (std::size_t size = 0; size <= 50; ++size) {
        for (std::size_t at = 0; at <= size; ++at) {
            std::string from(size, 'x');
            std::string expected = from;
            if (at < size) {
                from[at] = '\'';
                expected[at] = '`';
            }
            std::string to(size + 2, '.');
            EXPECT_EQ(copyTurningQuotes(to.data() + 1, from), to.data() + 1 + size);
            ASSERT_EQ(to, "." + expected + ".") << "size " << size << ", quote at " << at;
        }
    }
}

TEST(Quotes, NoOtherByteChanges)
{
    std::string from;
    for (int byte = 0; byte < 256; ++byte) {
        from += static_cast<char>(byte);
    }
    std::string expected = from;
    std::replace(expected.begin(), expected.end(), '\'', '`');
    std::string to(from.size(), '.');
    copyTurningQuotes(to.data(), from);
    EXPECT_EQ(to, expected);
}
