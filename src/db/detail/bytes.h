/// \file
/// Copying the few bytes of a value without a call.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace kd_lib::detail {

/// Copies `Width` bytes from both ends of an area of `count` bytes, Width <= count <= 2 * Width.
template <std::size_t Width>
void copyBothEnds(char* to, const char* from, std::size_t count)
{
    char first[Width];
    char last[Width];
    std::memcpy(first, from, Width);
    std::memcpy(last, from + count - Width, Width);
    std::memcpy(to, first, Width);
    std::memcpy(to + count - Width, last, Width);
}

/// Copies less than eight bytes.
inline void copyFewBytes(char* to, const char* from, std::size_t count)
{
    if ((count & 4U) != 0) {
        copyBothEnds<4>(to, from, count);
    } else if ((count & 2U) != 0) {
        copyBothEnds<2>(to, from, count);
    } else if ((count & 1U) != 0) {
        *to = *from;
    }
}

/// Copies `text` to `to`, which it does not overlap, and returns the end of the copy.
inline char* copyBytes(char* to, std::string_view text)
{
    const char* const from = text.data();
    const std::size_t count = text.size();
    if (count > 32) {
        std::memcpy(to, from, count);
    } else if (count >= 16) {
        copyBothEnds<16>(to, from, count);
    } else if (count >= 8) {
        copyBothEnds<8>(to, from, count);
    } else {
        copyFewBytes(to, from, count);
    }
    return to + count;
}

/// `value` becomes `text`, which lies outside of it. Inline, where an assignment would be a call.
inline void replaceValue(std::string& value, std::string_view text)
{
    value.clear();
    value.append(text);
}

/// The same for columns that mostly hold values of one size in every record: these are copied in place.
inline void assignValue(std::string& value, std::string_view text)
{
    if (text.size() == value.size()) {
        copyBytes(value.data(), text);
    } else {
        replaceValue(value, text);
    }
}

}  // namespace kd_lib::detail
