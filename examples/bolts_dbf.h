// The table bolts.dbf of docs/dbf-format.md, byte by byte: the input of the .dbf examples.
#pragma once

#include <fstream>
#include <string>

namespace example {

/// A column descriptor: name, type letter, length, index flag.
inline std::string descriptor(const std::string& name, char type, char length, char indexed)
{
    std::string bytes(32, '\0');
    bytes.replace(0, name.size(), name);
    bytes[11] = type;
    bytes[16] = length;
    bytes[31] = indexed;
    return bytes;
}

/// Writes bolts.dbf with its two records, the second one deleted.
inline void writeBolts()
{
    std::string header(32, '\0');
    header[0] = 3;    // version
    header[1] = 124;  // 2024-03-05
    header[2] = 3;
    header[3] = 5;
    header[4] = 2;    // records
    header[8] = 97;   // header length: 32 + 2 * 32 + 1
    header[10] = 11;  // record length: 1 + 6 + 4
    std::ofstream("bolts.dbf", std::ios::binary)
        << header << descriptor("NAME", 'C', 6, 1) << descriptor("QTY", 'N', 4, 0) << '\r' << " bolt    12"
        << "*nut    350" << '\x1A';
}

}  // namespace example
