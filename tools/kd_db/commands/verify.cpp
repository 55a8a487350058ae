#include "commands.h"

#include "../carry.h"
#include "../databases.h"
#include "../exitstatus.h"
#include "../inputs.h"
#include "../report.h"
#include "../resultoutput.h"
#include "../signals.h"

#include <kd_lib/exchange/verify.h>

namespace kd_tool {

namespace {

/// Prints the differences on standard output.
void print(const exchange::Verification& found, const std::string& file, const std::string& database, Console& console)
{
    ResultOutput output(console, ResultOutput::Paging::Never, ResultOutput::Controls::Escape);
    for (const exchange::ColumnDifference& difference : found.Differences) {
        std::string line = "column " + difference.Column + ", record " + std::to_string(difference.Record) + ": ";
        line.append(difference.InSource).append(" in ").append(file).append(", ");
        line.append(difference.InTable).append(" in ").append(database).append("\n");
        output.write(line);
    }
    if (found.Records != found.Rows) {
        output.write(counted(found.Records, "record") + " in " + file + ", " + counted(found.Rows, "row") + " in " +
                     database + '\n');
    }
    output.finish();
}

exchange::Verification compare(exchange::Source& source, exchange::TableLayout& layout, const std::string& database,
                               const Options& options, Console& console)
{
    const std::unique_ptr<RejectsFile> rejects = openRejects(options);
    Report report(console, rejects.get(), source.file(), "compared");
    const std::unique_ptr<exchange::Source> table = tableOf(database, layout);
    const WorkInProgress work(console, source.file(), source.size());
    exchange::Progress before;
    exchange::TransferOptions settings;
    settings.Policy = options.OnError;
    settings.Stop = stopToken();
    settings.OnReject = [&](const exchange::Reject& reject) { report.reject(reject); };
    settings.OnProgress = [&](const exchange::Progress& now) {
        console.advance(now.Bytes - before.Bytes, now.Records - before.Records);
        before = now;
    };
    exchange::Verification found = exchange::verify(source, *table, layout, settings);
    report.restOfRejects();
    report.sourceNotes(source.notes());
    if (rejects) {
        rejects->finish();
    }
    return found;
}

}  // namespace

int verify(const Options& options, Console& console)
{
    const std::string& file = options.Arguments[0];
    const std::string& database = options.Arguments[1];
    requireKind(file, options.Source);
    const auto source = exchange::openSource(file, options.Source);
    exchange::TableLayout layout = layoutIn(database, file, source->columns(), options.Table);
    const exchange::Verification found = compare(*source, layout, database, options, console);
    const std::string shown = shownName(database);
    if (found.agrees()) {
        console.note(file + ": " + counted(found.Records, "record") + " as in table " + layout.table() + " of " +
                     shown);
        return statusDone;
    }
    print(found, file, shown, console);
    console.trouble(file + ": differs from table " + layout.table() + " of " + shown);
    return statusFailed;
}

}  // namespace kd_tool
