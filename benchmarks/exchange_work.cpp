// The exchange library's side of its workloads.
#include "library_work.h"

#include <kd_lib/exchange/csvtarget.h>
#include <kd_lib/exchange/dialect.h>
#include <kd_lib/exchange/opensource.h>
#include <kd_lib/exchange/sqlitesource.h>
#include <kd_lib/exchange/sqlitetarget.h>
#include <kd_lib/exchange/sqlscripttarget.h>
#include <kd_lib/exchange/transfer.h>
#include <kd_lib/exchange/virtualtables.h>

#include <filesystem>

namespace kd_bench::library {

namespace {

using namespace kd_lib::exchange;

std::uint64_t carried(const Files& files, Target& target)
{
    return transfer(*openSource(files.input(".dbf")), target).Stored;
}

}  // namespace

Tally carryToCsv(const Files& files)
{
    CsvTarget target(files.output(".carried"));
    const std::uint64_t records = carried(files, target);
    return {records, std::filesystem::file_size(files.output(".carried"))};
}

Tally carryToCopy(const Files& files)
{
    SqlScriptTarget target(files.output(".carried"), dialectOf(Engine::PostgreSql));
    return {carried(files, target), 0};
}

Tally carryToSqlite(const Files& files)
{
    SqliteTarget target(files.output(".db"));
    return {carried(files, target), 0};
}

Tally readDelimited(const Files& files)
{
    const auto source = openSource(files.input(".csv"));
    Tally tally;
    while (source->next()) {
        ++tally.Records;
        for (const Cell& cell : source->record().Cells) {
            tally.Bytes += cell.Kind == CellKind::Text ? cell.Text.size() : 0;
        }
    }
    return tally;
}

Tally queryFile(const Files& files)
{
    FileTableOptions people;
    people.File = files.input(".dbf");
    TableConnection tables({people});
    SqliteSource rows(tables.handle(), people.File, "SELECT count(*), sum(balance) FROM people");
    rows.next();
    return {static_cast<std::uint64_t>(rows.record()[0].integer().value_or(0)), 0};
}

}  // namespace kd_bench::library
