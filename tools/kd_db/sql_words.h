/// \file
/// As much of SQL as the commands must read themselves: where statements end, and what they begin with.
#pragma once

#include <string_view>

namespace kd_tool {

enum class TransactionWord { None, Begin, Commit, Rollback };

/// What `statement` does to the script's transaction. "ROLLBACK TO" a savepoint does nothing to it.
TransactionWord transactionWord(std::string_view statement);

/// Whether something is left behind the first statement of `sql`, other than blanks and comments.
bool holdsSecondStatement(std::string_view sql);

}  // namespace kd_tool
