#include "detail/fieldtexts.h"

#include "detail/values.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

namespace {

using namespace kd_lib::exchange;
using namespace kd_lib::exchange::detail;

/// A field among other bytes, which must not matter.
class Surrounded {
public:
    Surrounded(const std::string& field, char other) : Bytes(40, other), Length(field.size())
    {
        Bytes += field + std::string(40, other);
    }
    const char* field() const { return Bytes.data() + 40; }
    std::size_t length() const { return Length; }

private:
    std::string Bytes;
    std::size_t Length;
};

std::string randomText(std::mt19937& random, std::size_t length, const std::string& letters)
{
    std::string text;
    for (std::size_t i = 0; i < length; ++i) {
        text += letters[random() % letters.size()];
    }
    return text;
}

TEST(FieldTexts, NumbersAgreeWithTheRuleForAllTexts)
{
    std::mt19937 random(20240229);
    int normal = 0;
    for (int round = 0; round < 300000; ++round) {
        const std::string blanks(random() % 6, random() % 2 == 0 ? ' ' : '\0');
        const std::string text = randomText(random, random() % 9, round % 2 == 0 ? "0019.-" : "01239. -+E*x");
        const std::string field = blanks + text + std::string(random() % 4, ' ');
        const Surrounded in(field, "0 -.\xFF"[round % 5]);
        std::string_view digits;
        const NumberForm form = numberForm(in.field(), in.length(), digits);
        std::string scratch;
        const Converted expected = numberOf(field, scratch);
        if (form == NumberForm::Blank) {
            ASSERT_EQ(expected.Value.Kind, CellKind::Null) << field;
        } else if (form == NumberForm::Normal) {
            ++normal;
            ASSERT_EQ(expected.Value.Kind, CellKind::Number) << field;
            ASSERT_EQ(expected.Value.Text, digits) << field;
        } else {
            // All other texts are not numbers, or have another normal form.
            ASSERT_NE(expected.Value.Kind, CellKind::Null) << field;
            ASSERT_NE(expected.Value.Text, withoutPadding(field)) << field;
        }
    }
    EXPECT_GT(normal, 10000);
}

TEST(FieldTexts, PaddingAtEitherEnd)
{
    std::mt19937 random(7);
    for (int round = 0; round < 100000; ++round) {
        std::string field = randomText(random, random() % 70, "  x");
        std::ranges::replace(field, ' ', round % 2 == 0 ? '\0' : ' ');
        const std::string_view padding(" \0", 2);
        const std::size_t last = field.find_last_not_of(padding);
        const std::string atEnd = last == std::string::npos ? "" : field.substr(0, last + 1);
        const std::size_t first = atEnd.find_first_not_of(padding);
        const Surrounded in(field, round % 3 == 0 ? ' ' : 'y');
        ASSERT_EQ(withoutPaddingAtEnd(in.field(), in.length()), atEnd);
        ASSERT_EQ(withoutPaddingAround(in.field(), in.length()), first == std::string::npos ? "" : atEnd.substr(first));
    }
}

TEST(FieldTexts, DaysAgreeWithTheRuleForAllTexts)
{
    std::mt19937 random(11);
    int days = 0;
    for (int round = 0; round < 200000; ++round) {
        std::string field = round % 4 == 0 ? randomText(random, 8, "0123456789:/ \xB0")
                                           : std::to_string(1000 + random() % 9000) + randomText(random, 4, "00123");
        Date day{};
        const bool is = isDay(field.data(), day);
        const std::optional<Date> expected = parseEightDigits(field);
        ASSERT_EQ(is, expected.has_value()) << field;
        if (is) {
            ++days;
            ASSERT_EQ(day, *expected) << field;
        }
    }
    EXPECT_GT(days, 1000);
}

TEST(FieldTexts, OneOddByteAtEachPlace)
{
    for (std::size_t length = 0; length < 70; ++length) {
        const Surrounded usual(std::string(length, 'a'), '\xFF');
        const RecordBytes without = bytesOfRecord(usual.field(), length);
        EXPECT_TRUE(without.Ascii && without.Printable) << "bytes around it do not count";
        for (std::size_t at = 0; at < length; ++at) {
            for (const char odd : {'\x80', '\xFF', '\0', '\x1F'}) {
                std::string field(length, 'a');
                field[at] = odd;
                const RecordBytes of = bytesOfRecord(Surrounded(field, 'a').field(), length);
                ASSERT_EQ(of.Ascii, odd == '\0' || odd == '\x1F') << length << ' ' << at;
                ASSERT_FALSE(of.Printable) << length << ' ' << at;
            }
        }
    }
}

}  // namespace
