/// \file
/// The end of a script.
#pragma once

#include <string>

namespace kd_tool {

/// Whether something other than blanks and comments stands behind the last ";" of the script, which is
/// never run.
bool endsInsideStatement(const std::string& script);

}  // namespace kd_tool
