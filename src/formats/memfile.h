/// \file
/// The bytes of a .mem file: variables one after another, each a header and its value, then one end mark. There are
/// three forms: that of dBase III and Clipper, that of FoxPro, and one that holds only texts and has no end mark.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kd_lib::formats::memfile {

constexpr std::size_t entrySize = 32;
constexpr std::size_t nameAt = 0;
constexpr std::size_t nameWidth = 11;
constexpr std::size_t textFormNameAt = 1;  ///< only texts: byte 0 is zero
constexpr std::size_t typeAt = 11;         ///< C, N, D or L; dBase III and Clipper add `highBit`, FoxPro does not
constexpr std::size_t lengthAt = 16;       ///< C: the value's length, low byte; N: characters for display
constexpr std::size_t highLengthAt = 17;   ///< C: the length's high byte; N: decimals for display
constexpr std::size_t longLengthAt = 13;   ///< FoxPro, perhaps: the length of a text above 255, four bytes, big-endian
constexpr std::uint8_t highBit = 0x80;
constexpr char fileEnd = 0x1A;

constexpr std::size_t numberSize = 8;  ///< of N, a little-endian double, and of D, a Julian day as a double
constexpr std::size_t logicalSize = 1;

/// Only texts: N is digits up to this mark, D eight digits, L a letter; D and L have a length as C has.
constexpr char numberEnd = '@';
constexpr std::size_t longestNumber = 256;

/// FoxPro: the type is a lower-case letter if a name of more than ten letters follows the header.
constexpr std::size_t longNameLengthSize = 2;  ///< its length, little-endian, then the name

}  // namespace kd_lib::formats::memfile
