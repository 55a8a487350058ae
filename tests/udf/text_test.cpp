#include <kd_lib/kd_udf.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

using namespace std::string_literals;
using namespace kd_lib;

static_assert(std::is_const_v<decltype(BRACKET)> && std::is_const_v<decltype(BLANK_DATE_STR)>);

namespace {

const std::string allBlanks = " \t\r\n\v\f";

std::string everyByte()
{
    std::string bytes;
    for (int code = 0; code < 256; ++code) {
        bytes += static_cast<char>(code);
    }
    return bytes;
}

}  // namespace

// Constants

TEST(Constants, HaveTheirValues)
{
    EXPECT_EQ("()", BRACKET);
    EXPECT_EQ("{}", CURLY_BRACKET);
    EXPECT_EQ("[]", SQUARE_BRACKET);
    EXPECT_EQ("", BLANK_DATE_STR);
}

// stringToLower, stringToUpper

TEST(LetterCase, LowerChangesTheUpperCaseLetters)
{
    EXPECT_EQ("custname_1", stringToLower("CustNAME_1"));
    EXPECT_EQ("", stringToLower(""));
}

TEST(LetterCase, UpperChangesTheLowerCaseLetters)
{
    EXPECT_EQ("CUSTNAME_1", stringToUpper("CustName_1"));
    EXPECT_EQ("", stringToUpper(""));
}

TEST(LetterCase, ChangesTheLettersOfAsciiAndNoOtherByte)
{
    std::string lower = everyByte();
    std::string upper = everyByte();
    for (std::size_t letter = 0; letter < 26; ++letter) {
        lower['A' + letter] = static_cast<char>('a' + letter);
        upper['a' + letter] = static_cast<char>('A' + letter);
    }
    EXPECT_EQ(lower, stringToLower(everyByte()));
    EXPECT_EQ(upper, stringToUpper(everyByte()));
}

TEST(LetterCase, LeavesTheArgument)
{
    const std::string text = "MiXed";
    stringToLower(text);
    stringToUpper(text);
    EXPECT_EQ("MiXed", text);
}

// allTrim, rightTrim

TEST(Trim, AllTrimRemovesBlanksFromBothEnds)
{
    EXPECT_EQ("r1 c1", allTrim("  r1 c1   "));
    EXPECT_EQ("r1c1", allTrim("r1c1"));
}

TEST(Trim, RightTrimKeepsLeadingBlanks)
{
    EXPECT_EQ("  r1 c1", rightTrim("  r1 c1   "));
    EXPECT_EQ("r1c1", rightTrim("r1c1"));
}

TEST(Trim, RemovesBlankTabAndTheFourLineBlanks)
{
    for (const char blank : allBlanks) {
        const std::string text = blank + "x"s + blank;
        EXPECT_EQ("x", allTrim(text)) << static_cast<int>(blank);
        EXPECT_EQ(blank + "x"s, rightTrim(text)) << static_cast<int>(blank);
    }
    EXPECT_EQ("x", allTrim(allBlanks + "x" + allBlanks));
    EXPECT_EQ(allBlanks + "x", rightTrim(allBlanks + "x" + allBlanks));
}

TEST(Trim, RemovesNoOtherByte)
{
    for (const char byte : everyByte()) {
        if (allBlanks.find(byte) == std::string::npos) {
            const std::string text(3, byte);
            EXPECT_EQ(text, allTrim(text)) << static_cast<int>(byte);
            EXPECT_EQ(text, rightTrim(text)) << static_cast<int>(byte);
        }
    }
}

TEST(Trim, OfBlanksAloneIsEmpty)
{
    EXPECT_EQ("", allTrim(allBlanks));
    EXPECT_EQ("", rightTrim(allBlanks));
    EXPECT_EQ("", allTrim(""));
    EXPECT_EQ("", rightTrim(""));
}

TEST(Trim, RemovesRunsOfEveryLength)
{
    for (std::size_t count = 0; count <= 40; ++count) {
        const std::string blanks(count, ' ');
        EXPECT_EQ("x", rightTrim("x" + blanks)) << count;
        EXPECT_EQ("x\t x", rightTrim("x\t x" + blanks)) << count;
        EXPECT_EQ("", rightTrim(blanks)) << count;
        EXPECT_EQ("x", rightTrim("x\t" + blanks + "\n" + blanks)) << count;
        EXPECT_EQ("x", allTrim(blanks + "x" + blanks)) << count;
    }
}

