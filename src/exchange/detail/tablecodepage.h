/// \file
/// The code page of a .dbf file.
#pragma once

#include "dbflayout.h"

#include <string>

namespace kd_lib::exchange::detail {

/// The page of a table or memory file that names none.
inline constexpr const char* defaultTablePage = "CP1252";

/// A code page and the reason for it.
struct PageChoice {
    std::string Page;    ///< a name that `CodePage` accepts
    std::string Reason;  ///< "language byte 57", "people.cpg"
};

/// Chooses the page: `requested`, the page of the options; if that is empty, the page of a .cpg file in the table's
/// folder; without such a file, the header's. CP1252 if the header names no page, or an unknown one.
PageChoice chooseCodePage(const std::string& file, const DbfLayout& layout, const std::string& requested);

}  // namespace kd_lib::exchange::detail
