/// \file
/// How a file of one format is read.
#pragma once

#include "inputfile.h"

#include <kd_lib/exchange/source.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kd_lib::exchange::detail {

/// The open file of a `FileSource`. It fills that source's columns and current record. Each function implements the
/// source's function of the same name.
class FileReader {
public:
    FileReader() = default;
    virtual ~FileReader() = default;
    FileReader(const FileReader&) = delete;
    FileReader& operator=(const FileReader&) = delete;

    virtual bool read() = 0;
    virtual void seek(std::uint64_t number) = 0;
    virtual void need(const std::vector<bool>& needed) = 0;
    virtual Source::Origin origin(std::size_t column) const = 0;
    virtual std::vector<Fact> facts() const = 0;

    virtual const InputFile& file() const = 0;
};

}  // namespace kd_lib::exchange::detail
