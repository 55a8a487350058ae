// The console program: its arguments, line by line, then an empty line, then the bytes of every file that
// they can name. For every input the program ends with one of its exit statuses, a failure leaves no new
// file, and no assertion fails.

#include "support/input_folder.h"
#include "support/sqlite_fence.h"

#include "program.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {

/// Results go to a file. Output beyond the limit is a failed write for the program, and a finding here.
constexpr rlim_t outputLimit = 64U << 20U;

const std::set<std::string> given = {"input.csv", "input.db",  "input.dbf", "input.mem", "input.sql",
                                     "input.tab", "input.tsv", "input.txt", "empty.db"};

void require(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "finding: %s\n", what);
        std::abort();
    }
}

/// Removes the arguments from the beginning of the input.
std::vector<std::string> takeArguments(std::string_view& input)
{
    std::vector<std::string> arguments = {"kd_db"};
    while (!input.empty()) {
        const std::size_t end = input.find('\n');
        const std::string_view line = input.substr(0, end);
        input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
        if (line.empty()) {
            break;
        }
        // As the system passes arguments: up to the first zero byte.
        arguments.emplace_back(line.substr(0, line.find('\0')));
    }
    return arguments;
}

/// Whether an argument names a file outside the folder.
bool leavesFolder(const std::vector<std::string>& arguments)
{
    for (const std::string& argument : arguments) {
        if (argument.find_first_of("/~") != std::string::npos) {
            return true;
        }
    }
    return false;
}

void emptyFolder()
{
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        std::filesystem::remove_all(entry);
    }
}

void writeFiles(std::string_view bytes)
{
    for (const std::string& name : given) {
        kd_fuzz::writeInput(name, name == "empty.db" ? "" : bytes);
    }
}

/// Whether there are no new files: a failed load or import of a new database and a failed script must leave none.
bool onlyGivenFiles()
{
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        if (given.count(entry.path().filename().string()) == 0) {
            return false;
        }
    }
    return true;
}

int runProgram(const std::vector<std::string>& arguments)
{
    std::vector<const char*> pointers;
    for (const std::string& argument : arguments) {
        pointers.push_back(argument.c_str());
    }
    pointers.push_back(nullptr);
    return kd_tool::runProgram(static_cast<int>(arguments.size()), pointers.data());
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    kd_fuzz::fenceInConnections();
    const std::string results = kd_fuzz::inputFolder() + ".out";
    const int descriptor = ::open(results.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0600);
    const rlimit limit{outputLimit, outputLimit};
    require(descriptor >= 0 && ::dup2(descriptor, STDOUT_FILENO) == STDOUT_FILENO, "no file for the results");
    require(::chdir(kd_fuzz::inputFolder().c_str()) == 0, "no folder");
    require(::setrlimit(RLIMIT_FSIZE, &limit) == 0, "no limit");
    ::close(descriptor);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> arguments = takeArguments(input);
    if (leavesFolder(arguments)) {
        return -1;
    }
    emptyFolder();
    writeFiles(input);
    kd_fuzz::renewBudget();
    const int status = runProgram(arguments);
    require(status >= 0 && status <= 3, "an exit code that the program does not define");
    require(status == 0 || status == 3 || onlyGivenFiles(), "a failure that leaves a file");
    require(::lseek(STDOUT_FILENO, 0, SEEK_END) < static_cast<off_t>(outputLimit), "output without bound");
    require(::ftruncate(STDOUT_FILENO, 0) == 0 && ::lseek(STDOUT_FILENO, 0, SEEK_SET) == 0, "the file of the results");
    return 0;
}
