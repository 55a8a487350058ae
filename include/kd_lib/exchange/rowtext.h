/// \file
/// Records as the text of a row, in the forms that files and servers take.
#pragma once

#include <kd_lib/exchange/outputblock.h>
#include <kd_lib/exchange/record.h>
#include <kd_lib/exchange/tablelayout.h>
#include <kd_lib/export.h>

#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange {

// Each operation appends one row of at least one cell. No cell of the record is unreadable, and each fits into its target (`Target::fit`).
// Long texts are written piece by piece: the block does not become as large as they are.

/// A line of PostgreSQL's COPY in text format, with the "\n" at its end: values between tabs, \\N for NULL.
KD_LIB_EXPORT void writeCopyRow(const Record& record, OutputBlock& out);

/// A line for MySQL's LOAD DATA with its default FIELDS and LINES, with the "\n" at its end: values between tabs, \\N for
/// NULL. Bytes are themselves, so the statement names CHARACTER SET binary.
KD_LIB_EXPORT void writeLoadDataRow(const Record& record, OutputBlock& out);

/// The values of a row between "(" and ")", as literals of the layout's dialect: (1,'a',NULL). PostgreSQL's need
/// standard_conforming_strings, MySQL's a sql_mode without NO_BACKSLASH_ESCAPES. Texts arrive as they are also through
/// clients that change line ends.
KD_LIB_EXPORT void writeInsertRow(const TableLayout& layout, const Record& record, OutputBlock& out);

/// A line of comma separated values by RFC 4180, with "\n" at its end. NULL is nothing, the empty text is "".
KD_LIB_EXPORT void writeCsvRow(const Record& record, OutputBlock& out);

/// A text as CSV: between quotes where it must be, or is empty.
KD_LIB_EXPORT void writeCsvText(std::string_view text, OutputBlock& out);

/// A text as a string of JSON, with its quotes.
KD_LIB_EXPORT void writeJsonText(std::string_view text, OutputBlock& out);

/// Records as objects of JSON.
class KD_LIB_EXPORT JsonRow {
public:
    /// The names of the members.
    explicit JsonRow(const std::vector<std::string>& names);

    /// One object on a line, with the "\n" at its end.
    void write(const Record& record, OutputBlock& out) const;

private:
    std::vector<std::string> Leads;  ///< {"first":  ,"second":  ...
};

}  // namespace kd_lib::exchange
