/// \file
/// Files of given bytes, and what the source of one kind reads from them.
#pragma once

#include "support/scoped_directory.h"
#include "support/shown.h"

#include <kd_lib/exchange/opensource.h>

#include <string>

namespace kd_test {

/// A file of these bytes, and its source.
template <class SourceType>
class SourceFile {
public:
    SourceFile(const std::string& name, const std::string& bytes, const kd_lib::exchange::SourceOptions& options)
        : File(Folder.write(name, bytes)), source(File, options)
    {
    }

    ScopedDirectory Folder;
    std::string File;
    SourceType source;
};

/// The records of a file.
template <class SourceType>
std::string recordsIn(const std::string& name, const std::string& bytes, const kd_lib::exchange::SourceOptions& options)
{
    SourceFile<SourceType> file(name, bytes, options);
    return shownRecords(file.source);
}

/// The notes after the last record.
template <class SourceType>
std::string notesIn(const std::string& name, const std::string& bytes, const kd_lib::exchange::SourceOptions& options)
{
    SourceFile<SourceType> file(name, bytes, options);
    shownRecords(file.source);
    return shownNotes(file.source);
}

/// The error without the file's folder; empty if there is none.
template <class SourceType>
std::string failureIn(const std::string& name, const std::string& bytes, const kd_lib::exchange::SourceOptions& options)
{
    const std::string line = errorOf([&] { recordsIn<SourceType>(name, bytes, options); });
    return line.empty() ? line : line.substr(line.find(name));
}

}  // namespace kd_test
