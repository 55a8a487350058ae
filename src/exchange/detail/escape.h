/// \file
/// Texts with a few bytes that are written differently.
#pragma once

#include "scan.h"

#include <kd_lib/detail/bytes.h>
#include <kd_lib/exchange/outputblock.h>

#include <cstddef>
#include <string_view>

namespace kd_lib::exchange::detail {

// A way to escape is a class with
//   static SixteenBytes marks(SixteenBytes)   which of sixteen bytes are written differently,
//   static constexpr std::size_t Longest      the most bytes that one byte becomes,
//   static char* put(char* to, char byte)     writes a byte, differently where it has to be; returns the end.

/// Longer texts are written in pieces of this size, so that the block stays small.
constexpr std::size_t pieceSize = 16384;

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

/// Writes a text of any length.
template <class Way>
void writeEscaped(std::string_view text, OutputBlock& out)
{
    if (text.size() <= pieceSize && !containsAny(text, Way::marks)) {
        out.advance(kd_lib::detail::copyBytes(out.reserve(text.size()), text));
        return;
    }
    for (; !text.empty(); text.remove_prefix(text.size() < pieceSize ? text.size() : pieceSize)) {
        const std::string_view piece = text.substr(0, pieceSize);
        out.advance(putEscaped<Way>(out.reserve(piece.size() * Way::Longest), piece));
    }
}

}  // namespace kd_lib::exchange::detail
