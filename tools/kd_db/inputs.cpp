#include "inputs.h"

#include "exitstatus.h"

#include <kd_lib/exchange/virtualtables.h>
#include <kd_lib/text.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

namespace kd_tool {

namespace exchange = kd_lib::exchange;

bool isFolder(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_directory(path, error);
}

namespace {

std::string extensionOf(const std::string& path)
{
    const std::string extension = std::filesystem::path(path).extension().string();
    return extension.empty() ? extension : kd_lib::stringToLower(extension.substr(1));
}

/// Whether a file of a folder is one of its tables, by its extension. With --from only files of that kind are,
/// otherwise all except memory files. Text in fixed columns is one only if the columns are known.
bool belongsToFolder(const std::string& path, const exchange::SourceOptions& options)
{
    using Kind = exchange::SourceKind;
    const std::string extension = extensionOf(path);
    switch (options.Kind) {
    case Kind::Dbf:
        return extension == "dbf";
    case Kind::Csv:
        return extension == "csv";
    case Kind::Tsv:
        return extension == "tsv" || extension == "tab";
    case Kind::Fixed:
        return extension == "txt";
    case Kind::Mem:
        return extension == "mem";
    case Kind::Automatic:
        break;
    }
    return extension != "mem" && (extension != "txt" || !options.FixedColumns.empty());
}

}  // namespace

std::vector<std::string> filesOf(const std::vector<std::string>& arguments, const exchange::SourceOptions& options)
{
    std::vector<std::string> files;
    for (const std::string& argument : arguments) {
        if (!isFolder(argument)) {
            files.push_back(argument);
            continue;
        }
        for (const exchange::FileTableOptions& table : exchange::tableFilesIn(argument, options)) {
            if (belongsToFolder(table.File, options)) {
                files.push_back(table.File);
            }
        }
    }
    return files;
}

bool isTableFile(const std::string& path, const exchange::SourceOptions& options)
{
    constexpr std::array<std::string_view, 6> extensions = {"dbf", "csv", "tsv", "tab", "txt", "mem"};
    if (options.Kind != exchange::SourceKind::Automatic) {
        return true;
    }
    return std::ranges::find(extensions, extensionOf(path)) != extensions.end();
}

void requireKind(const std::string& file, const exchange::SourceOptions& options)
{
    if (options.Kind != exchange::SourceKind::Automatic) {
        return;
    }
    if (file == "-") {
        throw UsageError("standard input needs --from");
    }
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(file, error);
    if (!std::filesystem::exists(status)) {
        const auto reason = error ? error : std::make_error_code(std::errc::no_such_file_or_directory);
        throw exchange::Error(file, reason.message());
    }
    if (std::filesystem::is_directory(status)) {
        throw exchange::Error(file, "Is a directory");
    }
    if (!isTableFile(file, options)) {
        throw UsageError(file + ": its extension does not determine its kind; use --from dbf|csv|tsv|fixed|mem");
    }
    if (extensionOf(file) == "txt" && options.FixedColumns.empty()) {
        throw UsageError(file + ": fixed columns are given by --columns; --from csv reads delimited text");
    }
}

std::optional<std::uint64_t> sizeOf(const std::vector<std::string>& files)
{
    std::uint64_t size = 0;
    for (const std::string& file : files) {
        std::error_code error;
        const std::uintmax_t bytes = std::filesystem::file_size(file, error);
        if (error) {
            return std::nullopt;
        }
        size += bytes;
    }
    return size;
}

}  // namespace kd_tool
