#pragma once

namespace kd_fuzz {

/// SQL can ask for endless work, for huge values and for other files by itself, which is SQLite's affair.
/// Every connection that is opened from now on is therefore fenced in: a budget of virtual machine steps,
/// small limits, and an authorizer that refuses other files and the settings of the process. A refusal is
/// a failing statement like any other.
void fenceInConnections();

/// Gives the input that begins now a budget of its own.
void renewBudget();

}  // namespace kd_fuzz
