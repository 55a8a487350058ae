/// \file
/// The program that shows long results page by page.
#pragma once

#include <string>
#include <sys/types.h>

namespace kd_tool {

/// The command line of the pager: $PAGER; if that is not set, `less -FRX`, if that is installed. Empty: no pager.
std::string pagerCommand();

/// A running pager, which shows what is written to `descriptor`.
class Pager {
public:
    /// Starts it through the shell, and sets the character set of less to UTF-8.
    explicit Pager(const std::string& command);

    /// Closes its input and waits until its user has seen enough.
    ~Pager();
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    /// -1: it could not be started.
    int descriptor() const { return Input; }

    /// Does the work of the destructor. False: the shell did not find the command.
    bool wait();

private:
    pid_t Process = -1;
    int Input = -1;
};

}  // namespace kd_tool
