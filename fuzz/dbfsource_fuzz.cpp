// A .dbf file with a memo file as a source, read in several ways, and its bytes explained.

#include "support/checked_source.h"
#include "support/input_folder.h"
#include "support/options.h"

#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/inspect.h>

#include <filesystem>
#include <vector>

namespace {

using namespace kd_lib::exchange;

void explain(const std::string& file)
{
    std::uint64_t lines = 0;
    try {
        inspect(file, [&lines](const InspectedBytes& part) {
            if (part.Bytes.size() > part.Length) {
                kd_fuzz::finding("more bytes than the part has");
            }
            ++lines;
        });
    } catch (const Error& error) {
        if (error.Reason.empty()) {
            kd_fuzz::finding("an error without a reason");
        }
        return;
    }
    if (lines == 0) {
        kd_fuzz::finding("nothing explained");
    }
}

/// Slices of a table together are the whole table.
void compareSlices(const std::string& file, SourceOptions options, std::uint64_t cut)
{
    const auto numbers = [&file, &options](std::uint64_t first, std::uint64_t last, std::vector<std::uint64_t>& to) {
        options.Records = {first, last};
        const auto source = openSource(file, options);
        while (source->next()) {
            to.push_back(source->record().Number);
        }
    };
    constexpr std::uint64_t end = std::numeric_limits<std::uint64_t>::max();
    try {
        std::vector<std::uint64_t> whole;
        numbers(1, end, whole);
        std::vector<std::uint64_t> slices;
        numbers(1, cut, slices);
        numbers(cut + 1, end, slices);
        if (whole != slices) {
            kd_fuzz::finding("slices with other records");
        }
    } catch (const Error&) {
        // Checked elsewhere.
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const char* encodings[] = {"", "utf-8", "cp852", "cp932", "utf-16", "kamenicky", "ebcdic-us", "gb18030"};
    const char* types[] = {"text", "number", "date", "integer", "timestamp", "bytes", "boolean", "float"};
    kd_fuzz::Options choice(data, size);
    const unsigned int flags = choice.byte();
    const unsigned int more = choice.byte();
    const std::size_t memoSize = choice.byte() * 256 + choice.byte();
    SourceOptions options;
    options.Deleted = static_cast<DeletedRecords>((flags & 3U) % 3);
    options.OnEncodingError = static_cast<EncodingErrors>((flags >> 2U & 3U) % 3);
    options.NoMemo = (flags & 16U) != 0;
    options.Encoding = encodings[flags >> 5U];
    if ((more & 8U) != 0) {
        options.Types = {{"A", types[more & 7U]}, {"B", types[more >> 4U & 7U]}};
    }
    const std::string_view content = choice.content();
    const std::size_t tableSize = content.size() - std::min(memoSize, content.size());
    const std::string folder = kd_fuzz::inputFolder();
    const std::string memo = (more & 128U) != 0 ? "input.fpt" : "input.dbt";
    std::filesystem::remove(folder + "/input.fpt");
    std::filesystem::remove(folder + "/input.dbt");
    if (memoSize > 0) {
        kd_fuzz::writeInput(memo, content.substr(tableSize));
    }
    kd_fuzz::writeInput("input.dbf", content.substr(0, tableSize));
    const std::string table = folder + "/input.dbf";
    kd_fuzz::checkSource(table, options);
    compareSlices(table, options, more >> 4U);
    explain(table);
    return 0;
}
