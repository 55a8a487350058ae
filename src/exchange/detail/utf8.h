/// \file
/// UTF-8, character by character.
#pragma once

#include <kd_lib/detail/words.h>

#include <cstddef>
#include <string_view>

namespace kd_lib::exchange::detail {

/// U+FEFF, which may mark a text as UTF-8 at its beginning.
constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";

/// The beginning of a text: a whole character, or the longest beginning of one.
struct Utf8Piece {
    std::size_t Length;
    bool Whole;
};

/// The piece at the beginning of a text, which is not empty.
inline Utf8Piece firstUtf8Piece(std::string_view text)
{
    const auto byteAt = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byteAt(0);
    if (first < 0x80) {
        return {1, true};
    }
    const std::size_t length = first < 0xC2 || first > 0xF4 ? 0U : first < 0xE0 ? 2U : first < 0xF0 ? 3U : 4U;
    if (length == 0) {
        return {1, false};
    }
    // The second byte excludes overlong forms, surrogates, and values beyond U+10FFFF.
    unsigned char low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    unsigned char high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    std::size_t got = 1;
    while (got < length && got < text.size() && byteAt(got) >= low && byteAt(got) <= high) {
        ++got;
        low = 0x80;
        high = 0xBF;
    }
    return {got, got == length};
}

/// The length of the beginning that is UTF-8; of the whole text if all of it is.
inline std::size_t validUtf8Length(std::string_view text)
{
    using kd_lib::detail::valueAt;
    using kd_lib::detail::Word;
    using kd_lib::detail::wordSize;
    std::size_t at = 0;
    while (at < text.size()) {
        if (at + wordSize <= text.size() && (valueAt<Word>(text.data() + at) & 0x8080808080808080U) == 0) {
            at += wordSize;
            continue;
        }
        const Utf8Piece piece = firstUtf8Piece(text.substr(at));
        if (!piece.Whole) {
            break;
        }
        at += piece.Length;
    }
    return at;
}

/// Writes a character below U+10000 to `to`, which has room for three bytes; returns how many it wrote.
inline std::size_t putUtf8(char* to, char16_t character)
{
    const unsigned code = character;
    if (code < 0x80) {
        to[0] = static_cast<char>(code);
        return 1;
    }
    if (code < 0x800) {
        to[0] = static_cast<char>(0xC0U | code >> 6U);
        to[1] = static_cast<char>(0x80U | (code & 0x3FU));
        return 2;
    }
    to[0] = static_cast<char>(0xE0U | code >> 12U);
    to[1] = static_cast<char>(0x80U | (code >> 6U & 0x3FU));
    to[2] = static_cast<char>(0x80U | (code & 0x3FU));
    return 3;
}

}  // namespace kd_lib::exchange::detail
