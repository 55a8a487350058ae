/// \file
/// Days and times of the day as texts.
#pragma once

#include <kd_lib/exchange/cell.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

constexpr std::uint32_t millisecondsOfSecond = 1000;
constexpr std::uint32_t millisecondsOfMinute = 60 * millisecondsOfSecond;
constexpr std::uint32_t millisecondsOfHour = 60 * millisecondsOfMinute;

/// The length of the texts that the operations below write.
constexpr std::size_t dateSize = 10;
constexpr std::size_t timeSize = 12;
constexpr std::size_t timestampSize = dateSize + 1 + timeSize;

/// The day, if it exists in the calendar, in the years 1 to 9999.
constexpr std::optional<Date> dayOfCalendar(unsigned year, unsigned month, unsigned day)
{
    constexpr std::uint8_t lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1) {
        return std::nullopt;
    }
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    if (day > lengths[month - 1] + (leap && month == 2 ? 1U : 0U)) {
        return std::nullopt;
    }
    return Date{static_cast<std::int16_t>(year), static_cast<std::uint8_t>(month), static_cast<std::uint8_t>(day)};
}

/// "20240229"; nothing for any other text.
std::optional<Date> parseEightDigits(std::string_view text);

/// "2024-02-29"; nothing for any other text.
std::optional<Date> parseDate(std::string_view text);

/// "23:59", "23:59:58", "23:59:58.123": milliseconds since midnight. More than three decimals are accepted if those
/// after the third are zero. Nothing for any other text.
std::optional<std::uint32_t> parseTime(std::string_view text);

/// A date, a blank or "T", and a time; or a date alone, which means its midnight. Nothing for any other text, including
/// one with a time zone.
std::optional<Timestamp> parseTimestamp(std::string_view text);

/// 00 to 99.
constexpr std::array<char, 200> twoDigits = [] {
    std::array<char, 200> digits{};
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        digits[i] = static_cast<char>('0' + i / 20);
        digits[i + 1] = static_cast<char>('0' + i / 2 % 10);
    }
    return digits;
}();

/// Writes a number below 100; returns the place after it.
inline char* putTwoDigits(char* to, unsigned number)
{
    std::memcpy(to, &twoDigits[std::size_t{2} * number], 2);
    return to + 2;
}

/// Write "2024-02-29", "23:59:58.123", and both with `between` between them; return the place after the text.
inline char* putDate(char* to, Date date)
{
    const auto year = static_cast<unsigned>(date.Year);
    to = putTwoDigits(putTwoDigits(to, year / 100), year % 100);
    *to++ = '-';
    to = putTwoDigits(to, date.Month);
    *to++ = '-';
    return putTwoDigits(to, date.Day);
}
char* putTime(char* to, std::uint32_t milliseconds);
char* putTimestamp(char* to, const Timestamp& moment, char between);

}  // namespace kd_lib::exchange::detail
