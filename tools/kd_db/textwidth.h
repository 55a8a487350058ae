/// \file
/// The width of a text in cells of a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kd_tool {

/// The cells of a line of UTF-8: none for combining characters, two for wide ones. A cluster of characters that is
/// shown as one, such as a letter with its accents, is as wide as its widest character. A byte that is not UTF-8 is one
/// cell.
std::size_t textWidth(std::string_view text);

/// The longest beginning of a text that takes at most `cells`; clusters stay whole.
std::string_view fittingPart(std::string_view text, std::size_t cells);

/// The text. If it is wider than `cells`, it is cut and ends with `mark`; the result is never wider than `cells`.
std::string truncated(std::string_view text, std::size_t cells, std::string_view mark);

}  // namespace kd_tool
