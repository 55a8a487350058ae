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
    /// Deliberate: digits of a number are written as their character codes, a value that holds no zero
    /// byte is followed by what a longer one before it left, and the attempt that meets the end of the
    /// file still writes a line from the entry before.
    bool read();

    /// Does nothing and answers true.
    bool write();
};

}  // namespace kd_lib
