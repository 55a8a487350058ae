#pragma once

#include <string>

namespace kd_fuzz {

/// SQL can ask for endless work, for huge values and for other files by itself, which is SQLite's affair.
/// Every connection that is opened from now on is therefore fenced in: a budget of virtual machine steps,
/// small limits, and an authorizer that refuses other files and all settings but the encoding. A refusal is
/// a failing statement like any other.
void fenceInConnections();

/// Lets connections attach this file.
void allowAttaching(const std::string& file);

/// Starts a new budget for the next input.
void renewBudget();

}  // namespace kd_fuzz
