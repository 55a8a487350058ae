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
/// Lines end with LF, CR LF or CR. A cell that begins with a quote ends with one. In between, delimiters and line ends
/// are ordinary characters, and two quotes are one. A quote elsewhere is an ordinary character. An unquoted empty cell
/// is NULL, a quoted one is the empty text. Blanks are kept. Empty lines are skipped, except in a table of one column,
/// where they are NULL. A row with too few or too many cells has a flaw. All columns are texts, unless the options give
/// types or set `Infer`, which reads the file twice.
///
/// The first row names the columns. Without a header they are `column_1`, `column_2`, ...
///
/// The text is read in blocks; memory grows only with the longest row.
class KD_LIB_EXPORT DelimitedSource : public FileSource {
public:
    /// Opens a text; "-" is standard input. The delimiter is that of the options; by default it is a tab for the kind
    /// `Tsv`, otherwise a comma. Throws an `Error` if the file cannot be read, has no row, or is UTF-16 and no encoding
    /// was named; an `OptionError` for invalid options.
    explicit DelimitedSource(const std::string& file, const SourceOptions& options = {});
    ~DelimitedSource() override;

private:
    class KD_LIB_LOCAL Reader;
};

}  // namespace kd_lib::exchange
