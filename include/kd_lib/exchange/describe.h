/// \file
/// What a file is, for somebody who has not seen it yet.
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

/// What there is to know about a file.
struct Description {
    std::string File;  ///< as the caller named it

    /// "kind", "records", "deleted" where some are, and then what the source tells of itself. Of a .dbf: "last change",
    /// "code page", "memo file", "record length", "database", "state", those that there are.
    std::vector<Fact> Facts;

    /// As the source of this file and these options gives them.
    std::vector<Column> Columns;

    /// What is odd, and what would not be carried as it is: the source's notes, and a line for each column and reason
    /// ("column BORN: 3 cells unreadable, the first in record 12: not a day of the calendar").
    std::vector<Note> Notes;
};

/// Opens a file and reads all of it. Needs and throws what `openSource` does. Of `transfer`, the progress callback and
/// the stop token count.
KD_LIB_EXPORT Description describe(const std::string& file, const SourceOptions& options = {},
                                   const TransferOptions& transfer = {});

}  // namespace kd_lib::exchange
