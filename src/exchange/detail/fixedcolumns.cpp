#include "fixedcolumns.h"

#include <kd_lib/exchange/error.h>

#include <charconv>
#include <optional>

namespace kd_lib::exchange::detail {

namespace {

constexpr std::uint32_t furthestByte = 0x7FFFFFFF;
constexpr std::string_view classicSeparators = "|:;";

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// A number up to `furthestByte`.
std::optional<std::uint32_t> positionIn(std::string_view text)
{
    text = trimmed(text);
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    const bool whole = error == std::errc() && stop == end && number <= furthestByte;
    return whole ? std::optional(number) : std::nullopt;
}

/// Takes the text up to the next separator.
std::string_view takePiece(std::string_view& rest, std::string_view separators)
{
    const std::size_t at = rest.find_first_of(separators);
    const std::string_view piece = rest.substr(0, at);
    rest.remove_prefix(at == std::string_view::npos ? rest.size() : at + 1);
    return piece;
}

bool isClassic(std::string_view list)
{
    return list.find_first_not_of("0123456789 |:;") == std::string_view::npos;
}

std::vector<FixedColumn> parseClassic(std::string_view list)
{
    std::vector<FixedColumn> columns;
    std::uint32_t before = 0;
    while (!list.empty()) {
        const std::optional<std::uint32_t> position = positionIn(takePiece(list, classicSeparators));
        if (!position || *position <= before || *position > furthestByte / 2) {
            return {};
        }
        columns.push_back({"field#" + std::to_string(columns.size()), *position, *position - before});
        before = *position;
    }
    return columns;
}

std::optional<FixedColumn> parseNamed(std::string_view piece)
{
    const std::size_t colon = piece.rfind(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view range = piece.substr(colon + 1);
    const std::optional<std::uint32_t> first = positionIn(takePiece(range, "-"));
    const std::optional<std::uint32_t> last =
        piece.find('-', colon) == std::string_view::npos ? first : positionIn(range);
    if (!first || !last || *first == 0 || *last < *first) {
        return std::nullopt;
    }
    return FixedColumn{std::string(trimmed(piece.substr(0, colon))), *first - 1, *last - *first + 1};
}

}  // namespace

std::vector<FixedColumn> parseFixedColumns(const std::string& file, std::string_view list)
{
    if (trimmed(list).empty()) {
        throw OptionError(file, "text in fixed columns needs a list of its columns, such as name:1-8,town:9-24");
    }
    std::vector<FixedColumn> columns;
    if (isClassic(list)) {
        columns = parseClassic(list);
        if (columns.empty()) {
            throw OptionError(file, "not a list of increasing positions, such as 5|12|20: " + std::string(list));
        }
        return columns;
    }
    while (!list.empty()) {
        const std::string_view piece = takePiece(list, ",");
        const std::optional<FixedColumn> column = parseNamed(piece);
        if (!column) {
            throw OptionError(file, "not a column with its bytes, such as name:1-8: " + std::string(piece));
        }
        columns.push_back(*column);
    }
    return columns;
}

}  // namespace kd_lib::exchange::detail
