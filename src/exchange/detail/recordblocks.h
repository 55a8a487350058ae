/// \file
/// The bytes of a file of records, one block at a time.
#pragma once

#include "inputfile.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace kd_lib::exchange::detail {

/// A file read in order, with enough bytes in memory for its reader. There are `slack` readable bytes without meaning
/// before the first and after the last byte of every view, for code that reads words.
class RecordBlocks {
public:
    static constexpr std::size_t slack = 32;

    /// Begins at the file's current position.
    explicit RecordBlocks(InputFile& file) : File(file), Offset(file.position()) {}

    /// The bytes from the current place on: at least `count`, unless the file ends before. Valid until the next call
    /// of any operation except `skip`.
    std::string_view ahead(std::size_t count)
    {
        if (End - At < count) {
            fill(count);
        }
        return {Buffer.data() + At, End - At};
    }

    /// Moves forward by this many bytes, which `ahead` has returned.
    void skip(std::size_t count)
    {
        At += count;
        Offset += count;
    }

    /// Goes to a byte of the file, which must be seekable.
    void seek(std::uint64_t offset);

    /// The current place in the file.
    std::uint64_t offset() const { return Offset; }

private:
    void fill(std::size_t count);

    InputFile& File;
    std::vector<char> Buffer = std::vector<char>(2 * slack);
    std::size_t At = slack;
    std::size_t End = slack;
    std::uint64_t Offset;
    std::size_t Step = 0;  ///< bytes to read at a time: few at first, so that a single record is cheap to reach
};

}  // namespace kd_lib::exchange::detail
