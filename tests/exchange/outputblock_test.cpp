// Blocks of output.
#include <kd_lib/exchange/outputblock.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using kd_lib::exchange::OutputBlock;

namespace {

class Pieces : public OutputBlock {
public:
    explicit Pieces(std::size_t size) : OutputBlock(size) {}
    using OutputBlock::discard;

    std::vector<std::string> Taken;

protected:
    void take(std::string_view piece) override { Taken.emplace_back(piece); }
};

using Texts = std::vector<std::string>;

TEST(OutputBlock, IsWrittenWhenItIsFull)
{
    Pieces out(8);
    out.write("12345");
    out.write("678");
    EXPECT_TRUE(out.Taken.empty());
    out.write("9");
    EXPECT_EQ(out.Taken, Texts{"12345678"});
    out.flush();
    EXPECT_EQ(out.Taken, (Texts{"12345678", "9"}));
    EXPECT_EQ(out.size(), 9U);
}

TEST(OutputBlock, LongTextsAreNotCopied)
{
    Pieces out(8);
    out.write('a');
    out.write("123456789");
    EXPECT_EQ(out.Taken, (Texts{"a", "123456789"}));
    EXPECT_EQ(out.size(), 10U);
}

TEST(OutputBlock, GrowsToTheReservedRoom)
{
    Pieces out(8);
    out.write("ab");
    char* const to = out.reserve(20);
    EXPECT_EQ(out.Taken, Texts{"ab"});
    std::fill_n(to, 20, 'x');
    out.advance(to + 20);
    EXPECT_EQ(out.reserve(0), to + 20);
    out.flush();
    EXPECT_EQ(out.Taken, (Texts{"ab", std::string(20, 'x')}));
}

TEST(OutputBlock, ForgetsDiscardedText)
{
    Pieces out(8);
    out.write("ab");
    out.discard();
    out.flush();
    EXPECT_TRUE(out.Taken.empty());
}

TEST(OutputBlock, NothingIsWrittenWithoutText)
{
    Pieces out(8);
    out.flush();
    out.write("");
    out.flush();
    EXPECT_TRUE(out.Taken.empty());
    EXPECT_EQ(out.size(), 0U);
}

}  // namespace
