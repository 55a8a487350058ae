/// \file
/// Numbers in messages.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// "1 byte", "5 bytes".
inline std::string count(std::uint64_t number, std::string_view noun)
{
    return std::to_string(number) + ' ' + std::string(noun) + (number == 1 ? "" : "s");
}

/// A byte as two hexadecimal digits.
inline std::string hex(std::uint8_t byte)
{
    constexpr char digits[] = "0123456789ABCDEF";
    return {digits[byte >> 4], digits[byte & 15U]};
}

/// Bytes of a file in a message: bytes that are not printable ASCII become \xNN.
inline std::string printable(std::string_view bytes)
{
    std::string text;
    for (const char c : bytes) {
        if (c >= ' ' && c <= '~') {
            text += c;
        } else {
            text += "\\x" + hex(static_cast<std::uint8_t>(c));
        }
    }
    return text;
}

}  // namespace kd_lib::exchange::detail
