#include "completion.h"

#include "commandline.h"
#include "exitstatus.h"
#include "inputs.h"
#include "sqlcompletion.h"

#include <kd_lib/exchange/opensource.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <set>
#include <sstream>
#include <sys/time.h>
#include <unistd.h>

namespace kd_tool {

namespace {

constexpr const char* tableFiles = ":files dbf csv tsv tab txt mem\n";

/// The current line up to the word to complete.
struct Line {
    const CommandSpec* Command = nullptr;
    const OptionSpec* Awaited = nullptr;  ///< the last word is the value of this option
    std::string Last;
    std::string Lead;                    ///< the text before it in the same word: "--into="
    std::vector<std::string> Arguments;  ///< before the last word
    std::vector<std::string> Before;     ///< all words before it, without an option whose value is missing
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
    line.Before.assign(words.begin() + 1, words.end() - 1);
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
            if (line.Awaited != nullptr) {
                line.Before.resize(line.Before.size() - (line.Before.back() == "=" ? 2 : 1));
            }
            ++i;
        }
    }
    takeValue(line);
    return line;
}

/// The options of the words so far; the defaults if they are not valid yet.
Options optionsSoFar(const Line& line)
{
    std::vector<std::string> words = line.Before;
    // A shell may split --from=csv into three words.
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (words[i] == "=") {
            words.erase(words.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
    words.insert(words.begin(), "--help");  // nothing is missing
    try {
        return parseArguments(*line.Command, words);
    } catch (const UsageError&) {
        Options options;
        options.Arguments = line.Arguments;
        return options;
    }
}

/// The names of the first file's columns, if it can be opened; the pieces before the last comma stay.
std::string columnCandidates(const Line& line, const std::string& end)
{
    const std::size_t comma = line.Last.rfind(',');
    const std::string before = comma == std::string::npos ? "" : line.Last.substr(0, comma + 1);
    Candidates candidates(line.Last, line.Lead);
    Options options = optionsSoFar(line);
    std::error_code error;
    if (options.Arguments.empty() || !std::filesystem::is_regular_file(options.Arguments.front(), error)) {
        return {};
    }
    try {
        options.Source.Infer = false;  // names alone do not need all rows
        const auto source = exchange::openSource(options.Arguments.front(), options.Source);
        for (const exchange::Column& column : source->columns()) {
            candidates.add(std::string(before).append(column.Name).append(end), exchange::typeName(column.Type));
        }
    } catch (const std::exception&) {
        return {};  // a file that cannot be read has no names
    }
    return candidates.Text;
}

/// The tables of the database that a load or a comparison names.
std::string tableCandidates(const Line& line)
{
    Options options = optionsSoFar(line);
    const bool inArguments = options.Into.empty() && options.Arguments.size() > 1;
    const std::string database = inArguments ? options.Arguments.back() : options.Into;
    if (database.empty()) {
        return {};
    }
    std::set<std::string> added;
    Candidates candidates(line.Last, line.Lead);
    for (const SchemaColumn& column : schemaOf({database}, {})) {
        if (added.insert(column.Table).second) {
            candidates.add(column.Table, "table");
        }
    }
    return candidates.Text;
}

std::string sqlTextCandidates(const Line& line)
{
    const Options options = optionsSoFar(line);
    Candidates candidates(line.Last, line.Lead);
    for (const auto& [candidate, description] : sqlCandidates(line.Last, schemaOf(options.Arguments, options.Source))) {
        candidates.add(candidate, description);
    }
    return candidates.Text;
}

bool isNameOption(const OptionSpec& option)
{
    const std::string_view name = option.Name;
    return name == "select" || name == "type" || name == "table";
}

/// Whether the word is the beginning of SQL, and not a file.
bool isSql(const Line& line)
{
    return std::string_view(line.Command->Name) == "query" && !line.Arguments.empty() &&
           line.Last.find(' ') != std::string::npos && !std::filesystem::exists(line.Last);
}

/// The values of an option: a choice or a file.
std::string valueCandidates(const Line& line, const OptionSpec& option)
{
    const std::string value = option.Value;
    if (isNameOption(option)) {
        return {};
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
    if (command == "query" && !line.Arguments.empty()) {
        Candidates candidates(line.Last);
        candidates.add("SELECT ", "SQL");
        return candidates.Text + ":files\n";
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
        const Line line = readLine(words);
        if (line.Awaited != nullptr) {
            return valueCandidates(line, *line.Awaited);
        }
        if (isSql(line)) {
            return {};
        }
        return line.Last.substr(0, 1) == "-" ? optionCandidates(*line.Command, line.Last) : argumentCandidates(line);
    } catch (const UsageError&) {
        return {};  // there is nothing to complete for an unknown command
    }
}

std::string nameCompletions(const std::vector<std::string>& words)
{
    if (words.size() < 2 || words.front() == "help") {
        return {};
    }
    try {
        const Line line = readLine(words);
        const std::string_view name = line.Awaited != nullptr ? line.Awaited->Name : "";
        if (name == "table") {
            return tableCandidates(line);
        }
        if (name == "select" || name == "type") {
            return columnCandidates(line, name == "type" ? "=" : "");
        }
        return line.Awaited == nullptr && isSql(line) ? sqlTextCandidates(line) : "";
    } catch (const UsageError&) {
        return {};
    }
}

void limitCompletionTime()
{
    constexpr suseconds_t limit = 50000;
    std::signal(SIGALRM, [](int) { ::_exit(statusDone); });
    itimerval timer{};
    timer.it_value.tv_usec = limit;
    ::setitimer(ITIMER_REAL, &timer, nullptr);
}

}  // namespace kd_tool
