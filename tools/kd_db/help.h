/// \file
/// The texts of --help.
#pragma once

#include "commandline.h"

#include <string>

namespace kd_tool {

/// The help of the program: its commands, and notes on all of them.
std::string programHelp();

/// The help of one command, within 80 columns.
std::string commandHelp(const CommandSpec& command);

}  // namespace kd_tool
