/// \file
/// Delimited text as a header and records.
#pragma once

#include "delimitedreader.h"
#include "textwindow.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange::detail {

/// The rows of a text that are records: empty lines are skipped, except in a table of one column, where they are
/// records.
class DelimitedRows {
public:
    /// Reads the header, or looks at the first row. `window` must outlive the object. Throws an `Error` if there is no
    /// row.
    DelimitedRows(TextWindow& window, const DelimitedForm& form, bool header);

    /// The cells of the header as they are in the file, without quotes; empty texts if there is no header.
    const std::vector<std::string>& names() const { return Names; }

    /// Reads the next record; false at the end. Throws an `Error` with record and line if a quoted cell does not end
    /// correctly.
    bool next();

    /// Starts again at the first record. Needs a file that is `seekable`.
    void restart();

    const std::vector<DelimitedCell>& cells() const { return Reader.cells(); }
    std::string_view text() const;  ///< of the current row, with its line end
    bool mayHaveHighBytes() const { return Reader.mayHaveHighBytes(); }
    std::uint64_t number() const { return Number; }  ///< of the record, from 1
    std::uint64_t line() const { return Reader.line(); }

    /// The place of a byte of the current record in the file; nothing if that is not known.
    std::optional<std::uint64_t> offsetOf(const char* at) const;

    /// How many bytes of the file correspond to a piece of the current record; nothing if that is not known.
    std::optional<std::uint64_t> sizeInFile(std::string_view text) const;

    /// The text ends with the end mark of DOS, a byte 1A, which is not a record.
    bool hasEndMark() const { return EndMark; }

private:
    bool takeFirst();
    bool takeRow();
    void pass();
    bool isEndMark() const;
    [[noreturn]] void fail(const std::string& reason) const;

    TextWindow& Window;
    DelimitedReader Reader;
    char Quote;
    bool Header;
    std::vector<std::string> Names;
    bool Pending = false;  // the current row is the first record, and has not been returned
    bool EndMark = false;
    std::uint64_t Number = 0;
    std::optional<std::uint64_t> RowOffset;  // in the file, if it is converted
};

/// The text of a cell; in `scratch` if it contains doubled quotes, otherwise in place.
std::string_view unquoted(const DelimitedCell& cell, char quote, std::string& scratch);

}  // namespace kd_lib::exchange::detail
