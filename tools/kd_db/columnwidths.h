/// \file
/// How wide the columns of a printed table are.
#pragma once

#include <cstddef>
#include <vector>

namespace kd_tool {

/// What a column would need, in cells.
struct ColumnNeed {
    std::size_t Width = 0;
    bool Cuttable = true;  ///< a text may be cut; a number is not shown in part as long as there is another way
};

/// The widths of the columns, separated by `gap` cells, so that they fit in `room` (0: there is no limit): the widest
/// texts give first, down to a few cells, then all columns do. Columns at the end that still have no room are left
/// out: the result is shorter then, but has one column at least.
std::vector<std::size_t> columnWidths(const std::vector<ColumnNeed>& needs, std::size_t room, std::size_t gap);

}  // namespace kd_tool
