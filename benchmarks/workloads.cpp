#include "workloads.h"

#include "bare_work.h"
#include "library_work.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>

namespace kd_bench {

namespace {

constexpr std::array<Workload, 18> all = {{
    {"dbf_walk", "people", ".dbf", "", false, library::walkDbf, bare::walkDbf},
    {"wide_walk", "wide", ".dbf", "", false, library::walkDbf, bare::walkDbf},
    {"dbf_to_script", "people", ".dbf", ".sql", false, library::writeScript, bare::writeScript},
    {"wide_to_script", "wide", ".dbf", ".sql", false, library::writeScript, bare::writeScript},
    {"quoted_to_script", "quoted", ".dbf", ".sql", false, library::writeScript, bare::writeScript},
    {"csv_walk", "people", ".csv", "", false, library::walkCsv, bare::walkCsv},
    {"wide_csv_walk", "wide", ".csv", "", false, library::walkCsv, bare::walkCsv},
    {"quoted_csv_walk", "quoted", ".csv", "", false, library::walkCsv, bare::walkCsv},
    {"fixed_walk", "people", ".txt", "", false, library::walkFixed, bare::walkFixed},
    {"script_import", "people", ".sql", ".db", false, library::importScript, bare::importScript},
    {"quoted_import", "quoted", ".sql", ".db", false, library::importScript, bare::importScript},
    {"record_load", "people", ".dbf", ".db", false, library::loadRecords, bare::loadRecords},
    {"query_print", "people", ".db", "", true, library::printQuery, bare::printQuery},
    {"carry_csv", "people", ".dbf", ".carried", false, library::carryToCsv, bare::dbfToCsv},
    {"carry_copy", "people", ".dbf", ".carried", false, library::carryToCopy, bare::dbfToCopy},
    {"carry_sqlite", "people", ".dbf", ".db", false, library::carryToSqlite, bare::loadValues},
    {"delimited_read", "people", ".csv", "", false, library::readDelimited, bare::walkCsv},
    {"file_query", "people", ".dbf", "", false, library::queryFile, bare::countRecords},
}};

}  // namespace

std::span<const Workload> workloads()
{
    return all;
}

const Workload& workloadNamed(std::string_view name)
{
    const auto found = std::find_if(all.begin(), all.end(), [&](const Workload& each) { return each.Name == name; });
    if (found == all.end()) {
        throw std::invalid_argument("no workload " + std::string(name));
    }
    return *found;
}

void removeOutput(const Workload& workload, const Files& files)
{
    if (*workload.Output != '\0') {
        std::filesystem::remove(files.output(workload.Output));
    }
}

}  // namespace kd_bench
