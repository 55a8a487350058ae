#include "commands.h"

#include "../classictable.h"
#include "../exitstatus.h"
#include "../resultoutput.h"
#include "../signals.h"

#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/outputfile.h>
#include <kd_lib/path.h>

#include <iostream>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <streambuf>

namespace kd_tool {

namespace {

/// Lets a stream write to an output file. The stream passes on the file's exceptions.
class FileBuffer : public std::streambuf {
public:
    explicit FileBuffer(exchange::OutputFile& file) : File(file) {}

protected:
    int_type overflow(int_type c) override
    {
        if (!traits_type::eq_int_type(c, traits_type::eof())) {
            File.write(traits_type::to_char_type(c));
        }
        return traits_type::not_eof(c);
    }

    std::streamsize xsputn(const char* text, std::streamsize count) override
    {
        File.write(std::string_view(text, static_cast<std::size_t>(count)));
        return count;
    }

private:
    exchange::OutputFile& File;
};

/// While it exists, the library's lines on standard output are kept.
class Overheard {
public:
    Overheard() : Before(std::cout.rdbuf(Kept.rdbuf())) {}
    ~Overheard() { std::cout.rdbuf(Before); }
    Overheard(const Overheard&) = delete;
    Overheard& operator=(const Overheard&) = delete;

    void passTo(Console& console)
    {
        for (std::string line; std::getline(Kept, line);) {
            console.note(line);
        }
    }

private:
    std::stringstream Kept;
    std::streambuf* Before;
};

void throwIfStopped(const std::string& file)
{
    if (signalReceived() != 0) {
        throw exchange::Stopped(file, "stopped");
    }
}

std::unique_ptr<ClassicTable> openTable(const std::string& file, Console& console)
{
    Overheard said;
    try {
        auto table = std::make_unique<ClassicTable>(file, [file] { throwIfStopped(file); });
        said.passTo(console);
        return table;
    } catch (const exchange::Error&) {
        said.passTo(console);
        throw;
    }
}

/// The name that the library gives to the script of a table.
std::string scriptPath(const ClassicTable& table)
{
    std::string path = table.Path;
    kd_lib::addEndSlash(path);
    path += table.Name + ".sql";
    kd_lib::checkHomePath(path);
    return path;
}

void write(ClassicTable& table, exchange::OutputFile& file)
{
    FileBuffer buffer(file);
    std::ostream out(&buffer);
    out.exceptions(std::ios::badbit);
    try {
        table.writeScript(out);
    } catch (const std::out_of_range&) {
        table.failRecord("holds a date that is too short for SQL");
    }
    file.sync();
}

void reportDifferences(ClassicTable& table, const std::string& file, Console& console)
{
    if (table.recordsRead() > table.RecordCount) {
        console.note(file + ": the header counts " + counted(table.RecordCount, "record") + ", the file holds " +
                     std::to_string(table.recordsRead()));
    }
    const std::uint64_t blanked = table.blankedBytes();
    if (blanked > 0) {
        console.note(file + ": " + counted(blanked, "byte") + " outside printable ASCII read as blanks");
    }
    if (table.deletedRecords() > 0) {
        console.note(file + ": " + counted(table.deletedRecords(), "deleted record") +
                     "; for each, the script repeats the record before it");
    }
}

bool endsInDbf(const std::string& file)
{
    constexpr std::string_view extension = ".dbf";
    if (file.size() < extension.size()) {
        return false;
    }
    std::string end = file.substr(file.size() - extension.size());
    for (char& c : end) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return end == extension;
}

}  // namespace

int script(const Options& options, Console& console)
{
    const std::string& argument = options.Arguments.front();
    if (!endsInDbf(argument)) {
        throw UsageError(argument + ": script takes .dbf files");
    }
    finishOnSignal();
    const std::unique_ptr<ClassicTable> table = openTable(argument, console);
    table->KeyColumn = options.Table.Key;
    table->InsertRecords = !options.DefinitionOnly;
    const std::string path = scriptPath(*table);
    exchange::OutputFile file(path);
    write(*table, file);
    if (table->InsertRecords) {
        reportDifferences(*table, argument, console);
    }
    ResultOutput output(console);
    output.write(path + '\n');
    // Last, so that nothing can fail once the script exists.
    throwIfStopped(argument);
    file.commit();
    output.finish();
    return statusDone;
}

}  // namespace kd_tool
