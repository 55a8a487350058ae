/// \file
/// The header of a .dbf file: positions and widths of its bytes. Numbers are little-endian and unsigned.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace kd_lib::formats {

/// The header of all versions except dBase II, whose header is below.
namespace dbfheader {
constexpr std::size_t size = 32;
constexpr std::size_t versionAt = 0;
constexpr std::size_t yearAt = 1;  ///< of the last change: since 1900, or the last two digits
constexpr std::size_t monthAt = 2;
constexpr std::size_t dayAt = 3;
constexpr std::size_t recordCountAt = 4;    ///< 4 bytes; deleted records count
constexpr std::size_t headerLengthAt = 8;   ///< 2 bytes; the place of the first record
constexpr std::size_t recordLengthAt = 10;  ///< 2 bytes; with the deletion mark
constexpr std::size_t transactionAt = 14;   ///< dBase IV: 1, a transaction is unfinished
constexpr std::size_t encryptedAt = 15;     ///< dBase IV: 1, the records are encrypted
constexpr std::size_t flagsAt = 28;
constexpr std::size_t languageAt = 29;
constexpr int yearBase = 1900;

constexpr std::uint8_t indexFlag = 0x01;
constexpr std::uint8_t memoFlag = 0x02;
constexpr std::uint8_t containerFlag = 0x04;  ///< the file is a database container (.dbc)
}  // namespace dbfheader

/// dBase II.
namespace dbf2header {
constexpr std::size_t recordCountAt = 1;  ///< 2 bytes
constexpr std::size_t monthAt = 3;
constexpr std::size_t dayAt = 4;
constexpr std::size_t yearAt = 5;
constexpr std::size_t recordLengthAt = 6;  ///< 2 bytes
constexpr std::size_t length = 521;        ///< of the whole header, always
constexpr std::size_t markAt = 520;        ///< the end mark if all 32 descriptors are used
}  // namespace dbf2header

/// dBase 7: another 36 bytes follow the first 32.
namespace dbf7header {
constexpr std::size_t driverAt = 32;  ///< the language driver's name, filled with zero bytes
constexpr std::size_t driverWidth = 32;
}  // namespace dbf7header

/// The form of a field's description in the header. There are three such forms.
struct DescriptorShape {
    std::size_t First;  ///< position of the first descriptor in the file
    std::size_t Size;
    std::size_t NameWidth;  ///< the name is at 0 and ends with a zero byte, or with its width
    std::size_t TypeAt;
    std::size_t LengthAt;
    std::size_t DecimalsAt;  ///< of a C field: the high byte of its length, if the record then fits
};
constexpr DescriptorShape descriptorOf2{8, 16, 11, 11, 12, 15};
constexpr DescriptorShape descriptorOf3{32, 32, 11, 11, 16, 17};
constexpr DescriptorShape descriptorOf7{68, 48, 32, 32, 33, 34};

/// Follows the last descriptor, in the place of another one.
constexpr char descriptorEnd = 0x0D;

/// Visual FoxPro's part of a 32-byte descriptor.
namespace foxfield {
constexpr std::size_t flagsAt = 18;
constexpr std::size_t nextNumberAt = 19;  ///< 4 bytes: the next value of an autoincrement field
constexpr std::size_t stepAt = 23;
constexpr std::uint8_t systemFlag = 0x01;
constexpr std::uint8_t nullFlag = 0x02;  ///< the field may be NULL
constexpr std::uint8_t binaryFlag = 0x04;
constexpr std::uint8_t autoIncrementFlag = 0x0C;
}  // namespace foxfield

/// The index flag of a 32-byte descriptor.
constexpr std::size_t indexedAt = 31;
constexpr std::uint8_t indexedFlag = 1;

/// After the end mark of the descriptors of Visual FoxPro: the name of the database that the table belongs to.
constexpr std::size_t backLinkWidth = 263;

/// A record.
constexpr char deletedMark = '*';
constexpr char validMark = ' ';
constexpr std::size_t firstFieldOffset = 1;

/// After the last record.
constexpr char fileEnd = 0x1A;

/// The meanings of the first byte of a file.
enum class DbfFamily : std::uint8_t { DBase2, DBase3, DBase4, DBase7, FoxPro, VisualFoxPro };
enum class MemoKind : std::uint8_t { None, Dbt3, Dbt4, Fpt, Smt };

struct DbfVersion {
    std::uint8_t Byte;
    DbfFamily Family;
    MemoKind Memo;  ///< the usual one; `None`: the byte does not imply one
    const char* Program;
};

constexpr std::array dbfVersions{
    DbfVersion{0x02, DbfFamily::DBase2, MemoKind::None, "dBase II"},
    DbfVersion{0x03, DbfFamily::DBase3, MemoKind::None, "dBase III"},
    DbfVersion{0x04, DbfFamily::DBase7, MemoKind::None, "dBase 7"},
    DbfVersion{0x05, DbfFamily::DBase3, MemoKind::None, "dBase 5"},
    DbfVersion{0x07, DbfFamily::DBase3, MemoKind::None, "Visual Objects"},
    DbfVersion{0x30, DbfFamily::VisualFoxPro, MemoKind::Fpt, "Visual FoxPro"},
    DbfVersion{0x31, DbfFamily::VisualFoxPro, MemoKind::Fpt, "Visual FoxPro with autoincrement"},
    DbfVersion{0x32, DbfFamily::VisualFoxPro, MemoKind::Fpt, "Visual FoxPro 9"},
    DbfVersion{0x43, DbfFamily::DBase4, MemoKind::None, "dBase IV SQL table"},
    DbfVersion{0x63, DbfFamily::DBase4, MemoKind::None, "dBase IV SQL system table"},
    DbfVersion{0x7B, DbfFamily::DBase4, MemoKind::Dbt4, "dBase IV with memo"},
    DbfVersion{0x83, DbfFamily::DBase3, MemoKind::Dbt3, "dBase III with memo"},
    DbfVersion{0x87, DbfFamily::DBase3, MemoKind::Dbt3, "Visual Objects with memo"},
    DbfVersion{0x8B, DbfFamily::DBase4, MemoKind::Dbt4, "dBase IV with memo"},
    DbfVersion{0x8C, DbfFamily::DBase7, MemoKind::Dbt4, "dBase 7 with memo"},
    DbfVersion{0x8E, DbfFamily::DBase4, MemoKind::Dbt4, "dBase IV SQL table with memo"},
    DbfVersion{0xCB, DbfFamily::DBase4, MemoKind::Dbt4, "dBase IV SQL table with memo"},
    DbfVersion{0xE5, DbfFamily::DBase3, MemoKind::Smt, "Clipper with SIx driver"},
    DbfVersion{0xF5, DbfFamily::FoxPro, MemoKind::Fpt, "FoxPro 2 with memo"},
    DbfVersion{0xFB, DbfFamily::DBase3, MemoKind::None, "FoxBASE with memo"},
};

/// The version of a first byte; a null pointer if it is not known.
constexpr const DbfVersion* dbfVersionOf(std::uint8_t byte)
{
    for (const DbfVersion& version : dbfVersions) {
        if (version.Byte == byte) {
            return &version;
        }
    }
    return nullptr;
}

constexpr const DescriptorShape& descriptorShapeOf(DbfFamily family)
{
    switch (family) {
    case DbfFamily::DBase2:
        return descriptorOf2;
    case DbfFamily::DBase7:
        return descriptorOf7;
    default:
        return descriptorOf3;
    }
}

}  // namespace kd_lib::formats
