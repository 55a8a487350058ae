/// \file
/// Characters of UTF-8 texts, and their case.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// U+FFFD
inline constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

/// Takes the first character off `rest`, which is not empty. -1 for a byte that begins no character; one byte is
/// taken then.
int takeCharacter(std::string_view& rest);

void appendCharacter(std::string& text, int character);

/// The number of characters of a text that is UTF-8.
std::size_t countCharacters(std::string_view text);

/// As many whole characters from the beginning as `count` bytes hold.
std::string_view firstBytes(std::string_view text, std::size_t count);

/// `count` characters from the beginning, or the whole text.
std::string_view firstCharacters(std::string_view text, std::size_t count);

/// Lower case by Unicode's simple mapping, one character for one. Bytes that are no character become U+FFFD.
std::string lowerCase(std::string_view text);

/// Equal for two texts that differ in the case of their letters only.
std::string caseFolded(std::string_view text);

}  // namespace kd_lib::exchange::detail
