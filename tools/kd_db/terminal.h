/// \file
/// Facts about the terminal.
#pragma once

#include "options.h"

#include <cstddef>
#include <string_view>

namespace kd_tool {

/// Escape sequences that change the letters after them.
namespace style {
constexpr std::string_view bold = "\x1b[1m";
constexpr std::string_view dim = "\x1b[2m";
constexpr std::string_view red = "\x1b[31m";
constexpr std::string_view plain = "\x1b[0m";
}  // namespace style

bool isTerminal(int descriptor);

struct ScreenSize {
    std::size_t Columns = 80;
    std::size_t Rows = 24;
};

/// The size of the terminal; if that is unknown, the size in the environment (COLUMNS, LINES), by default 80 x 24.
ScreenSize screenSize(int descriptor);

/// Whether escape sequences may be written. `Auto`: if the descriptor is a terminal that is not "dumb", and NO_COLOR is
/// unset or empty.
bool useColor(When when, int descriptor);

/// Whether the locale uses UTF-8. Texts are UTF-8 everywhere; in other locales the program's own symbols are ASCII.
bool localeIsUtf8();

}  // namespace kd_tool
