/// \file
/// String functions of the library. Strings are byte strings: letters are the 26 of ASCII, and
/// "blank" means blank, tab, CR, LF, VT or FF. No function changes its argument or reports an error.
/// Threads: all functions are free of shared state.
#pragma once

#include <kd_lib/blanks.h>
#include <kd_lib/export.h>

#include <string>
#include <string_view>
#include <vector>

namespace kd_lib {

/// \name Constants
/// For client programs; each source unit has its own copy.
/// @{
const std::string BRACKET = "()";         ///< round brackets
const std::string CURLY_BRACKET = "{}";   ///< curly brackets
const std::string SQUARE_BRACKET = "[]";  ///< square brackets
/// @}

/// `s` with the ASCII letters A-Z changed to a-z; other bytes stay.
KD_LIB_EXPORT std::string stringToLower(const std::string& s);

/// `s` with the ASCII letters a-z changed to A-Z; other bytes stay.
KD_LIB_EXPORT std::string stringToUpper(const std::string& s);

/// `s` without blanks at both ends.
KD_LIB_EXPORT std::string allTrim(const std::string& s);

/// `s` without blanks at its end; those at its beginning stay.
KD_LIB_EXPORT std::string rightTrim(const std::string& s);

/// `s` padded to `width` characters with `pad` on the left; a longer text is returned whole.
KD_LIB_EXPORT std::string leftPad(const std::string& s, int width, char pad);

/// `count` copies of the character `ch`; empty for a count of 0 or less.
KD_LIB_EXPORT std::string replicateChar(int ch, int count);

/// `s` with every occurrence of the character `from` replaced by `to`.
KD_LIB_EXPORT std::string replaceChar(const std::string& s, int from, int to);

/// `s` between two `q`; every `q` inside is doubled, so that the text cannot end its quotes.
KD_LIB_EXPORT std::string inQuotes(const std::string& s, char q);

/// `s` without one pair of double or single quotes that encloses it; any other text is returned unchanged.
KD_LIB_EXPORT std::string removeQuotes(const std::string& s);

/// True when the trimmed text is t, y, true, yes or 1, in any case; false for every other text.
KD_LIB_EXPORT bool stringToBool(const std::string& s);

/// True when `s` equals one of the strings in `list`, byte for byte.
KD_LIB_EXPORT bool findStrings(const std::string& s, std::vector<std::string> list);

/// True when every byte of `s` is 0x20 to 0x7E: those are printable in every locale.
KD_LIB_EXPORT bool isPlainAscii(std::string_view s);

}  // namespace kd_lib
