/// \file
/// Copying text whose single quotes become backquotes.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kd_lib {

constexpr char quote = '\'';
constexpr char backquote = '`';

/// Bytes that are compared side by side, and four words of them. g++ and clang++ both know such vectors,
/// for every processor.
using SixteenBytes = char __attribute__((vector_size(16)));
using FourWords = std::uint32_t __attribute__((vector_size(16)));
constexpr std::size_t vectorSize = sizeof(SixteenBytes);
constexpr std::size_t wordSize = sizeof(std::uint32_t);

template <class Value>
Value valueAt(const char* bytes)
{
    Value value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

inline void putWord(char* to, std::uint32_t word)
{
    std::memcpy(to, &word, wordSize);
}

/// `bytes` with their single quotes turned into backquotes.
inline SixteenBytes turnQuotes(SixteenBytes bytes)
{
    constexpr SixteenBytes difference = SixteenBytes{} + static_cast<char>(quote ^ backquote);
    return bytes ^ ((bytes == quote) & difference);
}

/// Copies 16 bytes or more, the quotes turned. The last ones may go twice: the second copy is the same.
inline void copyVectorsTurningQuotes(char* to, const char* from, std::size_t size)
{
    const std::size_t last = size - vectorSize;
    for (std::size_t at = 0;; at = std::min(at + vectorSize, last)) {
        const SixteenBytes turned = turnQuotes(valueAt<SixteenBytes>(from + at));
        std::memcpy(to + at, &turned, vectorSize);
        if (at == last) {
            return;
        }
    }
}

/// Copies 4 to 16 bytes, the quotes turned, as four words that overlap. One way for all these sizes is
/// faster than the shortest for each: they mix in most columns.
inline void copyWordsTurningQuotes(char* to, const char* from, std::size_t size)
{
    const std::size_t second = size / 8 * wordSize;
    const std::size_t last = size - wordSize;
    const std::size_t third = last - second;
    const FourWords words = {valueAt<std::uint32_t>(from), valueAt<std::uint32_t>(from + second),
                             valueAt<std::uint32_t>(from + third), valueAt<std::uint32_t>(from + last)};
    const auto turned = std::bit_cast<FourWords>(turnQuotes(std::bit_cast<SixteenBytes>(words)));
    putWord(to, turned[0]);
    putWord(to + second, turned[1]);
    putWord(to + third, turned[2]);
    putWord(to + last, turned[3]);
}

/// Copies `text`, its single quotes turned into backquotes, and returns the end of the copy.
inline char* copyTurningQuotes(char* to, std::string_view text)
{
    const char* const from = text.data();
    const std::size_t size = text.size();
    if (size >= vectorSize) {
        copyVectorsTurningQuotes(to, from, size);
    } else if (size >= wordSize) {
        copyWordsTurningQuotes(to, from, size);
    } else {
        std::replace_copy(from, from + size, to, quote, backquote);
    }
    return to + size;
}

}  // namespace kd_lib
