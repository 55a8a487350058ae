#include "commandline.h"

#include "exitstatus.h"
#include "signals.h"
#include "suggestion.h"

#include <algorithm>
#include <sstream>

namespace kd_tool {

namespace {

/// The arguments of a command: "FILE... SQL" is two names, the first repeatable.
struct Positionals {
    explicit Positionals(const char* arguments)
    {
        std::istringstream words(arguments);
        for (std::string word; words >> word && word.substr(0, 2) != "--";) {
            const std::size_t dots = word.find("...");
            Repeatable = Repeatable || dots != std::string::npos;
            Names.push_back(word.substr(0, dots));
        }
    }

    std::vector<std::string> Names;
    bool Repeatable = false;
};

class Parser {
public:
    explicit Parser(const CommandSpec& command) : Command(command), Expected(command.Arguments) {}

    Options parse(const std::vector<std::string>& arguments)
    {
        for (Next = arguments.begin(), End = arguments.end(); Next != End;) {
            take(*Next++);
        }
        if (!Result.Help && Result.Arguments.size() < Expected.Names.size()) {
            fail(Expected.Names[Result.Arguments.size()] + " is missing");
        }
        Result.Source.Stop = stopToken();
        return std::move(Result);
    }

private:
    [[noreturn]] void fail(const std::string& reason) const { throw UsageError(reason, Command.Name); }

    void take(const std::string& argument)
    {
        if (OnlyArguments || argument == "-" || argument.empty() || argument.front() != '-') {
            takePositional(argument);
        } else if (argument == "--") {
            OnlyArguments = true;
        } else if (argument[1] == '-') {
            takeLong(argument);
        } else {
            takeLetters(argument);
        }
    }

    void takePositional(const std::string& argument)
    {
        if (!Expected.Repeatable && Result.Arguments.size() == Expected.Names.size()) {
            fail("unexpected argument \"" + argument + '"');
        }
        if (argument.empty()) {
            fail(Expected.Names[std::min(Result.Arguments.size(), Expected.Names.size() - 1)] + " is empty");
        }
        Result.Arguments.push_back(argument);
    }

    void takeLong(const std::string& argument)
    {
        const std::size_t equals = std::min(argument.find('='), argument.size());
        const std::string shown = argument.substr(0, equals);
        const OptionSpec* option = optionNamed(Command, shown.substr(2));
        if (option == nullptr) {
            fail("unknown option \"" + shown + '"' + suggestion(shown, optionNames()));
        }
        if (equals == argument.size()) {
            set(*option, shown);
        } else if (*option->Value == '\0') {
            fail(shown + " takes no value");
        } else {
            set(*option, shown, argument.substr(equals + 1));
        }
    }

    /// `-q`, `-o OUT`, `-oOUT`, `-qo OUT`.
    void takeLetters(const std::string& argument)
    {
        for (std::size_t i = 1; i < argument.size(); ++i) {
            const std::string shown = {'-', argument[i]};
            const OptionSpec* option = optionLettered(Command, argument[i]);
            if (option == nullptr) {
                fail("unknown option \"" + argument + '"');
            }
            if (*option->Value != '\0' && i + 1 < argument.size()) {
                set(*option, shown, argument.substr(i + 1));
                return;
            }
            set(*option, shown);
        }
    }

    /// Sets an option whose value, if it has one, is the next argument.
    void set(const OptionSpec& option, const std::string& shown)
    {
        if (*option.Value == '\0') {
            set(option, shown, "");
        } else if (Next == End) {
            fail(shown + " needs a value");
        } else {
            set(option, shown, *Next++);
        }
    }

    void set(const OptionSpec& option, const std::string& shown, const std::string& value)
    {
        try {
            option.Set(Result, value);
        } catch (const UsageError& error) {
            fail(shown + ": " + error.what());
        }
    }

    std::vector<std::string_view> optionNames()
    {
        for (const OptionGroup* group : Command.Groups) {
            for (const OptionSpec& option : group->List) {
                Dashed.push_back(std::string("--") + option.Name);
            }
        }
        return {Dashed.begin(), Dashed.end()};
    }

    const CommandSpec& Command;
    Positionals Expected;
    Options Result;
    std::vector<std::string>::const_iterator Next;
    std::vector<std::string>::const_iterator End;
    std::vector<std::string> Dashed;
    bool OnlyArguments = false;
};

template <class Fits>
const OptionSpec* findOption(const CommandSpec& command, Fits fits)
{
    for (const OptionGroup* group : command.Groups) {
        const auto found = std::ranges::find_if(group->List, fits);
        if (found != group->List.end()) {
            return &*found;
        }
    }
    return nullptr;
}

}  // namespace

const CommandSpec& commandNamed(std::string_view name)
{
    const auto found =
        std::ranges::find_if(commands(), [name](const CommandSpec& command) { return command.Name == name; });
    if (found != commands().end()) {
        return *found;
    }
    std::vector<std::string_view> names = {"help"};
    for (const CommandSpec& command : commands()) {
        names.emplace_back(command.Name);
    }
    throw UsageError("unknown command \"" + std::string(name) + '"' + suggestion(name, names));
}

const OptionSpec* optionNamed(const CommandSpec& command, std::string_view name)
{
    return findOption(command, [name](const OptionSpec& option) { return option.Name == name; });
}

const OptionSpec* optionLettered(const CommandSpec& command, char letter)
{
    return findOption(command, [letter](const OptionSpec& option) { return option.Letter == letter; });
}

Options parseArguments(const CommandSpec& command, const std::vector<std::string>& arguments)
{
    return Parser(command).parse(arguments);
}

}  // namespace kd_tool
