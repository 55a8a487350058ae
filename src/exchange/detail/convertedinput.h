/// \file
/// Converts a file whose encoding cannot be searched for delimiters to UTF-8.
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

/// Reads and converts a file. Bytes that the encoding lacks are marked, so that the cell that holds them can be found:
/// `firstMark` for the first byte of a character and `nextMark` for the others, each followed by the byte as two
/// hexadecimal digits. No UTF-8 text contains these marks.
class ConvertedInput {
public:
    static constexpr char firstMark = '\xFF';
    static constexpr char nextMark = '\xFE';

    /// `file` must outlive the object and be at its beginning.
    ConvertedInput(InputFile& file, const CodePage& encoding);

    /// Reads up to `count` bytes of UTF-8, which must be 64 or more; fewer if a pipe has no more yet. 0: the end.
    std::size_t readSome(char* to, std::size_t count);

    /// How many bytes of the file correspond to a piece of its text; nothing for encodings where that cannot be known.
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
    std::size_t Unit;        // bytes of a character in the file; 2: UTF-16; 0: not known
    std::size_t RoomOfByte;  // that a byte of the file needs; 0: no matter
};

/// Text of a `ConvertedInput`, with its marks replaced as `onError` says.
CodePage::Decoded decodeMarked(std::string_view text, EncodingErrors onError, std::string& scratch);

}  // namespace kd_lib::exchange::detail
