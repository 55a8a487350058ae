/// \file
/// The list of columns of text in fixed columns.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange::detail {

/// A column: a range of the bytes of a line.
struct FixedColumn {
    std::string Name;
    std::uint32_t Offset;  ///< from 0
    std::uint32_t Length;  ///< at least 1

    std::uint32_t end() const { return Offset + Length; }
};

/// Reads a list of columns as `FixedSource` describes it. Throws an `OptionError` that names `file` for anything else.
std::vector<FixedColumn> parseFixedColumns(const std::string& file, std::string_view list);

}  // namespace kd_lib::exchange::detail
