/// \file
/// A file read here and there, with the bytes around the last place kept.
#pragma once

#include "inputfile.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// Reads of a seekable file, in any order, a block at a time.
class FileWindow {
public:
    static constexpr std::size_t capacity = 65536;

    explicit FileWindow(const InputFile& file) : File(file) {}

    /// Up to `count` bytes from a place on, and at most `capacity`; fewer at the end of the file only.
    /// Valid until the next call.
    std::string_view view(std::uint64_t at, std::size_t count);

    /// All bytes from a place on that come with one read, at least one unless the file ends there.
    std::string_view viewSome(std::uint64_t at);

private:
    const InputFile& File;
    std::string Bytes;
    std::uint64_t First = 0;
};

}  // namespace kd_lib::exchange::detail
