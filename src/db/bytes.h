/// \file
/// Copying the few bytes of a value without a call.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

namespace kd_lib {

/// Copies `text` to `to`, which it does not overlap, and returns the end of the copy. Up to 32 bytes
/// go as two blocks that may overlap each other.
inline char* copyBytes(char* to, std::string_view text)
{
    const char* const from = text.data();
    const std::size_t count = text.size();
    const auto copyTwo = [to, from, count](auto width) {
        char first[width];
        char last[width];
        std::memcpy(first, from, width);
        std::memcpy(last, from + count - width, width);
        std::memcpy(to, first, width);
        std::memcpy(to + count - width, last, width);
    };
    if (count > 32) {
        std::memcpy(to, from, count);
    } else if (count >= 16) {
        copyTwo(std::integral_constant<std::size_t, 16>());
    } else if (count >= 8) {
        copyTwo(std::integral_constant<std::size_t, 8>());
    } else if (count >= 4) {
        copyTwo(std::integral_constant<std::size_t, 4>());
    } else if (count >= 2) {
        copyTwo(std::integral_constant<std::size_t, 2>());
    } else if (count == 1) {
        *to = *from;
    }
    return to + count;
}

/// `value` becomes `text`, which lies outside of it. Most columns hold values of one size in every
/// record: these are copied in place.
inline void assignValue(std::string& value, std::string_view text)
{
    if (text.size() == value.size()) {
        copyBytes(value.data(), text);
    } else {
        value.clear();
        value.append(text);
    }
}

}  // namespace kd_lib
