/// \file
/// The case of ASCII letters. Other bytes are not changed.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

constexpr char lowerLetter(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr char upperLetter(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

inline bool equalWithoutCase(std::string_view a, std::string_view b)
{
    return std::ranges::equal(a, b, [](char x, char y) { return lowerLetter(x) == lowerLetter(y); });
}

inline std::string lowered(std::string_view text)
{
    std::string result(text);
    std::ranges::transform(result, result.begin(), lowerLetter);
    return result;
}

inline std::string uppered(std::string_view text)
{
    std::string result(text);
    std::ranges::transform(result, result.begin(), upperLetter);
    return result;
}

}  // namespace kd_lib::exchange::detail
