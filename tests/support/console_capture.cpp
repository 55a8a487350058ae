#include "support/console_capture.h"

#include "support/scoped_directory.h"

#include <cstdio>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

namespace kd_test {

namespace {

void flushAll()
{
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
}

/// Replaces a descriptor by a file while this object exists.
class Redirection {
public:
    Redirection(int descriptor, const std::string& path, int flags) : Descriptor(descriptor), Saved(::dup(descriptor))
    {
        const int opened = ::open(path.c_str(), flags, 0600);
        ::dup2(opened, Descriptor);
        ::close(opened);
    }
    ~Redirection()
    {
        ::dup2(Saved, Descriptor);
        ::close(Saved);
    }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

private:
    int Descriptor;
    int Saved;
};

}  // namespace

Console captured(const std::function<void()>& work)
{
    const ScopedDirectory scratch;
    flushAll();
    {
        const Redirection out(STDOUT_FILENO, scratch.file("out"), O_WRONLY | O_CREAT);
        const Redirection err(STDERR_FILENO, scratch.file("err"), O_WRONLY | O_CREAT);
        work();
        flushAll();
    }
    return {readFile(scratch.file("out")), readFile(scratch.file("err"))};
}

Console capturedWithInput(const std::string& input, const std::function<void()>& work)
{
    const ScopedDirectory scratch;
    const std::string path = scratch.write("in", input);
    Console console;
    {
        const Redirection in(STDIN_FILENO, path, O_RDONLY);
        std::clearerr(stdin);
        std::cin.clear();
        console = captured(work);
    }
    std::clearerr(stdin);
    std::cin.clear();
    return console;
}

}  // namespace kd_test
