/// \file
/// Sixteen bytes compared at a time, as bits.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#else
#include <array>
#include <cstring>
#endif

namespace kd_lib::exchange::detail {

/// Sixteen bytes of memory. The lowest bit of each result belongs to the first of them.
class Lanes {
public:
    static constexpr std::size_t count = 16;

#if defined(__SSE2__)
    explicit Lanes(const char* bytes) : Bytes(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes))) {}

    std::uint32_t equal(char c) const
    {
        return bits(_mm_cmpeq_epi8(Bytes, _mm_set1_epi8(c)));
    }

    /// The bytes `0` to `9`.
    std::uint32_t digits() const
    {
        // Maps the digits to the ten lowest signed bytes.
        constexpr char lowest = -128;
        const __m128i moved = _mm_add_epi8(Bytes, _mm_set1_epi8(static_cast<char>(lowest - '0')));
        return bits(_mm_cmplt_epi8(moved, _mm_set1_epi8(lowest + 10)));
    }

    /// The bytes above 127.
    std::uint32_t high() const
    {
        return bits(Bytes);
    }

    /// The bytes below a blank, and those above 127.
    std::uint32_t unprintable() const
    {
        return bits(_mm_cmplt_epi8(Bytes, _mm_set1_epi8(' ')));
    }

private:
    static std::uint32_t bits(__m128i lanes)
    {
        return static_cast<std::uint32_t>(_mm_movemask_epi8(lanes));
    }

    __m128i Bytes;
#else
    explicit Lanes(const char* bytes)
    {
        std::memcpy(Bytes.data(), bytes, count);
    }

    std::uint32_t equal(char c) const
    {
        return bits([c](char byte) { return byte == c; });
    }
    std::uint32_t digits() const
    {
        return bits([](char byte) { return byte >= '0' && byte <= '9'; });
    }
    std::uint32_t high() const
    {
        return bits([](char byte) { return (static_cast<unsigned char>(byte) & 0x80U) != 0; });
    }
    std::uint32_t unprintable() const
    {
        return bits([](char byte) { return static_cast<signed char>(byte) < ' '; });
    }

private:
    template <class Is>
    std::uint32_t bits(Is is) const
    {
        std::uint32_t result = 0;
        for (std::size_t i = 0; i < count; ++i) {
            result |= (is(Bytes[i]) ? 1U : 0U) << i;
        }
        return result;
    }

    std::array<char, count> Bytes;
#endif
};

}  // namespace kd_lib::exchange::detail
