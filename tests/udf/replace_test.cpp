#include <kd_lib/replace.h>
#include <kd_lib/text.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

using kd_lib::copyReplacing;
using kd_lib::replaceChar;

TEST(Replace, TheCharacterIsReplacedAtEveryPlaceOfEverySize)
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
            EXPECT_EQ(copyReplacing(to.data() + 1, from, '\'', '`'), to.data() + 1 + size);
            ASSERT_EQ(to, "." + expected + ".") << "size " << size << ", quote at " << at;
            EXPECT_EQ(replaceChar(from, '\'', '`'), expected) << "the same body";
            copyReplacing(from.data(), from, '\'', '`');
            EXPECT_EQ(from, expected) << "in its own place";
        }
    }
}

TEST(Replace, NoOtherByteChangesWhateverIsReplaced)
{
    std::string text;
    for (int byte = 0; byte < 256; ++byte) {
        text += static_cast<char>(byte);
    }
    for (const char from : {'\0', '\'', '`', 'a', '\x7f', '\x80', '\xff'}) {
        for (const char into : {'\0', '\'', '"', 'z', '\x80', '\xff'}) {
            std::string expected = text;
            std::replace(expected.begin(), expected.end(), from, into);
            std::string to(text.size(), '.');
            copyReplacing(to.data(), text, from, into);
            EXPECT_EQ(to, expected);
            EXPECT_EQ(replaceChar(text, from, into), expected);
        }
    }
}
