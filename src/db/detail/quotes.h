/// \file
/// Copying text whose single quotes become backquotes.
#pragma once

#include <kd_lib/detail/words.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <string_view>

namespace kd_lib::detail {

constexpr char quote = '\'';
constexpr char backquote = '`';

/// `bytes` with their single quotes turned into backquotes.
inline SixteenBytes turnQuotes(SixteenBytes bytes)
{
    constexpr SixteenBytes difference = SixteenBytes{} + static_cast<unsigned char>(quote ^ backquote);
    return bytes ^ (std::bit_cast<SixteenBytes>(bytes == quote) & difference);
}

/// Copies 16 bytes or more, the quotes turned. The last ones may go twice: the second copy is the same.
inline void copyVectorsTurningQuotes(char* to, const char* from, std::size_t size)
{
    const std::size_t last = size - vectorSize;
    for (std::size_t at = 0;; at = std::min(at + vectorSize, last)) {
        putValue(to + at, turnQuotes(valueAt<SixteenBytes>(from + at)));
        if (at == last) {
            return;
        }
    }
}

/// Copies 4 to 16 bytes, the quotes turned, as four words that overlap. One way for all these sizes is
/// faster than the shortest for each: they mix in most columns.
inline void copyWordsTurningQuotes(char* to, const char* from, std::size_t size)
{
    const std::size_t second = size / 8 * halfWordSize;
    const std::size_t last = size - halfWordSize;
    const std::size_t third = last - second;
    const FourHalfWords words = {valueAt<HalfWord>(from), valueAt<HalfWord>(from + second),
                                 valueAt<HalfWord>(from + third), valueAt<HalfWord>(from + last)};
    const auto turned = std::bit_cast<FourHalfWords>(turnQuotes(std::bit_cast<SixteenBytes>(words)));
    putValue(to, turned[0]);
    putValue(to + second, turned[1]);
    putValue(to + third, turned[2]);
    putValue(to + last, turned[3]);
}

/// Copies `text`, its single quotes turned into backquotes, and returns the end of the copy.
inline char* copyTurningQuotes(char* to, std::string_view text)
{
    const char* const from = text.data();
    const std::size_t size = text.size();
    if (size >= vectorSize) {
        copyVectorsTurningQuotes(to, from, size);
    } else if (size >= halfWordSize) {
        copyWordsTurningQuotes(to, from, size);
    } else {
        std::replace_copy(from, from + size, to, quote, backquote);
    }
    return to + size;
}

}  // namespace kd_lib::detail
