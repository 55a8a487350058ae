/// \file
/// How the bytes of a .dbf field are read, by its letter, its length and the kind of table.
#pragma once

#include "dbflayout.h"

#include <kd_lib/exchange/column.h>

#include <cstdint>

namespace kd_lib::exchange::detail {

enum class FieldForm : std::uint8_t {
    Text,
    TrimmedText,  ///< without blanks and zero bytes at both ends; for a type given by the options
    Number,       ///< digits
    Logical,      ///< a letter
    Date,         ///< eight digits
    Bytes,        ///< unchanged
    VaryingText,  ///< the null flags say whether the last byte is the length
    VaryingBytes,
    Integer,               ///< 32 bits, little-endian
    SortableInteger,       ///< big-endian, the sign bit turned
    Double,                ///< little-endian
    SortableDouble,        ///< big-endian, the sign bit turned if positive, all bits if negative
    Currency,              ///< 64 bits, little-endian, in 1/10000
    JulianTimestamp,       ///< day number and milliseconds, 32 bits each, little-endian
    MillisecondTimestamp,  ///< a big-endian double of milliseconds
    MemoText,              ///< a pointer into the memo file
    MemoBytes,
    NullFlags,  ///< not a column
    Unknown     ///< bytes of an unknown type
};

FieldForm formOf(const DbfField& field, const DbfLayout& layout);

/// The form in which a field is read for a column of type `type`. If the form's cells have another type, they must be
/// converted.
FieldForm formFor(FieldForm form, ColumnType type);

/// The type of the cells of a form.
ColumnType typeOf(FieldForm form);

constexpr bool isMemo(FieldForm form)
{
    return form == FieldForm::MemoText || form == FieldForm::MemoBytes;
}

/// The bits of a field in the null flags, by their numbers; -1: it has none.
struct NullBits {
    int Varying = -1;  ///< set: the last byte is the length
    int Null = -1;     ///< set: NULL
};

/// The bits of every field of a table, in the order of the fields; -1 for all if there are no null flags.
std::vector<NullBits> nullBitsOf(const DbfLayout& layout);

/// The column of a field, without its name.
Column columnOf(const DbfField& field, FieldForm form);

}  // namespace kd_lib::exchange::detail
