#include "celltext.h"

#include "escape.h"

#include <kd_lib/text.h>

#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

namespace kd_tool {

namespace exchange = kd_lib::exchange;

namespace {

void appendDigits(std::string& out, std::uint32_t number, std::size_t width)
{
    const std::string digits = std::to_string(number);
    out.append(width > digits.size() ? width - digits.size() : 0, '0');
    out += digits;
}

void appendDate(std::string& out, exchange::Date day)
{
    appendDigits(out, static_cast<std::uint32_t>(day.Year), 4);
    out += '-';
    appendDigits(out, day.Month, 2);
    out += '-';
    appendDigits(out, day.Day, 2);
}

void appendTime(std::string& out, std::uint32_t milliseconds)
{
    constexpr std::uint32_t second = 1000;
    constexpr std::uint32_t sixty = 60;
    const std::uint32_t seconds = milliseconds / second;
    appendDigits(out, seconds / sixty / sixty, 2);
    out += ':';
    appendDigits(out, seconds / sixty % sixty, 2);
    out += ':';
    appendDigits(out, seconds % sixty, 2);
    if (milliseconds % second != 0) {
        out += '.';
        appendDigits(out, milliseconds % second, 3);
    }
}

void appendFloat(std::string& out, double value)
{
    if (std::isnan(value) || std::isinf(value)) {
        out += std::isnan(value) ? "NaN" : value > 0 ? "Infinity" : "-Infinity";
        return;
    }
    std::array<char, 32> text{};
    char* const end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    out.append(text.data(), end);
}

void appendBytes(std::string& out, std::string_view bytes)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    out += "x'";
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        out += digits[byte >> 4U];
        out += digits[byte & 0xFU];
    }
    out += '\'';
}

void appendText(std::string& out, std::string_view text)
{
    if (kd_lib::isPlainAscii(text) && text.find('\0') == std::string_view::npos) {
        out += text;
        return;
    }
    ControlEscaper escaper(false);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of("\n\r\t"), text.size());
        escaper.append(out, text.substr(0, end));
        if (end < text.size()) {
            out += text[end] == '\n' ? "\\n" : text[end] == '\r' ? "\\r" : "\\t";
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

}  // namespace

void appendCellText(std::string& out, const exchange::Cell& cell)
{
    using Kind = exchange::CellKind;
    switch (cell.Kind) {
    case Kind::Null:
    case Kind::Unreadable:
        out += "NULL";
        break;
    case Kind::Text:
        appendText(out, cell.Text);
        break;
    case Kind::Number:
        out += cell.Text;
        break;
    case Kind::Float:
        appendFloat(out, cell.Float);
        break;
    case Kind::Boolean:
        out += cell.Boolean ? "true" : "false";
        break;
    case Kind::Date:
        appendDate(out, cell.Moment.Day);
        break;
    case Kind::Time:
        appendTime(out, cell.Moment.Milliseconds);
        break;
    case Kind::Timestamp:
        appendDate(out, cell.Moment.Day);
        out += ' ';
        appendTime(out, cell.Moment.Milliseconds);
        break;
    case Kind::Bytes:
        appendBytes(out, cell.Text);
        break;
    }
}

}  // namespace kd_tool
