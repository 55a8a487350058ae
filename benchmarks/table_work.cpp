// table_work library|bare WORKLOAD FOLDER SCRATCH: does one piece of work once, to be measured from outside.
// Reports on standard error what it did.

#include "workloads.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv)
{
    const std::string_view side = argc == 5 ? argv[1] : "";
    if (side != "library" && side != "bare") {
        std::cerr << "usage: table_work library|bare WORKLOAD FOLDER SCRATCH\n";
        return 2;
    }
    try {
        const kd_bench::Workload& workload = kd_bench::workloadNamed(argv[2]);
        const kd_bench::Files files{argv[3], workload.Table, argv[4]};
        kd_bench::removeOutput(workload, files);
        const kd_bench::Tally tally = (side == "bare" ? workload.Bare : workload.Library)(files);
        std::cerr << tally.Records << " records, " << tally.Bytes << " bytes\n";
        return 0;
    } catch (const std::exception& exception) {
        std::cerr << "table_work: " << exception.what() << '\n';
        return 1;
    }
}
