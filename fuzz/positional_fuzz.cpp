// A positional text file together with its line of column positions: the first line of the input.

#include "support/bounded_output.h"
#include "support/input_folder.h"
#include "support/options.h"
#include "support/shape_checked.h"
#include "support/walk.h"

#include <kd_lib/asciitable.h>

#include <exception>
#include <string>

namespace {

constexpr std::size_t outputLimit = 1U << 20U;

struct Settings {
    unsigned int flags;
    unsigned int recordLength;
};

template <class Table>
void readTable(const Settings& settings, std::string columns, std::size_t fileSize)
{
    kd_fuzz::ShapeChecked<Table> table;
    table.Path = kd_fuzz::inputFolder();
    table.Trim = (settings.flags & 1U) != 0;
    table.Binary = (settings.flags & 2U) != 0;
    table.RecordEnd = (settings.flags & 4U) != 0 ? 0 : 10;
    if (settings.recordLength != 0) {
        table.RecordLength = settings.recordLength;
    }
    if (!table.open("input")) {
        return;
    }
    table.getFieldList();
    try {
        table.setFieldOffsets(columns);
    } catch (const std::exception&) {
        // The columns before the bad number stay: the table is read with these.
    }
    table.showHeader();
    kd_fuzz::walkFromEverywhere(table, fileSize);
}

template <class Table>
void tryTable(const Settings& settings, const std::string& columns, std::size_t fileSize)
{
    try {
        readTable<Table>(settings, columns, fileSize);
    } catch (const std::exception&) {
        // A standard exception is an outcome.
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kd_fuzz::Options options(data, size);
    Settings settings{};
    settings.flags = options.byte();
    settings.recordLength = options.byte();
    const std::string_view content = options.content();
    const std::size_t lineEnd = content.find('\n');
    const std::string columns(content.substr(0, lineEnd));
    const std::string_view file = content.substr(lineEnd == std::string_view::npos ? content.size() : lineEnd + 1);
    kd_fuzz::writeInput("input.txt", file);
    const kd_fuzz::BoundedOutput output(outputLimit);
    tryTable<kd_lib::FileTable>(settings, columns, file.size());
    tryTable<kd_lib::AsciiTable>(settings, columns, file.size());
    return 0;
}
