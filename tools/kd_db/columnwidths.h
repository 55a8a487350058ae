/// \file
/// The widths of the columns of a printed table.
#pragma once

#include <cstddef>
#include <vector>

namespace kd_tool {

/// The width that a column needs, in cells.
struct ColumnNeed {
    std::size_t Width = 0;
    bool Cuttable = true;  ///< true for a text; a number is only cut as the last resort
};

/// The widths of the columns, separated by `gap` cells, so that they fit in `room` (0: there is no limit): the widest
/// texts are cut first, down to a few cells, then all columns. Columns at the end that still have no room are left out:
/// the result is then shorter, but has at least one column.
std::vector<std::size_t> columnWidths(const std::vector<ColumnNeed>& needs, std::size_t room, std::size_t gap);

}  // namespace kd_tool
