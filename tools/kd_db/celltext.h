/// \file
/// Values as people read them.
#pragma once

#include <kd_lib/exchange/cell.h>

#include <string>

namespace kd_tool {

/// Appends a value on one line: dates as 2024-02-29, times with milliseconds only if they are not 0, bytes as x'0AFF',
/// NULL as the word; line ends and other control bytes of a text as \n, \t or \xNN.
void appendCellText(std::string& out, const kd_lib::exchange::Cell& cell);

}  // namespace kd_tool
