/// \file
/// Tables to be converted into scripts.
#pragma once

#include "support/dbf_builder.h"
#include "support/table_builder.h"

#include <kd_lib/xbase2sql.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kd_test {

using kd_lib::xBase2Sql;

inline DbfBuilder twoColumns()
{
    return DbfBuilder({{"NAME", 'C', 30}, {"BORN", 'D', 8}});
}

inline std::string twoRecords()
{
    return twoColumns().record({"r1c1", "19990102"}).record({"r2c1", "20241225"}).bytes();
}

/// One field of every type that a table can have.
inline DbfBuilder allTypes()
{
    return DbfBuilder({{"C", 'C', 12},
                       {"D", 'D', 8},
                       {"F", 'F', 8, 2},
                       {"L", 'L', 1},
                       {"M", 'M', 10},
                       {"N", 'N', 6, 1},
                       {"P", 'P', 4},
                       {"X", 'X', 5}});
}

/// Adds text columns to a table without a file: `prepareInsert` and `insert` need none.
inline void addTextColumns(xBase2Sql& table, const std::vector<std::string>& names)
{
    table.Fields.CaseSensitive = true;
    for (const std::string& name : names) {
        kd_lib::TableField field(name, kd_lib::CHAR_TYPE, 0, 5, 0, false);
        table.Fields.add(field);
    }
}

/// A directory with one table of these bytes and a converter for it.
class Conversion {
public:
    Conversion(const std::string& name, const std::string& bytes) : Table(name)
    {
        Directory.write(name + ".dbf", bytes);
        Table.Path = Directory.path();
    }

    /// The script; `convert` must return its path in the folder of the table.
    std::string script()
    {
        std::string path;
        Printed = captured([&] { path = Table.convert(); });
        EXPECT_EQ(Directory.file(Table.Name + ".sql"), path);
        return readFile(path);
    }

    ScopedDirectory Directory;
    xBase2Sql Table;
    Console Printed;
};

}  // namespace kd_test
