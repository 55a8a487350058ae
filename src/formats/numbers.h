/// \file
/// Numbers of 2, 4 and 8 bytes in either order, as bytes of a file. No alignment is needed.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kd_lib::formats {

constexpr std::uint8_t byteAt(const char* bytes, std::size_t at)
{
    return static_cast<std::uint8_t>(bytes[at]);
}

/// The number whose low byte comes first.
template <class Number>
constexpr Number littleEndian(const char* bytes)
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
        value |= std::uint64_t{byteAt(bytes, i)} << (8 * i);
    }
    return static_cast<Number>(value);
}

/// The number whose high byte comes first.
template <class Number>
constexpr Number bigEndian(const char* bytes)
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
        value = value << 8 | byteAt(bytes, i);
    }
    return static_cast<Number>(value);
}

constexpr std::uint16_t little16(const char* bytes)
{
    return littleEndian<std::uint16_t>(bytes);
}
constexpr std::uint32_t little32(const char* bytes)
{
    return littleEndian<std::uint32_t>(bytes);
}
constexpr std::uint64_t little64(const char* bytes)
{
    return littleEndian<std::uint64_t>(bytes);
}
constexpr std::uint16_t big16(const char* bytes)
{
    return bigEndian<std::uint16_t>(bytes);
}
constexpr std::uint32_t big32(const char* bytes)
{
    return bigEndian<std::uint32_t>(bytes);
}
constexpr std::uint64_t big64(const char* bytes)
{
    return bigEndian<std::uint64_t>(bytes);
}

}  // namespace kd_lib::formats
