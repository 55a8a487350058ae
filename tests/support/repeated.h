/// \file
/// Long texts of short ones.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kd_test {

inline std::string repeated(std::string_view text, std::size_t count)
{
    std::string result;
    while (count-- > 0) {
        result += text;
    }
    return result;
}

}  // namespace kd_test
