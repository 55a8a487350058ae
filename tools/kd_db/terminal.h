/// \file
/// What is known of the terminal.
#pragma once

#include "options.h"

#include <cstddef>

namespace kd_tool {

bool isTerminal(int descriptor);

struct ScreenSize {
    std::size_t Columns = 80;
    std::size_t Rows = 24;
};

/// The size of the terminal; where it does not tell, that of the environment (COLUMNS, LINES), else 80 x 24.
ScreenSize screenSize(int descriptor);

/// Whether escape sequences may be written: `Auto` where the descriptor is a terminal that is not "dumb", and
/// NO_COLOR is unset or empty.
bool useColor(When when, int descriptor);

/// Whether the locale is one of UTF-8. Texts are UTF-8 everywhere; signs of the program's own are ASCII in others.
bool localeIsUtf8();

}  // namespace kd_tool
