/// \file
/// The bytes of memo files, which hold the long values of a .dbf file in blocks of one size.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kd_lib::formats {

/// Pointers in the record: digits, or four bytes, little-endian, in fields of this length.
constexpr std::size_t binaryPointerWidth = 4;

/// dBase III (.dbt): blocks of 512 bytes; a text begins with a block and ends with two end marks.
namespace dbt3 {
constexpr std::size_t headerSize = 512;
constexpr std::size_t nextBlockAt = 0;  ///< 4 bytes, little-endian: the next free block
constexpr std::size_t versionAt = 16;
constexpr std::uint8_t version = 3;
constexpr std::size_t blockSize = 512;
constexpr char textEnd = 0x1A;
}  // namespace dbt3

/// dBase IV to 7 (.dbt). Numbers are little-endian.
namespace dbt4 {
constexpr std::size_t headerSize = 24;   ///< the used part of the first block
constexpr std::size_t nextBlockAt = 0;   ///< 4 bytes
constexpr std::size_t blockSizeAt = 20;  ///< 2 bytes; 0: the default
constexpr std::size_t defaultBlockSize = 512;
constexpr std::size_t blockHeaderSize = 8;
constexpr std::uint32_t blockMark = 0x0008FFFF;  ///< the first 4 bytes of a block in use
constexpr std::size_t lengthAt = 4;              ///< 4 bytes; the block's header counts
}  // namespace dbt4

/// FoxPro (.fpt). Numbers are big-endian.
namespace fpt {
constexpr std::size_t headerSize = 512;
constexpr std::size_t nextBlockAt = 0;  ///< 4 bytes
constexpr std::size_t blockSizeAt = 6;  ///< 2 bytes
constexpr std::size_t flexMarkAt = 512;
constexpr char flexMark[] = "FlexFile3";  ///< then the header has `flexHeaderSize`
constexpr std::size_t flexHeaderSize = 1024;
constexpr std::size_t blockHeaderSize = 8;
constexpr std::size_t typeAt = 0;    ///< 4 bytes
constexpr std::size_t lengthAt = 4;  ///< 4 bytes; the block's header does not count
constexpr std::uint32_t pictureType = 0;
constexpr std::uint32_t textType = 1;
constexpr std::uint32_t objectType = 2;
}  // namespace fpt

}  // namespace kd_lib::formats
