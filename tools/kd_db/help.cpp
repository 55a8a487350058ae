#include "help.h"

#include <sstream>
#include <string_view>

namespace kd_tool {

namespace {

constexpr std::size_t lineWidth = 79;
constexpr std::size_t helpColumn = 26;

/// Appends words in lines that begin at `column`; the current line has `used` characters.
void appendWrapped(std::string& out, std::string_view text, std::size_t column, std::size_t used)
{
    std::istringstream words{std::string(text)};
    bool first = true;
    for (std::string word; words >> word; first = false) {
        if (!first && used + 1 + word.size() > lineWidth) {
            out += '\n';
            out.append(column, ' ');
            used = column;
            first = true;
        }
        out += (first ? "" : " ") + word;
        used += word.size() + (first ? 0 : 1);
    }
    out += '\n';
}

/// `  NAME   text`, the texts aligned; on the next line if the name is too long.
void appendEntry(std::string& out, const std::string& name, std::string_view text)
{
    out += "  " + name;
    std::size_t used = name.size() + 2;
    if (used + 2 > helpColumn) {
        out += '\n';
        used = 0;
    }
    out.append(helpColumn - used, ' ');
    appendWrapped(out, text, helpColumn, helpColumn);
}

std::string shownName(const OptionSpec& option)
{
    std::string name = option.Letter != 0 ? std::string{'-', option.Letter} + ", " : std::string();
    name += std::string("--") + option.Name;
    return *option.Value != '\0' ? name + ' ' + option.Value : name;
}

std::string indented(const char* lines)
{
    std::string out;
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);) {
        out += "  " + line + '\n';
    }
    return out;
}

}  // namespace

std::string programHelp()
{
    std::string out = "Usage: kd_db COMMAND [OPTION]... ARGUMENT...\n"
                      "\n"
                      "Shows, converts and loads .dbf tables, delimited and fixed-column text, and\n"
                      ".mem files. Carries them into SQLite, PostgreSQL and MariaDB, complete and\n"
                      "exact.\n"
                      "\n"
                      "Commands:\n";
    for (const CommandSpec& command : commands()) {
        appendEntry(out, command.Name, command.Summary);
    }
    return out + "\n"
                 "kd_db help COMMAND       prints the options and examples of a command\n"
                 "kd_db --version          prints the version\n"
                 "\n"
                 "FILE may be - for standard input. Its extension selects its kind: .dbf, .csv,\n"
                 ".tsv, .tab, .txt (fixed columns), .mem; --from overrides it. DATABASE is a\n"
                 "SQLite file, postgresql://USER@HOST/NAME or mariadb://USER@HOST/NAME.\n"
                 "\n"
                 "Results go to standard output, everything else to standard error.\n"
                 "\n"
                 "Examples:\n"
                 "  kd_db list clients.dbf\n"
                 "  kd_db query clients.dbf \"SELECT name, town FROM clients ORDER BY name\"\n"
                 "\n"
                 "Exit status: 0 done; 1 failed, nothing stored, one line gives the reason;\n"
                 "2 wrong usage; 3 done, but something could not be carried unchanged, and each\n"
                 "case is named; 129, 130 and 143 ended by SIGHUP, SIGINT and SIGTERM.\n";
}

std::string commandHelp(const CommandSpec& command)
{
    std::string out = std::string("Usage: kd_db ") + command.Name + " [OPTION]... " + command.Arguments + "\n\n";
    std::istringstream paragraphs(command.Details);
    for (std::string paragraph; std::getline(paragraphs, paragraph);) {
        appendWrapped(out, paragraph, 0, 0);
    }
    for (const OptionGroup* group : command.Groups) {
        out += std::string("\n") + group->Title + ":\n";
        for (const OptionSpec& option : group->List) {
            appendEntry(out, shownName(option), option.Help);
        }
    }
    return out + "\nExamples:\n" + indented(command.Examples);
}

}  // namespace kd_tool
