/// \file
/// Delimited text (.csv, .tsv, .tab).
#pragma once

#include <kd_lib/exchange/filesource.h>
#include <kd_lib/exchange/opensource.h>
#include <kd_lib/export.h>

#include <string>

namespace kd_lib::exchange {

/// Text with one row per line and a delimiter between cells, as RFC 4180 describes it, in UTF-8 or any other encoding.
///
/// Lines end with LF, CR LF or CR. A cell that begins with a quote ends with one; in between, delimiters and line ends
/// are characters, and two quotes are one. A quote elsewhere is a character. An unquoted empty cell is NULL, a quoted
/// one the empty text; blanks are kept. Empty lines are skipped, except in a table of one column, where they are NULL.
/// A row with too few or too many cells has a flaw. All columns are texts, unless the options give types or set
/// `Infer`, which reads the file twice.
///
/// The first row names the columns. Without a header they are `column_1`, `column_2`, ...
///
/// The text is read in blocks; memory grows with the longest row only.
class KD_LIB_EXPORT DelimitedSource : public FileSource {
public:
    /// Opens a text; "-" is standard input. The delimiter is that of the options, else the tab for the kind `Tsv`, else
    /// the comma. Throws an `Error` if the file cannot be read, has no row, or is UTF-16 and no encoding was named; an
    /// `OptionError` for options that do not fit.
    explicit DelimitedSource(const std::string& file, const SourceOptions& options = {});
    ~DelimitedSource() override;

private:
    class KD_LIB_LOCAL Reader;
};

}  // namespace kd_lib::exchange
