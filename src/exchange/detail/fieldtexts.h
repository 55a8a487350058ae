/// \file
/// Values that are text in a record: recognises their usual forms without a call and nearly without a branch that
/// depends on the value. All operations may read `RecordBlocks::slack` bytes before and after the field.
#pragma once

#include "../../formats/numbers.h"
#include "lanes.h"
#include "moments.h"

#include <kd_lib/exchange/cell.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kd_lib::exchange::detail {

/// The last bytes of a field, up to 32 of them, as bits: the highest bit is the last byte.
struct FieldBits {
    static constexpr std::size_t width = 2 * Lanes::count;

    /// The bits that belong to the field.
    static std::uint32_t ofField(std::size_t length) { return length >= width ? ~0U : ~(~0U >> length); }

    template <class Of>
    static std::uint32_t bits(const char* end, std::size_t length, Of of)
    {
        const std::uint32_t last = of(Lanes(end - Lanes::count)) << Lanes::count;
        return length <= Lanes::count ? last : last | of(Lanes(end - width));
    }
};

inline std::uint32_t paddingOf(const Lanes& lanes)
{
    return lanes.equal(' ') | lanes.equal('\0');
}

/// A field without the blanks and zero bytes at its end.
inline std::string_view withoutPaddingAtEnd(const char* bytes, std::size_t length)
{
    while (length > 0) {
        const std::uint32_t padding = FieldBits::bits(bytes + length, length, paddingOf);
        const std::uint32_t text = ~padding & FieldBits::ofField(length);
        if (text != 0) {
            return {bytes, length - static_cast<std::size_t>(std::countl_zero(text))};
        }
        length -= length < FieldBits::width ? length : FieldBits::width;
    }
    return {bytes, length};
}

/// A field without the blanks and zero bytes at both ends.
inline std::string_view withoutPaddingAround(const char* bytes, std::size_t length)
{
    std::string_view text = withoutPaddingAtEnd(bytes, length);
    while (!text.empty() && (text.front() == ' ' || text.front() == '\0')) {
        text.remove_prefix(1);
    }
    return text;
}

enum class NumberForm : std::uint8_t {
    Blank,   ///< padding only
    Normal,  ///< padding around a number in the form of `Cell::Text`
    Other
};

/// Looks for a number in a field of up to 32 bytes. `digits` becomes the field without padding.
inline NumberForm numberForm(const char* bytes, std::size_t length, std::string_view& digits)
{
    const char* const end = bytes + length;
    const std::uint32_t field = FieldBits::ofField(length);
    const auto bits = [end, length, field](auto of) { return FieldBits::bits(end, length, of) & field; };
    const std::uint32_t number = ~bits(paddingOf) & field;
    if (number == 0) {
        return NumberForm::Blank;
    }
    const std::uint32_t first = number & (0 - number);
    const std::uint32_t last = std::bit_floor(number);
    digits = {end - std::countl_zero(first) - 1,
              static_cast<std::size_t>(std::countl_zero(first) - std::countl_zero(last) + 1)};

    const std::uint32_t digit = bits([](const Lanes& lanes) { return lanes.digits(); });
    const std::uint32_t zero = bits([](const Lanes& lanes) { return lanes.equal('0'); });
    const std::uint32_t point = bits([](const Lanes& lanes) { return lanes.equal('.'); });
    const std::uint32_t sign = bits([](const Lanes& lanes) { return lanes.equal('-'); }) & first;
    const std::uint32_t unsignedFirst = sign != 0 ? first << 1 : first;
    const bool together = number + first == last << 1;
    const bool allKnown = (digit | point | sign) == number;
    const bool onePoint = (point & (point - 1)) == 0;
    const bool digitsAtEnds = (digit & unsignedFirst) != 0 && (digit & last) != 0;
    const bool leadingZero = (zero & unsignedFirst) != 0 && (digit & unsignedFirst << 1) != 0;
    const bool signedZero = sign != 0 && digit == zero;
    const bool normal = static_cast<unsigned>(together) & static_cast<unsigned>(allKnown) &
                        static_cast<unsigned>(onePoint) & static_cast<unsigned>(digitsAtEnds) &
                        static_cast<unsigned>(!leadingZero) & static_cast<unsigned>(!signedZero);
    return normal ? NumberForm::Normal : NumberForm::Other;
}

/// Reads eight digits that are a day of the calendar; false for anything else.
inline bool isDay(const char* bytes, Date& day)
{
    constexpr std::uint64_t each = 0x0101010101010101U;
    const std::uint64_t digits = formats::little64(bytes) ^ ('0' * each);
    if (((digits | (digits + 6 * each)) & (0xF0 * each)) != 0) {
        return false;
    }
    // Each pair of digits becomes a number, in every other byte.
    const std::uint64_t pairs = digits * 10 + (digits >> 8);
    const auto pair = [pairs](unsigned place) { return static_cast<unsigned>(pairs >> (16 * place) & 0xFF); };
    const unsigned year = pair(0) * 100 + pair(1);
    const unsigned month = pair(2);
    const unsigned number = pair(3);
    const std::optional<Date> found = dayOfCalendar(year, month, number);
    day = found.value_or(Date{});
    return found.has_value();
}

/// The meaning of a letter of a logical field.
enum class Logical : std::uint8_t { Other, None, True, False };

constexpr std::array<Logical, 256> logicalLetters = [] {
    std::array<Logical, 256> letters{};
    for (const char c : {'T', 't', 'Y', 'y'}) {
        letters[static_cast<unsigned char>(c)] = Logical::True;
    }
    for (const char c : {'F', 'f', 'N', 'n'}) {
        letters[static_cast<unsigned char>(c)] = Logical::False;
    }
    for (const char c : {' ', '?', '\0'}) {
        letters[static_cast<unsigned char>(c)] = Logical::None;
    }
    return letters;
}();

/// Which bytes a record has.
struct RecordBytes {
    bool Ascii;      ///< none is above 127
    bool Printable;  ///< nor is any a control character below the blank
};

inline RecordBytes bytesOfRecord(const char* bytes, std::size_t length)
{
    std::uint32_t high = 0;
    std::uint32_t unprintable = 0;
    std::size_t at = 0;
    for (; length - at >= Lanes::count; at += Lanes::count) {
        const Lanes lanes(bytes + at);
        high |= lanes.high();
        unprintable |= lanes.unprintable();
    }
    const std::uint32_t rest = (1U << (length - at)) - 1;
    const Lanes last(bytes + at);
    return {(high | (last.high() & rest)) == 0, (unprintable | (last.unprintable() & rest)) == 0};
}

}  // namespace kd_lib::exchange::detail
