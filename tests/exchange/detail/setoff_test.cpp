#include "detail/setoff.h"

#include "support/faulty_files.h"

#include <kd_lib/exchange/error.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using kd_lib::exchange::Error;
using kd_lib::exchange::detail::SetOff;

std::vector<std::uint64_t> leftOn(SetOff& lists, SetOff::Side side)
{
    std::vector<std::uint64_t> numbers;
    while (const auto number = lists.left(side)) {
        numbers.push_back(*number);
    }
    return numbers;
}

using Numbers = std::vector<std::uint64_t>;

TEST(SetOffTest, EqualTextsAreSetOffWhereverTheyAre)
{
    SetOff lists;
    for (const auto& [number, text] : std::vector<std::pair<std::uint64_t, std::string>>{
             {1, "a"}, {2, "b"}, {3, "a"}, {4, ""}, {5, "12345678"}, {6, "123456789"}}) {
        lists.add(SetOff::Side::First, number, text);
    }
    for (const auto& [number, text] : std::vector<std::pair<std::uint64_t, std::string>>{
             {11, "123456789"}, {12, "a"}, {13, ""}, {14, "c"}, {15, "c"}, {16, "b"}}) {
        lists.add(SetOff::Side::Second, number, text);
    }
    lists.settle();
    EXPECT_EQ(leftOn(lists, SetOff::Side::First), (Numbers{3, 5})) << "the later of two equal ones is left";
    EXPECT_EQ(leftOn(lists, SetOff::Side::Second), (Numbers{14, 15}));
}

TEST(SetOffTest, TextsThatDifferInOneByteDiffer)
{
    for (std::size_t size = 1; size <= 40; ++size) {
        SetOff lists;
        for (std::size_t at = 0; at <= size; ++at) {
            std::string text(size, 'a');
            if (at < size) {
                text[at] = 'b';
            }
            lists.add(SetOff::Side::First, at, text);
        }
        lists.add(SetOff::Side::Second, 1, std::string(size, 'a') + '\0');
        lists.settle();
        EXPECT_EQ(leftOn(lists, SetOff::Side::First).size(), size + 1);
        EXPECT_EQ(leftOn(lists, SetOff::Side::Second), Numbers{1});
    }
}

TEST(SetOffTest, AFailureNamesTheTemporaryDatabase)
{
    kd_test::FaultyFiles files;
    SetOff lists;
    files.failAt(1, kd_test::FaultyFiles::Kind::FromThenOn);
    std::string line;
    try {
        for (std::uint64_t i = 0; i < 1000000; ++i) {
            lists.add(SetOff::Side::First, i, std::to_string(i));
        }
    } catch (const Error& error) {
        line = error.what();
    }
    files.stop();
    EXPECT_TRUE(line.starts_with("temporary database: ")) << line;
}

}  // namespace
