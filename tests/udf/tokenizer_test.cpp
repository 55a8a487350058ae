#include <kd_lib/tokenizer.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

using namespace std::string_literals;
using kd_lib::PieceReader;
using kd_lib::Tokenizer;

using Pieces = std::vector<std::string>;

static_assert(!std::is_polymorphic_v<Tokenizer>);

namespace {

Pieces split(const std::string& text, const std::string& delimiters)
{
    Tokenizer tokenizer;
    tokenizer.split(text, delimiters);
    return tokenizer.tokens;
}

}  // namespace

TEST(Tokenizer, StartsEmpty)
{
    EXPECT_TRUE(Tokenizer().tokens.empty());
}

TEST(Tokenizer, EveryCharacterOfTheSetSeparates)
{
    EXPECT_EQ((Pieces{"10", "25", "40", "55"}), split("10|25:40;55", "|:;"));
}

TEST(Tokenizer, TheSetIsNotASeparatorOfSeveralCharacters)
{
    EXPECT_EQ((Pieces{"r1c1", "", "r1c2", "r1c3"}), split("r1c1, r1c2,r1c3", ", "));
}

TEST(Tokenizer, OneCharacterSeparates)
{
    EXPECT_EQ((Pieces{"r1c1", "r1c2", "r1c3"}), split("r1c1\tr1c2\tr1c3", "\t"));
}

TEST(Tokenizer, GetTokenReturnsACopyOfEachPiece)
{
    Tokenizer tokenizer;
    tokenizer.split("r1c1,r1c2,r1c3", ",");
    ASSERT_EQ(3U, tokenizer.tokens.size());
    EXPECT_EQ("r1c1", tokenizer.getToken(0));
    EXPECT_EQ("r1c2", tokenizer.getToken(1));
    EXPECT_EQ("r1c3", tokenizer.getToken(2));
    tokenizer.getToken(0) += "changed";
    EXPECT_EQ("r1c1", tokenizer.tokens[0]);
}

TEST(Tokenizer, KeepsEmptyPiecesInside)
{
    EXPECT_EQ((Pieces{"r1c1", "", "r1c3"}), split("r1c1,,r1c3", ","));
    EXPECT_EQ((Pieces{"r1c1", "", "", "r1c4"}), split("r1c1|:;r1c4", "|:;"));
}

TEST(Tokenizer, KeepsEmptyPiecesAtBothEnds)
{
    EXPECT_EQ((Pieces{"", "r1c2", ""}), split(",r1c2,", ","));
    EXPECT_EQ((Pieces{"", "", "r1c3", "", ""}), split(";|r1c3:;", "|:;"));
}

TEST(Tokenizer, EmptyTextIsOneEmptyPiece)
{
    EXPECT_EQ(Pieces{""}, split("", ","));
    EXPECT_EQ(Pieces{""}, split("", "|:;"));
    EXPECT_EQ(Pieces{""}, split("", ""));
}

TEST(Tokenizer, DelimitersAloneGiveOnePieceMore)
{
    EXPECT_EQ((Pieces{"", ""}), split(",", ","));
    EXPECT_EQ((Pieces{"", "", "", ""}), split(",,,", ","));
    EXPECT_EQ((Pieces{"", "", "", ""}), split("|:;", "|:;"));
}

TEST(Tokenizer, TextWithoutDelimitersIsOnePiece)
{
    EXPECT_EQ(Pieces{"r1c1"}, split("r1c1", ","));
    EXPECT_EQ(Pieces{"r1c1"}, split("r1c1", "|:;"));
}

TEST(Tokenizer, WithoutDelimitersNothingSeparates)
{
    EXPECT_EQ(Pieces{"r1c1,r1c2"}, split("r1c1,r1c2", ""));
}

TEST(Tokenizer, ASecondSplitReplacesThePieces)
{
    Tokenizer tokenizer;
    tokenizer.split("r1c1,r1c2,r1c3", ",");
    tokenizer.split("r2c1;r2c2", ";");
    EXPECT_EQ((Pieces{"r2c1", "r2c2"}), tokenizer.tokens);
}

TEST(Tokenizer, SplitsOneOfItsPieces)
{
    Tokenizer tokenizer;
    tokenizer.split("a long first piece, with a comma;r1c2", ";");
    tokenizer.split(tokenizer.tokens[0], ",");
    EXPECT_EQ((Pieces{"a long first piece", " with a comma"}), tokenizer.tokens);
}

TEST(Tokenizer, KeepsBlanksAndQuotesAndZeroBytes)
{
    EXPECT_EQ((Pieces{" r1c1 ", "\"r1c2\"", "\0"s}), split(" r1c1 ,\"r1c2\",\0"s, ","));
}

TEST(Tokenizer, ZeroByteAndHighByteSeparate)
{
    EXPECT_EQ((Pieces{"r1c1", "r1c2", "r1c3"}), split("r1c1\0r1c2\xFFr1c3"s, "\0\xFF"s));
}

TEST(PieceReader, ReturnsFalseAfterTheLastPieceAndStaysThere)
{
    PieceReader pieces("r1c1,", ",");
    std::string_view piece;
    EXPECT_TRUE(pieces.next(piece));
    EXPECT_EQ("r1c1", piece);
    EXPECT_TRUE(pieces.next(piece));
    EXPECT_EQ("", piece);
    EXPECT_FALSE(pieces.next(piece));
    EXPECT_FALSE(pieces.next(piece));
}
