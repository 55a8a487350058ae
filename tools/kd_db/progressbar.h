/// \file
/// The progress of long work, on standard error.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace kd_tool {

/// One line at the bottom of the terminal that shows bytes done, rate and time left. It appears after one second and
/// disappears when it is cleared. Not for several threads: the owner must lock.
class ProgressBar {
public:
    /// Starts work of this many bytes; nothing if that is not known.
    void begin(std::string what, std::optional<std::uint64_t> size);

    void end();

    /// Adds to the bytes done, and draws the line if it is due.
    void add(std::uint64_t bytes, std::uint64_t records);

    /// Removes the line while something else is written; the next `add` may draw it again.
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
