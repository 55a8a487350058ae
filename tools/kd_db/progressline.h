/// \file
/// The text of the progress bar.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace kd_tool {

/// What a long work has done.
struct WorkDone {
    std::string What;
    std::optional<std::uint64_t> Size;  ///< bytes in all, if that is known
    std::uint64_t Bytes = 0;
    std::uint64_t Records = 0;
};

/// One line of at most `width` columns: what is done, the share with a bar, or the records if the size is unknown, the
/// rate and the time left.
std::string progressLine(const WorkDone& done, double seconds, std::size_t width);

}  // namespace kd_tool
