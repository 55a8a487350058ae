// The twins of the text tables: whole blocks, lines found by memchr.

#include "bare_dbf.h"
#include "bare_work.h"
#include "generator.h"

#include <algorithm>
#include <stdexcept>

namespace kd_bench::bare {

namespace {

/// Calls `use` with every line of a file, without its end.
template <class Use>
void forEachLine(const std::string& path, Use use)
{
    constexpr std::size_t blockSize = 65536;
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        throw std::runtime_error(path);
    }
    std::setvbuf(file, nullptr, _IONBF, 0);
    std::vector<char> block(blockSize);
    std::size_t kept = 0;
    while (const std::size_t count = std::fread(block.data() + kept, 1, block.size() - kept, file)) {
        std::string_view text(block.data(), kept + count);
        for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1)) {
            use(text.substr(0, end));
        }
        kept = text.size();
        std::memmove(block.data(), text.data(), kept);
        block.resize(kept == block.size() ? 2 * kept : block.size());
    }
    std::fclose(file);
}

}  // namespace

Tally walkCsv(const Files& files)
{
    Tally tally;
    std::vector<std::string> row;
    forEachLine(files.input(".csv"), [&](std::string_view line) {
        if (row.empty()) {
            row.resize(static_cast<std::size_t>(std::count(line.begin(), line.end(), ',')) + 1);
            return;
        }
        ++tally.Records;
        for (std::string& value : row) {
            const std::size_t end = line.find(',');
            value.assign(line.substr(0, end));
            tally.Bytes += value.size();
            line.remove_prefix(end == std::string_view::npos ? line.size() : end + 1);
        }
    });
    return tally;
}

Tally walkFixed(const Files& files)
{
    const std::vector<Column> columns = columnsOf(Profile::Short);
    std::vector<std::string> row(columns.size());
    Tally tally;
    forEachLine(files.input(".txt"), [&](std::string_view line) {
        ++tally.Records;
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i].assign(withoutBlanks(line.substr(0, columns[i].Width)));
            tally.Bytes += row[i].size();
            line.remove_prefix(columns[i].Width);
        }
    });
    return tally;
}

}  // namespace kd_bench::bare
