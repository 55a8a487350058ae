#include "completion.h"

#include "commandline.h"
#include "exitstatus.h"

#include <kd_lib/exchange/opensource.h>

#include <algorithm>
#include <sstream>

namespace kd_tool {

namespace {

constexpr const char* tableFiles = ":files dbf csv tsv tab txt mem\n";

/// The current line up to the word to complete.
struct Line {
    const CommandSpec* Command = nullptr;
    const OptionSpec* Awaited = nullptr;  ///< the option whose value the last word is
    std::string Last;
    std::string Lead;                    ///< the text before it in the same word: "--into="
    std::vector<std::string> Arguments;  ///< before the last word
};

class Candidates {
public:
    explicit Candidates(std::string begin, std::string lead = {}) : Begin(std::move(begin)), Lead(std::move(lead)) {}

    void add(const std::string& candidate, const std::string& description)
    {
        if (candidate.compare(0, Begin.size(), Begin) == 0 && candidate.find('\n') == std::string::npos) {
            Text += Lead + candidate + '\t' + description + '\n';
        }
    }

    std::string Text;

private:
    std::string Begin;
    std::string Lead;
};

std::string commandCandidates(const std::string& begin)
{
    Candidates candidates(begin);
    for (const CommandSpec& command : commands()) {
        candidates.add(command.Name, command.Summary);
    }
    candidates.add("help", "Prints the help of a command");
    candidates.add("--help", "Prints the help");
    candidates.add("--version", "Prints the version");
    return candidates.Text;
}

std::string optionCandidates(const CommandSpec& command, const std::string& begin)
{
    Candidates candidates(begin);
    for (const OptionGroup* group : command.Groups) {
        for (const OptionSpec& option : group->List) {
            candidates.add(std::string("--") + option.Name, option.Help);
        }
    }
    return candidates.Text;
}

/// The value in a word such as --into=FILE, or after a separate word "=".
void takeValue(Line& line)
{
    const std::size_t equals = line.Last.find('=');
    if (line.Awaited != nullptr && line.Last == "=") {
        line.Last.clear();
    } else if (line.Awaited == nullptr && line.Last.substr(0, 2) == "--" && equals != std::string::npos) {
        line.Awaited = optionNamed(*line.Command, line.Last.substr(2, equals - 2));
        line.Lead = line.Last.substr(0, equals + 1);
        line.Last.erase(0, equals + 1);
    }
}

Line readLine(const std::vector<std::string>& words)
{
    Line line;
    line.Command = &commandNamed(words.front());
    line.Last = words.back();
    for (std::size_t i = 1; i + 1 < words.size(); ++i) {
        const std::string& word = words[i];
        if (word.size() < 2 || word.front() != '-') {
            line.Arguments.push_back(word);
            continue;
        }
        const OptionSpec* option = word[1] == '-'     ? optionNamed(*line.Command, word.substr(2))
                                   : word.size() == 2 ? optionLettered(*line.Command, word[1])
                                                      : nullptr;
        if (option != nullptr && *option->Value != '\0') {
            // A shell may split --into=FILE into three words.
            i += i + 2 < words.size() && words[i + 1] == "=" ? 1U : 0U;
            line.Awaited = i + 2 == words.size() ? option : nullptr;
            ++i;
        }
    }
    takeValue(line);
    return line;
}

/// The names of a file's columns, if it can be opened; the pieces before the last comma stay.
std::string columnCandidates(const Line& line, const std::string& end)
{
    const std::size_t comma = line.Last.rfind(',');
    const std::string before = comma == std::string::npos ? "" : line.Last.substr(0, comma + 1);
    Candidates candidates(line.Last, line.Lead);
    if (line.Arguments.empty() || line.Arguments.front() == "-") {
        return {};
    }
    try {
        const auto source = exchange::openSource(line.Arguments.front());
        for (const exchange::Column& column : source->columns()) {
            candidates.add(std::string(before).append(column.Name).append(end), exchange::typeName(column.Type));
        }
    } catch (const std::exception&) {
        return {};  // a file that cannot be read has no names
    }
    return candidates.Text;
}

/// The values of an option: a choice, a file, a column.
std::string valueCandidates(const Line& line, const OptionSpec& option)
{
    const std::string value = option.Value;
    const std::string name = option.Name;
    if (name == "select") {
        return columnCandidates(line, "");
    }
    if (name == "type") {
        return columnCandidates(line, "=");
    }
    if (value == "FILE" || value == "OUT" || value == "DATABASE") {
        return ":files\n";
    }
    Candidates candidates(line.Last, line.Lead);
    if (value.find('|') != std::string::npos) {
        std::istringstream choices(value);
        for (std::string choice; std::getline(choices, choice, '|');) {
            if (choice != "C") {
                candidates.add(choice, "");
            }
        }
    }
    return candidates.Text;
}

/// The files that a command accepts here.
std::string argumentCandidates(const Line& line)
{
    const std::string command = line.Command->Name;
    if (command == "script") {
        return ":files dbf\n";
    }
    if (command == "memory") {
        return ":files mem\n";
    }
    if (command == "inspect") {
        return ":files dbf dbt fpt mem\n";
    }
    if (command == "import" || command == "query" || (command == "verify" && !line.Arguments.empty())) {
        return ":files\n";
    }
    return tableFiles;
}

}  // namespace

std::string completions(const std::vector<std::string>& words)
{
    if (words.size() < 2) {
        return commandCandidates(words.empty() ? "" : words.front());
    }
    try {
        if (words.front() == "help") {
            return words.size() == 2 ? commandCandidates(words.back()) : "";
        }
        Line line = readLine(words);
        if (line.Awaited != nullptr) {
            return valueCandidates(line, *line.Awaited);
        }
        return line.Last.substr(0, 1) == "-" ? optionCandidates(*line.Command, line.Last) : argumentCandidates(line);
    } catch (const UsageError&) {
        return {};  // an unknown command has nothing to complete
    }
}

}  // namespace kd_tool
