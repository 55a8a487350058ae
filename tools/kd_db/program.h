/// \file
/// The program behind `main`.
#pragma once

namespace kd_tool {

/// Reads the arguments, runs the command, and answers the exit code.
int runProgram(int argc, const char* const* argv);

}  // namespace kd_tool
