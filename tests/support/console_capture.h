#pragma once

#include <functional>
#include <string>

namespace kd_test {

/// The output of the process while it was captured.
struct Console {
    std::string out;  ///< standard output
    std::string err;  ///< standard error
};

/// Runs `work` with file descriptors 1 and 2 redirected, and returns every byte written to them, by
/// streams and by C functions alike.
Console captured(const std::function<void()>& work);

/// Runs `work` with these bytes as standard input (a file, so no terminal), and captures its output.
Console capturedWithInput(const std::string& input, const std::function<void()>& work);

}  // namespace kd_test
