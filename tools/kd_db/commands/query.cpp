#include "commands.h"

#include "../carry.h"
#include "../databases.h"
#include "../exitstatus.h"
#include "../inputs.h"
#include "../listtarget.h"
#include "../report.h"
#include "../signals.h"
#include "../sqlplace.h"

#include <kd_lib/exchange/sqlitesource.h>
#include <kd_lib/exchange/virtualtables.h>

#include <algorithm>
#include <functional>
#include <map>

namespace kd_tool {

namespace {

/// Prints the rows of a statement or, if it has no columns, the number of rows that it changed.
int print(exchange::Source& rows, const std::function<std::uint64_t()>& changes, const Options& options,
          Console& console)
{
    if (rows.columns().empty()) {
        while (rows.next()) {
        }
        console.note(rows.file() + ": " + counted(changes(), "row") + " changed");
        return statusDone;
    }
    const auto target = listTarget(options, console);
    return carry(rows, *target, {options, console, nullptr, "shown", false});
}

/// Reports of the files that a statement reads.
class FileReports {
public:
    FileReports(Console& console, RejectsFile* rejects) : To(console), Rejects(rejects) {}

    exchange::VirtualTableEvents events()
    {
        return {[this](const exchange::Reject& reject) {
                    Loss = true;
                    of(reject.Where.File).reject(reject);
                },
                [this](const std::string& file, const exchange::Note& note) {
                    Loss = Loss || note.Loss;
                    Notes.emplace_back(file, note);
                }};
    }

    /// Prints the remaining reports; returns the status.
    int finish()
    {
        for (auto& [file, report] : Files) {
            report.restOfRejects();
        }
        for (const auto& [file, note] : Notes) {
            Report(To, nullptr, file, "").sourceNotes({note});
        }
        return Loss ? statusLoss : statusDone;
    }

private:
    Report& of(const std::string& file) { return Files.try_emplace(file, To, Rejects, file, "taken").first->second; }

    Console& To;
    RejectsFile* Rejects;
    std::map<std::string, Report> Files;
    std::vector<std::pair<std::string, exchange::Note>> Notes;
    bool Loss = false;
};

/// The tables of a folder. A file that cannot be read is left out with a note, because the statement may not need it.
void addFolder(std::vector<exchange::FileTableOptions>& tables, const std::string& folder, const Options& options,
               Console& console)
{
    for (const std::string& file : filesOf({folder}, options.Source)) {
        try {
            exchange::openSource(file, options.Source);
            tables.push_back({file, {}, options.Source});
        } catch (const exchange::Error& error) {
            console.note(std::string(error.what()) + "; no table");
        }
    }
}

std::vector<exchange::FileTableOptions> tablesOf(const std::vector<std::string>& arguments, const Options& options,
                                                 Console& console)
{
    std::vector<exchange::FileTableOptions> tables;
    for (const std::string& argument : arguments) {
        if (isFolder(argument)) {
            addFolder(tables, argument, options, console);
        } else {
            requireKind(argument, options.Source);
            tables.push_back({argument, {}, options.Source});
        }
    }
    return tables;
}

int queryFiles(const std::vector<std::string>& arguments, const std::string& sql, const Options& options,
               Console& console)
{
    const std::string name = arguments.size() == 1 ? arguments.front() : counted(arguments.size(), "file");
    const std::unique_ptr<RejectsFile> rejects = openRejects(options);
    FileReports reports(console, rejects.get());
    int status = statusDone;
    {
        exchange::TableConnection tables(tablesOf(arguments, options, console), reports.events(), stopToken());
        exchange::SqliteSource rows(tables.handle(), name, sql);
        status = print(
            rows, [&rows] { return rows.changes(); }, options, console);
    }
    status = worse(status, reports.finish());
    if (rejects) {
        rejects->finish();
    }
    return status;
}

}  // namespace

int query(const Options& options, Console& console)
{
    std::vector<std::string> arguments = options.Arguments;
    const std::string sql = arguments.back();
    arguments.pop_back();
    if (std::ranges::find(arguments, "-") != arguments.end()) {
        throw UsageError("query does not read standard input");
    }
    try {
        const std::string& place = arguments.front();
        if (arguments.size() > 1 || (!isServer(place) && (isFolder(place) || isTableFile(place, options.Source)))) {
            return queryFiles(arguments, sql, options, console);
        }
        finishOnSignal();
        const QueryResult result = queryDatabase(place, sql);
        return print(*result.Rows, result.Changes, options, console);
    } catch (const exchange::SqlError& error) {
        const bool isDatabase = error.Reason != "file is not a database";
        console.trouble(std::string(error.what()) + (isDatabase ? "" : "; --from reads it as a table"));
        for (const std::string& line : placeInSql(sql, error.At)) {
            console.say(line);
        }
        return statusFailed;
    }
}

}  // namespace kd_tool
