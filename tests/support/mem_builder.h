#pragma once

#include <string>

namespace kd_test {

/// One entry of a `.mem` file: 32 header bytes with the name from byte 1, then the unchanged value.
std::string memEntry(const std::string& name, char type, unsigned char length, unsigned char decimals,
                     const std::string& value);

}  // namespace kd_test
