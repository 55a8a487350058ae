/// \file
/// The workloads of a client of the library.
#pragma once

#include "workloads.h"

namespace kd_bench::library {

Tally walkDbf(const Files& files);
Tally walkCsv(const Files& files);
Tally walkFixed(const Files& files);
Tally writeScript(const Files& files);
Tally importScript(const Files& files);
Tally loadRecords(const Files& files);
Tally printQuery(const Files& files);

Tally carryToCsv(const Files& files);
Tally carryToCopy(const Files& files);
Tally carryToSqlite(const Files& files);
Tally readDelimited(const Files& files);
Tally queryFile(const Files& files);

}  // namespace kd_bench::library
