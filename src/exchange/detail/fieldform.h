/// \file
/// What the bytes of a .dbf field are, by its letter, its length and the kind of table.
#pragma once

#include "dbflayout.h"

#include <kd_lib/exchange/column.h>

#include <cstdint>

namespace kd_lib::exchange::detail {

enum class FieldForm : std::uint8_t {
    Text,
    TrimmedText,  ///< without blanks and zero bytes at both ends; a type that was asked for
    Number,       ///< digits
    Logical,      ///< a letter
    Date,         ///< eight digits
    Bytes,        ///< as they are
    VaryingText,  ///< the null flags tell whether the last byte is the length
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
    NullFlags,  ///< no column
    Unknown     ///< bytes of a type that is not known
};

FieldForm formOf(const DbfField& field, const DbfLayout& layout);

/// The form to read a field in for a column of another type. Where that form is not of this type, its cells have to
/// be converted.
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
    int Null = -1;     ///< set: no value
};

/// The bits of every field of a table, in the order of the fields. Without null flags none has any.
std::vector<NullBits> nullBitsOf(const DbfLayout& layout);

/// The column of a field, apart from its name.
Column columnOf(const DbfField& field, FieldForm form);

}  // namespace kd_lib::exchange::detail
