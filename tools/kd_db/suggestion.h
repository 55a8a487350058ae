/// \file
/// Suggests a word for one that is not known.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kd_tool {

/// `; did you mean "show"?` for the candidate that is nearest to `word`: at most two letters, and less than half of the
/// word, are missing, surplus, wrong or exchanged with their neighbour. Empty if there is no such candidate.
std::string suggestion(std::string_view word, const std::vector<std::string_view>& candidates);

}  // namespace kd_tool
