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

std::vector<std::string> filesOf(const std::vector<std::string>& arguments, const exchange::SourceOptions& options)
{
    std::vector<std::string> files;
    for (const std::string& argument : arguments) {
        if (!isFolder(argument)) {
            files.push_back(argument);
            continue;
        }
        for (const exchange::FileTableOptions& table : exchange::tableFilesIn(argument, options)) {
            files.push_back(table.File);
        }
    }
    return files;
}

bool isTableFile(const std::string& path, const exchange::SourceOptions& options)
{
    constexpr std::array<std::string_view, 6> extensions = {"dbf", "csv", "tsv", "tab", "txt", "mem"};
    if (options.Kind != exchange::SourceKind::Automatic || path == "-") {
        return true;
    }
    const std::string extension = kd_lib::stringToLower(std::filesystem::path(path).extension().string());
    return !extension.empty() && std::ranges::find(extensions, extension.substr(1)) != extensions.end();
}

void requireKind(const std::string& file, const exchange::SourceOptions& options)
{
    if (file == "-" && options.Kind == exchange::SourceKind::Automatic) {
        throw UsageError("standard input needs --from");
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
