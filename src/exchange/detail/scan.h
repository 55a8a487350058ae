/// \file
/// Searches short texts of cells for single bytes.
#pragma once

#include <kd_lib/detail/words.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kd_lib::exchange::detail {

using kd_lib::detail::SixteenBytes;

/// True when a byte of `marks`, the result of a comparison, is set.
inline bool anySet(SixteenBytes marks)
{
    const auto halves = std::bit_cast<std::uint64_t __attribute__((vector_size(16)))>(marks);
    return (halves[0] | halves[1]) != 0;
}

/// All bytes of a text of 1 to 16 bytes, some of them more than once.
inline SixteenBytes spread(std::string_view text)
{
    using kd_lib::detail::FourHalfWords;
    using kd_lib::detail::HalfWord;
    using kd_lib::detail::valueAt;
    const char* const bytes = text.data();
    const std::size_t size = text.size();
    if (size >= 4) {
        const std::size_t second = size / 8 * 4;
        const FourHalfWords words = {valueAt<HalfWord>(bytes), valueAt<HalfWord>(bytes + second),
                                     valueAt<HalfWord>(bytes + size - 4 - second), valueAt<HalfWord>(bytes + size - 4)};
        return std::bit_cast<SixteenBytes>(words);
    }
    const auto byte = [bytes](std::size_t at) { return static_cast<HalfWord>(static_cast<unsigned char>(bytes[at])); };
    const HalfWord word = byte(0) | byte(size / 2) << 8U | byte(size - 1) << 16U | byte(0) << 24U;
    return std::bit_cast<SixteenBytes>(FourHalfWords{word, word, word, word});
}

/// True when `isSpecial`, which marks certain bytes among sixteen, finds one in `text`.
template <class IsSpecial>
bool containsAny(std::string_view text, IsSpecial isSpecial)
{
    using kd_lib::detail::valueAt;
    constexpr std::size_t step = sizeof(SixteenBytes);
    const char* const bytes = text.data();
    const std::size_t size = text.size();
    if (size <= step) {
        return size != 0 && anySet(isSpecial(spread(text)));
    }
    for (std::size_t at = 0; at + step < size; at += step) {
        if (anySet(isSpecial(valueAt<SixteenBytes>(bytes + at)))) {
            return true;
        }
    }
    return anySet(isSpecial(valueAt<SixteenBytes>(bytes + size - step)));
}

/// Marks that are not all zero if `text` has this byte.
inline SixteenBytes marksOf(std::string_view text, unsigned char byte)
{
    using kd_lib::detail::valueAt;
    constexpr std::size_t step = sizeof(SixteenBytes);
    const auto marked = [byte](SixteenBytes bytes) { return std::bit_cast<SixteenBytes>(bytes == byte); };
    const std::size_t size = text.size();
    if (size < step) {
        return size != 0 ? marked(spread(text)) : SixteenBytes{};
    }
    SixteenBytes marks = marked(valueAt<SixteenBytes>(text.data() + size - step));
    for (std::size_t at = 0; at + step < size; at += step) {
        marks |= marked(valueAt<SixteenBytes>(text.data() + at));
    }
    return marks;
}

inline bool containsByte(std::string_view text, unsigned char byte)
{
    return containsAny(text, [byte](SixteenBytes bytes) { return std::bit_cast<SixteenBytes>(bytes == byte); });
}

}  // namespace kd_lib::exchange::detail
