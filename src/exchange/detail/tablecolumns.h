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

/// The columns in the order of the file, and of which of the layout's fields each is.
struct TableColumns {
    std::vector<Column> Columns;
    std::vector<std::size_t> Fields;
    std::vector<Note>
        Notes;               ///< types that are not known, names that cannot be decoded, null flags that do not suffice
    bool HighBytes = false;  ///< a name has a byte above 127
};

/// All columns, or those that need no memo file. The field of the null flags is none.
TableColumns columnsOfTable(const DbfLayout& layout, const CodePage& page, bool withMemos);

}  // namespace kd_lib::exchange::detail
