/// \file
/// The table that a command reads. It is opened by its file's name, its shape is checked, and each record
/// is checked before the library cuts it into values, so that no assertion can strike.
#pragma once

#include "failure.h"

#include <kd_lib/filetable.h>

#include <cstdint>
#include <memory>
#include <string>

namespace kd_tool {

class XBaseSource;

/// What the command line says about the table.
struct SourceOptions {
    std::string File;
    std::string Columns;   ///< column positions of a positional table
    bool Unquote = false;  ///< takes enclosing quotes off the names and values of a delimited table
};

/// An open table with its columns. Records come by `table().firstRecord()` and `table().fetchRecord()`,
/// which is false at the end only: what is wrong with a record ends in a `Failure` that names it.
class Source {
public:
    virtual ~Source();

    virtual kd_lib::FileTable& table() = 0;

    /// The record read last is marked as deleted.
    virtual bool deleted() const { return false; }

    /// Columns have widths, as opposed to separators.
    virtual bool hasWidths() const { return true; }

    const std::string& file() const { return Argument; }

    /// The number of the record read last, or the one that failed.
    std::uint64_t recordNumber() const { return Number; }

    [[noreturn]] void fail(const std::string& reason) const;
    [[noreturn]] void failRecord(const std::string& reason) const;

protected:
    explicit Source(const std::string& file) : Argument(file) {}

    /// Opens the file, whatever the case of its extension is.
    void openFile();

    std::string Argument;
    std::uint64_t Number = 0;
};

/// Opens a table of any kind. Throws a `UsageError` where the file's extension or the options do not fit,
/// and a `Failure` where the file does not.
std::unique_ptr<Source> openSource(const SourceOptions& options);

/// Opens an xBase table.
std::unique_ptr<XBaseSource> openXBase(const std::string& file);

/// A file's name without its directory.
struct FileParts {
    std::string Name;
    std::string Extension;  ///< without its dot, as it is written

    explicit FileParts(const std::string& file);
    bool hasExtension(const std::string& lower) const;
};

/// Throws a `Failure` unless `file` is a regular file that can be read.
void requireReadableFile(const std::string& file);

}  // namespace kd_tool
