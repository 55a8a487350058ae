/// \file
/// Reads of a file at any place, with the bytes around the last one kept.
#pragma once

#include "inputfile.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// Reads a seekable file in any order, one block at a time.
class FileWindow {
public:
    static constexpr std::size_t capacity = 65536;

    explicit FileWindow(const InputFile& file) : File(file) {}

    /// Returns `count` bytes from a place on, but at most `capacity`; fewer at the end of the file only. Valid until
    /// the next call.
    std::string_view view(std::uint64_t at, std::size_t count);

    /// The bytes from a place on that one read returns: at least one, unless the file ends there.
    std::string_view viewSome(std::uint64_t at);

private:
    const InputFile& File;
    std::string Bytes;
    std::uint64_t First = 0;
};

}  // namespace kd_lib::exchange::detail
