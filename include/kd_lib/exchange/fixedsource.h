/// \file
/// Text in fixed columns (.txt).
#pragma once

#include <kd_lib/exchange/filesource.h>
#include <kd_lib/exchange/opensource.h>
#include <kd_lib/export.h>

#include <string>

namespace kd_lib::exchange {

/// Text with one record per line, in which a column is a range of bytes. `FixedColumns` lists them:
///
///     name:1-8,town:9-24    bytes from 1, both inclusive; "flag:9" is one byte. Columns may overlap or leave bytes out
///     5|12|20               the classic list: a column begins at each of these bytes, counted from 0. Its width is the
///                           distance from the previous position. The names are `field#0`, `field#1`, ...
///
/// Lines end with LF or CR LF, or with CR if the first one does. Blanks and zero bytes at the end of a cell are
/// removed, those at its beginning stay; a cell of blanks is the empty text. If a line ends within a column, the cell
/// is shorter; if it ends before the column, the cell is NULL. Empty lines are skipped, except in a table of one
/// column, where they are NULL. All columns are texts, unless the options give types.
class KD_LIB_EXPORT FixedSource : public FileSource {
public:
    /// Opens a text; "-" is standard input. Throws an `Error` if the file cannot be read or is UTF-16; an `OptionError`
    /// for invalid options, such as an encoding that is not based on ASCII.
    explicit FixedSource(const std::string& file, const SourceOptions& options);
    ~FixedSource() override;

private:
    class KD_LIB_LOCAL Reader;
};

}  // namespace kd_lib::exchange
