/// \file
/// The code page of a .dbf file.
#pragma once

#include "dbflayout.h"

#include <string>

namespace kd_lib::exchange::detail {

/// A code page and why it is that one.
struct PageChoice {
    std::string Page;    ///< a name that `CodePage` takes
    std::string Reason;  ///< "language byte 57", "people.cpg"
};

/// Chooses: the page asked for, if any; else that of a .cpg file beside the table; else the header's; else CP1252,
/// also where what the file tells is not known.
PageChoice chooseCodePage(const std::string& file, const DbfLayout& layout, const std::string& asked);

}  // namespace kd_lib::exchange::detail
