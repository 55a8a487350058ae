/// \file
/// The progress of long work, on standard error.
#pragma once

#include "progressline.h"

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

    bool Active = false;
    bool Shown = false;
    WorkDone Done;
    Clock::time_point Began;
    Clock::time_point Drawn;
};

}  // namespace kd_tool
