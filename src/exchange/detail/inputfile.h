/// \file
/// A file, or standard input, as blocks of bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>

namespace kd_lib::exchange::detail {

/// Reads through a file descriptor into the caller's memory, without a buffer. Every failed read is an `Error` with the
/// system's reason: an error is never mistaken for the end.
class InputFile {
public:
    static constexpr std::size_t usualRead = 65536;  ///< bytes at a time, from start to end

    /// Opens a file; "-" is standard input, which is not closed. Throws an `Error` if it cannot be opened, and for a
    /// folder. If a stop is requested while a read waits for a pipe, the read throws `Stopped`.
    explicit InputFile(const std::string& path, std::stop_token stop = {});
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// Reads up to `count` bytes from the current position; fewer if a pipe has no more yet. 0: the end.
    std::size_t readSome(char* to, std::size_t count);

    /// Reads `count` bytes from the current position; fewer at the end of the file only.
    std::size_t read(char* to, std::size_t count);

    /// Reads at a place without changing the current position. Needs a file that is `seekable`.
    std::size_t readAt(std::uint64_t offset, char* to, std::size_t count) const;

    /// Goes to a place. Needs a file that is `seekable`.
    void seek(std::uint64_t offset);

    bool seekable() const { return Size.has_value(); }
    std::optional<std::uint64_t> size() const { return Size; }  ///< of a regular file
    std::uint64_t position() const { return Position; }
    const std::string& path() const { return Path; }

private:
    void waitForBytes() const;
    [[noreturn]] void fail(int error) const;

    std::string Path;
    std::stop_token Stop;
    int Descriptor = -1;
    std::optional<std::uint64_t> Size;
    std::uint64_t Position = 0;
};

}  // namespace kd_lib::exchange::detail
