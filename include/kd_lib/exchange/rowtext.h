/// \file
/// Records as rows of text, in the forms that files and servers accept.
#pragma once

#include <kd_lib/exchange/outputblock.h>
#include <kd_lib/exchange/record.h>
#include <kd_lib/exchange/tablelayout.h>
#include <kd_lib/export.h>

#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange {

// Each operation appends one row of at least one cell. No cell of the record may be unreadable, and each must fit into
// its target (`Target::fit`). Long texts are written piece by piece, so that the block does not grow with them.

/// A line of PostgreSQL's COPY in text format, with the "\n" at its end: values between tabs, \\N for NULL.
KD_LIB_EXPORT void writeCopyRow(const Record& record, OutputBlock& out);

/// A line for MySQL's LOAD DATA with its default FIELDS and LINES, with the "\n" at its end: values between tabs, \\N
/// for NULL. Bytes are written unchanged, so the statement must name CHARACTER SET binary.
KD_LIB_EXPORT void writeLoadDataRow(const Record& record, OutputBlock& out);

/// The values of a row between "(" and ")", as literals of the layout's dialect: (1,'a',NULL). PostgreSQL needs
/// standard_conforming_strings, MySQL a sql_mode without NO_BACKSLASH_ESCAPES. Texts survive clients that change line
/// ends.
KD_LIB_EXPORT void writeInsertRow(const TableLayout& layout, const Record& record, OutputBlock& out);

/// A line of comma-separated values by RFC 4180, with "\n" at its end. NULL is nothing, the empty text is `""`.
KD_LIB_EXPORT void writeCsvRow(const Record& record, OutputBlock& out);

/// A text as CSV: in quotes if it needs them or is empty.
KD_LIB_EXPORT void writeCsvText(std::string_view text, OutputBlock& out);

/// A text as a JSON string, with its quotes.
KD_LIB_EXPORT void writeJsonText(std::string_view text, OutputBlock& out);

/// Records as JSON objects.
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
