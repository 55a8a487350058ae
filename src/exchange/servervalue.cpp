#include <kd_lib/exchange/servervalue.h>

#include "detail/moments.h"

#include <charconv>
#include <cmath>

namespace kd_lib::exchange {

namespace {

/// An optional "-", digits, and perhaps a point and more digits.
bool isExactNumber(std::string_view text)
{
    if (text.starts_with('-')) {
        text.remove_prefix(1);
    }
    const std::size_t point = text.find('.');
    const std::string_view before = text.substr(0, point);
    const std::string_view after = point == std::string_view::npos ? "0" : text.substr(point + 1);
    constexpr std::string_view digits = "0123456789";
    return !before.empty() && !after.empty() && before.find_first_not_of(digits) == std::string_view::npos &&
           after.find_first_not_of(digits) == std::string_view::npos;
}

Cell realOrText(std::string_view text)
{
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? Cell::real(value) : Cell::text(text);
}

template <class Value>
Cell orText(const std::optional<Value>& value, Cell (*cell)(Value), std::string_view text)
{
    return value ? cell(*value) : Cell::text(text);
}

int digitOf(char c)
{
    return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
}

}  // namespace

Cell serverValue(ColumnType type, std::string_view text)
{
    switch (type) {
    case ColumnType::Number:
    case ColumnType::Integer:
    case ColumnType::BigInteger:
    case ColumnType::Currency:
        return isExactNumber(text) ? Cell::number(text) : realOrText(text);
    case ColumnType::Float:
        return realOrText(text);
    case ColumnType::Boolean:
        return Cell::boolean(text == "t" || text == "true" || text == "1");
    case ColumnType::Date:
        return orText(detail::parseDate(text), &Cell::date, text);
    case ColumnType::Time:
        return orText(detail::parseTime(text), &Cell::time, text);
    case ColumnType::Timestamp:
        return orText(detail::parseTimestamp(text), &Cell::timestamp, text);
    case ColumnType::Bytes:
        return Cell::bytes(text);
    case ColumnType::Text:
        break;
    }
    return Cell::text(text);
}

Cell hexadecimalBytes(std::string_view text, std::string& bytes)
{
    bytes.clear();
    for (std::size_t i = 2; i + 1 < text.size(); i += 2) {
        bytes += static_cast<char>(digitOf(text[i]) * 16 + digitOf(text[i + 1]));
    }
    return Cell::bytes(bytes);
}

}  // namespace kd_lib::exchange
