#include "commands.h"

#include "../carry.h"
#include "../exitstatus.h"
#include "../inputs.h"
#include "../signals.h"

#include <kd_lib/exchange/csvtarget.h>
#include <kd_lib/exchange/jsonlinestarget.h>
#include <kd_lib/exchange/sqlscripttarget.h>

namespace kd_tool {

namespace {

std::unique_ptr<exchange::Target> scriptTarget(const Options& options, exchange::Engine engine)
{
    if (options.Inserts && engine != exchange::Engine::PostgreSql) {
        throw UsageError("--inserts is for --to postgresql");
    }
    return std::make_unique<exchange::SqlScriptTarget>(options.Output, exchange::dialectOf(engine), options.Table,
                                                       options.Inserts ? exchange::RowStyle::Inserts
                                                                       : exchange::RowStyle::Fastest);
}

/// Refuses options of a table if none is created.
void requireNoTable(const Options& options, const char* format)
{
    const auto refuse = [format](bool given, const std::string& option) {
        if (given) {
            throw UsageError(option + " is not for --to " + format);
        }
    };
    refuse(!options.Table.Key.empty(), "--key");
    refuse(!options.Table.Table.empty(), "--table");
    refuse(options.Table.Mode == exchange::TableMode::Append, "--append");
    refuse(options.Table.Mode == exchange::TableMode::Replace, "--replace");
    refuse(options.Inserts, "--inserts");
}

std::unique_ptr<exchange::Target> targetOf(const Options& options)
{
    switch (options.To) {
    case FileFormat::Sqlite:
        return scriptTarget(options, exchange::Engine::Sqlite);
    case FileFormat::PostgreSql:
        return scriptTarget(options, exchange::Engine::PostgreSql);
    case FileFormat::MySql:
        return scriptTarget(options, exchange::Engine::MySql);
    case FileFormat::Csv:
        requireNoTable(options, "csv");
        return std::make_unique<exchange::CsvTarget>(options.Output, options.Table.Names);
    case FileFormat::JsonLines:
        requireNoTable(options, "jsonl");
        return std::make_unique<exchange::JsonLinesTarget>(options.Output, options.Table.Names);
    case FileFormat::None:
        break;
    }
    throw UsageError("--to is missing");
}

}  // namespace

int convert(const Options& options, Console& console)
{
    const std::string& file = options.Arguments.front();
    requireTwoOutputs(options);
    const bool isScript = options.To != FileFormat::Csv && options.To != FileFormat::JsonLines;
    const auto target = targetOf(options);
    if (file == "-" && isScript && options.Table.Table.empty()) {
        throw UsageError("standard input needs --table");
    }
    requireKind(file, options.Source);
    requireOtherFile(file, options.Output);
    if (options.Output != "-" || !options.Rejects.empty()) {
        finishOnSignal();
    }
    const auto source = exchange::openSource(file, options.Source);
    const std::unique_ptr<RejectsFile> rejects = openRejects(options);
    return carryAlone(*source, *target, {options, console, rejects.get(), isScript ? "stored" : "written"});
}

}  // namespace kd_tool
