#include "textwidth.h"

#include <kd_lib/text.h>

#include <algorithm>
#include <utf8proc.h>

namespace kd_tool {

namespace {

/// The first cluster of a text: its bytes and its cells.
struct Cluster {
    std::size_t Bytes = 0;
    std::size_t Cells = 0;
};

/// Length of the first character in bytes; its code point, or -1 for a byte that is not UTF-8.
std::size_t character(std::string_view text, utf8proc_int32_t& codePoint)
{
    const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    const utf8proc_ssize_t length = utf8proc_iterate(bytes, static_cast<utf8proc_ssize_t>(text.size()), &codePoint);
    return length > 0 ? static_cast<std::size_t>(length) : 1;
}

std::size_t cellsOf(utf8proc_int32_t codePoint)
{
    return codePoint < 0 ? 1 : static_cast<std::size_t>(std::max(utf8proc_charwidth(codePoint), 0));
}

bool isRegionalIndicator(utf8proc_int32_t codePoint)
{
    constexpr utf8proc_int32_t first = 0x1F1E6;
    constexpr utf8proc_int32_t last = 0x1F1FF;
    return codePoint >= first && codePoint <= last;
}

Cluster firstCluster(std::string_view text)
{
    utf8proc_int32_t before = 0;
    Cluster cluster;
    cluster.Bytes = character(text, before);
    cluster.Cells = cellsOf(before);
    utf8proc_int32_t state = 0;
    while (cluster.Bytes < text.size() && before >= 0) {
        utf8proc_int32_t next = 0;
        const std::size_t length = character(text.substr(cluster.Bytes), next);
        if (next < 0 || utf8proc_grapheme_break_stateful(before, next, &state)) {
            break;
        }
        cluster.Bytes += length;
        // Two regional indicators are a flag, which is two cells wide.
        cluster.Cells = isRegionalIndicator(next) ? 2 : std::max(cluster.Cells, cellsOf(next));
        before = next;
    }
    return cluster;
}

}  // namespace

std::size_t textWidth(std::string_view text)
{
    if (kd_lib::isPlainAscii(text)) {
        return text.size();
    }
    std::size_t cells = 0;
    while (!text.empty()) {
        const Cluster cluster = firstCluster(text);
        cells += cluster.Cells;
        text.remove_prefix(cluster.Bytes);
    }
    return cells;
}

std::string_view fittingPart(std::string_view text, std::size_t cells)
{
    std::size_t end = 0;
    while (end < text.size()) {
        const Cluster cluster = firstCluster(text.substr(end));
        if (cluster.Cells > cells) {
            break;
        }
        cells -= cluster.Cells;
        end += cluster.Bytes;
    }
    return text.substr(0, end);
}

std::string truncated(std::string_view text, std::size_t cells, std::string_view mark)
{
    if (textWidth(text) <= cells) {
        return std::string(text);
    }
    const std::size_t markCells = textWidth(mark);
    if (markCells > cells) {
        return std::string(fittingPart(text, cells));
    }
    return std::string(fittingPart(text, cells - markCells)) + std::string(mark);
}

}  // namespace kd_tool
