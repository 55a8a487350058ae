// table_inputs PROFILE RECORDS SEED FILE...: writes a table of generated records as each of the files.

#include "generator.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv)
{
    if (argc < 5) {
        std::cerr << "usage: table_inputs short|wide|quoted RECORDS SEED FILE.dbf|FILE.csv|FILE.txt|FILE.sql ...\n";
        return 2;
    }
    try {
        for (int i = 4; i < argc; ++i) {
            kd_bench::writeTable(argv[i], kd_bench::profileNamed(argv[1]), std::stoull(argv[2]), std::stoull(argv[3]));
        }
        return 0;
    } catch (const std::exception& exception) {
        std::cerr << "table_inputs: " << exception.what() << '\n';
        return 1;
    }
}
