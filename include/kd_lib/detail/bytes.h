/// \file
/// Copying and comparing the few bytes of a value without a call. Not for client programs.
#pragma once

#include <kd_lib/detail/words.h>

#include <cstddef>
#include <cstdint>
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

/// Whether `count` bytes are the same at both places; `Width` <= count <= 2 * `Width`.
template <class Width>
bool sameAtBothEnds(const char* a, const char* b, std::size_t count)
{
    const std::size_t last = count - sizeof(Width);
    return valueAt<Width>(a) == valueAt<Width>(b) && valueAt<Width>(a + last) == valueAt<Width>(b + last);
}

/// Whether the texts are equal. Inline, because a comparison of strings would be a call.
inline bool sameBytes(std::string_view a, std::string_view b)
{
    const std::size_t count = a.size();
    if (count != b.size()) {
        return false;
    }
    if (count > 2 * wordSize) {
        return std::memcmp(a.data(), b.data(), count) == 0;
    }
    if (count >= wordSize) {
        return sameAtBothEnds<Word>(a.data(), b.data(), count);
    }
    if (count >= halfWordSize) {
        return sameAtBothEnds<HalfWord>(a.data(), b.data(), count);
    }
    if (count >= sizeof(std::uint16_t)) {
        return sameAtBothEnds<std::uint16_t>(a.data(), b.data(), count);
    }
    return count == 0 || a.front() == b.front();
}

/// Sets `value` to `text`, which is not part of it. Inline, because an assignment would be a call.
inline void replaceValue(std::string& value, std::string_view text)
{
    value.clear();
    value.append(text);
}

/// The same for columns whose values mostly have the same size in every record: these are copied in place.
inline void assignValue(std::string& value, std::string_view text)
{
    if (text.size() == value.size()) {
        copyBytes(value.data(), text);
    } else {
        replaceValue(value, text);
    }
}

}  // namespace kd_lib::detail
