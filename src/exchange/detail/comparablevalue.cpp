#include "comparablevalue.h"

#include "binarytext.h"
#include "digits.h"
#include "sqlitevalue.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace kd_lib::exchange::detail {

namespace {

constexpr std::size_t longestDouble = 400;  // all its digits, without an exponent

/// Each form begins with its letter and the length, so that none is the beginning of another.
void appendForm(std::string& to, char letter, std::string_view content)
{
    const auto size = static_cast<std::uint64_t>(content.size());
    to += letter;
    to.append(reinterpret_cast<const char*>(&size), sizeof size);
    to.append(content);
}

void appendDouble(std::string& to, double value)
{
    if (std::isnan(value)) {
        value = std::numeric_limits<double>::quiet_NaN();
    }
    const auto bits = std::bit_cast<std::uint64_t>(value == 0 ? 0.0 : value);
    appendForm(to, 'r', {reinterpret_cast<const char*>(&bits), sizeof bits});
}

/// Whether a text has the form of an exact number, perhaps with surplus zeros.
bool isNumber(std::string_view text)
{
    text.remove_prefix(text.starts_with('-') ? 1 : 0);
    const std::size_t point = text.find('.');
    return isDigits(text.substr(0, point)) && (point == std::string_view::npos || isDigits(text.substr(point + 1)));
}

std::string_view withoutTrailingZeros(std::string_view text)
{
    if (text.find('.') != std::string_view::npos) {
        text = text.substr(0, text.find_last_not_of('0') + 1);
        text.remove_suffix(text.ends_with('.') ? 1 : 0);
    }
    return text;
}

void appendNumber(std::string& to, std::string_view digits)
{
    const std::string_view shortest = withoutTrailingZeros(digits);
    if (isExactAsDouble(shortest)) {
        appendDouble(to, realOf(shortest));
    } else {
        appendForm(to, 'd', shortest);
    }
}

std::optional<double> readDouble(std::string_view text)
{
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    return whole ? std::optional(value) : std::nullopt;
}

/// A double in a column of exact numbers: its digits.
void appendDigitsOf(std::string& to, double value)
{
    std::array<char, longestDouble> room = {};
    const auto [end, error] = std::to_chars(room.data(), room.data() + room.size(), value, std::chars_format::fixed);
    const std::string_view digits(room.data(), static_cast<std::size_t>(end - room.data()));
    if (error == std::errc() && isNumber(digits)) {
        appendNumber(to, digits);
    } else {
        appendDouble(to, value);
    }
}

bool appendAsNumber(std::string& to, const Cell& cell)
{
    if (cell.Kind == CellKind::Float) {
        appendDigitsOf(to, cell.Float);
        return true;
    }
    if (cell.Kind != CellKind::Number && cell.Kind != CellKind::Text) {
        return false;
    }
    if (isNumber(cell.Text)) {
        appendNumber(to, cell.Text);
        return true;
    }
    const std::optional<double> value = readDouble(cell.Text);
    if (value) {
        appendDigitsOf(to, *value);
    }
    return value.has_value();
}

bool appendAsDouble(std::string& to, const Cell& cell)
{
    if (cell.Kind == CellKind::Float) {
        appendDouble(to, cell.Float);
        return true;
    }
    const bool readable = cell.Kind == CellKind::Number || cell.Kind == CellKind::Text;
    const std::optional<double> value = readable ? readDouble(cell.Text) : std::nullopt;
    if (value) {
        appendDouble(to, *value);
    }
    return value.has_value();
}

bool appendAsBoolean(std::string& to, const Cell& cell)
{
    if (cell.Kind == CellKind::Boolean) {
        appendForm(to, 'b', cell.Boolean ? "1" : "0");
        return true;
    }
    if (cell.Kind == CellKind::Number || cell.Kind == CellKind::Text) {
        const bool yes = cell.Text == "1" || cell.Text == "t" || cell.Text == "true";
        if (yes || cell.Text == "0" || cell.Text == "f" || cell.Text == "false") {
            appendForm(to, 'b', yes ? "1" : "0");
            return true;
        }
    }
    return false;
}

bool isMoment(CellKind kind)
{
    return kind == CellKind::Date || kind == CellKind::Time || kind == CellKind::Timestamp;
}

bool appendAsMoment(std::string& to, const Cell& cell)
{
    if (isMoment(cell.Kind)) {
        std::array<char, momentSize> room = {};
        const std::size_t size = writeMoment(cell.Kind, cell.Moment, room.data());
        appendForm(to, 't', withoutTrailingZeros({room.data(), size}));
        return true;
    }
    if (cell.Kind == CellKind::Text) {
        appendForm(to, 't', withoutTrailingZeros(cell.Text));
        return true;
    }
    return false;
}

/// A value that is not of its column's type. It equals only values of the same kind with the same bytes.
void appendOther(std::string& to, const Cell& cell)
{
    switch (cell.Kind) {
    case CellKind::Null:
    case CellKind::Unreadable:
        appendForm(to, 'n', {});
        break;
    case CellKind::Text:
        appendForm(to, 't', cell.Text);
        break;
    case CellKind::Bytes:
        appendForm(to, 'x', cell.Text);
        break;
    case CellKind::Number:
    case CellKind::Float:
        appendAsNumber(to, cell);
        break;
    case CellKind::Boolean:
        appendAsBoolean(to, cell);
        break;
    case CellKind::Date:
    case CellKind::Time:
    case CellKind::Timestamp:
        appendAsMoment(to, cell);
        break;
    }
}

bool appendAs(std::string& to, ColumnType type, const Cell& cell)
{
    switch (type) {
    case ColumnType::Number:
    case ColumnType::Integer:
    case ColumnType::BigInteger:
    case ColumnType::Currency:
        return appendAsNumber(to, cell);
    case ColumnType::Float:
        return appendAsDouble(to, cell);
    case ColumnType::Boolean:
        return appendAsBoolean(to, cell);
    case ColumnType::Date:
    case ColumnType::Time:
    case ColumnType::Timestamp:
        return appendAsMoment(to, cell);
    case ColumnType::Text:
    case ColumnType::Bytes:
        break;
    }
    return false;
}

bool sameText(const Cell& a, const Cell& b)
{
    return a.Kind == b.Kind && (a.Kind == CellKind::Text || a.Kind == CellKind::Number || a.Kind == CellKind::Bytes) &&
           a.Text == b.Text;
}

std::string inQuotes(std::string_view text)
{
    std::string quoted(1, '\'');
    quoted += text;
    quoted += '\'';
    return quoted;
}

}  // namespace

