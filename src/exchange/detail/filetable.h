/// \file
/// A file that statements read as a table; independent of SQLite.
#pragma once

#include "tablearguments.h"

#include <kd_lib/exchange/source.h>
#include <kd_lib/exchange/tablelayout.h>
#include <kd_lib/exchange/transfer.h>
#include <kd_lib/exchange/virtualtables.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kd_lib::exchange::detail {

/// Shows whether a file has changed.
struct FileState {
    std::uint64_t Device = 0;
    std::uint64_t Node = 0;
    std::uint64_t Size = 0;
    std::int64_t Seconds = 0;  // of the last change
    std::int64_t Nanoseconds = 0;

    friend bool operator==(const FileState&, const FileState&) = default;
};

/// A source, with the state needed to read it again.
struct OpenTable {
    std::unique_ptr<Source> From;
    FileState State;
    std::size_t NotesReported = 0;
    bool Fresh = true;  // nothing was read yet
};

/// A file as a table. Its scans get their sources from here.
class FileTable {
public:
    /// Opens the file. Throws an `Error` if it cannot be read, or SQLite could not hold its columns.
    /// `events` must outlive this.
    FileTable(TableArguments arguments, const VirtualTableEvents& events);

    /// Names, types and limits of the columns.
    TableLayout& layout() { return Layout; }

    std::uint64_t estimatedRecords() const { return Estimate; }

    /// Whether a record is found without reading those before it.
    bool hasFixedRecords() const { return Fixed; }

    /// A source, which may be at any record. Throws an `Error` if the file cannot be opened, or has other columns now.
    OpenTable take();
    void giveBack(OpenTable table);

    /// Reports the notes of a source since the last call.
    void reportNotes(OpenTable& table);

    /// Reports a cell, once.
    const std::function<void(const Reject&)>& onReject() const { return ReportReject; }

private:
    OpenTable open() const;
    void estimate(const Source& source);
    void reportOnce(const Reject& reject);

    TableArguments Arguments;
    const VirtualTableEvents& Events;
    OpenTable Spare;
    std::vector<Column> Columns;
    TableLayout Layout;
    std::uint64_t Estimate = 0;
    bool Fixed = false;
    std::set<std::string> ReportedNotes;
    std::set<std::pair<std::uint64_t, std::size_t>> ReportedRejects;  // record, hash of the column's name
    std::function<void(const Reject&)> ReportReject;
};

/// A scan of the records of a table.
class FileScan {
public:
    explicit FileScan(FileTable& table) : Table(table) {}
    ~FileScan();
    FileScan(const FileScan&) = delete;
    FileScan& operator=(const FileScan&) = delete;

    /// Goes to the first record of a range, and reads it. Bit i of `used` is set if column i is needed; the highest bit
    /// is set if that column or any later one is needed.
    void start(const RecordRange& range, std::uint64_t used);

    /// Reads the next record.
    void next();

    bool atEnd() const { return End; }
    const Record& record() const { return Open.From->record(); }

private:
    void need(std::uint64_t used);

    FileTable& Table;
    OpenTable Open;
    std::uint64_t Last = 0;
    std::uint64_t Used = 0;
    bool End = true;
    Tally Rejects;
};

}  // namespace kd_lib::exchange::detail
