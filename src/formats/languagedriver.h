/// \file
/// The language driver that dBase 7 names in the header of a .dbf file: the code page that it means.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace kd_lib::formats {

/// The code page of a driver ("DB437US0", "db866ru0", "DBWINUS0", "FOXCZ895"), in any case of letters; empty if it
/// is not known.
inline std::string codePageOfDriver(std::string_view driver)
{
    std::string key(driver);
    std::ranges::transform(key, key.begin(),
                           [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    const auto pageFrom = [&key](std::size_t at) {
        const std::string digits = key.substr(at, 3);
        const bool number = digits.size() == 3 && digits.find_first_not_of("0123456789") == std::string::npos;
        return number ? digits : std::string();
    };
    if (key == "DBHEBREW") {
        return "862";
    }
    if (key == "DB437GR0") {
        return "737";
    }
    if (key.starts_with("FOX")) {
        if (key.ends_with("WIN")) {
            return key == "FOXCZWIN" ? "1250" : "1252";
        }
        return key.size() == 8 ? pageFrom(5) : std::string();
    }
    if (key.starts_with("DBWIN")) {
        return "1252";
    }
    return key.starts_with("DB") ? pageFrom(2) : std::string();
}

}  // namespace kd_lib::formats