void appendComparable(std::string& to, ColumnType type, const Cell& cell)
{
    if (!appendAs(to, type, cell)) {
        appendOther(to, cell);
    }
}

bool equalValues(ColumnType type, const Cell& a, const Cell& b, std::string& scratch)
{
    if (sameText(a, b) || (a.Kind == CellKind::Null && b.Kind == CellKind::Null)) {
        return true;
    }
    scratch.clear();
    appendComparable(scratch, type, a);
    const std::size_t size = scratch.size();
    appendComparable(scratch, type, b);
    const std::string_view both = scratch;
    return both.substr(0, size) == both.substr(size);
}

std::string shownValue(const Cell& cell)
{
    switch (cell.Kind) {
    case CellKind::Null:
    case CellKind::Unreadable:
        return "NULL";
    case CellKind::Text:
        return inQuotes(cell.Text);
    case CellKind::Bytes:
        return 'x' + inQuotes(hexText(cell.Text));
    case CellKind::Number:
        return std::string(cell.Text);
    case CellKind::Boolean:
        return cell.Boolean ? "true" : "false";
    case CellKind::Float: {
        std::array<char, 32> room = {};
        return {room.data(), std::to_chars(room.data(), room.data() + room.size(), cell.Float).ptr};
    }
    case CellKind::Date:
    case CellKind::Time:
    case CellKind::Timestamp: {
        std::array<char, momentSize> room = {};
        return {room.data(), writeMoment(cell.Kind, cell.Moment, room.data())};
    }
    }
    return {};
}

}  // namespace kd_lib::exchange::detail
