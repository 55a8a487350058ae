#include "binarytext.h"

#include <algorithm>
#include <cstdint>

namespace kd_lib::exchange::detail {

namespace {

constexpr char hexDigits[] = "0123456789abcdef";
constexpr char base64Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// A multiple of three: only the last piece of a text needs padding.
constexpr std::size_t pieceSize = 12288;

/// Passes each piece of `bytes` to `put(to, piece)`, which writes at most `Longest` times as much, and four bytes.
template <std::size_t Longest, class Put>
void writePieces(std::string_view bytes, OutputBlock& out, Put put)
{
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, pieceSize);
        out.advance(put(out.reserve(piece.size() * Longest + 4), piece));
        bytes.remove_prefix(piece.size());
    }
}

char* putHex(char* to, std::string_view bytes)
{
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        *to++ = hexDigits[byte >> 4U];
        *to++ = hexDigits[byte & 0xFU];
    }
    return to;
}

std::uint32_t byteOrZero(std::string_view bytes, std::size_t at)
{
    return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0U;
}

}  // namespace

void writeHex(std::string_view bytes, OutputBlock& out)
{
    writePieces<2>(bytes, out, [](char* to, std::string_view piece) { return putHex(to, piece); });
}

std::string hexText(std::string_view bytes)
{
    std::string text(2 * bytes.size(), '\0');
    putHex(text.data(), bytes);
    return text;
}

void writeBase64(std::string_view bytes, OutputBlock& out)
{
    writePieces<2>(bytes, out, [](char* to, std::string_view piece) {
        for (std::size_t at = 0; at < piece.size(); at += 3) {
            const std::uint32_t three =
                byteOrZero(piece, at) << 16U | byteOrZero(piece, at + 1) << 8U | byteOrZero(piece, at + 2);
            *to++ = base64Digits[three >> 18U];
            *to++ = base64Digits[three >> 12U & 0x3FU];
            *to++ = at + 1 < piece.size() ? base64Digits[three >> 6U & 0x3FU] : '=';
            *to++ = at + 2 < piece.size() ? base64Digits[three & 0x3FU] : '=';
        }
        return to;
    });
}

}  // namespace kd_lib::exchange::detail
