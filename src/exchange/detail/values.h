/// \file
/// Converts texts to typed cells, with one rule per type for all sources. Texts are UTF-8 here; values of types other
/// than text are ASCII, so they may also be bytes of a code page based on ASCII.
#pragma once

#include <kd_lib/exchange/cell.h>
#include <kd_lib/exchange/column.h>

#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// A cell, or the reason why there is none.
struct Converted {
    Cell Value;
    const char* Problem = nullptr;  ///< the reason if `Value` is unreadable; null otherwise

    Converted(const Cell& value) : Value(value) {}
    static Converted failed(const char* problem)
    {
        Converted result(Cell::unreadable());
        result.Problem = problem;
        return result;
    }
};

/// A text without the blanks and zero bytes around it.
std::string_view withoutPadding(std::string_view text);

// All following functions ignore padding around the text, and return NULL for padding only. A cell's text views `text`
// if that contains it in the right form; otherwise it is in `scratch`, which must outlive the cell.

/// An exact number by its digits: a plus sign, leading zeros and the sign of zero are removed; exponents are expanded,
/// up to 1000.
Converted numberOf(std::string_view text, std::string& scratch);

/// The same for a number of 64 bits without decimals; decimals of zero are removed.
Converted wholeNumberOf(std::string_view text, std::string& scratch);

/// The double nearest to the number, or "NaN", "Infinity", "inf" in any case.
Converted floatOf(std::string_view text);

/// The boolean of one letter of a .dbf: T t Y y, F f N n; "?" is NULL.
Converted logicalOf(std::string_view text);

/// The same, and true, yes, 1, false, no, 0 in any case.
Converted booleanOf(std::string_view text);

/// The day of eight digits; eight zeros are NULL.
Converted eightDigitDateOf(std::string_view text);

/// A day, "2024-02-29" or eight digits.
Converted dateOf(std::string_view text);

/// As `parseTime` and `parseTimestamp` read them.
Converted timeOf(std::string_view text);
Converted timestampOf(std::string_view text);

/// The value of a text in a column of this type. Text and bytes are the text itself, with its padding.
Converted valueOf(ColumnType type, std::string_view text, std::string& scratch);

/// Converts a cell to another type, without loss: 5.00 becomes the integer 5, a day the timestamp of its midnight. 1.5
/// is not an integer, a timestamp at noon is not a day. Bytes become text if they are UTF-8. NULL and unreadable cells
/// stay unchanged.
Converted convert(const Cell& cell, ColumnType to, std::string& scratch);

}  // namespace kd_lib::exchange::detail
