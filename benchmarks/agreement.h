/// \file
/// Checks that the library and a bare twin do the same.
#pragma once

#include "workloads.h"

namespace kd_bench {

/// Runs both sides of a workload once. Empty if their tallies, the texts that they write and the rows that
/// they store agree; otherwise what differs.
std::string disagreement(const Workload& workload, const Files& files);

}  // namespace kd_bench
