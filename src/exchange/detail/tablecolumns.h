/// \file
/// The columns of a .dbf file.
#pragma once

#include "dbflayout.h"

#include <kd_lib/exchange/codepage.h>
#include <kd_lib/exchange/column.h>
#include <kd_lib/exchange/error.h>

#include <cstddef>
#include <vector>

namespace kd_lib::exchange::detail {

/// The columns in the order of the file, each with the index of its field in the layout.
struct TableColumns {
    std::vector<Column> Columns;
    std::vector<std::size_t> Fields;
    std::vector<Note> Notes;  ///< about unknown types, names that cannot be decoded, and missing null flags
    bool HighBytes = false;   ///< a name has a byte above 127
};

/// All columns, or those that need no memo file. The field of the null flags is not a column.
TableColumns columnsOfTable(const DbfLayout& layout, const CodePage& page, bool withMemos);

}  // namespace kd_lib::exchange::detail
