/// \file
/// The commands, and reading a command with its options from the arguments.
#pragma once

#include "console.h"
#include "options.h"

#include <string>
#include <string_view>
#include <vector>

namespace kd_tool {

/// One command of the program.
struct CommandSpec {
    const char* Name;
    const char* Arguments;  ///< as in its help; "..." after a word: it may be repeated
    const char* Summary;    ///< one line
    const char* Details;    ///< its help before the options
    const char* Examples;   ///< two lines at least
    std::vector<const OptionGroup*> Groups;
    int (*Run)(const Options& options, Console& console);  ///< returns an exit status
};

/// All commands, in the order of the help.
const std::vector<CommandSpec>& commands();

/// The command of this name. Throws a `UsageError` that suggests a similar one.
const CommandSpec& commandNamed(std::string_view name);

/// The option of a command by its long name, or by its letter; nullptr: it has no such option.
const OptionSpec* optionNamed(const CommandSpec& command, std::string_view name);
const OptionSpec* optionLettered(const CommandSpec& command, char letter);

/// Reads the arguments after the name of the command. Options may be anywhere; "--" ends them. Throws a `UsageError`
/// for an option that the command does not have, and for a missing or surplus argument.
Options parseArguments(const CommandSpec& command, const std::vector<std::string>& arguments);

}  // namespace kd_tool
