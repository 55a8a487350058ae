/// \file
/// The code page of a .dbf file.
#pragma once

#include "dbflayout.h"

#include <string>

namespace kd_lib::exchange::detail {

/// A code page and the reason for it.
struct PageChoice {
    std::string Page;    ///< a name that `CodePage` accepts
    std::string Reason;  ///< "language byte 57", "people.cpg"
};

/// Chooses the page: that of the options, if any; else that of a .cpg file in the table's folder; else the header's.
/// CP1252 if the file names none, or an unknown one.
PageChoice chooseCodePage(const std::string& file, const DbfLayout& layout, const std::string& asked);

}  // namespace kd_lib::exchange::detail
