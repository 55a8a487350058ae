#include "inspection.h"

#include "moments.h"
#include "wording.h"

#include <kd_lib/exchange/error.h>

#include <array>
#include <charconv>

namespace kd_lib::exchange::detail {

namespace {

constexpr std::size_t longestText = 60;

std::string momentText(const Timestamp& moment)
{
    std::array<char, timestampSize> text{};
    return {text.data(), putTimestamp(text.data(), moment, ' ')};
}

std::string dateText(Date day)
{
    std::array<char, dateSize> text{};
    return {text.data(), putDate(text.data(), day)};
}

std::string doubleText(double value)
{
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

}  // namespace

void Inspection::give(const InspectedBytes& part)
{
    if (Options.Stop.stop_requested()) {
        throw Stopped(File, "stopped");
    }
    Line(part);
}

std::string quotedBeginning(std::string_view text)
{
    if (text.size() <= longestText) {
        return '"' + std::string(text) + '"';
    }
    std::size_t size = longestText;
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U) {
        --size;
    }
    return '"' + std::string(text.substr(0, size)) + "\"... (" + count(text.size(), "byte") + ')';
}

std::string cellMeaning(const Cell& cell)
{
    switch (cell.Kind) {
    case CellKind::Null:
        return "NULL";
    case CellKind::Text:
        return quotedBeginning(cell.Text);
    case CellKind::Number:
        return std::string(cell.Text);
    case CellKind::Float:
        return doubleText(cell.Float);
    case CellKind::Boolean:
        return cell.Boolean ? "true" : "false";
    case CellKind::Date:
        return dateText(cell.Moment.Day);
    case CellKind::Time:
    case CellKind::Timestamp:
        return momentText(cell.Moment);
    case CellKind::Bytes:
        return count(cell.Text.size(), "byte");
    case CellKind::Unreadable:
        break;
    }
    return "unreadable";
}

}  // namespace kd_lib::exchange::detail
