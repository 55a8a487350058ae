/// \file
/// What may come next in an SQL statement.
#pragma once

#include "schema.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kd_tool {

/// The words that may take the place of the last, unfinished one of a statement, each with the statement before it
/// and with a description: tables after FROM and its like, the columns of a table after its name and a dot; elsewhere columns,
/// tables, and SQL's words once a letter is there, in the case of that letter. Nothing inside a quoted text.
std::vector<std::pair<std::string, std::string>> sqlCandidates(std::string_view statement,
                                                               const std::vector<SchemaColumn>& schema);

}  // namespace kd_tool
