// A .dbf file: header, column list and records, with deleted records and without.

#include "support/bounded_output.h"
#include "support/input_folder.h"
#include "support/options.h"
#include "support/shape_checked.h"
#include "support/walk.h"

#include <kd_lib/xbasetable.h>

#include <exception>

namespace {

/// A header shows at most 1023 columns.
constexpr std::size_t outputLimit = 1U << 20U;

void readTable(std::size_t fileSize, unsigned int settings)
{
    kd_fuzz::ShapeChecked<kd_lib::xBaseTable> table;
    table.Path = kd_fuzz::inputFolder();
    table.ReadDeleted = (settings & 1U) != 0;
    table.Trim = (settings & 2U) != 0;
    if (table.open("input") && table.getFieldList()) {
        table.showHeader();
        kd_fuzz::walkFromEverywhere(table, fileSize);
        table.close();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kd_fuzz::Options options(data, size);
    const unsigned int settings = options.byte();
    kd_fuzz::writeInput("input.dbf", options.content());
    const kd_fuzz::BoundedOutput output(outputLimit);
    try {
        readTable(options.content().size(), settings);
    } catch (const std::exception&) {
        // A standard exception is an outcome.
    }
    return 0;
}
