/// \file
/// Folders and symbolic links in the paths of new files.
#pragma once

#include <string>

namespace kd_lib::exchange::detail {

/// So many links in a row count as a loop, as in Linux.
constexpr int mostLinks = 40;

/// The folder of a path, with a slash at its end.
std::string folderOf(const std::string& path);

/// The destination of a symbolic link; empty if `path` is not a link, or cannot be read.
std::string linkTarget(const std::string& path);

}  // namespace kd_lib::exchange::detail
