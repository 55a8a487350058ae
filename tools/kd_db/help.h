/// \file
/// The texts of --help.
#pragma once

#include "commandline.h"

#include <string>

namespace kd_tool {

/// The help of the program: its commands and what they share.
std::string programHelp();

/// The help of one command, within 80 columns.
std::string commandHelp(const CommandSpec& command);

}  // namespace kd_tool
