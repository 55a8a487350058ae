/// \file
/// Reading the records of a table's file.
#pragma once

#include <kd_lib/filetable.h>

#include <cstdint>
#include <istream>
#include <optional>
#include <string>

namespace kd_lib::detail {

/// The `RecordEnd` of line records.
constexpr int newline = 10;

/// Makes the stream readable again and sets its position, in bytes from its beginning.
void seekTo(std::istream& file, std::uint64_t position);

/// Whether `text` is the value of a column itself, not a copy of it.
bool isValueOf(const TableFields& fields, const std::string& text);

/// Reads records of one table. The text of a record belongs to the reader, and a reader belongs to one call of an
/// operation: an override that uses the table during that call does not change the text. The table keeps the memory,
/// so that reading allocates nothing per record.
class RecordReader {
public:
    explicit RecordReader(FileTable& table)
        : Table(table), Outer(table.readText_), Text(Outer == nullptr ? table.recordText_ : Nested.emplace())
    {
        Table.readText_ = &Text;
    }
    ~RecordReader() { Table.readText_ = Outer; }
    RecordReader(const RecordReader&) = delete;
    RecordReader& operator=(const RecordReader&) = delete;

    /// Reads a line, or exactly `RecordLength` bytes, as the table's `RecordEnd` requires; `text` is the record up to
    /// its first zero byte. False when the stream is then in the fail or bad state.
    bool read();

    /// Reads a line and discards it. False when the stream is then in the fail or bad state.
    bool skipLine();

    /// Reads exactly `RecordLength` bytes, zero bytes included. False when the stream is then in the fail or bad
    /// state; `text` then holds the bytes up to the end of the file.
    bool readBytes();

    /// The record read last; empty before the first one.
    std::string& text() { return Text; }

private:
    /// Room for `RecordLength` bytes. Throws std::length_error if that is longer than any text can be.
    char* room();

    FileTable& Table;
    const std::string* const Outer;     // the text of the reader that an override is called with
    std::optional<std::string> Nested;  // memory of a reader inside that override
    std::string& Text;
};

/// Whether `record` is the value of one of the table's columns, which change while the record is extracted. For the
/// text of a reader, the usual case, no column is compared.
inline bool isColumnValue(const FileTable& table, const std::string& record)
{
    return &record != table.readText_ && isValueOf(table.Fields, record);
}

}  // namespace kd_lib::detail
