/// \file
/// Tables stored in files of records: opening, navigation by byte positions, and positional columns.
#pragma once

#include <kd_lib/databasetable.h>
#include <kd_lib/export.h>

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

namespace kd_lib {

class FileTable;

namespace detail {
class RecordReader;
bool isColumnValue(const FileTable& table, const std::string& record);
}  // namespace detail

/// The parts of a file name, and the mode in which the file is opened.
/// Threads: one thread per object.
class KD_LIB_EXPORT FileName {
public:
    std::string FullName;   ///< for client programs; not used by the library
    std::string BaseName;   ///< set by the name constructor of `AsciiTable`
    std::string Extension;  ///< without the dot; empty: no extension is appended
    bool Binary = false;    ///< open in binary mode

    virtual ~FileName();
};

/// A table in a file. By itself it reads positional text: one record per line, each column a fixed
/// range of bytes. Records are numbered from 1, file positions are bytes from 0.
///
/// Life: `open`; define the columns (`getFieldList` or `setFieldOffsets`); position; `fetchRecord` until
/// it returns false; `close`. Every navigation operation first clears the state of a stream that failed
/// or reached its end, so a table can be read any number of times.
///
///     kd_lib::FileTable stock("stock");
///     if (stock.open()) {
///         stock.setFieldOffsets("8|20");
///         for (stock.firstRecord(); stock.fetchRecord();) { use(stock.Fields.getData(0)); }
///     }
///
/// Threads: one thread per object.
class KD_LIB_EXPORT FileTable : public DatabaseTable, public FileName {
private:
    std::unique_ptr<char[]> streamBuffer_;  // outlives File, which reads through it

public:
    std::fstream File;                 ///< the open file; only ever opened for input
    std::uint64_t RecordLength = 255;  ///< bytes per record; for lines one more than the longest line
    std::uint64_t HeaderLength = 0;    ///< byte position of the first record
    int RecordEnd = 10;                ///< 10: records are lines; any other value: fixed-length records

    FileTable();                                  ///< extension "txt", text mode
    explicit FileTable(const std::string& name);  ///< the same, with `Name` set
    FileTable(const FileTable&) = delete;
    FileTable& operator=(const FileTable&) = delete;
    ~FileTable() override;

    using DatabaseTable::open;

    /// Opens the file `Path`/`name`.`Extension`, where "~" means the home directory.
    /// - Already open: returns true at once and keeps the open file, even if `name` names another one.
    /// - Empty name: error line "No file name provided for table file", false.
    /// - Otherwise prints "Table: " and the path to standard output, unless `std::cout.rdbuf(nullptr)` was called
    ///   before (docs/console-output.md). Returns false with the error line "File does not exist" or "No permission to
    ///   read file", or without a line if the stream cannot be opened.
    /// - True: `Name` is `name`; `Path` keeps its value. A directory of that name opens too; reading it fails.
    bool open(const std::string& name) override;

    /// Opens the file at `path`, a file name with its directory and extension: sets `Path` and `Extension` to these
    /// and calls the virtual `open` with the name between them. A name without a dot after its first character has
    /// no extension.
    /// - Already open: true at once, nothing changes.
    /// - False: as `open`; `Path` and `Extension` keep their values.
    ///
    ///     kd_lib::xBaseTable stock;
    ///     if (stock.openPath("data/stock.dbf") && stock.getFieldList()) { ... }
    bool openPath(const std::string& path);

    /// Whether a file is open.
    bool is_open() override;

    /// Closes the file and returns true; unlike in the base class, the columns are kept.
    bool close() override;

    /// False when not open; otherwise goes to byte 0 and returns the result of `readHeader`.
    bool getFieldList() override;

    /// Goes to byte 0 and returns true.
    bool skipHeader() override;

    /// Reads the record at the current position and extracts it; true when the stream is then in
    /// neither the fail nor the bad state. Returns false, and keeps the values of the last record, for a
    /// line longer than `RecordLength` - 1, a truncated fixed-length record, the end of the file, and
    /// fixed-length records with a `RecordLength` of 0.
    /// End or damage? After false, a table of lines has ended if `File.eof()` is true; otherwise a line was too long. A
    /// table of fixed-length records has ended if `File.gcount()` is 0; otherwise its last record is truncated.
    bool fetchRecord() override;

    /// Defines the columns from the file; positional files hold no definitions, so this only returns true.
    virtual bool readHeader();

    /// Stores each column's slice of `record` as its value, without trailing blanks while `Trim` is set.
    /// A record that fills a column only in part stops the process with an assertion; a column that starts
    /// after the end of the record throws std::out_of_range.
    virtual bool extractContent(const std::string& record);

    /// Appends one column per number in `line`; "|", ":" and ";" separate the numbers. Column i is named field#i and
    /// starts at the byte of the i-th number. Its width is the distance from the number before it, for the first column
    /// from 0: "5|12|20" gives (offset 5, length 5), (12, 7), (20, 8).
    /// A piece without digits throws std::invalid_argument; the columns before it stay.
    /// Needs no open file; existing columns stay.
    void setFieldOffsets(const std::string& line);
    void setFieldOffsets(std::string& line);  ///< the same

    /// \name Navigation
    /// Each returns false and does nothing when the table is not open, and returns true otherwise. If the
    /// position cannot be reached, the stream is left in the fail state.
    /// @{
    bool beginFile();    ///< byte 0
    bool endFile();      ///< deliberate: byte 2, not the end of the file
    bool firstRecord();  ///< byte `HeaderLength`
    bool nextRecord();   ///< `RecordLength` bytes after the current position
    bool lastRecord();   ///< `RecordLength` + 1 bytes before the end of the file

    /// Record `n`, counted from 1; 0 counts as 1. Fixed-length records are reached by one seek, lines by
    /// reading n - 1 lines. There is no upper bound: after the last record `fetchRecord` returns false.
    /// - If `Binary` is set, lines are treated as records of `RecordLength` bytes: leave it false for tables of lines.
    /// - A line longer than `RecordLength` - 1 on the way ends the reading: the stream has failed, and the next
    ///   `fetchRecord` returns false.
    bool goRecord(unsigned long n);
    /// @}

private:
    friend class detail::RecordReader;
    friend bool detail::isColumnValue(const FileTable& table, const std::string& record);

    std::unique_ptr<char[]> room_;  // for lines, and for long fixed-length records
    std::uint64_t roomSize_ = 0;
    std::string recordText_;                 // the record; a member so that its memory is reused
    const std::string* readText_ = nullptr;  // the record that is being extracted
};

}  // namespace kd_lib
