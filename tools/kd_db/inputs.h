/// \file
/// The files that arguments name.
#pragma once

#include <kd_lib/exchange/opensource.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kd_tool {

/// The files of the arguments in their order; a folder means all tables in it. Throws an `exchange::Error` for a folder
/// without tables, or one that cannot be read.
std::vector<std::string> filesOf(const std::vector<std::string>& arguments,
                                 const kd_lib::exchange::SourceOptions& options);

bool isFolder(const std::string& path);

/// Whether a file is a table, by `options` or by its extension, and not a database.
bool isTableFile(const std::string& path, const kd_lib::exchange::SourceOptions& options);

/// Throws a `UsageError` if neither the extension of a file nor `options` determine its kind, and an `exchange::Error`
/// if there is no such file.
void requireKind(const std::string& file, const kd_lib::exchange::SourceOptions& options);

/// Bytes of all files together; nothing if the size of one is not known.
std::optional<std::uint64_t> sizeOf(const std::vector<std::string>& files);

}  // namespace kd_tool