TEST(Trim, LeavesTheArgument)
{
    const std::string text = " r1c1 ";
    allTrim(text);
    rightTrim(text);
    EXPECT_EQ(" r1c1 ", text);
}

// leftPad

TEST(LeftPad, PutsThePadInFront)
{
    EXPECT_EQ("   42", leftPad("42", 5, ' '));
    EXPECT_EQ("00042", leftPad("42", 5, '0'));
    EXPECT_EQ("*****", leftPad("", 5, '*'));
}

TEST(LeftPad, TextOfTheWidthStays)
{
    EXPECT_EQ("12345", leftPad("12345", 5, ' '));
}

TEST(LeftPad, LongerTextIsKeptWhole)
{
    EXPECT_EQ("123456", leftPad("123456", 5, ' '));
    EXPECT_EQ("123456", leftPad("123456", 1, ' '));
}

TEST(LeftPad, WidthOfZeroOrLessPadsNothing)
{
    EXPECT_EQ("42", leftPad("42", 0, ' '));
    EXPECT_EQ("42", leftPad("42", -3, ' '));
    EXPECT_EQ("", leftPad("", -3, ' '));
}

// replicateChar

TEST(ReplicateChar, FiveHyphens)
{
    EXPECT_EQ("-", replicateChar('-', 1));
    EXPECT_EQ("-----", replicateChar('-', 5));
    EXPECT_EQ("-----", replicateChar(45, 5));
}

TEST(ReplicateChar, TakesTheCharacterFirstAndTheCountSecond)
{
    EXPECT_EQ("\x05\x05\x05", replicateChar(5, 3));
}

TEST(ReplicateChar, CountOfZeroOrLessIsEmpty)
{
    EXPECT_EQ("", replicateChar('-', 0));
    EXPECT_EQ("", replicateChar('-', -1));
    EXPECT_EQ("", replicateChar('-', -2147483647 - 1));
}

TEST(ReplicateChar, RepeatsZeroAndHighBytes)
{
    EXPECT_EQ("\0\0"s, replicateChar(0, 2));
    EXPECT_EQ("\xFF\xFF", replicateChar(255, 2));
}

// replaceChar

TEST(ReplaceChar, ReplacesEveryOccurrence)
{
    EXPECT_EQ("O`Brien and O`Hara", replaceChar("O'Brien and O'Hara", 39, 96));
    EXPECT_EQ("\"a\" = \"b\"", replaceChar("`a` = `b`", 96, 34));
    EXPECT_EQ("``", replaceChar("''", 39, 96));
}

TEST(ReplaceChar, LeavesATextWithoutTheCharacter)
{
    EXPECT_EQ("r1c1", replaceChar("r1c1", 39, 96));
    EXPECT_EQ("", replaceChar("", 39, 96));
}

TEST(ReplaceChar, ReplacesZeroAndHighBytes)
{
    EXPECT_EQ("a b", replaceChar("a\0b"s, 0, 32));
    EXPECT_EQ("a z", replaceChar("a\xE4z", 0xE4, 32));
    EXPECT_EQ("a\xE4z", replaceChar("a z", 32, 0xE4));
}

TEST(ReplaceChar, LeavesTheArgument)
{
    const std::string text = "O'Brien";
    replaceChar(text, 39, 96);
    EXPECT_EQ("O'Brien", text);
}

// inQuotes

TEST(InQuotes, PutsOneQuoteOnEachSide)
{
    EXPECT_EQ("'abc'", inQuotes("abc", '\''));
    EXPECT_EQ("\"order\"", inQuotes("order", '"'));
    EXPECT_EQ("`order`", inQuotes("order", '`'));
}

TEST(InQuotes, OfTheEmptyTextIsTwoQuotes)
{
    EXPECT_EQ("\"\"", inQuotes("", '"'));
}

TEST(InQuotes, DoublesTheQuoteInside)
{
    EXPECT_EQ("'O''Brien'", inQuotes("O'Brien", '\''));
    EXPECT_EQ("''''", inQuotes("'", '\''));
    EXPECT_EQ("'''a'''", inQuotes("'a'", '\''));
    EXPECT_EQ("\"a\"\"b\"", inQuotes("a\"b", '"'));
}

TEST(InQuotes, CopiesEveryOtherByteUnchanged)
{
    EXPECT_EQ("'a\"b`c\0d\\'"s, inQuotes("a\"b`c\0d\\"s, '\''));
}

// removeQuotes

