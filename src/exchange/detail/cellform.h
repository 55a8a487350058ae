/// \file
/// The text of a cell, in the form that a target needs.
#pragma once

#include "escape.h"
#include "moments.h"

#include <kd_lib/detail/bytes.h>
#include <kd_lib/exchange/outputblock.h>
#include <kd_lib/exchange/record.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <vector>

namespace kd_lib::exchange::detail {

/// A word of up to eight bytes. Eight bytes are always written, whatever its length.
class ShortWord {
public:
    template <std::size_t Size>
    consteval ShortWord(const char (&word)[Size]) : Length(Size - 1)
    {
        static_assert(Size - 1 <= sizeof(Bytes));
        std::copy_n(word, Size - 1, Bytes.begin());
    }

    /// `to` has room for eight bytes.
    char* put(char* to) const
    {
        kd_lib::detail::putValue(to, Bytes);
        return to + Length;
    }

private:
    std::array<char, 8> Bytes = {};
    std::size_t Length;
};

// A form derives from `CommonForm` and has
//   static constexpr char Quote         around dates and times; 0: none
//   static constexpr char Between       between the date and the time of a timestamp
//   static constexpr ShortWord Null, True, False
//   static constexpr std::size_t Longest
//   template <bool Plain>
//   static char* shortText(char* to, std::string_view)    of up to `shortSize` bytes; writes at most `Longest` times as
//                                                         many, and `roomAround`
//   static void longText(std::string_view, OutputBlock&)  of any length
//   static void bytes(std::string_view, OutputBlock&)
//   static char* real(char* to, double)                   writes at most `realSize` bytes

/// For quotes and a separator.
constexpr std::size_t roomAround = 16;

/// The longest text of a double, with quotes and separator.
constexpr std::size_t realSize = 40;

/// The room for a cell that is written in place.
template <class Form>
constexpr std::size_t roomOfCell = shortSize* Form::Longest + roomAround + realSize;

/// The shortest digits that convert back to this finite value.
inline char* putReal(char* to, double value)
{
    return std::to_chars(to, to + realSize, value).ptr;
}

template <class Form>
char* putMoment(char* to, const Cell& cell)
{
    if constexpr (Form::Quote != '\0') {
        *to++ = Form::Quote;
    }
    if (cell.Kind == CellKind::Date) {
        to = putDate(to, cell.Moment.Day);
    } else if (cell.Kind == CellKind::Time) {
        to = putTime(to, cell.Moment.Milliseconds);
    } else {
        to = putTimestamp(to, cell.Moment, Form::Between);
    }
    if constexpr (Form::Quote != '\0') {
        *to++ = Form::Quote;
    }
    return to;
}

/// The common part of most forms.
struct CommonForm {
    /// True for a cell that may need more than the room of a cell.
    static bool isLong(const Cell& cell)
    {
        return cell.Kind == CellKind::Bytes ||
               ((cell.Kind == CellKind::Text || cell.Kind == CellKind::Number) && cell.Text.size() > shortSize);
    }
};

/// Writes a cell that is not long, of a plain record if `Plain`; `to` has room for one.
template <class Form, bool Plain>
char* putCell(char* to, const Cell& cell)
{
    switch (cell.Kind) {
    case CellKind::Text:
        return Form::template shortText<Plain>(to, cell.Text);
    case CellKind::Number:
        return putShort<NoEscapes, Plain>(to, cell.Text);
    case CellKind::Boolean:
        return (cell.Boolean ? Form::True : Form::False).put(to);
    case CellKind::Date:
    case CellKind::Time:
    case CellKind::Timestamp:
        return putMoment<Form>(to, cell);
    case CellKind::Float:
        return Form::real(to, cell.Float);
    case CellKind::Bytes:
    case CellKind::Null:
    case CellKind::Unreadable:
        break;
    }
    return Form::Null.put(to);
}

template <class Form>
void writeLongCell(const Cell& cell, OutputBlock& out)
{
    if (cell.Kind == CellKind::Text) {
        Form::longText(cell.Text, out);
    } else if (cell.Kind == CellKind::Number) {
        out.write(cell.Text);
    } else {
        Form::bytes(cell.Text, out);
    }
}

template <class Form>
void writeCell(const Cell& cell, OutputBlock& out)
{
    if (Form::isLong(cell)) {
        writeLongCell<Form>(cell, out);
    } else {
        out.advance(putCell<Form, false>(out.reserve(roomOfCell<Form>), cell));
    }
}

/// Writes the cells with `separator` between them, and `end` after the last. `seen(index, cell)` returns the cell to
/// write in place of the cell at that index.
template <class Form, bool Plain, class Seen>
void writeCellsOf(const std::vector<Cell>& cells, char separator, char end, OutputBlock& out, Seen seen)
{
    // Reserves room for all cells at once, so that nothing is checked or stored between them.
    const std::size_t room = cells.size() * roomOfCell<Form>;
    char* to = out.reserve(room);
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const Cell& cell = seen(i, cells[i]);
        if (Form::isLong(cell)) {
            out.advance(to);
            writeLongCell<Form>(cell, out);
            to = out.reserve(room);
        } else {
            to = putCell<Form, Plain>(to, cell);
        }
        *to++ = separator;
    }
    to[-1] = end;
    out.advance(to);
}

template <class Form, class Seen>
void writeCells(const Record& record, char separator, char end, OutputBlock& out, Seen seen)
{
    if (record.Plain) {
        writeCellsOf<Form, true>(record.Cells, separator, end, out, seen);
    } else {
        writeCellsOf<Form, false>(record.Cells, separator, end, out, seen);
    }
}

template <class Form>
void writeCells(const Record& record, char separator, char end, OutputBlock& out)
{
    writeCells<Form>(record, separator, end, out, [](std::size_t, const Cell& cell) -> const Cell& { return cell; });
}

}  // namespace kd_lib::exchange::detail
