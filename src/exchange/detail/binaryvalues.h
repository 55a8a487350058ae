/// \file
/// Values of binary fields of a .dbf record.
#pragma once

#include "../../formats/julianday.h"
#include "../../formats/numbers.h"
#include "values.h"

#include <kd_lib/exchange/cell.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace kd_lib::exchange::detail {

/// Room for the digits of any number below.
using Digits = std::array<char, 32>;

inline Cell integerCell(std::int64_t value, Digits& digits)
{
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return Cell::number({digits.data(), end});
}

/// A number of units of 1/10000, with four decimals.
inline Cell currencyCell(std::int64_t value, Digits& digits)
{
    constexpr std::uint64_t unit = 10000;
    const std::uint64_t size = value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    char* at = digits.data();
    if (value < 0) {
        *at++ = '-';
    }
    at = std::to_chars(at, digits.data() + digits.size(), size / unit).ptr;
    // The leading 1 keeps the zeros of the decimals; the point takes its place.
    char* const point = at;
    at = std::to_chars(at, digits.data() + digits.size(), unit + size % unit).ptr;
    *point = '.';
    return Cell::number({digits.data(), at});
}

inline Cell doubleCell(const char* bytes)
{
    return Cell::real(std::bit_cast<double>(formats::little64(bytes)));
}

/// A double whose bytes sort like its values.
inline Cell sortableDoubleCell(const char* bytes)
{
    constexpr std::uint64_t sign = std::uint64_t{1} << 63;
    const std::uint64_t bits = formats::big64(bytes);
    return Cell::real(std::bit_cast<double>((bits & sign) != 0 ? bits ^ sign : ~bits));
}

/// A timestamp given by its Julian day and the milliseconds of the day.
inline Converted momentOf(std::int64_t julian, std::int64_t milliseconds)
{
    if (julian < formats::firstJulianDay || julian > formats::lastJulianDay) {
        return Converted::failed("a day outside the years 1 to 9999");
    }
    if (milliseconds < 0 || milliseconds >= formats::millisecondsOfDay) {
        return Converted::failed("more than 24 hours in a day");
    }
    const formats::CalendarDay day = formats::calendarDay(julian);
    return Cell::timestamp({{static_cast<std::int16_t>(day.Year), static_cast<std::uint8_t>(day.Month),
                             static_cast<std::uint8_t>(day.Day)},
                            static_cast<std::uint32_t>(milliseconds)});
}

/// Visual FoxPro's T.
inline Converted julianMoment(const char* bytes)
{
    return momentOf(static_cast<std::int32_t>(formats::little32(bytes)),
                    static_cast<std::int32_t>(formats::little32(bytes + 4)));
}

/// dBase 7's @: milliseconds, the first day of year 1 being day 1.
inline Converted millisecondMoment(const char* bytes)
{
    constexpr double afterLast = 1e15;
    const double value = std::bit_cast<double>(formats::big64(bytes));
    if (!(value >= 0 && value < afterLast)) {
        return Converted::failed("a moment outside the years 1 to 9999");
    }
    const std::int64_t milliseconds = std::llround(value);
    return momentOf(milliseconds / formats::millisecondsOfDay + formats::firstJulianDay - 1,
                    milliseconds % formats::millisecondsOfDay);
}

}  // namespace kd_lib::exchange::detail
