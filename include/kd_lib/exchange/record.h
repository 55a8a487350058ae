/// \file
/// One record of a source, and typed access to its cells.
#pragma once

#include <kd_lib/exchange/cell.h>
#include <kd_lib/exchange/column.h>
#include <kd_lib/exchange/error.h>
#include <kd_lib/export.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange {

/// A fault of a cell or of the whole record.
enum class FlawKind : std::uint8_t {
    Unreadable,   ///< the cell of kind `Unreadable`
    NoMemoFile,   ///< the same, because the table's memo file is missing; a note of the source reports it once
    Replaced,     ///< bytes that the code page lacks became U+FFFD in the cell
    Escaped,      ///< such bytes became \xNN in the cell
    RowTooShort,  ///< the row has fewer cells than there are columns; the others are null
    RowTooLong,   ///< the row has more cells than there are columns; the surplus is not in the record
    RecordCut     ///< the file ends within this last record, which is left out; its cells are unreadable
};

struct Flaw {
    std::size_t Column = 0;  ///< index of the column; unused for a row or record
    FlawKind Kind = FlawKind::Unreadable;
    std::string Reason;  ///< "not a number", "the memo file ends before the text"
};

/// A cell with its column: each operation returns the value in one form, or nothing for NULL. Each operation throws an
/// `Error` with record and column if the cell is unreadable or the column has another type, so that no value can be
/// misread.
class KD_LIB_EXPORT Value {
public:
    Value(const Cell& cell, const Column& column, std::uint64_t record)
        : TheCell(cell), TheColumn(column), Record(record)
    {
    }

    bool isNull() const;                                          ///< throws for an unreadable cell
    std::optional<std::string_view> text() const;                 ///< UTF-8; valid until the source's next record
    std::optional<std::string_view> digits() const;               ///< an exact number, in the form of `Cell::Text`
    std::optional<std::int64_t> integer() const;                  ///< an exact number without decimals other than 0
    std::optional<std::int64_t> scaled(unsigned decimals) const;  ///< in units of 10 to the -`decimals`: 12.5 with 2
                                                                  ///< decimals is 1250; more decimals must be 0
    std::optional<double> real() const;                           ///< of a Float, or the double nearest to a number
    std::optional<bool> boolean() const;
    std::optional<std::chrono::year_month_day> date() const;
    std::optional<std::chrono::milliseconds> time() const;  ///< since midnight
    std::optional<std::chrono::sys_time<std::chrono::milliseconds>> timestamp() const;
    std::optional<std::string_view> bytes() const;  ///< valid until the source's next record

private:
    KD_LIB_LOCAL const Cell* cellOf(CellKind kind) const;
    [[noreturn]] KD_LIB_LOCAL void fail(const std::string& reason) const;

    const Cell& TheCell;
    const Column& TheColumn;
    std::uint64_t Record;
};

/// A record: a cell for each column of its source. Cells and their texts are valid until the source's next record.
class KD_LIB_EXPORT Record {
public:
    std::uint64_t Number = 0;  ///< from 1; deleted records count
    std::uint64_t Offset = 0;  ///< the record's first byte in the file
    bool Deleted = false;      ///< marked as deleted
    std::vector<Cell> Cells;   ///< in column order
    std::vector<Flaw> Flaws;   ///< empty for nearly all records

    /// Set by the source to save work. True: all texts and numbers of this record consist of printable ASCII
    /// characters, and `PlainRoom` bytes can be read from the beginning of each, whatever its size. False: nothing is
    /// known.
    bool Plain = false;
    static constexpr std::size_t PlainRoom = 32;

    /// Marks the cell of a column as unreadable. Its text is no longer needed.
    void reject(std::size_t column, std::string_view reason, FlawKind kind = FlawKind::Unreadable);

    Value operator[](std::size_t column) const { return Value(Cells[column], (*Columns)[column], Number); }

    /// The cell of the first column of this name; if there is none, of the first whose name differs only in the case of
    /// ASCII letters. Throws an `Error` if the source has no such column.
    Value operator[](std::string_view column) const;

    const std::vector<Column>* Columns = nullptr;  ///< the source's
};

}  // namespace kd_lib::exchange
