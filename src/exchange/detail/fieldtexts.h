/// \file
/// Values that are text in a record: the usual forms of them, found without a call.
/// All operations may read `RecordBlocks::slack` bytes before and after the field.
#pragma once

#include <kd_lib/detail/words.h>
#include <kd_lib/exchange/cell.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kd_lib::exchange::detail {

using kd_lib::detail::littleEndian;
using kd_lib::detail::valueAt;
using kd_lib::detail::Word;
using kd_lib::detail::wordSize;

constexpr Word everyByte(std::uint8_t byte)
{
    return byte * Word{0x0101010101010101U};
}

/// The bytes of a word that come last in memory and are blanks or zero bytes.
inline std::size_t paddingAtEnd(Word word)
{
    const Word others = word & everyByte(0xDF);
    return static_cast<std::size_t>(littleEndian ? std::countl_zero(others) : std::countr_zero(others)) / 8;
}

inline std::size_t paddingAtStart(Word word)
{
    const Word others = word & everyByte(0xDF);
    return static_cast<std::size_t>(littleEndian ? std::countr_zero(others) : std::countl_zero(others)) / 8;
}

/// A field without the blanks and zero bytes at its end.
inline std::string_view withoutPaddingAtEnd(const char* bytes, std::size_t length)
{
    while (length >= wordSize) {
        const std::size_t padding = paddingAtEnd(valueAt<Word>(bytes + length - wordSize));
        length -= padding;
        if (padding < wordSize) {
            return {bytes, length};
        }
    }
    const std::size_t padding = paddingAtEnd(valueAt<Word>(bytes + length - wordSize));
    return {bytes, padding < length ? length - padding : 0};
}

/// A field without the blanks and zero bytes at both ends.
inline std::string_view withoutPaddingAround(const char* bytes, std::size_t length)
{
    const std::string_view text = withoutPaddingAtEnd(bytes, length);
    length = text.size();
    while (length > 0) {
        const std::size_t padding = paddingAtStart(valueAt<Word>(bytes));
        if (padding < wordSize || padding >= length) {
            const std::size_t skipped = padding < length ? padding : length;
            return {bytes + skipped, length - skipped};
        }
        bytes += wordSize;
        length -= wordSize;
    }
    return {bytes, 0};
}

inline bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Whether a text is a number in the form of `Cell::Text` already.
inline bool isNormalNumber(std::string_view text)
{
    const char* at = text.data();
    const char* const end = at + text.size();
    const bool negative = at != end && *at == '-';
    at += negative ? 1 : 0;
    const char* const whole = at;
    // Zero and 0.5 begin with a zero; -0 and -0.00 would be left with a sign.
    unsigned char other = 0;
    while (at != end && isDigit(*at)) {
        other |= static_cast<unsigned char>(*at++ & 15);
    }
    if (at == whole || (*whole == '0' && at - whole > 1)) {
        return false;
    }
    if (at == end) {
        return other != 0 || !negative;
    }
    const char* const decimals = at + 1;
    if (*at != '.' || decimals == end) {
        return false;
    }
    for (at = decimals; at != end && isDigit(*at); ++at) {
        other |= static_cast<unsigned char>(*at & 15);
    }
    return at == end && (other != 0 || !negative);
}

/// Reads eight digits that are a day of the calendar; false for anything else.
inline bool isDay(const char* bytes, Date& day)
{
    std::array<char, 8> text{};
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = bytes[i];
    }
    const Word word = valueAt<Word>(text.data());
    const Word high = everyByte(0xF0);
    if ((word & high) != everyByte(0x30) || ((word + everyByte(6)) & high) != everyByte(0x30)) {
        return false;
    }
    const auto two = [bytes](std::size_t at) {
        return static_cast<unsigned>((bytes[at] - '0') * 10 + (bytes[at + 1] - '0'));
    };
    const unsigned year = two(0) * 100 + two(2);
    const unsigned month = two(4);
    const unsigned number = two(6);
    constexpr std::array<std::uint8_t, 16> lengths{0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31, 0, 0, 0};
    const bool leapDay = month == 2 && number == 29 && year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    if (year == 0 || month > 12 || number == 0 || (number > lengths[month] && !leapDay)) {
        return false;
    }
    day = {static_cast<std::int16_t>(year), static_cast<std::uint8_t>(month), static_cast<std::uint8_t>(number)};
    return true;
}

/// What a letter of a logical field is.
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

}  // namespace kd_lib::exchange::detail
