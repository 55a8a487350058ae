/// \file
/// Sources as text, for comparison with what is expected.
#pragma once

#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/opensource.h>

#include <cstdio>
#include <memory>
#include <string>
#include <utility>

namespace kd_test {

/// In place of what a code page lacks.
inline const std::string replacement = "\xEF\xBF\xBD";

inline std::string shownMoment(const kd_lib::exchange::Cell& cell)
{
    using kd_lib::exchange::CellKind;
    const auto& day = cell.Moment.Day;
    const unsigned time = cell.Moment.Milliseconds;
    char text[64];
    if (cell.Kind == CellKind::Date) {
        std::snprintf(text, sizeof text, "%04d-%02d-%02d", day.Year, day.Month, day.Day);
    } else {
        std::snprintf(text, sizeof text, "%04d-%02d-%02d %02u:%02u:%02u.%03u",
                      cell.Kind == CellKind::Time ? 0 : day.Year, cell.Kind == CellKind::Time ? 0 : day.Month,
                      cell.Kind == CellKind::Time ? 0 : day.Day, time / 3600000, time / 60000 % 60, time / 1000 % 60,
                      time % 1000);
    }
    return text;
}

/// A cell: NULL, UNREADABLE, <text>, 12, 1.5f, true, 2024-02-29, [bytes].
inline std::string shown(const kd_lib::exchange::Cell& cell)
{
    using kd_lib::exchange::CellKind;
    switch (cell.Kind) {
    case CellKind::Null:
        return "NULL";
    case CellKind::Unreadable:
        return "UNREADABLE";
    case CellKind::Text:
        return '<' + std::string(cell.Text) + '>';
    case CellKind::Number:
        return std::string(cell.Text);
    case CellKind::Bytes:
        return '[' + std::string(cell.Text) + ']';
    case CellKind::Float: {
        char text[64];
        std::snprintf(text, sizeof text, "%.17gf", cell.Float);
        return text;
    }
    case CellKind::Boolean:
        return cell.Boolean ? "true" : "false";
    default:
        return shownMoment(cell);
    }
}

/// The columns: "id:integer name:text".
inline std::string shownColumns(const kd_lib::exchange::Source& source)
{
    std::string all;
    for (const auto& column : source.columns()) {
        all += (all.empty() ? "" : " ") + column.Name + ':' + typeName(column.Type);
    }
    return all;
}

/// A record: its number, its cells, and its flaws after " !".
inline std::string shown(const kd_lib::exchange::Record& record)
{
    std::string line = std::to_string(record.Number);
    for (const auto& cell : record.Cells) {
        line += ' ' + shown(cell);
    }
    for (const auto& flaw : record.Flaws) {
        line += " !" + flaw.Reason;
    }
    return line;
}

/// The remaining records, one per line.
inline std::string shownRecords(kd_lib::exchange::Source& source)
{
    std::string all;
    while (source.next()) {
        all += shown(source.record()) + '\n';
    }
    return all;
}

inline std::string shownNotes(const kd_lib::exchange::Source& source)
{
    std::string all;
    for (const auto& note : source.notes()) {
        all += note.Text + (note.Loss ? " (loss)\n" : "\n");
    }
    return all;
}

/// The line of the error that `work` throws; empty if it throws none.
template <class Work>
std::string errorOf(Work work)
{
    try {
        work();
    } catch (const kd_lib::exchange::Error& error) {
        return error.what();
    }
    return {};
}

}  // namespace kd_test
