/// \file
/// The listing of a memory file, as the library prints it.
#pragma once

#include "support/table_builder.h"

#include <kd_lib/xbasememory.h>

#include <gtest/gtest.h>

#include <string>

namespace kd_test {

inline std::string listing(kd_lib::xBaseMemory& memory)
{
    return printedBy([&] { EXPECT_TRUE(memory.read()); });
}

/// Of a file of these bytes.
inline std::string listingOf(const std::string& bytes)
{
    Opened<kd_lib::xBaseMemory> file(bytes);
    return listing(file.table);
}

}  // namespace kd_test
