/// \file
/// Texts that end at a zero byte, or with their field.
#pragma once

#include <string_view>

namespace kd_lib::formats {

constexpr std::string_view upToZero(std::string_view bytes)
{
    return bytes.substr(0, bytes.find('\0'));
}

}  // namespace kd_lib::formats
