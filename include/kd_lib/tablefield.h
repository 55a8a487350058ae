/// \file
/// The column of a table: its definition and its value in the current record.
#pragma once

#include <kd_lib/dates.h>
#include <kd_lib/export.h>
#include <kd_lib/text.h>

#include <string>

namespace kd_lib {

/// Column types. Their values never change, because they are stored, compared and mapped from other codes.
enum FIELD_TYPE : int {
    UNKNOWN_TYPE = 0,    ///< unknown; the type of columns of text files
    BOOLEAN_TYPE = 1,    ///< true or false
    DECIMAL_TYPE = 2,    ///< number with a fixed count of decimals
    FLOAT_TYPE = 3,      ///< floating-point number
    SMALLINT_TYPE = 4,   ///< small whole number
    INTEGER_TYPE = 5,    ///< whole number
    BIGINT_TYPE = 6,     ///< large whole number
    DATE_TYPE = 7,       ///< calendar date
    TIME_TYPE = 8,       ///< time of day
    TIMESTAMP_TYPE = 9,  ///< date and time of day
    CHAR_TYPE = 10,      ///< text of a fixed width
    VARCHAR_TYPE = 11,   ///< text up to a width
    TEXT_TYPE = 12,      ///< text of any length
    MEMO_TYPE = 13,      ///< number of a memo block
    BLOB_TYPE = 14       ///< bytes
};

/// The lower-case word of a type ("boolean", "decimal", "float", "smallint", "integer", "bigint",
/// "date", "time", "timestamp", "char", "varchar", "text", "memo", "blob"); "unknown" for 0 and for
/// every value outside 1 to 14.
KD_LIB_EXPORT std::string getFieldTypeName(FIELD_TYPE type);

/// One column: a plain value, whose copies include `Value`.
/// Threads: one thread per object.
class KD_LIB_EXPORT TableField {
public:
    /// A column with a name only: type unknown, all numbers 0, not indexed, value empty.
    explicit TableField(const std::string& name);

    /// A full definition. The value is empty.
    TableField(const std::string& name, FIELD_TYPE type, int offset, int length, int decimals, bool indexed);

    std::string Name;                ///< exactly as passed; `TableFields` changes it to lower case
    FIELD_TYPE Type = UNKNOWN_TYPE;  ///< column type
    int Offset = 0;                  ///< first byte in the record, from 0; 0 if there are no positions
    int Length = 0;                  ///< width in bytes, or the declared size
    int Decimals = 0;                ///< decimals of a number
    bool Indexed = false;            ///< the source marks the column as indexed
    std::string Value;               ///< text in the current record; empty until one is read

    /// The width, `Length`.
    int getLength() const { return Length; }
};

}  // namespace kd_lib
