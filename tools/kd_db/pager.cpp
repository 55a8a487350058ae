#include "pager.h"

#include "signals.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace kd_tool {

namespace {

constexpr int commandNotFound = 127;

bool isInstalled(std::string_view program)
{
    const char* path = std::getenv("PATH");
    std::string_view folders = path != nullptr ? path : "/usr/bin:/bin";
    while (!folders.empty()) {
        const std::size_t end = std::min(folders.find(':'), folders.size());
        const std::string file = std::string(folders.substr(0, end)) + '/' + std::string(program);
        if (::access(file.c_str(), X_OK) == 0) {
            return true;
        }
        folders.remove_prefix(std::min(end + 1, folders.size()));
    }
    return false;
}

[[noreturn]] void runPager(int input, const std::string& command)
{
    restoreSignals();
    ::dup2(input, STDIN_FILENO);
    ::setenv("LESS", "FRX", 0);
    ::setenv("LESSCHARSET", "utf-8", 0);
    ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    ::_exit(commandNotFound);
}

}  // namespace

std::string pagerCommand()
{
    const char* pager = std::getenv("PAGER");
    if (pager != nullptr) {
        return std::string_view(pager) == "cat" ? "" : pager;
    }
    return isInstalled("less") ? "less -FRX" : "";
}

Pager::Pager(const std::string& command)
{
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return;
    }
    Process = ::fork();
    if (Process == 0) {
        runPager(ends[0], command);
    }
    ::close(ends[0]);
    if (Process < 0) {
        ::close(ends[1]);
        return;
    }
    Input = ends[1];
    setPager(Process);
}

Pager::~Pager()
{
    wait();
}

bool Pager::wait()
{
    if (Process < 0) {
        return true;
    }
    ::close(std::exchange(Input, -1));
    int status = 0;
    while (::waitpid(Process, &status, 0) < 0 && errno == EINTR) {
    }
    setPager(0);
    Process = -1;
    return !WIFEXITED(status) || WEXITSTATUS(status) != commandNotFound;
}

}  // namespace kd_tool
