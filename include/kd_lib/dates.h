/// \file
/// Date constants for client programs; each source unit has its own copy.
#pragma once

#include <string>

namespace kd_lib {

/// The text of an unknown date: empty.
const std::string BLANK_DATE_STR = "";

}  // namespace kd_lib
