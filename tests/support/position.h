/// \file
/// The position of a table's stream.
#pragma once

#include <kd_lib/filetable.h>

#include <cstdint>

namespace kd_test {

/// Where the stream reads on; -1 after a failure.
inline std::int64_t position(kd_lib::FileTable& table)
{
    return static_cast<std::int64_t>(static_cast<std::streamoff>(table.File.tellg()));
}

}  // namespace kd_test
