/// \file
/// Days of the Gregorian calendar as numbers.
#pragma once

#include <cstdint>

namespace kd_lib::formats {

struct CalendarDay {
    int Year;
    int Month;
    int Day;
};

/// Julian day numbers of the first and the last possible date: 0001-01-01 and 9999-12-31.
constexpr std::int64_t firstJulianDay = 1721426;
constexpr std::int64_t lastJulianDay = 5373484;

constexpr std::int64_t millisecondsOfDay = 86400000;

/// The day of a Julian day number from `firstJulianDay` to `lastJulianDay`.
constexpr CalendarDay calendarDay(std::int64_t julian)
{
    const std::int64_t b = julian + 32044;
    const std::int64_t c = (4 * b + 3) / 146097;
    const std::int64_t e = b - 146097 * c / 4;
    const std::int64_t f = (4 * e + 3) / 1461;
    const std::int64_t g = e - 1461 * f / 4;
    const std::int64_t h = (5 * g + 2) / 153;
    return {static_cast<int>(100 * c + f - 4800 + h / 10), static_cast<int>(h + 3 - 12 * (h / 10)),
            static_cast<int>(g - (153 * h + 2) / 5 + 1)};
}

}  // namespace kd_lib::formats
