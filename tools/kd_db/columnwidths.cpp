#include "columnwidths.h"

#include <algorithm>

namespace kd_tool {

namespace {

constexpr std::size_t leastWidth = 6;  // the width of each text if all are cut

std::size_t total(const std::vector<std::size_t>& widths, std::size_t gap)
{
    std::size_t sum = 0;
    for (const std::size_t width : widths) {
        sum += width + gap;
    }
    return sum - gap;
}

/// The widths if no column that can be cut is wider than `most`.
std::vector<std::size_t> cutTo(const std::vector<ColumnNeed>& needs, std::size_t most)
{
    std::vector<std::size_t> widths;
    widths.reserve(needs.size());
    for (const ColumnNeed& need : needs) {
        widths.push_back(need.Cuttable ? std::min(need.Width, most) : need.Width);
    }
    return widths;
}

/// Gives the remaining room to columns that were cut, from the first on.
void spend(std::vector<std::size_t>& widths, const std::vector<ColumnNeed>& needs, std::size_t rest)
{
    for (std::size_t i = 0; i < widths.size() && rest > 0; ++i) {
        const std::size_t more = std::min(needs[i].Width - widths[i], rest);
        widths[i] += std::min<std::size_t>(more, 1);
        rest -= std::min<std::size_t>(more, 1);
    }
}

}  // namespace

std::vector<std::size_t> columnWidths(const std::vector<ColumnNeed>& needs, std::size_t room, std::size_t gap)
{
    std::size_t widest = 0;
    for (const ColumnNeed& need : needs) {
        widest = std::max(widest, need.Width);
    }
    std::vector<std::size_t> widths = cutTo(needs, widest);
    if (needs.empty() || room == 0 || total(widths, gap) <= room) {
        return widths;
    }
    std::size_t low = std::min(leastWidth, widest);
    if (total(cutTo(needs, low), gap) <= room) {
        std::size_t high = widest;
        while (low + 1 < high) {
            const std::size_t middle = low + (high - low) / 2;
            (total(cutTo(needs, middle), gap) <= room ? low : high) = middle;
        }
        widths = cutTo(needs, low);
        spend(widths, needs, room - total(widths, gap));
        return widths;
    }
    widths = cutTo(needs, low);
    while (widths.size() > 1 && total(widths, gap) > room) {
        widths.pop_back();
    }
    widths.back() = std::min(widths.back(), room);
    spend(widths, needs, room - total(widths, gap));
    return widths;
}

}  // namespace kd_tool
