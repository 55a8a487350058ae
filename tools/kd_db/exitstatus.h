/// \file
/// The exit statuses of the program, and its exceptions with these statuses.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace kd_tool {

enum ExitStatus : int {
    statusDone = 0,
    statusFailed = 1,  ///< nothing stored, nothing half written
    statusUsage = 2,
    statusLoss = 3,     ///< done, but something could not be carried unchanged
    statusSignal = 128  ///< plus the number of the signal
};

/// The status of two pieces of work together: a failure outweighs wrong usage, which outweighs a loss.
inline int worse(int a, int b)
{
    const auto weight = [](int status) { return status == statusFailed ? 3 : status == statusLoss ? 1 : status; };
    return weight(a) >= weight(b) ? a : b;
}

/// Invalid arguments: one error line and a hint, status 2.
class UsageError : public std::runtime_error {
public:
    explicit UsageError(const std::string& reason, std::string command = {})
        : std::runtime_error(reason), Command(std::move(command))
    {
    }

    std::string Command;  ///< whose help explains it; empty: that of the program
};

/// The reader of the results has gone: no line, status 0.
struct ReaderGone {};

}  // namespace kd_tool
