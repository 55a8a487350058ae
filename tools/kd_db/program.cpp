#include "program.h"

#include "commandline.h"
#include "completion.h"
#include "console.h"
#include "exitstatus.h"
#include "help.h"
#include "resultoutput.h"
#include "signals.h"

#include <kd_lib/exchange/error.h>

#include <cerrno>
#include <fcntl.h>
#include <new>
#include <string>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace kd_tool {

namespace {

/// Makes sure that the standard descriptors are open, so that no file of the data gets one of their numbers. A closed
/// standard output fails when it is written to.
void keepStandardDescriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) < 0 && errno == EBADF) {
            ::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

int print(const std::string& text, Console& console)
{
    ResultOutput output(console);
    output.write(text);
    output.finish();
    return statusDone;
}

int help(const std::vector<std::string>& arguments, Console& console)
{
    if (arguments.size() > 1) {
        throw UsageError("unexpected argument \"" + arguments[1] + '"', "help");
    }
    return print(arguments.empty() ? programHelp() : commandHelp(commandNamed(arguments.front())), console);
}

int runCommand(const std::string& name, const std::vector<std::string>& arguments, Console& console)
{
    if (name == "help" || name == "--help" || name == "-h") {
        return help(name == "help" ? arguments : std::vector<std::string>(), console);
    }
    if (name == "--version") {
        return print("kd_db " KD_TOOL_VERSION "\n", console);
    }
    if (name == completionCommand) {
        print(completions(arguments), console);
        limitCompletionTime();
        return print(nameCompletions(arguments), console);
    }
    if (name.front() == '-') {
        throw UsageError("unknown option \"" + name + "\"; options follow the command");
    }
    const CommandSpec& command = commandNamed(name);
    const Options options = parseArguments(command, arguments);
    if (options.Help) {
        return print(commandHelp(command), console);
    }
    console.configure(options);
    try {
        return command.Run(options, console);
    } catch (const exchange::OptionError& error) {
        throw UsageError(error.what(), name);
    } catch (const UsageError& error) {
        throw UsageError(error.what(), name);
    } catch (const std::bad_alloc&) {
        throw exchange::Error(options.Arguments.front(), "not enough memory");
    }
}

int run(const std::vector<std::string>& arguments, Console& console)
{
    if (arguments.empty() || arguments.front().empty()) {
        throw UsageError("a command is missing");
    }
    return runCommand(arguments.front(), {arguments.begin() + 1, arguments.end()}, console);
}

int usage(const UsageError& error, Console& console)
{
    const bool own = !error.Command.empty() && error.Command != "help";
    console.trouble(error.what());
    console.say("Try 'kd_db " + (own ? error.Command + " --help" : std::string("--help")) + "'.");
    return statusUsage;
}

}  // namespace

int runProgram(int argc, const char* const* argv)
{
    keepStandardDescriptors();
    watchSignals();
    Console console;
    int status = statusFailed;
    try {
        status = run({argv + (argc > 0 ? 1 : 0), argv + argc}, console);
    } catch (const UsageError& error) {
        status = usage(error, console);
    } catch (const ReaderGone&) {
        status = signalReceived() != 0 ? statusSignal + signalReceived() : statusDone;
    } catch (const exchange::Stopped&) {
        status = statusSignal + signalReceived();
    } catch (const std::bad_alloc&) {
        console.trouble("not enough memory");
    } catch (const std::exception& error) {
        console.trouble(error.what());
    }
    return status;  // a signal that came after the work was done changes nothing
}

}  // namespace kd_tool
