#pragma once

#include "support/scoped_directory.h"

#include <kd_lib/exchange/opensource.h>
#include <kd_lib/exchange/transfer.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace kd_test {

/// A cell as a short text that shows its kind, so that different cells have different texts.
inline std::string cellText(const kd_lib::exchange::Cell& cell)
{
    using kd_lib::exchange::CellKind;
    char text[64] = "";
    const auto& day = cell.Moment.Day;
    switch (cell.Kind) {
    case CellKind::Null:
        return "null";
    case CellKind::Text:
        return "'" + std::string(cell.Text) + "'";
    case CellKind::Number:
        return std::string(cell.Text);
    case CellKind::Float:
        std::snprintf(text, sizeof text, "%.17g", cell.Float);
        return std::string("float ") + text;
    case CellKind::Boolean:
        return cell.Boolean ? "true" : "false";
    case CellKind::Date:
        std::snprintf(text, sizeof text, "%04d-%02d-%02d", day.Year, day.Month, day.Day);
        return text;
    case CellKind::Time:
        return "time " + std::to_string(cell.Moment.Milliseconds);
    case CellKind::Timestamp:
        std::snprintf(text, sizeof text, "%04d-%02d-%02d+%u", day.Year, day.Month, day.Day, cell.Moment.Milliseconds);
        return text;
    case CellKind::Bytes: {
        std::string bytes = "bytes";
        for (const char c : cell.Text) {
            std::snprintf(text, sizeof text, " %02X", static_cast<unsigned char>(c));
            bytes += text;
        }
        return bytes;
    }
    case CellKind::Unreadable:
        return "unreadable";
    }
    return "";
}

/// Everything that a source returns.
struct Reading {
    std::vector<std::vector<std::string>> Rows;  ///< the cells, shown
    std::vector<std::uint64_t> Numbers;          ///< of the records
    std::vector<std::string> Flaws;              ///< "2 NAME: reason"; a record's: "2: reason"
    std::vector<std::string> Notes;              ///< a loss begins with "loss: "
    std::vector<std::string> Names;
    std::uint64_t Read = 0;
    std::uint64_t LeftOut = 0;

    /// The cells of the first column.
    std::vector<std::string> column() const
    {
        std::vector<std::string> cells;
        for (const auto& row : Rows) {
            cells.push_back(row.empty() ? "" : row.front());
        }
        return cells;
    }

    /// The only cell; "not one cell" if there are more or none.
    std::string only() const { return Rows.size() == 1 && Rows[0].size() == 1 ? Rows[0][0] : "not one cell"; }
};

inline Reading readAll(kd_lib::exchange::Source& source)
{
    using namespace kd_lib::exchange;
    Reading reading;
    for (const Column& column : source.columns()) {
        reading.Names.push_back(column.Name);
    }
    while (source.next()) {
        const Record& record = source.record();
        bool whole = true;
        for (const Flaw& flaw : record.Flaws) {
            const bool cut = flaw.Kind == FlawKind::RecordCut;
            whole = whole && !cut;
            const std::string where = cut ? "" : " " + source.columns()[flaw.Column].Name;
            reading.Flaws.push_back(std::to_string(record.Number) + where + ": " + flaw.Reason);
        }
        if (!whole) {
            continue;
        }
        reading.Numbers.push_back(record.Number);
        auto& row = reading.Rows.emplace_back();
        for (const Cell& cell : record.Cells) {
            row.push_back(cellText(cell));
        }
    }
    for (const Note& note : source.notes()) {
        reading.Notes.push_back((note.Loss ? "loss: " : "") + note.Text);
    }
    reading.Read = source.recordsRead();
    reading.LeftOut = source.recordsLeftOut();
    return reading;
}

/// Writes a file that may exist. Removes the old one first, because truncating it would wait for the disk.
inline std::string rewrite(const ScopedDirectory& folder, const std::string& name, const std::string& bytes)
{
    std::filesystem::remove(folder.file(name));
    return folder.write(name, bytes);
}

/// Everything that the source of a file returns.
inline Reading readFileAs(const std::string& path, const kd_lib::exchange::SourceOptions& options = {})
{
    return readAll(*kd_lib::exchange::openSource(path, options));
}

/// The reason why a file cannot be opened or read, without its name; empty if it can be read.
inline std::string failureOf(const std::string& path, const kd_lib::exchange::SourceOptions& options = {})
{
    try {
        readFileAs(path, options);
    } catch (const kd_lib::exchange::Error& error) {
        return error.Reason;
    }
    return "";
}

}  // namespace kd_test
