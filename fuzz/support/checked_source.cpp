#include "support/checked_source.h"

#include "exchange/detail/moments.h"
#include "exchange/detail/utf8.h"

#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/source.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>

namespace kd_fuzz {

namespace {

using kd_lib::exchange::Cell;
using kd_lib::exchange::CellKind;
using kd_lib::exchange::Column;
using kd_lib::exchange::ColumnType;
using kd_lib::exchange::Date;
using kd_lib::exchange::FlawKind;
using kd_lib::exchange::Record;
using kd_lib::exchange::Source;

constexpr std::uint32_t millisecondsOfDay = 86400000;

void require(bool condition, const char* what)
{
    if (!condition) {
        finding(what);
    }
}

bool isDay(Date day)
{
    return kd_lib::exchange::detail::dayOfCalendar(static_cast<unsigned>(day.Year), day.Month, day.Day).has_value();
}

CellKind kindOf(ColumnType type)
{
    switch (type) {
    case ColumnType::Text:
        return CellKind::Text;
    case ColumnType::Float:
        return CellKind::Float;
    case ColumnType::Boolean:
        return CellKind::Boolean;
    case ColumnType::Date:
        return CellKind::Date;
    case ColumnType::Time:
        return CellKind::Time;
    case ColumnType::Timestamp:
        return CellKind::Timestamp;
    case ColumnType::Bytes:
        return CellKind::Bytes;
    default:
        return CellKind::Number;
    }
}

void checkCell(const Cell& cell, const Column& column)
{
    if (cell.Kind == CellKind::Null || cell.Kind == CellKind::Unreadable) {
        return;
    }
    require(cell.Kind == kindOf(column.Type), "a cell of another type than its column");
    switch (cell.Kind) {
    case CellKind::Text:
        require(kd_lib::exchange::detail::validUtf8Length(cell.Text) == cell.Text.size(), "a text that is not UTF-8");
        break;
    case CellKind::Number:
        require(isNormalNumber(cell.Text), "a number that is not in normal form");
        break;
    case CellKind::Date:
        require(isDay(cell.Moment.Day), "a date that is not a day");
        break;
    case CellKind::Timestamp:
        require(isDay(cell.Moment.Day) && cell.Moment.Milliseconds < millisecondsOfDay, "a timestamp that is none");
        break;
    case CellKind::Time:
        require(cell.Moment.Milliseconds < millisecondsOfDay, "a time that is none");
        break;
    default:
        break;
    }
}

void checkFlaws(Source& source)
{
    const Record& record = source.record();
    const bool cut =
        std::ranges::any_of(record.Flaws, [](const auto& flaw) { return flaw.Kind == FlawKind::RecordCut; });
    for (std::size_t i = 0; i < record.Cells.size() && !cut; ++i) {
        const auto flaws = std::ranges::count_if(record.Flaws, [i](const auto& flaw) {
            return (flaw.Kind == FlawKind::Unreadable || flaw.Kind == FlawKind::NoMemoFile) && flaw.Column == i;
        });
        require(flaws == (record.Cells[i].Kind == CellKind::Unreadable ? 1 : 0), "unreadable without a flaw, or twice");
    }
    for (const auto& flaw : record.Flaws) {
        require(!flaw.Reason.empty(), "a flaw without a reason");
        if (flaw.Kind <= FlawKind::Escaped) {
            require(flaw.Column < record.Cells.size(), "a flaw of no column");
            const Source::Origin origin = source.origin(flaw.Column);
            require(!origin.Offset || !source.size() || *origin.Offset + origin.Bytes.size() <= *source.size(),
                    "a cell outside of the file");
        }
    }
}

/// Reads the remaining records; returns a number that distinguishes them from others.
std::size_t walk(Source& source)
{
    std::size_t all = 0;
    std::uint64_t last = 0;
    while (source.next()) {
        const Record& record = source.record();
        require(record.Cells.size() == source.columns().size(), "a record with another number of cells");
        require(record.Number > last, "records out of order");
        last = record.Number;
        for (std::size_t i = 0; i < record.Cells.size(); ++i) {
            const Cell& cell = record.Cells[i];
            checkCell(cell, source.columns()[i]);
            const bool hasText =
                cell.Kind == CellKind::Text || cell.Kind == CellKind::Number || cell.Kind == CellKind::Bytes;
            all = all * 31 + std::hash<std::string_view>()(hasText ? cell.Text : std::string_view());
            all = all * 31 + static_cast<std::size_t>(cell.Kind);
        }
        checkFlaws(source);
    }
    return all;
}

}  // namespace

void finding(const std::string& what)
{
    std::fprintf(stderr, "finding: %s\n", what.c_str());
    std::abort();
}

bool isNormalNumber(std::string_view text)
{
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative ? 1 : 0);
    const std::string_view whole = text.substr(0, text.find('.'));
    const auto allDigits = [](std::string_view part) {
        return !part.empty() && std::ranges::all_of(part, [](char c) { return c >= '0' && c <= '9'; });
    };
    const bool pointed = whole.size() < text.size();
    return allDigits(whole) && (whole[0] != '0' || whole.size() == 1) &&
           (!pointed || allDigits(text.substr(whole.size() + 1))) &&
           (!negative || text.find_first_not_of("0.") != std::string_view::npos);
}

void checkSource(const std::string& file, const kd_lib::exchange::SourceOptions& options)
{
    try {
        const auto source = kd_lib::exchange::openSource(file, options);
        const std::size_t first = walk(*source);
        source->seek(1);
        require(walk(*source) == first, "other records after seek(1)");
        require(!source->facts().empty(), "a source without facts");
    } catch (const kd_lib::exchange::Error& error) {
        require(!error.Reason.empty(), "an error without a reason");
    }
}

}  // namespace kd_fuzz
