#include "suggestion.h"

#include <gtest/gtest.h>

namespace kd_tool {

const std::vector<std::string_view> words = {"show", "list", "load", "convert", "inspect"};

TEST(Suggestion, NamesTheNearestWord)
{
    EXPECT_EQ(suggestion("shwo", words), "; did you mean \"show\"?");
    EXPECT_EQ(suggestion("lst", words), "; did you mean \"list\"?");
    EXPECT_EQ(suggestion("lload", words), "; did you mean \"load\"?");
    EXPECT_EQ(suggestion("convret", words), "; did you mean \"convert\"?");
    EXPECT_EQ(suggestion("inspcet", words), "; did you mean \"inspect\"?");
}

TEST(Suggestion, IsEmptyIfNoWordIsNear)
{
    EXPECT_EQ(suggestion("dance", words), "");
    EXPECT_EQ(suggestion("lo", words), "");
    EXPECT_EQ(suggestion("shx", words), "");
    EXPECT_EQ(suggestion("shxy", words), "");
    EXPECT_EQ(suggestion("", words), "");
    EXPECT_EQ(suggestion(std::string(1000, 'x'), words), "");
    EXPECT_EQ(suggestion("show", {}), "");
}

TEST(Suggestion, LongWordsAreNotCompared)
{
    for (const std::size_t size : {31U, 32U, 33U, 34U}) {
        const std::string word(size, 'x');
        const std::string meant = word.substr(1) + 'y';
        EXPECT_EQ(suggestion(word, {meant}), size > 32 ? "" : "; did you mean \"" + meant + "\"?") << size;
        EXPECT_EQ(suggestion(std::string(32, 'x'), {word}).empty(), size > 32) << size;
    }
}

TEST(Suggestion, ExchangedLettersAreOneEdit)
{
    EXPECT_EQ(suggestion("abdc", {"abdx", "abcd"}), "; did you mean \"abdx\"?");
    EXPECT_EQ(suggestion("abdc", {"abxx", "abcd"}), "; did you mean \"abcd\"?");
}

}  // namespace kd_tool
