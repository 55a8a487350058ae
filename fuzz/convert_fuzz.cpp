// A .dbf file carried to an SQL script, in the ways that convert and its parts can be called.

#include "support/bounded_output.h"
#include "support/input_folder.h"
#include "support/options.h"
#include "support/shape_checked.h"

#include <kd_lib/xbase2sql.h>

#include <exception>
#include <filesystem>

namespace {

constexpr std::size_t outputLimit = 1U << 16U;

void convertTable(unsigned int settings)
{
    kd_fuzz::ShapeChecked<kd_lib::xBase2Sql> table;
    table.Path = kd_fuzz::inputFolder();
    table.Name = "input";
    table.ReadDeleted = (settings & 1U) != 0;
    table.InsertRecords = (settings & 2U) == 0;
    table.KeyColumn = (settings & 4U) != 0 ? "id" : "";
    if (table.open()) {
        table.createTable((settings & 8U) != 0);
        table.prepareInsert("sqlite");
        table.prepareInsert("postgresql");
        table.insert();
    }
    table.convert();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kd_fuzz::Options options(data, size);
    const unsigned int settings = options.byte();
    kd_fuzz::writeInput("input.dbf", options.content());
    const kd_fuzz::BoundedOutput output(outputLimit);
    try {
        convertTable(settings);
    } catch (const std::exception&) {
        // A standard exception is an outcome.
    }
    return 0;
}
