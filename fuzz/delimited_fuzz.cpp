// A delimited file, in every mode.

#include "support/bounded_output.h"
#include "support/input_folder.h"
#include "support/options.h"
#include "support/walk.h"

#include <kd_lib/asciitable.h>

#include <exception>

namespace {

constexpr std::size_t outputLimit = 1U << 20U;

void setMode(kd_lib::DelimitedTable& table, unsigned int mode)
{
    switch (mode % 4) {
    case 1:
        table.setCsvMode();
        break;
    case 2:
        table.setRMode();
        break;
    case 3:
        table.Separator = static_cast<int>(mode / 4);
        break;
    default:
        break;
    }
}

void readTable(kd_fuzz::Options& options)
{
    kd_lib::DelimitedTable table;
    table.Path = kd_fuzz::inputFolder();
    const unsigned int flags = options.byte();
    table.HasFieldNames = (flags & 1U) == 0;
    table.Fields.CaseSensitive = (flags & 2U) != 0;
    table.RecordEnd = (flags & 4U) != 0 ? 0 : 10;
    table.CommentChar = (flags & 8U) != 0 ? '#' : 0;
    setMode(table, options.byte());
    if (const unsigned int length = options.byte(); length != 0) {
        table.RecordLength = length;
    }
    kd_fuzz::writeInput("input.csv", options.content());
    if (!table.open("input")) {
        return;
    }
    if (!table.getFieldList()) {
        table.Fields.add("only");
    }
    table.showHeader();
    kd_fuzz::walkFromEverywhere(table, options.content().size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kd_fuzz::Options options(data, size);
    const kd_fuzz::BoundedOutput output(outputLimit);
    try {
        readTable(options);
    } catch (const std::exception&) {
        // A standard exception is an outcome.
    }
    return 0;
}
