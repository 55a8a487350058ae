// flat_peak COMMAND...: runs the command and writes its peak memory in KiB as the last line of standard
// error. This program is small, because a process begins with the peak of the process that started it.

#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fputs("usage: flat_peak COMMAND...\n", stderr);
        return 2;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::execvp(argv[1], argv + 1);
        std::perror(argv[1]);
        std::_Exit(127);
    }
    int status = 0;
    rusage usage{};
    if (child < 0 || ::wait4(child, &status, 0, &usage) != child) {
        std::perror("flat_peak");
        return 2;
    }
    std::fprintf(stderr, "%ld\n", usage.ru_maxrss);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
