#include "detail/delimiterguess.h"

#include <gtest/gtest.h>

using namespace kd_lib::exchange::detail;

namespace {

char guessOf(std::string_view sample, bool whole = true, DelimitedForm form = {})
{
    return guessDelimiter(sample, whole, form).Delimiter;
}

TEST(DelimiterGuess, EachDelimiter)
{
    for (const char delimiter : {',', ';', '\t', '|', ':'}) {
        const std::string between(1, delimiter);
        EXPECT_EQ(guessOf("a" + between + "b\n1" + between + "2\n"), delimiter);
    }
}

TEST(DelimiterGuess, ADelimiterThatSplitsAllRowsAlike)
{
    EXPECT_EQ(guessOf("a,x;b\n1;2\n3;4\n"), ';');
    EXPECT_EQ(guessOf("time,x\n10:15,1\n10:16,2\n"), ',');
    EXPECT_EQ(guessOf("a;b\n1,5;2,5\n"), ';');
    EXPECT_EQ(guessOf("a,b;c,d\n"), ',');
    EXPECT_EQ(guessOf("a;b\r\n\r\n1;2\r3;4"), ';');
}

TEST(DelimiterGuess, QuotedDelimitersDoNotCount)
{
    EXPECT_EQ(guessOf("a;b\n\"x,y,\"\"z\n\";1\n"), ';');
    EXPECT_EQ(guessOf("a;b\n'x,y';1\n", true, {',', '\'', true}), ';');
    EXPECT_EQ(guessOf("\"a,b\";c\n1;2\n", true, {',', '"', false}), ';');
}

TEST(DelimiterGuess, TheLastRowOfAPartIsIgnored)
{
    EXPECT_EQ(guessDelimiter("a,b\n1,2\n3", false, {}).Evidence,
              "the delimiter is ',': it cuts 2 of the first 2 rows into 2 columns");
    EXPECT_EQ(guessDelimiter("a,b\n1,2\n3", true, {}).Evidence,
              "the delimiter is ',': it cuts 2 of the first 3 rows into 2 columns");
}

TEST(DelimiterGuess, TheUsualDelimiterIfNoneIsFound)
{
    EXPECT_EQ(guessOf("word\none\n"), ',');
    EXPECT_EQ(guessOf("word\none\n", true, {'\t', '"', true}), '\t');
    EXPECT_EQ(guessOf(""), ',');
    EXPECT_EQ(guessDelimiter("x", true, {'\t', '"', true}).Evidence,
              "the delimiter is assumed to be tab: none splits the first row into columns");
}

}  // namespace
