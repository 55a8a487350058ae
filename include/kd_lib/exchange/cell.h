/// \file
/// One value of a record, independent of sources and targets.
#pragma once

#include <cstdint>
#include <string_view>

namespace kd_lib::exchange {

/// The kind of a cell's value.
enum class CellKind : std::uint8_t {
    Null,       ///< no value
    Text,       ///< UTF-8 text
    Number,     ///< an exact number, as digits
    Float,      ///< a binary floating-point number
    Boolean,    ///< true or false
    Date,       ///< a day of the calendar
    Time,       ///< a time of the day
    Timestamp,  ///< a day and a time of the day
    Bytes,      ///< bytes that are not text
    Unreadable  ///< bytes that are not a value of the column's type
};

/// A day of the Gregorian calendar, years 1 to 9999.
struct Date {
    std::int16_t Year;
    std::uint8_t Month;  ///< 1 to 12
    std::uint8_t Day;    ///< 1 to 31

    friend bool operator==(const Date&, const Date&) = default;
};

/// A day and the time of that day.
struct Timestamp {
    Date Day;                    ///< unused in a cell of kind `Time`
    std::uint32_t Milliseconds;  ///< since midnight, 0 to 86399999
};

/// A value. It owns nothing: `Text` views memory of the source and is valid until the source's next record. Only the
/// members that belong to its `Kind` are read.
struct Cell {
    /// Text: UTF-8. Number: an optional "-", then digits without leading zeros, at least one before the point; with
    /// decimals "." and at least one digit; zero has no sign. Bytes: the bytes. Unreadable: empty.
    std::string_view Text;
    union {
        Timestamp Moment = {};  ///< Date (its `Day`), Time (its `Milliseconds`), Timestamp
        double Float;           ///< Float
        bool Boolean;           ///< Boolean
    };
    CellKind Kind = CellKind::Null;

    static Cell null() { return {}; }
    static Cell unreadable() { return ofKind(CellKind::Unreadable); }
    static Cell text(std::string_view utf8) { return ofKind(CellKind::Text, utf8); }
    static Cell number(std::string_view digits) { return ofKind(CellKind::Number, digits); }
    static Cell bytes(std::string_view bytes) { return ofKind(CellKind::Bytes, bytes); }

    static Cell real(double value)
    {
        Cell cell = ofKind(CellKind::Float);
        cell.Float = value;
        return cell;
    }

    static Cell boolean(bool value)
    {
        Cell cell = ofKind(CellKind::Boolean);
        cell.Boolean = value;
        return cell;
    }

    static Cell date(Date day)
    {
        Cell cell = ofKind(CellKind::Date);
        cell.Moment.Day = day;
        return cell;
    }

    static Cell time(std::uint32_t milliseconds)
    {
        Cell cell = ofKind(CellKind::Time);
        cell.Moment.Milliseconds = milliseconds;
        return cell;
    }

    static Cell timestamp(Timestamp moment)
    {
        Cell cell = ofKind(CellKind::Timestamp);
        cell.Moment = moment;
        return cell;
    }

private:
    static Cell ofKind(CellKind kind, std::string_view text = {})
    {
        Cell cell;
        cell.Text = text;
        cell.Kind = kind;
        return cell;
    }
};

}  // namespace kd_lib::exchange
