/// \file
/// Finds the delimiter of a text by its first rows.
#pragma once

#include "delimitedreader.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// How much of a text is looked at.
constexpr std::size_t delimiterSampleSize = 65536;

/// A delimiter, and why.
struct DelimiterGuess {
    char Delimiter;
    std::string Evidence;  ///< a line for the user
};

/// The one of comma, semicolon, tab, bar and colon that cuts the largest part of the rows into as many cells as the
/// first row, if these are two or more; the first of them where several do. Where none does, `form`'s own.
/// `whole`: the sample is all of the text; otherwise its last row is not looked at.
DelimiterGuess guessDelimiter(std::string_view sample, bool whole, const DelimitedForm& form);

/// A delimiter for messages: "','", "tab".
std::string delimiterName(char delimiter);

}  // namespace kd_lib::exchange::detail
