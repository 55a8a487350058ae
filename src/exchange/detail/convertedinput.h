/// \file
/// A file in an encoding whose bytes cannot be searched for delimiters, as UTF-8.
#pragma once

#include "inputfile.h"
#include "systemconverter.h"

#include <kd_lib/exchange/codepage.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// Reads a file and converts it. What the encoding lacks is marked, byte by byte, so that the cell that holds it can be
/// found: `firstMark` for the first byte of a character and `nextMark` for the others, each with the byte as two
/// hexadecimal digits. No UTF-8 text has these bytes.
class ConvertedInput {
public:
    static constexpr char firstMark = '\xFF';
    static constexpr char nextMark = '\xFE';

    /// `file` must outlive the object and be at its beginning.
    ConvertedInput(InputFile& file, const CodePage& encoding);

    /// Reads up to `count` bytes of UTF-8, which must be 64 or more; fewer come where a pipe has no more yet. 0: the end.
    std::size_t readSome(char* to, std::size_t count);

    /// Begins anew at the beginning of the file. Needs a file that is `seekable`.
    void restart();

    /// How many bytes of the file a piece of its text is; nothing for encodings where that cannot be told.
    std::optional<std::uint64_t> sizeInFile(std::string_view text) const;

private:
    void readMore();
    void mark(std::size_t bytes, char*& to);
    void convert(char*& to, std::size_t room);

    InputFile& File;
    std::string Raw;  // bytes of the file that are not converted yet, from `RawAt` on
    std::size_t RawAt = 0;
    bool AtEnd = false;
    bool Finished = false;
    SystemConverter Converter;
    std::size_t Unit;  // bytes of a character in the file; 2: UTF-16; 0: not known
};

/// Text of a `ConvertedInput` with its marks as `onError` says.
CodePage::Decoded decodeMarked(std::string_view text, EncodingErrors onError, std::string& scratch);

}  // namespace kd_lib::exchange::detail
