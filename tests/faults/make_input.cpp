// fault_input COUNT FILE: writes a .dbf table of COUNT records, some 40 bytes each.

#include "support/dbf_builder.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: fault_input COUNT FILE\n";
        return 2;
    }
    kd_test::DbfBuilder table({{"NAME", 'C', 30}, {"NUMBER", 'N', 9}});
    const long count = std::strtol(argv[1], nullptr, 10);
    for (long i = 1; i <= count; ++i) {
        table.record({"name of " + std::to_string(i), std::to_string(i)});
    }
    std::ofstream out(argv[2], std::ios::binary);
    out << table.bytes();
    return out.flush().good() ? 0 : 1;
}
