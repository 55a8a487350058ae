/// \file
/// Small files of positional text and of fixed-length records.
#pragma once

#include "support/position.h"

#include <kd_lib/filetable.h>

#include <string>

namespace kd_test {

/// The positional file of most tests, for the columns "5|12|20".
inline const std::string twoLines = ".....r1c1.xxr1c2...r1c3....x\n.....r2c1.xxr2c2...r2c3....x\n";

/// Fixed-length records in a file of 100 bytes.
class FixedTable : public kd_lib::FileTable {
public:
    FixedTable()
    {
        HeaderLength = 7;
        RecordLength = 5;
        RecordEnd = 0;
    }
};

}  // namespace kd_test
