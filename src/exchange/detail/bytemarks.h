/// \file
/// Finds single bytes in long texts, sixty-four bytes at a time.
#pragma once

#include <kd_lib/detail/words.h>

#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace kd_lib::exchange::detail {

/// How many bytes are examined together, one bit for each.
constexpr std::size_t blockSize = 64;

/// The bytes to look for. If there are fewer than four, one is given twice.
struct MarkBytes {
    char Bytes[4];
};

/// A bit for each byte of a block, the first byte's lowest.
struct BlockMarks {
    std::uint64_t Marks;  ///< the bytes to look for
    std::uint64_t High;   ///< not 0 if there are bytes above 127; the single bits have no meaning
};

/// The marks of a block with the operations that every processor has.
class PortableMarks {
public:
    explicit PortableMarks(const MarkBytes& marks)
    {
        for (std::size_t i = 0; i < 4; ++i) {
            Patterns[i] = lowBits * static_cast<unsigned char>(marks.Bytes[i]);
        }
    }

    BlockMarks operator()(const char* block) const
    {
        BlockMarks found = {0, 0};
        for (std::size_t at = 0; at < blockSize; at += kd_lib::detail::wordSize) {
            const Word word = kd_lib::detail::valueAt<Word>(block + at);
            Word marks = 0;
            for (const Word pattern : Patterns) {
                marks |= zeroBytes(word ^ pattern);
            }
            found.Marks |= bitsOf(marks) << at;
            found.High |= word & highBits;
        }
        return found;
    }

private:
    using Word = kd_lib::detail::Word;
    static constexpr Word lowBits = 0x0101010101010101U;
    static constexpr Word highBits = lowBits << 7U;

    /// The high bit of each byte that is 0, and no other bit.
    static Word zeroBytes(Word word) { return ~(((word & ~highBits) + ~highBits) | word | ~highBits); }

    /// The high bits of the bytes as eight bits, the first byte's lowest.
    static Word bitsOf(Word high)
    {
        if constexpr (kd_lib::detail::littleEndian) {
            return ((high >> 7U) * 0x0102040810204080U) >> 56U;
        } else {
            return ((high >> 7U) * 0x8040201008040201U) >> 56U;
        }
    }

    Word Patterns[4];
};

#if defined(__SSE2__)
/// The same with sixteen bytes in one operation.
class VectorMarks {
public:
    explicit VectorMarks(const MarkBytes& marks)
    {
        for (std::size_t i = 0; i < 4; ++i) {
            Patterns[i] = _mm_set1_epi8(marks.Bytes[i]);
        }
    }

    BlockMarks operator()(const char* block) const
    {
        const auto* vectors = reinterpret_cast<const __m128i*>(block);
        const __m128i a = _mm_loadu_si128(vectors);
        const __m128i b = _mm_loadu_si128(vectors + 1);
        const __m128i c = _mm_loadu_si128(vectors + 2);
        const __m128i d = _mm_loadu_si128(vectors + 3);
        const __m128i all = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
        return {marksOf(a) | marksOf(b) << 16U | marksOf(c) << 32U | marksOf(d) << 48U, bitsOf(all)};
    }

private:
    static std::uint64_t bitsOf(__m128i vector) { return static_cast<std::uint32_t>(_mm_movemask_epi8(vector)); }

    std::uint64_t marksOf(__m128i vector) const
    {
        return bitsOf(
            _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(vector, Patterns[0]), _mm_cmpeq_epi8(vector, Patterns[1])),
                         _mm_or_si128(_mm_cmpeq_epi8(vector, Patterns[2]), _mm_cmpeq_epi8(vector, Patterns[3]))));
    }

    __m128i Patterns[4];
};
using Marks = VectorMarks;
#else
using Marks = PortableMarks;
#endif

}  // namespace kd_lib::exchange::detail
