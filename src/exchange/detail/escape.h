/// \file
/// Writes texts in which a few bytes are escaped.
#pragma once

#include "lanes.h"
#include "scan.h"

#include <kd_lib/detail/bytes.h>
#include <kd_lib/exchange/outputblock.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kd_lib::exchange::detail {

// A way to escape is a class with
//   static SixteenBytes marks(SixteenBytes)   which of sixteen bytes are escaped,
//   static std::uint32_t plainMarks(const Lanes&)  the same as bits, if all bytes are printable ASCII characters
//   static constexpr std::size_t Longest      the most bytes that one byte becomes,
//   static char* put(char* to, char byte)     writes a byte, escaped if necessary; returns the end.

/// Writes all bytes unchanged.
struct NoEscapes {
    static constexpr std::size_t Longest = 1;
    static SixteenBytes marks(SixteenBytes) { return SixteenBytes{}; }
    static std::uint32_t plainMarks(const Lanes&) { return 0; }
    static char* put(char* to, char byte)
    {
        *to = byte;
        return to + 1;
    }
};

/// The texts of most cells are not longer than this. They are copied while they are examined.
constexpr std::size_t shortSize = 32;

/// Longer texts are written in pieces of this size, so that the block stays small.
constexpr std::size_t pieceSize = 16384;

/// Copies a text of up to `shortSize` bytes. False if a byte is marked; the copy is then useless.
template <class Way>
bool copyUnmarked(char* to, std::string_view text)
{
    using kd_lib::detail::FourHalfWords;
    using kd_lib::detail::HalfWord;
    using kd_lib::detail::putValue;
    using kd_lib::detail::valueAt;
    const char* const from = text.data();
    const std::size_t size = text.size();
    if (size >= sizeof(SixteenBytes)) {
        const auto first = valueAt<SixteenBytes>(from);
        const auto last = valueAt<SixteenBytes>(from + size - sizeof(SixteenBytes));
        putValue(to, first);
        putValue(to + size - sizeof(SixteenBytes), last);
        return !anySet(Way::marks(first) | Way::marks(last));
    }
    if (size >= sizeof(HalfWord)) {
        // One method for all these sizes is faster than the best for each, because most columns mix them.
        const std::size_t second = size / 8 * 4;
        const std::size_t last = size - 4;
        const FourHalfWords words = {valueAt<HalfWord>(from), valueAt<HalfWord>(from + second),
                                     valueAt<HalfWord>(from + last - second), valueAt<HalfWord>(from + last)};
        putValue(to, words[0]);
        putValue(to + second, words[1]);
        putValue(to + last - second, words[2]);
        putValue(to + last, words[3]);
        return !anySet(Way::marks(std::bit_cast<SixteenBytes>(words)));
    }
    if (size == 0) {
        return true;
    }
    to[0] = from[0];
    to[size / 2] = from[size / 2];
    to[size - 1] = from[size - 1];
    return !anySet(Way::marks(spread(text)));
}

/// Writes a text that is not longer than a piece; `to` has room for `Way::Longest` times as much.
template <class Way>
char* putEscaped(char* to, std::string_view piece)
{
    using kd_lib::detail::valueAt;
    constexpr std::size_t step = sizeof(SixteenBytes);
    std::size_t at = 0;
    const auto putSingly = [&](std::size_t end) {
        for (; at < end; ++at) {
            to = Way::put(to, piece[at]);
        }
    };
    while (at + step <= piece.size()) {
        const auto bytes = valueAt<SixteenBytes>(piece.data() + at);
        if (anySet(Way::marks(bytes))) {
            putSingly(at + step);
        } else {
            kd_lib::detail::putValue(to, bytes);
            to += step;
            at += step;
        }
    }
    putSingly(piece.size());
    return to;
}

/// `copyUnmarked` for the texts of plain records (`Record::Plain`), without a branch that depends on the size.
template <class Way>
bool copyUnmarkedPlain(char* to, std::string_view text)
{
    static_assert(shortSize == 2 * Lanes::count);
    const char* const from = text.data();
    const std::uint64_t marks =
        Way::plainMarks(Lanes(from)) | std::uint64_t{Way::plainMarks(Lanes(from + Lanes::count))} << 16U;
    std::memcpy(to, from, shortSize);
    return (marks & ((std::uint64_t{1} << text.size()) - 1)) == 0;
}

/// Writes a text of up to `shortSize` bytes, of a plain record if `Plain`; `to` has room for `shortSize` bytes and for
/// `Way::Longest` times the text.
template <class Way, bool Plain>
char* putShort(char* to, std::string_view text)
{
    const bool unmarked = Plain ? copyUnmarkedPlain<Way>(to, text) : copyUnmarked<Way>(to, text);
    return unmarked ? to + text.size() : putEscaped<Way>(to, text);
}

/// Writes a text of any length.
template <class Way>
void writeEscaped(std::string_view text, OutputBlock& out)
{
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, pieceSize);
        out.advance(putEscaped<Way>(out.reserve(piece.size() * Way::Longest), piece));
        text.remove_prefix(piece.size());
    }
}

}  // namespace kd_lib::exchange::detail
