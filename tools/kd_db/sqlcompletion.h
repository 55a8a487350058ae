/// \file
/// Completes the last word of an SQL statement.
#pragma once

#include "schema.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kd_tool {

/// The words that may replace the last, unfinished one of a statement, each with the statement before it and with a
/// description: tables after FROM and similar words, the columns of a table after its name and a dot; elsewhere
/// columns, tables, and, after the first letter, SQL's words in the case of that letter. Nothing inside a quoted text.
std::vector<std::pair<std::string, std::string>> sqlCandidates(std::string_view statement,
                                                               const std::vector<SchemaColumn>& schema);

}  // namespace kd_tool
