/// \file
/// Completes the last word of an SQL statement.
#pragma once

#include "schema.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kd_tool {

/// The words that may replace the last, unfinished word of a statement, each with the statement before it and with a
/// description. After FROM and similar words these are tables; after a table's name and a dot, its columns. Elsewhere
/// they are columns, tables and, after the first letter, SQL's words in the case of that letter. Nothing inside a
/// quoted text.
std::vector<std::pair<std::string, std::string>> sqlCandidates(std::string_view statement,
                                                               const std::vector<SchemaColumn>& schema);

}  // namespace kd_tool
