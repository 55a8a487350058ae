/// \file
/// One column of a source.
#pragma once

#include <kd_lib/export.h>

#include <cstdint>
#include <string>

namespace kd_lib::exchange {

/// The type of a column. Its cells have the kind of the same name, or are null or unreadable.
enum class ColumnType : std::uint8_t {
    Text,        ///< at most `Width` characters; 0: of any length
    Number,      ///< exact, at most `Width` characters in the source (0: of any length), usually `Decimals` decimals
    Integer,     ///< whole numbers of 32 bits; cells of kind Number
    BigInteger,  ///< whole numbers of 64 bits; cells of kind Number
    Currency,    ///< 64 bits in units of 1/10000; cells of kind Number
    Float,
    Boolean,
    Date,
    Time,
    Timestamp,
    Bytes
};

/// A column as the source describes it. Targets choose their own names and types from it.
struct Column {
    std::string Name;  ///< as in the source, decoded to UTF-8; may be empty or the same as another column's
    ColumnType Type = ColumnType::Text;
    std::uint32_t Width = 0;
    std::uint32_t Decimals = 0;

    char Letter = 0;                 ///< the type letter of a .dbf or .mem file; 0: none
    std::uint32_t SourceLength = 0;  ///< bytes in the record; 0: not fixed
};

/// The name of a type in messages and for `--type`: "text", "number", "integer", ...
KD_LIB_EXPORT std::string typeName(ColumnType type);

}  // namespace kd_lib::exchange
