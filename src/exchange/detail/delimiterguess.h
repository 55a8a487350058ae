/// \file
/// Finds the delimiter of a text from its first rows.
#pragma once

#include "delimitedreader.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// How much of a text is examined.
constexpr std::size_t delimiterSampleSize = 65536;

/// A delimiter, and the reason for it.
struct DelimiterGuess {
    char Delimiter;
    std::string Evidence;  ///< a line for the user
};

/// Tries comma, semicolon, tab, bar and colon, in this order. The first row must have two or more cells; the delimiter
/// that splits the most rows into as many cells is chosen, the first one if several do. If there is none, the delimiter
/// of `form`. `whole`: the sample is all of the text; otherwise its last row is ignored.
DelimiterGuess guessDelimiter(std::string_view sample, bool whole, const DelimitedForm& form);

/// The name of a delimiter in messages: "','", "tab".
std::string delimiterName(char delimiter);

}  // namespace kd_lib::exchange::detail
