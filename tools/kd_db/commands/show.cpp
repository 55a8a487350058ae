#include "commands.h"

#include "../carry.h"
#include "../celltext.h"
#include "../exitstatus.h"
#include "../inputs.h"
#include "../resultoutput.h"
#include "../signals.h"
#include "../tableview.h"
#include "../terminal.h"

#include <kd_lib/exchange/describe.h>

#include <algorithm>
#include <unistd.h>

namespace kd_tool {

namespace {

std::string shown(const std::string& text)
{
    std::string line;
    appendCellText(line, exchange::Cell::text(text));
    return line;
}

exchange::Column column(const char* name, exchange::ColumnType type)
{
    exchange::Column column;
    column.Name = name;
    column.Type = type;
    return column;
}

exchange::Cell numberOrNothing(std::uint32_t number, std::string& digits)
{
    digits = std::to_string(number);
    return number > 0 ? exchange::Cell::number(digits) : exchange::Cell::text("");
}

/// The columns as a table; those of a text file have neither letters nor lengths.
void printColumns(const std::vector<exchange::Column>& columns, exchange::OutputBlock& output, bool colored)
{
    using Type = exchange::ColumnType;
    const bool fixed = std::ranges::any_of(columns, [](const exchange::Column& c) { return c.SourceLength > 0; });
    std::vector<exchange::Column> heading = {column("column", Type::Text), column("type", Type::Text)};
    if (fixed) {
        heading.insert(heading.end(), {column("letter", Type::Text), column("length", Type::Number),
                                       column("decimals", Type::Number)});
    }
    TableView view(output, {.Colored = colored});
    view.begin({}, heading);
    for (const exchange::Column& described : columns) {
        exchange::Record record;
        std::string digits[2];
        const std::string type = exchange::typeName(described.Type);
        record.Cells = {exchange::Cell::text(described.Name), exchange::Cell::text(type)};
        if (fixed) {
            record.Cells.push_back(
                exchange::Cell::text({&described.Letter, described.Letter != 0 ? std::size_t{1} : std::size_t{0}}));
            record.Cells.push_back(numberOrNothing(described.SourceLength, digits[0]));
            record.Cells.push_back(numberOrNothing(described.Decimals, digits[1]));
        }
        view.write(record);
    }
    view.finish();
}

void print(const exchange::Description& file, exchange::OutputBlock& output, bool colored)
{
    constexpr std::size_t labelWidth = 15;
    output.write(colored ? style::bold : "");
    output.write(shown(file.File));
    output.write(colored ? style::plain : "");
    output.write('\n');
    for (const exchange::Fact& fact : file.Facts) {
        std::string line = fact.Label;
        line.append(std::max(labelWidth, line.size() + 1) - line.size(), ' ');
        output.write(line + shown(fact.Value) + '\n');
    }
    output.write('\n');
    printColumns(file.Columns, output, colored);
}

/// Describes one file, and everything in it that would not be carried.
int showFile(const std::string& file, const Options& options, Console& console, exchange::OutputBlock& output)
{
    exchange::Progress before;
    exchange::TransferOptions settings;
    settings.Stop = stopToken();
    settings.OnProgress = [&](const exchange::Progress& now) {
        console.advance(now.Bytes - std::min(before.Bytes, now.Bytes), now.Records - before.Records);
        before = now;
    };
    const exchange::Description description = exchange::describe(file, options.Source, settings);
    print(description, output, useColor(options.Color, STDOUT_FILENO));
    int status = statusDone;
    output.write(description.Notes.empty() ? "" : "\n");
    for (const exchange::Note& note : description.Notes) {
        output.write((note.Loss ? "not whole: " : "note: ") + shown(note.Text) + '\n');
        status = note.Loss ? statusLoss : status;
    }
    return status;
}

}  // namespace

int show(const Options& options, Console& console)
{
    const std::vector<std::string> files = filesOf(options.Arguments, options.Source);
    ResultOutput output(console, ResultOutput::Paging::LongResults);
    int status = statusDone;
    bool first = true;
    {
        const WorkInProgress work(console, files.size() == 1 ? files.front() : counted(files.size(), "file"),
                                  sizeOf(files));
        for (const std::string& file : files) {
            status = worse(status, withErrorLine(file, console, [&] {
                               requireKind(file, options.Source);
                               output.write(first ? "" : "\n");
                               first = false;
                               return showFile(file, options, console, output);
                           }));
        }
    }
    output.finish();
    return status;
}

}  // namespace kd_tool
