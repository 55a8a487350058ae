#pragma once

#include <string>

namespace kd_fuzz {

/// SQL itself can request endless work, huge values and other files, which are not faults of the library. Every
/// connection that is opened from now on is therefore fenced in: a budget of virtual machine steps, small limits, and
/// an authorizer that refuses other files and all settings but the encoding. A refusal is a failing statement like any
/// other.
void fenceInConnections();

/// Lets connections attach this file.
void allowAttaching(const std::string& file);

/// Starts a new budget for the next input.
void renewBudget();

}  // namespace kd_fuzz
