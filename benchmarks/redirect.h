/// \file
/// Redirects standard output for a while.
#pragma once

#include <cstdio>
#include <fcntl.h>
#include <iostream>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace kd_bench {

/// While it exists, the process's standard output goes to a file.
class Redirect {
public:
    explicit Redirect(const std::string& path) : Before(::dup(STDOUT_FILENO))
    {
        flush();
        const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (Before < 0 || file < 0 || ::dup2(file, STDOUT_FILENO) < 0) {
            throw std::runtime_error(path + ": standard output cannot go there");
        }
        ::close(file);
    }
    ~Redirect()
    {
        flush();
        ::dup2(Before, STDOUT_FILENO);
        ::close(Before);
    }
    Redirect(const Redirect&) = delete;
    Redirect& operator=(const Redirect&) = delete;

private:
    static void flush()
    {
        std::cout.flush();
        std::fflush(stdout);
    }

    int Before;
};

}  // namespace kd_bench
