/// \file
/// The work that is measured: each once through the library's public headers, and once as a bare twin
/// without it, which does the same to the same files.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kd_bench {

/// The result of a workload. The library and its twin must agree.
struct Tally {
    std::uint64_t Records = 0;
    std::uint64_t Bytes = 0;  ///< of all values, or of the output; 0 if neither is known

    bool operator==(const Tally&) const = default;
};

/// The files of one run.
struct Files {
    std::string Folder;   ///< of the input
    std::string Table;    ///< the input's name without extension
    std::string Scratch;  ///< folder for the output

    std::string input(const std::string& extension) const { return Folder + '/' + Table + extension; }
    std::string output(const std::string& extension) const { return Scratch + '/' + Table + extension; }
};

using Work = Tally (*)(const Files&);

struct Workload {
    std::string_view Name;
    const char* Table;   ///< "people", "wide" or "quoted": the table that it works on
    const char* Input;   ///< the extension of its input
    const char* Output;  ///< the extension of the file that it writes; empty: none
    bool Prints;         ///< it writes to standard output
    Work Library;
    Work Bare;
};

/// All workloads.
std::span<const Workload> workloads();

/// The workload of this name; throws std::invalid_argument if there is none.
const Workload& workloadNamed(std::string_view name);

/// Removes the output file of an earlier run.
void removeOutput(const Workload& workload, const Files& files);

}  // namespace kd_bench
