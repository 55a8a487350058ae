/// \file
/// Bytes as text.
#pragma once

#include <kd_lib/exchange/outputblock.h>

#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// Two lower-case hexadecimal digits per byte.
void writeHex(std::string_view bytes, OutputBlock& out);

/// The same digits as a string.
std::string hexText(std::string_view bytes);

/// Base64 with padding, without line ends.
void writeBase64(std::string_view bytes, OutputBlock& out);

}  // namespace kd_lib::exchange::detail
