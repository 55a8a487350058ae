#include "moments.h"

namespace kd_lib::exchange::detail {

namespace {

/// The number of `count` digits at a place; nothing if one of them is another character, or is missing.
std::optional<unsigned> digitsAt(std::string_view text, std::size_t at, std::size_t count)
{
    if (text.size() < at + count) {
        return std::nullopt;
    }
    unsigned value = 0;
    for (const char c : text.substr(at, count)) {
        if (c < '0' || c > '9') {
            return std::nullopt;
        }
        value = value * 10 + static_cast<unsigned>(c - '0');
    }
    return value;
}

std::optional<Date> dayOf(std::optional<unsigned> year, std::optional<unsigned> month, std::optional<unsigned> day)
{
    return year && month && day ? dayOfCalendar(*year, *month, *day) : std::nullopt;
}

/// The milliseconds of a fraction such as ".123". Nothing if there is no digit, or if a digit after the third is not
/// zero.
std::optional<unsigned> parseFraction(std::string_view text)
{
    unsigned value = 0;
    unsigned place = millisecondsOfSecond / 10;
    for (const char c : text.substr(1)) {
        if (c < '0' || c > '9' || (place == 0 && c != '0')) {
            return std::nullopt;
        }
        value += static_cast<unsigned>(c - '0') * place;
        place /= 10;
    }
    return text.size() > 1 ? std::optional(value) : std::nullopt;
}

}  // namespace

std::optional<Date> parseEightDigits(std::string_view text)
{
    return text.size() == 8 ? dayOf(digitsAt(text, 0, 4), digitsAt(text, 4, 2), digitsAt(text, 6, 2)) : std::nullopt;
}

std::optional<Date> parseDate(std::string_view text)
{
    if (text.size() != dateSize || text[4] != '-' || text[7] != '-') {
        return std::nullopt;
    }
    return dayOf(digitsAt(text, 0, 4), digitsAt(text, 5, 2), digitsAt(text, 8, 2));
}

std::optional<std::uint32_t> parseTime(std::string_view text)
{
    constexpr std::size_t toMinutes = 5;
    constexpr std::size_t toSeconds = 8;
    const std::optional<unsigned> hour = digitsAt(text, 0, 2);
    const std::optional<unsigned> minute = digitsAt(text, 3, 2);
    if (!hour || !minute || *hour > 23 || *minute > 59 || text[2] != ':') {
        return std::nullopt;
    }
    const std::uint32_t minutes = *hour * millisecondsOfHour + *minute * millisecondsOfMinute;
    if (text.size() == toMinutes) {
        return minutes;
    }
    const std::optional<unsigned> second = digitsAt(text, 6, 2);
    if (!second || *second > 59 || text[toMinutes] != ':') {
        return std::nullopt;
    }
    const std::uint32_t seconds = minutes + *second * millisecondsOfSecond;
    if (text.size() == toSeconds) {
        return seconds;
    }
    const std::optional<unsigned> fraction =
        text[toSeconds] == '.' ? parseFraction(text.substr(toSeconds)) : std::nullopt;
    return fraction ? std::optional(seconds + *fraction) : std::nullopt;
}

std::optional<Timestamp> parseTimestamp(std::string_view text)
{
    const std::optional<Date> day = parseDate(text.substr(0, dateSize));
    if (!day) {
        return std::nullopt;
    }
    if (text.size() == dateSize) {
        return Timestamp{*day, 0};
    }
    const bool apart = text[dateSize] == ' ' || text[dateSize] == 'T';
    const std::optional<std::uint32_t> time = apart ? parseTime(text.substr(dateSize + 1)) : std::nullopt;
    return time ? std::optional(Timestamp{*day, *time}) : std::nullopt;
}

char* putTime(char* to, std::uint32_t milliseconds)
{
    to = putTwoDigits(to, milliseconds / millisecondsOfHour);
    *to++ = ':';
    to = putTwoDigits(to, milliseconds / millisecondsOfMinute % 60);
    *to++ = ':';
    to = putTwoDigits(to, milliseconds / millisecondsOfSecond % 60);
    *to++ = '.';
    const std::uint32_t fraction = milliseconds % millisecondsOfSecond;
    *to++ = static_cast<char>('0' + fraction / 100);
    return putTwoDigits(to, fraction % 100);
}

char* putTimestamp(char* to, const Timestamp& moment, char between)
{
    to = putDate(to, moment.Day);
    *to++ = between;
    return putTime(to, moment.Milliseconds);
}

}  // namespace kd_lib::exchange::detail
