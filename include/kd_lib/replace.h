/// \file
/// Replacing a character of a text while it is copied, for loops over many values: all is inline.
/// Threads: all functions are free of shared state.
#pragma once

#include <kd_lib/detail/words.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <string_view>

namespace kd_lib {

/// Implementation; not for client programs.
namespace detail {

/// A character and its replacement.
struct Replacement {
    unsigned char From;
    unsigned char Into;

    SixteenBytes of(SixteenBytes bytes) const
    {
        const SixteenBytes difference = SixteenBytes{} + static_cast<unsigned char>(From ^ Into);
        return bytes ^ (std::bit_cast<SixteenBytes>(bytes == From) & difference);
    }
};

/// Copies 16 bytes or more. The last ones may be copied twice, with the same result.
inline void copyVectorsReplacing(char* to, const char* from, std::size_t size, Replacement replacement)
{
    const std::size_t last = size - vectorSize;
    for (std::size_t at = 0;; at = std::min(at + vectorSize, last)) {
        putValue(to + at, replacement.of(valueAt<SixteenBytes>(from + at)));
        if (at == last) {
            return;
        }
    }
}

/// Copies 4 to 16 bytes as four words that overlap. One method for all these sizes is faster than the best one for each
/// size, because most columns mix them.
inline void copyHalfWordsReplacing(char* to, const char* from, std::size_t size, Replacement replacement)
{
    const std::size_t second = size / 8 * halfWordSize;
    const std::size_t last = size - halfWordSize;
    const std::size_t third = last - second;
    const FourHalfWords words = {valueAt<HalfWord>(from), valueAt<HalfWord>(from + second),
                                 valueAt<HalfWord>(from + third), valueAt<HalfWord>(from + last)};
    const auto replaced = std::bit_cast<FourHalfWords>(replacement.of(std::bit_cast<SixteenBytes>(words)));
    putValue(to, replaced[0]);
    putValue(to + second, replaced[1]);
    putValue(to + third, replaced[2]);
    putValue(to + last, replaced[3]);
}

}  // namespace detail

/// Copies `text` to `to` with every `from` replaced by `into`, and returns the end of the copy. `to` has room for the
/// text. It may be the beginning of the text itself, but must not overlap the text otherwise.
inline char* copyReplacing(char* to, std::string_view text, char from, char into)
{
    const char* const bytes = text.data();
    const std::size_t size = text.size();
    const detail::Replacement replacement{static_cast<unsigned char>(from), static_cast<unsigned char>(into)};
    if (size >= detail::vectorSize) {
        detail::copyVectorsReplacing(to, bytes, size, replacement);
    } else if (size >= detail::halfWordSize) {
        detail::copyHalfWordsReplacing(to, bytes, size, replacement);
    } else {
        std::replace_copy(bytes, bytes + size, to, from, into);
    }
    return to + size;
}

}  // namespace kd_lib
