// The text loops that take eight or sixteen bytes at a time must not differ from loops that take one: every byte value
// at every place of texts of up to two vectors, among bytes that the loops could confuse with it.

#include <kd_lib/sqlliteral.h>
#include <kd_lib/text.h>
#include <kd_lib/xbase2sql.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

constexpr std::size_t longest = 36;

bool isBlank(char c)
{
    return std::string_view(" \t\r\n\v\f").find(c) != std::string_view::npos;
}

std::string withoutBlanksAtTheEnd(std::string text)
{
    while (!text.empty() && isBlank(text.back())) {
        text.pop_back();
    }
    return text;
}

std::string withoutBlanks(std::string text)
{
    text = withoutBlanksAtTheEnd(text);
    while (!text.empty() && isBlank(text.front())) {
        text.erase(0, 1);
    }
    return text;
}

std::string literalOf(const std::string& value)
{
    kd_lib::TableField field("text", kd_lib::CHAR_TYPE, 0, static_cast<int>(value.size()), 0, false);
    field.Value = value;
    return kd_lib::convertValue2Sql(field);
}

std::string plainLiteralOf(const std::string& value)
{
    std::string text = withoutBlanksAtTheEnd(value);
    if (text.empty()) {
        return "NULL";
    }
    for (char& c : text) {
        c = c == '\'' ? '`' : c;
    }
    return "'" + text + "'";
}

/// Calls `check` with texts of `filler` that hold one byte of each value at each place.
template <class Check>
void forEveryByteAndPlace(char filler, Check check)
{
    for (std::size_t size = 1; size <= longest; ++size) {
        for (std::size_t place = 0; place < size; ++place) {
            std::string text(size, filler);
            for (int byte = 0; byte < 256; ++byte) {
                text[place] = static_cast<char>(byte);
                check(text);
            }
        }
    }
}

class WordLoops : public testing::TestWithParam<char> {};

TEST_P(WordLoops, TrimsTakeBlanksAndNothingElse)
{
    forEveryByteAndPlace(GetParam(), [](const std::string& text) {
        ASSERT_EQ(withoutBlanksAtTheEnd(text), kd_lib::rightTrim(text)) << testing::PrintToString(text);
        ASSERT_EQ(withoutBlanks(text), kd_lib::allTrim(text)) << testing::PrintToString(text);
    });
}

TEST_P(WordLoops, PlainAsciiIsDistinguishedFromEveryOtherByte)
{
    const bool plainFiller = GetParam() >= ' ' && GetParam() <= '~';
    forEveryByteAndPlace(GetParam(), [plainFiller](const std::string& text) {
        bool plain = true;
        for (const char c : text) {
            plain = plain && c >= ' ' && c <= '~';
        }
        ASSERT_TRUE(plainFiller || text.size() == 1 || !plain);
        ASSERT_EQ(plain, kd_lib::isPlainAscii(text)) << testing::PrintToString(text);
    });
}

TEST_P(WordLoops, EveryQuoteOfATextBecomesABackquoteAndNoOtherByteChanges)
{
    forEveryByteAndPlace(GetParam(), [](const std::string& text) {
        ASSERT_EQ(plainLiteralOf(text), literalOf(text)) << testing::PrintToString(text);
    });
}

TEST(WordLoopLists, NumbersAndTextsOfEverySizeAreSideBySide)
{
    kd_lib::xBase2Sql table("t");
    std::string expected = "INSERT INTO t(";
    std::string values;
    for (std::size_t size = 1; size <= 70; ++size) {
        for (const kd_lib::FIELD_TYPE type : {kd_lib::DECIMAL_TYPE, kd_lib::CHAR_TYPE}) {
            const std::string name = "c" + std::to_string(table.Fields.size());
            kd_lib::TableField field(name, type, 0, static_cast<int>(size), 0, false);
            table.Fields.add(field);
            std::string value(size, '7');
            value.front() = '1';
            value.back() = '9';
            table.Fields.List.back()->Value = value;
            const std::string separator = values.empty() ? "" : ",";
            expected += separator + name;
            values += separator + (type == kd_lib::CHAR_TYPE ? "'" + value + "'" : value);
        }
    }
    EXPECT_EQ(expected + ") \n VALUES (" + values + ");\n", table.insert());
}

// The neighbours of the bytes that the loops look for, and bytes that share their bits.
INSTANTIATE_TEST_SUITE_P(AmongBytes, WordLoops,
                         testing::Values(' ', '\'', '&', '(', '!', '\t', '\x1F', '~', '\x7F', '\0', 'a', '\xA7',
                                         '\xFF'),
                         [](const testing::TestParamInfo<char>& filler) {
                             return std::to_string(static_cast<int>(static_cast<unsigned char>(filler.param)));
                         });

}  // namespace
