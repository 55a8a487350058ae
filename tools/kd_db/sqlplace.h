/// \file
/// The place of a fault in a statement.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace kd_tool {

/// The line of the statement in which byte `at` is, and a line with "^" under it; a long line is shown in part. Nothing
/// if the place is not known.
std::vector<std::string> placeInSql(const std::string& sql, std::optional<std::size_t> at);

}  // namespace kd_tool
