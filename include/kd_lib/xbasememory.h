/// \file
/// Listing xBase memory files (`.mem`); docs/mem-format.md describes the bytes.
#pragma once

#include <kd_lib/export.h>
#include <kd_lib/xbasetable.h>

#include <string>

namespace kd_lib {

/// A memory file: a sequence of named values. It defines no columns and fetches no records.
/// Threads: one thread per object.
class KD_LIB_EXPORT xBaseMemory : public xBaseTable {
public:
    xBaseMemory();                                  ///< extension "mem", binary
    explicit xBaseMemory(const std::string& name);  ///< the same, with `Name` set
    ~xBaseMemory() override;

    /// Writes one line per entry to standard output: name, type letter, length "." decimals, value, "|".
    /// False, without output, when the file is not open; true otherwise.
    /// Deliberate: digits of a number are written as their character codes. A value without a zero byte is
    /// followed by the rest of a longer previous value. At the end of the file the last entry is written once more.
    bool read();

    /// Does nothing and returns true.
    bool write();
};

}  // namespace kd_lib
