/// \file
/// Blanks at the ends of a text, for loops over many values: nothing is copied, and all is inline.
/// "blank" means blank, tab, CR, LF, VT or FF.
/// Threads: all functions are free of shared state.
#pragma once

#include <kd_lib/detail/words.h>

#include <bit>
#include <cstddef>
#include <string_view>

namespace kd_lib {

/// Implementation; not for client programs.
namespace detail {

// Fixed-width values hold long runs of spaces: these are skipped a word at a time.
constexpr Word allSpaces = 0x2020202020202020U;

/// The spaces before the first other byte in memory; `wordSize` when there is none.
inline std::size_t spacesAtStart(Word word)
{
    const Word others = word ^ allSpaces;
    return static_cast<std::size_t>((littleEndian ? std::countr_zero(others) : std::countl_zero(others)) / 8);
}

/// The spaces after the last other byte in memory; `wordSize` when there is none.
inline std::size_t spacesAtEnd(Word word)
{
    const Word others = word ^ allSpaces;
    return static_cast<std::size_t>((littleEndian ? std::countl_zero(others) : std::countr_zero(others)) / 8);
}

}  // namespace detail

/// Whether `c` is a blank for the trims.
inline bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// The number of blanks at the beginning of `s`.
inline std::size_t leadingBlanks(std::string_view s)
{
    std::size_t count = 0;
    for (std::size_t spaces = detail::wordSize; spaces == detail::wordSize && s.size() - count >= detail::wordSize;
         count += spaces) {
        spaces = detail::spacesAtStart(detail::valueAt<detail::Word>(s.data() + count));
    }
    while (count < s.size() && isBlank(s[count])) {
        ++count;
    }
    return count;
}

/// The size of `s` without the blanks at its end.
inline std::size_t sizeWithoutTrailingBlanks(std::string_view s)
{
    std::size_t size = s.size();
    for (std::size_t spaces = detail::wordSize; spaces == detail::wordSize && size >= detail::wordSize;
         size -= spaces) {
        spaces = detail::spacesAtEnd(detail::valueAt<detail::Word>(s.data() + size - detail::wordSize));
    }
    while (size > 0 && isBlank(s[size - 1])) {
        --size;
    }
    return size;
}

/// `s` without blanks at its end. The view lives as long as its text.
inline std::string_view rightTrimView(std::string_view s)
{
    return s.empty() || s.back() > ' ' ? s : s.substr(0, sizeWithoutTrailingBlanks(s));
}

/// `s` without blanks at both ends. The view lives as long as its text.
inline std::string_view allTrimView(std::string_view s)
{
    s = rightTrimView(s);
    return s.empty() || s.front() > ' ' ? s : s.substr(leadingBlanks(s));
}

}  // namespace kd_lib
