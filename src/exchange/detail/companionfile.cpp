#include "companionfile.h"

#include "lettercase.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>
#include <vector>

namespace kd_lib::exchange::detail {

namespace {

namespace fs = std::filesystem;

bool isFile(const fs::path& path)
{
    std::error_code error;
    return fs::is_regular_file(path, error);
}

/// The extension in capitals if the table's extension is.
std::string inCaseOf(const std::string& tableExtension, std::string_view extension)
{
    const bool capitals = tableExtension.size() > 1 && tableExtension == uppered(tableExtension);
    return capitals ? uppered(extension) : std::string(extension);
}

/// The file of the folder that fits best: by its stem, then by its extension; of equals, the first by name.
std::optional<std::string> searchFolder(const fs::path& table, std::string_view extension)
{
    const fs::path folder = table.has_parent_path() ? table.parent_path() : fs::path(".");
    const std::string stem = table.stem().string();
    const std::string lowerStem = lowered(stem);
    const std::string likely = inCaseOf(table.extension().string(), extension);
    std::optional<std::pair<int, std::string>> best;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const fs::path name = entry->path().filename();
        const std::string found = name.extension().string();
        if (found.size() != extension.size() + 1 || lowered(found.substr(1)) != extension ||
            lowered(name.stem().string()) != lowerStem || !isFile(entry->path())) {
            continue;
        }
        const int rank = (name.stem().string() == stem ? 0 : 2) + (found.substr(1) == likely ? 0 : 1);
        const std::pair candidate(rank, name.string());
        if (!best || candidate < *best) {
            best = candidate;
        }
    }
    if (!best) {
        return std::nullopt;
    }
    return table.has_parent_path() ? (table.parent_path() / best->second).string() : best->second;
}

}  // namespace

std::optional<std::string> findCompanion(const std::string& table, std::initializer_list<std::string_view> extensions)
{
    if (table == "-") {
        return std::nullopt;
    }
    const fs::path path(table);
    for (const std::string_view extension : extensions) {
        fs::path likely = path;
        likely.replace_extension(inCaseOf(path.extension().string(), extension));
        if (isFile(likely)) {
            return likely.string();
        }
        if (std::optional<std::string> found = searchFolder(path, extension)) {
            return found;
        }
    }
    return std::nullopt;
}

}  // namespace kd_lib::exchange::detail
