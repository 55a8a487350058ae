/// \file
/// The bare twins: plain block reads and slices, plain line reads, bare SQLite calls. They do not use the library,
/// check little, and keep only a few blocks in memory, except the script's twin, which keeps the whole script.
#pragma once

#include "workloads.h"

namespace kd_bench::bare {

Tally walkDbf(const Files& files);
Tally walkCsv(const Files& files);
Tally walkFixed(const Files& files);
Tally writeScript(const Files& files);
Tally importScript(const Files& files);
Tally loadRecords(const Files& files);
Tally printQuery(const Files& files);

Tally dbfToCsv(const Files& files);
Tally dbfToCopy(const Files& files);
Tally loadValues(const Files& files);
Tally countRecords(const Files& files);

}  // namespace kd_bench::bare
