/// \file
/// Exact numbers as digits, in the form of `Cell::Text`.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <system_error>

namespace kd_lib::exchange::detail {

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

/// True if a double converts back to the digits: at most 15 significant ones, within the range of a double.
bool isExactAsDouble(std::string_view number);

/// How SQLite keeps a number in a column without a type.
enum class SqliteForm : std::uint8_t {
    Integer,  ///< 64 bits
    Real,     ///< decimals, and a double converts back to the digits
    Text      ///< the digits
};
SqliteForm sqliteFormOf(std::string_view number);

}  // namespace kd_lib::exchange::detail
