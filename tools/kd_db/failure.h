/// \file
/// How the program ends: its exit codes, and the exceptions that lead to them.
#pragma once

#include <stdexcept>
#include <string>

namespace kd_tool {

enum ExitCode : int {
    exitDone = 0,
    exitFailure = 1,
    exitUsage = 2,
    exitSignalBase = 128  ///< plus the number of the signal
};

/// The work cannot be done: one error line that names the file, exit code 1.
class Failure : public std::runtime_error {
public:
    Failure(const std::string& file, const std::string& reason) : std::runtime_error(reason), File(file) {}

    std::string File;
};

/// The arguments make no sense together: one error line and a hint, exit code 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A signal asked for the end: no line, exit code 128 plus its number.
struct Interrupted {
    int Signal;
};

/// The reader of the results has gone: no line, exit code 0.
struct ReaderGone {};

}  // namespace kd_tool
