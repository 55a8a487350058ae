/// \file
/// Machine words and vectors in texts. Not for client programs: the inline functions of other headers use it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kd_lib::detail {

/// Eight bytes that are examined together.
using Word = std::uint64_t;
constexpr std::size_t wordSize = sizeof(Word);

/// Half a word.
using HalfWord = std::uint32_t;
constexpr std::size_t halfWordSize = sizeof(HalfWord);

/// Sixteen bytes that are examined together, and the same as four half words. g++ and clang++ support such vectors
/// for every processor, but only g++ turns a loop over single bytes into vector code.
using SixteenBytes = unsigned char __attribute__((vector_size(16)));
using FourHalfWords = HalfWord __attribute__((vector_size(16)));
constexpr std::size_t vectorSize = sizeof(SixteenBytes);

constexpr bool littleEndian = std::endian::native == std::endian::little;

/// The value whose bytes begin at `bytes`; no alignment is needed.
template <class Value>
Value valueAt(const char* bytes)
{
    Value value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

/// Writes the bytes of `value` to `to`; no alignment is needed.
template <class Value>
void putValue(char* to, const Value& value)
{
    std::memcpy(to, &value, sizeof value);
}

}  // namespace kd_lib::detail
