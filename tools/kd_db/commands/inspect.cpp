#include "commands.h"

#include "../celltext.h"
#include "../exitstatus.h"
#include "../resultoutput.h"
#include "../signals.h"
#include "../terminal.h"

#include <kd_lib/exchange/inspect.h>

#include <algorithm>
#include <unistd.h>

namespace kd_tool {

namespace {

constexpr std::size_t bytesInLine = 12;

std::string offsetText(std::uint64_t offset)
{
    constexpr std::size_t width = 8;
    const std::string digits = std::to_string(offset);
    return std::string(width - std::min(digits.size(), width), ' ') + digits;
}

/// The first bytes in hexadecimal, in a column of fixed width.
std::string bytesText(std::string_view bytes, std::uint64_t length)
{
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const char c : bytes.substr(0, bytesInLine)) {
        const auto byte = static_cast<unsigned char>(c);
        text += {' ', digits[byte >> 4U], digits[byte & 0xFU]};
    }
    text += length > bytesInLine ? " .." : "";
    text.resize(3 * bytesInLine + 3, ' ');
    return text;
}

std::string visible(std::string_view text)
{
    std::string line;
    appendCellText(line, exchange::Cell::text(text));
    return line;
}

/// One line: offset, bytes, name and meaning.
class Printer {
public:
    Printer(exchange::OutputBlock& output, bool colored) : Output(output), Colored(colored) {}

    void print(const exchange::InspectedBytes& part)
    {
        constexpr std::size_t whatWidth = 22;
        std::string what = visible(part.What);
        what.resize(std::max(what.size() + 2, whatWidth), ' ');
        const std::string meaning = (part.Damaged ? "DAMAGED: " : "") + visible(part.Meaning);
        std::string line = offsetText(part.Offset) + ' ' + bytesText(part.Bytes, part.Length) + "  " + what;
        line += Colored && part.Damaged ? style::red : "";
        line += meaning;
        line += Colored && part.Damaged ? style::plain : "";
        line.resize(line.find_last_not_of(' ') + 1);
        Output.write(line + '\n');
    }

private:
    exchange::OutputBlock& Output;
    bool Colored;
};

}  // namespace

int inspect(const Options& options, Console& console)
{
    ResultOutput output(console, options.Pager ? ResultOutput::Paging::LongResults : ResultOutput::Paging::Never);
    Printer printer(output, useColor(options.Color, STDOUT_FILENO));
    exchange::InspectOptions settings;
    settings.MemoFile = options.Source.MemoFile;
    settings.Stop = stopToken();
    const bool sound = exchange::inspect(
        options.Arguments.front(), [&](const exchange::InspectedBytes& part) { printer.print(part); }, settings);
    output.finish();
    return sound ? statusDone : statusLoss;
}

}  // namespace kd_tool
