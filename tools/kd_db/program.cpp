#include "program.h"

#include "commands/commands.h"
#include "failure.h"
#include "output.h"
#include "signals.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <iostream>

namespace kd_tool {

namespace {

constexpr const char* description = "Reads .dbf, .csv, .tab and positional text tables; carries them into SQLite.";

constexpr const char* examples = "Examples:\n"
                                 "  kd_db show people.dbf\n"
                                 "  kd_db list prices.txt --columns '5|12|20'\n"
                                 "  kd_db load people.dbf --into people.db\n"
                                 "  kd_db query people.db 'SELECT name, born FROM people'\n"
                                 "\n"
                                 "FILE ends in .dbf, .csv (commas), .tab or .tsv (tabs), or .txt, which needs\n"
                                 "--columns. Results go to standard output, everything else to standard error.\n"
                                 "\n"
                                 "Exit codes: 0 done, 1 failed (one line says why), 2 wrong usage, 130 and 143\n"
                                 "ended by SIGINT and SIGTERM.\n";

/// The arguments, and the command that they chose.
struct Arguments {
    SourceOptions Show;
    ListOptions List;
    ScriptOptions Script;
    LoadOptions Load;
    ImportOptions Import;
    QueryOptions Query;
    std::string Memory;
    std::function<void()> Command;
    const std::string* File = nullptr;  ///< what the chosen command works on
};

CLI::App* addCommand(CLI::App& app, Arguments& arguments, const std::string& name, const std::string& what,
                     const std::string& file, std::function<void()> run)
{
    CLI::App* command = app.add_subcommand(name, what);
    command->callback([&arguments, &file, run = std::move(run)] {
        arguments.Command = run;
        arguments.File = &file;
    });
    return command;
}

void addSource(CLI::App& command, SourceOptions& options)
{
    command.add_option("FILE", options.File, "The table")->required()->type_name("");
    command.add_option("--columns", options.Columns, "Column positions of a .txt table: 5|12|20")->type_name("LIST");
}

void addUnquote(CLI::App& command, SourceOptions& options)
{
    command.add_flag("--unquote", options.Unquote, "Take the quotes around names and values off");
}

void addDatabase(CLI::App& command, std::string& database)
{
    command.add_option("--into", database, "The SQLite file; made if missing")->required()->type_name("DATABASE");
}

void addReading(CLI::App& app, Arguments& a)
{
    CLI::App* command =
        addCommand(app, a, "show", "Show a table's header and columns", a.Show.File, [&a] { show(a.Show); });
    addSource(*command, a.Show);

    command = addCommand(app, a, "list", "List a table's records", a.List.Source.File, [&a] { list(a.List); });
    addSource(*command, a.List.Source);
    addUnquote(*command, a.List.Source);
    command->add_flag("--deleted", a.List.Deleted, "List deleted records too, marked with *");

    command = addCommand(app, a, "memory", "List an xBase memory file", a.Memory, [&a] { memory(a.Memory); });
    command->add_option("FILE", a.Memory, "The .mem file")->required()->type_name("");
}

void addWriting(CLI::App& app, Arguments& a)
{
    CLI::App* command = addCommand(app, a, "script", "Write a .dbf table's SQL script, print its path", a.Script.File,
                                   [&a] { script(a.Script); });
    command->add_option("FILE", a.Script.File, "The .dbf table")->required()->type_name("");
    command->add_option("--key", a.Script.KeyColumn, "Begin with an automatic key of this name")->type_name("COLUMN");
    command->add_flag("--definition-only", a.Script.DefinitionOnly, "Leave the records out");

    command = addCommand(app, a, "load", "Load a table into a database, all or nothing", a.Load.Source.File,
                         [&a] { load(a.Load); });
    addSource(*command, a.Load.Source);
    addUnquote(*command, a.Load.Source);
    addDatabase(*command, a.Load.Database);
    command->add_option("--table", a.Load.Table, "Table to make; else FILE's name, lower case")->type_name("NAME");

    command =
        addCommand(app, a, "import", "Run an SQL script, all or nothing", a.Import.Script, [&a] { import(a.Import); });
    command->add_option("SCRIPT", a.Import.Script, "The script")->required()->type_name("");
    addDatabase(*command, a.Import.Database);

    command = addCommand(app, a, "query", "Run one SQL statement, print its rows", a.Query.Database,
                         [&a] { query(a.Query); });
    command->add_option("DATABASE", a.Query.Database, "The SQLite file")->required()->type_name("");
    command->add_option("SQL", a.Query.Sql, "The statement")->required()->type_name("");
}

/// Answers what CLI11 makes of the arguments: -1 when a command is to run.
int parse(CLI::App& app, int argc, const char* const* argv)
{
    try {
        app.parse(argc, argv);
        return -1;
    } catch (const CLI::Success& asked) {
        ResultOutput results;
        app.exit(asked, std::cout, std::cerr);
        results.finish();
        return exitDone;
    } catch (const CLI::ParseError& error) {
        throw UsageError(error.what());
    }
}

/// What the library lets pass, and the end of memory, fail the file as anything else does.
void runCommand(const Arguments& arguments)
{
    try {
        arguments.Command();
    } catch (const Failure&) {
        throw;
    } catch (const UsageError&) {
        throw;
    } catch (const std::exception& exception) {
        throw Failure(*arguments.File, exception.what());
    }
}

int run(int argc, const char* const* argv)
{
    CLI::App app(description, "kd_db");
    Arguments arguments;
    app.set_version_flag("--version", "kd_db " KD_TOOL_VERSION);
    app.require_subcommand(1);
    app.footer(examples);
    addReading(app, arguments);
    addWriting(app, arguments);
    const int answer = parse(app, argc, argv);
    if (answer < 0) {
        runCommand(arguments);
    }
    return exitDone;
}

}  // namespace

int runProgram(int argc, const char* const* argv)
{
    keepStandardDescriptors();
    installSignals();
    try {
        const NoteOutput notes;
        return run(argc, argv);
    } catch (const UsageError& error) {
        note(std::string("kd_db: ") + error.what());
        note("Try 'kd_db --help'.");
        return exitUsage;
    } catch (const Failure& failure) {
        reportFailure(failure.File, failure.what());
    } catch (const Interrupted& interrupted) {
        return exitSignalBase + interrupted.Signal;
    } catch (const ReaderGone&) {
        return exitDone;
    } catch (const std::exception& exception) {
        note(std::string("kd_db: ") + exception.what());
    }
    return exitFailure;
}

}  // namespace kd_tool
