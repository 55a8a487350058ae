/// \file
/// How far long work is, on standard error.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace kd_tool {

/// One line at the bottom of the terminal that shows bytes done, rate and time left. It appears after one second and
/// is gone when it is cleared. Not for several threads: its owner locks.
class ProgressBar {
public:
    /// Bytes to do in all; nothing if that is not known. Work begins now.
    void begin(std::string what, std::optional<std::uint64_t> size);

    void end();

    /// Adds to what is done, and draws the line where it is time to.
    void add(std::uint64_t bytes, std::uint64_t records);

    /// Takes the line away, as long as something else is written; the next `add` may draw it again.
    void clear();

    bool active() const { return Active; }

private:
    using Clock = std::chrono::steady_clock;

    std::string line(double seconds, std::size_t width) const;

    bool Active = false;
    bool Shown = false;
    std::string What;
    std::optional<std::uint64_t> Size;
    std::uint64_t Bytes = 0;
    std::uint64_t Records = 0;
    Clock::time_point Began;
    Clock::time_point Drawn;
};

}  // namespace kd_tool
