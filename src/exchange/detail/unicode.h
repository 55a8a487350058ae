/// \file
/// Characters of UTF-8 texts, and their case.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// U+FFFD
inline constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

/// Removes the first character from `rest`, which must not be empty, and returns it. If no character begins there,
/// removes one byte and returns -1.
int takeCharacter(std::string_view& rest);

void appendCharacter(std::string& text, int character);

/// The number of characters of a text that is UTF-8.
std::size_t countCharacters(std::string_view text);

/// The whole characters at the beginning that fit in `count` bytes.
std::string_view firstBytes(std::string_view text, std::size_t count);

/// `count` characters from the beginning, or the whole text.
std::string_view firstCharacters(std::string_view text, std::size_t count);

/// Lower case by Unicode's simple mapping, one character for one. Bytes that are not characters become U+FFFD.
std::string lowerCase(std::string_view text);

/// The same for two texts that differ only in the case of their letters.
std::string caseFolded(std::string_view text);

}  // namespace kd_lib::exchange::detail
