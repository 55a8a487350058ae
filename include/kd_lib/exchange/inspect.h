/// \file
/// The bytes of a file, explained.
#pragma once

#include <kd_lib/exchange/error.h>
#include <kd_lib/export.h>

#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>
#include <string_view>

namespace kd_lib::exchange {

/// Some bytes of a file that belong together.
struct InspectedBytes {
    std::uint64_t Offset = 0;  ///< of the first byte, from 0
    std::uint64_t Length = 0;
    std::string_view Bytes;    ///< the bytes, or the first of many
    std::string_view What;     ///< "header length", "record 3", "column NAME"; empty: continues the previous line
    std::string_view Meaning;  ///< "225", "deleted", "C, 20 bytes"
    bool Damaged = false;      ///< `Meaning` describes damage: a value is lost, or may be
};

/// Called for each line; the texts live until it returns.
using InspectLine = std::function<void(const InspectedBytes&)>;

struct InspectOptions {
    std::string MemoFile;  ///< of a .dbf; empty: found in its folder
    std::string Encoding;  ///< of a .dbf; empty: as the file states
    std::stop_token Stop;  ///< when a stop is requested, `inspect` throws `Stopped`
};

/// Explains a .dbf file, a memo file (.dbt, .fpt) or a .mem file from its first byte to its last: each part of the
/// header, each record and its cells or each block, and what is damaged. A file too damaged to be read as a table is
/// explained as far as possible. Returns true if nothing is damaged. Throws an `Error` if the file cannot be read, or
/// its extension is not that of such a file.
KD_LIB_EXPORT bool inspect(const std::string& file, const InspectLine& line, const InspectOptions& options = {});

}  // namespace kd_lib::exchange
