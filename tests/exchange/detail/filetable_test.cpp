#include "detail/filetable.h"

#include "../support/xbase_file.h"

#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

using namespace kd_lib::exchange;

TEST(FileTableTest, TheRecordsOfATableAreEstimatedByTheirLength)
{
    const kd_test::ScopedDirectory folder;
    kd_test::XbaseFile file(3, {{"A", 'C', 1}});
    constexpr std::uint64_t records = 10000;
    for (std::uint64_t i = 0; i < records; ++i) {
        file.record({"x"});
    }
    const VirtualTableEvents events;
    const detail::FileTable table({folder.write("t.dbf", file.bytes()), {}, NameCase::Lower}, events);
    EXPECT_TRUE(table.hasFixedRecords());
    EXPECT_GE(table.estimatedRecords(), records);
    EXPECT_LE(table.estimatedRecords(), records + records / 100) << "the header is small";
}

}  // namespace
