/// \file
/// The text of a cell, in the form that a target takes.
#pragma once

#include "moments.h"

#include <kd_lib/detail/bytes.h>
#include <kd_lib/exchange/cell.h>
#include <kd_lib/exchange/outputblock.h>

#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>

namespace kd_lib::exchange::detail {

// A form is a class with
//   static constexpr char Quote             around dates and times; 0: nothing
//   static constexpr char Between           between the date and the time of a timestamp
//   static constexpr std::string_view Null, True, False
//   static void text(std::string_view, OutputBlock&)
//   static void bytes(std::string_view, OutputBlock&)
//   static char* real(char* to, double)     writes at most `realSize` bytes

/// The longest text of a double, with quotes.
constexpr std::size_t realSize = 40;

/// The shortest digits that give this finite value back.
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

inline void writeShort(std::string_view word, OutputBlock& out)
{
    out.advance(kd_lib::detail::copyBytes(out.reserve(word.size()), word));
}

template <class Form>
void writeCell(const Cell& cell, OutputBlock& out)
{
    switch (cell.Kind) {
    case CellKind::Text:
        Form::text(cell.Text, out);
        break;
    case CellKind::Number:
        out.write(cell.Text);
        break;
    case CellKind::Boolean:
        writeShort(cell.Boolean ? Form::True : Form::False, out);
        break;
    case CellKind::Date:
    case CellKind::Time:
    case CellKind::Timestamp:
        out.advance(putMoment<Form>(out.reserve(timestampSize + 2), cell));
        break;
    case CellKind::Float:
        out.advance(Form::real(out.reserve(realSize), cell.Float));
        break;
    case CellKind::Bytes:
        Form::bytes(cell.Text, out);
        break;
    case CellKind::Null:
    case CellKind::Unreadable:
        writeShort(Form::Null, out);
        break;
    }
}

/// The cells with `separator` between them, and `end` after them.
template <class Form>
void writeLine(const std::vector<Cell>& cells, char separator, OutputBlock& out)
{
    for (const Cell& cell : cells) {
        writeCell<Form>(cell, out);
        out.write(separator);
    }
    // The line ends where the last separator is.
    char* const end = out.reserve(0);
    end[-1] = '\n';
}

}  // namespace kd_lib::exchange::detail
