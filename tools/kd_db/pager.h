/// \file
/// The program that shows long results page by page.
#pragma once

#include <string>
#include <sys/types.h>

namespace kd_tool {

/// The command line of the pager: $PAGER, else `less -FRX` where that is installed; empty: none.
std::string pagerCommand();

/// A running pager. What is written to `descriptor` is shown.
class Pager {
public:
    /// Starts it through the shell; less is told that texts are UTF-8.
    explicit Pager(const std::string& command);

    /// Closes its input and waits until its user has seen enough.
    ~Pager();
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    /// -1: it could not be started.
    int descriptor() const { return Input; }

    /// As the destructor does. False: the shell did not find the command.
    bool wait();

private:
    pid_t Process = -1;
    int Input = -1;
};

}  // namespace kd_tool
