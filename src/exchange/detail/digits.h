/// \file
/// Digits, and exact numbers made of them in the form of `Cell::Text`.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <system_error>

namespace kd_lib::exchange::detail {

/// Every decimal number of at most this many digits survives conversion to a double and back, even if the conversion
/// has an error of one unit in the last place.
constexpr std::uint32_t digitsOfDouble = 15;

constexpr bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Whether a text is one digit or more, and nothing else.
inline bool isDigits(std::string_view text)
{
    return !text.empty() && std::ranges::all_of(text, isDigit);
}

/// Takes the digits at the beginning of `rest`.
inline std::string_view takeDigits(std::string_view& rest)
{
    const std::size_t count = static_cast<std::size_t>(std::ranges::find_if_not(rest, isDigit) - rest.begin());
    const std::string_view digits = rest.substr(0, count);
    rest.remove_prefix(count);
    return digits;
}

struct DigitCounts {
    std::size_t Before;       ///< digits before the point; 0 for a single zero
    std::size_t After;        ///< digits after the point up to the last that is not zero
    std::size_t Significant;  ///< digits from the first to the last that is not zero
    std::size_t ZerosAfter;   ///< zeros between the point and the first digit, of a number below 1
};
DigitCounts countDigits(std::string_view number);

/// Removes decimals that are all zeros. Returns false and changes nothing if there are others.
bool takeZeroDecimals(std::string_view& number);

/// True for a whole number that fits in `Integer`.
template <class Integer>
bool fits(std::string_view number)
{
    Integer value = 0;
    const char* const end = number.data() + number.size();
    const auto [stop, error] = std::from_chars(number.data(), end, value);
    return error == std::errc() && stop == end;
}

/// True if a double converts back to the digits: at most `digitsOfDouble` significant ones, within the range of a double.
bool isExactAsDouble(std::string_view number);

/// How SQLite keeps a number in a column without a type.
enum class SqliteForm : std::uint8_t {
    Integer,  ///< 64 bits
    Real,     ///< decimals, and a double converts back to the digits
    Text      ///< the digits
};
SqliteForm sqliteFormOf(std::string_view number);

}  // namespace kd_lib::exchange::detail
