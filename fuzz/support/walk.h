#pragma once

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace kd_fuzz {

/// Fetches records until there are no more and reads every value. A file of n bytes has at most n
/// records: a walk that goes on longer is a finding.
template <class Table>
void walk(Table& table, std::size_t fileSize)
{
    for (std::size_t records = 0; table.fetchRecord(); ++records) {
        if (records > fileSize) {
            std::fputs("finding: more records than bytes\n", stderr);
            std::abort();
        }
        for (unsigned long i = 0; i < table.Fields.size(); ++i) {
            static_cast<void>(table.Fields.getData(i).size());
        }
    }
}

/// Walks the table from its first record, and again from every other place that can be gone to.
template <class Table>
void walkFromEverywhere(Table& table, std::size_t fileSize)
{
    table.firstRecord();
    walk(table, fileSize);
    table.goRecord(2);
    walk(table, fileSize);
    table.lastRecord();
    walk(table, fileSize);
    table.skipHeader();
    table.nextRecord();
    walk(table, fileSize);
    table.endFile();
    walk(table, fileSize);
}

}  // namespace kd_fuzz
