/// \file
/// Which statements of a script begin or end a transaction.
#pragma once

#include <string_view>

namespace kd_tool {

enum class TransactionWord { None, Begin, Commit, Rollback };

/// What `statement` does to the script's transaction. "ROLLBACK TO" a savepoint does nothing to it.
TransactionWord transactionWord(std::string_view statement);

}  // namespace kd_tool
