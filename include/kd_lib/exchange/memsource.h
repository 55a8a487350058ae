/// \file
/// Memory variables (.mem).
#pragma once

#include <kd_lib/exchange/filesource.h>
#include <kd_lib/exchange/opensource.h>
#include <kd_lib/export.h>

#include <string>

namespace kd_lib::exchange {

/// The variables that a program of dBase III, Clipper or FoxPro saved: a record for each, with the columns
///
///     name     text
///     type     text    "text", "number", "date" or "boolean"
///     value    text    "Ann  ", "-86.4", "1999-12-31", "true"; NULL for an empty date
///
/// Numbers are the shortest digits that convert back to the file's double. The code page of texts is that of the
/// options, by default CP1252, because the file names none. Files that hold only texts, the form that `xBaseMemory`
/// lists, are read too.
///
/// A value that is invalid for its type is unreadable. A variable that is cut by the end of the file is a flaw of that
/// record. A variable of unknown type (an array, for example) has no known length, so reading ends there, with a note
/// of the loss.
class KD_LIB_EXPORT MemSource : public FileSource {
public:
    /// Opens a file; "-" is standard input. Throws an `Error` if the file cannot be read, or does not begin with a
    /// variable or the end mark; an `OptionError` for invalid options.
    explicit MemSource(const std::string& file, const SourceOptions& options = {});
    ~MemSource() override;

private:
    class KD_LIB_LOCAL Reader;
};

}  // namespace kd_lib::exchange
