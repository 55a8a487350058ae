#include <kd_lib/byteorder.h>

#include <bit>
#include <cstdint>

namespace kd_lib {

short rotate2b(short v)
{
    if constexpr (std::endian::native == std::endian::little) {
        return v;
    }
    const auto bits = static_cast<std::uint16_t>(v);
    return static_cast<short>(static_cast<std::uint16_t>((bits << 8) | (bits >> 8)));
}

unsigned int rotate4b(unsigned int v)
{
    if constexpr (std::endian::native == std::endian::little) {
        return v;
    }
    return (v << 24) | ((v << 8) & 0x00FF0000U) | ((v >> 8) & 0x0000FF00U) | (v >> 24);
}

}  // namespace kd_lib
