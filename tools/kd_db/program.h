/// \file
/// The console program.
#pragma once

namespace kd_tool {

/// Runs the program with these arguments; returns its exit status.
int runProgram(int argc, const char* const* argv);

}  // namespace kd_tool
