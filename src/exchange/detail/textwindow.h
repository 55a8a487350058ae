/// \file
/// The part of a text file that is in memory.
#pragma once

#include "bytemarks.h"
#include "convertedinput.h"
#include "inputfile.h"

#include <kd_lib/exchange/codepage.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// The end mark of DOS, if it is the last byte of a text.
constexpr std::string_view dosEndMark = "\x1A";

/// The current part of a file or of standard input in one piece of memory. The mark of UTF-8 at the beginning is left
/// out.
class TextWindow {
public:
    /// Opens the file. `encoding`: the file is converted from this page; null: its bytes are not changed. Throws an
    /// `Error` if it cannot be read.
    TextWindow(const std::string& path, const CodePage* encoding, std::stop_token stop = {});

    /// The bytes that are in memory. `blockSize` bytes before the beginning and after the end may be read; they have no
    /// meaning.
    const char* begin() const { return Begin; }
    const char* end() const { return End; }

    /// Whether `end` is the end of the file.
    bool atEnd() const { return AtEnd; }

    /// Reads more, keeping the bytes from `from` on, which move to `begin`. Reads at least as many bytes as are kept,
    /// unless the file ends, so that a long record is not examined again and again.
    void more(const char* from);

    /// Reads until `size` bytes, at most 128 KiB, are in memory, or the file ends. For the beginning of a file.
    void fill(std::size_t size);

    /// Goes back to the beginning. Needs a file that is `seekable`.
    void restart();

    /// The place of a byte of the window in the file, or in the converted text if the file is converted.
    std::uint64_t offsetOf(const char* at) const { return Offset + static_cast<std::uint64_t>(at - first()); }

    const InputFile& file() const { return File; }
    const ConvertedInput* converted() const { return Converted.get(); }

private:
    char* first() const { return Buffer.get() + blockSize; }
    void allocate(std::size_t size);
    void open();
    void reserve(std::size_t size, const char* from);
    std::size_t readSome();

    InputFile File;
    const CodePage* Encoding;
    std::unique_ptr<ConvertedInput> Converted;
    std::unique_ptr<char[]> Buffer;
    std::size_t Capacity = 0;
    const char* Begin = nullptr;
    const char* End = nullptr;
    std::uint64_t Offset = 0;  // of the buffer's first byte
    bool AtEnd = false;
};

/// "UTF-16" or "UTF-32" if the text seems to have that encoding; null for any other text. The window must be at its
/// beginning.
const char* wideEncoding(const TextWindow& window);

}  // namespace kd_lib::exchange::detail
