#include "commands.h"

#include "../atomic_file.h"
#include "../output.h"
#include "../signals.h"
#include "../xbase_source.h"

#include <kd_lib/console.h>
#include <kd_lib/path.h>

#include <stdexcept>

namespace kd_tool {

namespace {

/// The name that the library gives to the script of a table.
std::string scriptPath(const XBaseSource& table)
{
    std::string path = table.Path;
    kd_lib::addEndSlash(path);
    path += table.Name + ".sql";
    kd_lib::checkHomePath(path);
    return path;
}

void write(XBaseSource& table, AtomicFile& file)
{
    try {
        table.writeScript(file.stream());
    } catch (const std::out_of_range&) {
        table.failRecord("holds a date that is too short for SQL");
    }
    file.commit();
}

}  // namespace

void script(const ScriptOptions& options)
{
    finishOnSignal();
    const std::unique_ptr<XBaseSource> table = openXBase(options.File);
    table->KeyColumn = options.KeyColumn;
    table->InsertRecords = !options.DefinitionOnly;
    const std::string path = scriptPath(*table);
    AtomicFile file(path);
    write(*table, file);
    if (table->deletedRecords() > 0) {
        note(options.File + ": " + counted(table->deletedRecords(), "deleted record") +
             ", for each of which the script holds the record before once more");
    }
    ResultOutput results;
    kd_lib::display(path + '\n');
    results.finish();
}

}  // namespace kd_tool
