/// \file
/// Path functions; both change their argument in place.
/// Threads: `checkHomePath` reads the environment, so no other thread may change it at that time.
#pragma once

#include <kd_lib/export.h>

#include <string>

namespace kd_lib {

/// Replaces "~", alone or before the first "/", by the home directory: HOME in the environment or, if that
/// is empty, the entry in the user database. "~name" and every other path stay unchanged, as does "~" if
/// no home directory is known.
KD_LIB_EXPORT void checkHomePath(std::string& path);

/// Appends "/" unless `dir` ends with one or is empty.
KD_LIB_EXPORT void addEndSlash(std::string& dir);

}  // namespace kd_lib
