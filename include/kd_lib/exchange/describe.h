/// \file
/// A description of a file: its kind, columns, counts and flaws.
#pragma once

#include <kd_lib/exchange/column.h>
#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/opensource.h>
#include <kd_lib/exchange/source.h>
#include <kd_lib/exchange/transfer.h>
#include <kd_lib/export.h>

#include <string>
#include <vector>

namespace kd_lib::exchange {

/// The description of a file.
struct Description {
    std::string File;  ///< as the caller named it

    /// "kind", "records", "deleted" if some are, then the facts of the source. A .dbf may have "last change", "code
    /// page", "memo file", "record length", "database" and "state".
    std::vector<Fact> Facts;

    /// The columns that the source has with these options.
    std::vector<Column> Columns;

    /// Everything unusual, and everything that would not be carried unchanged: the source's notes, and a line for each
    /// column and reason ("column BORN: 3 cells unreadable, the first in record 12: not a day of the calendar").
    std::vector<Note> Notes;
};

/// Opens a file and reads all of it. Arguments and exceptions are those of `openSource`. Of `transfer`, only the
/// progress callback and the stop token are used.
KD_LIB_EXPORT Description describe(const std::string& file, const SourceOptions& options = {},
                                   const TransferOptions& transfer = {});

}  // namespace kd_lib::exchange