TEST(RemoveQuotes, RemovesOneEnclosingPair)
{
    EXPECT_EQ("r1c1", removeQuotes("\"r1c1\""));
    EXPECT_EQ("r1c1", removeQuotes("'r1c1'"));
    EXPECT_EQ("", removeQuotes("\"\""));
    EXPECT_EQ("", removeQuotes("''"));
}

TEST(RemoveQuotes, RemovesOnlyOnePair)
{
    EXPECT_EQ("\"r1c1\"", removeQuotes("\"\"r1c1\"\""));
    EXPECT_EQ("'r1c1'", removeQuotes("\"'r1c1'\""));
    EXPECT_EQ("\"", removeQuotes("\"\"\""));
}

TEST(RemoveQuotes, LeavesATextThatIsNotEnclosed)
{
    for (const char* text : {"r1c1", "", "\"", "'", "\"r1c1", "r1c1\"", "\"r1c1'", "'r1c1\"", " \"r1c1\"", "`r1c1`"}) {
        EXPECT_EQ(text, removeQuotes(text));
    }
}

TEST(RemoveQuotes, KeepsBlanksAndQuotesInside)
{
    EXPECT_EQ(" r\"1'c1 ", removeQuotes("\" r\"1'c1 \""));
}

// stringToBool

TEST(StringToBool, FiveTextsAreTrueInAnyCase)
{
    for (const char* text : {"t", "T", "y", "Y", "true", "TRUE", "True", "tRuE", "yes", "YES", "Yes", "1"}) {
        EXPECT_TRUE(stringToBool(text)) << text;
    }
}

TEST(StringToBool, BlanksAroundDoNotCount)
{
    EXPECT_TRUE(stringToBool("  T  "));
    EXPECT_TRUE(stringToBool("\tyes\r\n"));
    EXPECT_TRUE(stringToBool(allBlanks + "true" + allBlanks));
    EXPECT_TRUE(stringToBool(" 1 "));
}

TEST(StringToBool, EveryOtherTextIsFalse)
{
    for (const char* text : {"",  " ",  "f",   "F",     "n",  "N",    "false", "no", "0",  "2",  "10",  "11", "01",
                             "?", "tr", "tru", "truee", "ye", "yess", "t t",   "ja", "on", "-1", "1.0", "tt", "yy"}) {
        EXPECT_FALSE(stringToBool(text)) << text;
    }
    EXPECT_FALSE(stringToBool("t\0"s));
}

TEST(StringToBool, OfOneByteIsTrueForFiveBytesOnly)
{
    for (const char byte : everyByte()) {
        const bool expected = "tTyY1"s.find(byte) != std::string::npos;
        EXPECT_EQ(expected, stringToBool(std::string(1, byte))) << static_cast<int>(byte);
    }
}

// findStrings

TEST(FindStrings, FindsAnEqualText)
{
    EXPECT_TRUE(findStrings("main", {"main", "temp", "other"}));
    EXPECT_TRUE(findStrings("other", {"main", "temp", "other"}));
    EXPECT_TRUE(findStrings("", {"main", ""}));
}

TEST(FindStrings, ComparesByteForByte)
{
    EXPECT_FALSE(findStrings("Main", {"main", "temp"}));
    EXPECT_FALSE(findStrings("mai", {"main", "temp"}));
    EXPECT_FALSE(findStrings("main ", {"main", "temp"}));
    EXPECT_FALSE(findStrings("", {"main"}));
}

TEST(FindStrings, FindsNothingInAnEmptyList)
{
    EXPECT_FALSE(findStrings("main", {}));
    EXPECT_FALSE(findStrings("", {}));
}

TEST(FindStrings, LeavesTheList)
{
    const std::vector<std::string> list = {"main", "temp"};
    findStrings("temp", list);
    EXPECT_EQ((std::vector<std::string>{"main", "temp"}), list);
}

TEST(IsPlainAscii, TakesEveryPrintableByteAtEveryPlaceAndNoOther)
{
    for (const std::size_t size : {1U, 7U, 8U, 9U, 16U, 23U}) {
        for (std::size_t at = 0; at < size; ++at) {
            for (int byte = 0; byte < 256; ++byte) {
                std::string text(size, 'x');
                text[at] = static_cast<char>(byte);
                EXPECT_EQ(byte >= 0x20 && byte <= 0x7E, kd_lib::isPlainAscii(text))
                    << "byte " << byte << " at " << at << " of " << size;
            }
        }
    }
}

TEST(IsPlainAscii, TakesTheEmptyText)
{
    EXPECT_TRUE(kd_lib::isPlainAscii(""));
}
