/// \file
/// A small xBase table.
#pragma once

#include "support/dbf_builder.h"
#include "support/position.h"
#include "support/table_builder.h"

#include <kd_lib/xbasetable.h>

#include <gtest/gtest.h>

#include <string>

namespace kd_test {

using kd_lib::xBaseTable;

/// Three columns whose offsets are 1, 5 and 12.
inline DbfBuilder threeColumns()
{
    return DbfBuilder({{"NAME", 'C', 4}, {"PRICE", 'N', 7, 2}, {"BORN", 'D', 8}});
}

inline std::string threeRecords()
{
    return threeColumns()
        .record({"r1c1", "   1.01", "19990102"})
        .record({"r2c1", "  22.02", "20241225"})
        .record({"r3c1", " 333.03", "20240305"})
        .bytes();
}

inline const Rows threeRows = {
    {"r1c1", "   1.01", "19990102"}, {"r2c1", "  22.02", "20241225"}, {"r3c1", " 333.03", "20240305"}};

inline Opened<xBaseTable>& withHeader(Opened<xBaseTable>& file)
{
    EXPECT_TRUE(file.table.getFieldList());
    return file;
}

}  // namespace kd_test
