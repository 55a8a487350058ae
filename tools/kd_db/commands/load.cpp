#include "commands.h"

#include "../binding.h"
#include "../database.h"
#include "../output.h"
#include "../signals.h"

#include <kd_lib/text.h>

#include <algorithm>

namespace kd_tool {

namespace {

struct Counts {
    std::uint64_t Read = 0;
    std::uint64_t LeftOut = 0;
    std::uint64_t Stored = 0;
    std::uint64_t Rounded = 0;
};

void requireNames(const Source& source, const kd_lib::TableFields& fields)
{
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (fields.List[i]->Name.empty()) {
            source.fail("column " + std::to_string(i + 1) + " has no name");
        }
    }
}

/// Stores the records through one prepared statement.
Counts storeRecords(Source& source, Connection& database, const std::string& name)
{
    kd_lib::FileTable& table = source.table();
    Binding binding(table.Fields);
    database.require(database.execute(binding.createTable(name)));
    database.require(database.prepare(binding.insert(name)));
    Counts counts;
    table.firstRecord();
    while (table.fetchRecord()) {
        ++counts.Read;
        if (source.deleted()) {
            ++counts.LeftOut;
            continue;
        }
        database.require(binding.bindRecord(database) && database.SQLite3::execute());
        database.resetResults();
        ++counts.Stored;
    }
    counts.Rounded = binding.roundedNumbers();
    return counts;
}

void say(const LoadOptions& options, const std::string& table, const Counts& counts)
{
    if (counts.Rounded > 0) {
        note(options.Source.File + ": " + counted(counts.Rounded, "number") +
             " rounded: more digits than SQLite keeps");
    }
    note(options.Source.File + ": " + counted(counts.Read, "record") + " read, " + std::to_string(counts.LeftOut) +
         " left out, " + std::to_string(counts.Stored) + " stored in table " + table);
}

}  // namespace

void load(const LoadOptions& options)
{
    finishOnSignal();
    const std::unique_ptr<Source> source = openSource(options.Source);
    const kd_lib::FileTable& table = source->table();
    requireNames(*source, table.Fields);
    const std::string name = options.Table.empty() ? kd_lib::stringToLower(table.Name) : options.Table;
    TargetFile file(options.Database);
    Counts counts;
    {
        // Closed without a commit it leaves the database as it was.
        Connection database(options.Database);
        database.begin();
        counts = storeRecords(*source, database, name);
        throwIfInterrupted();
        database.commit();
    }
    file.keep();
    say(options, name, counts);
}

}  // namespace kd_tool
