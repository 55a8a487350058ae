/// \file
/// Suggests the word that was probably meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kd_tool {

/// `; did you mean "show"?` for the candidate that is nearest to `word`: at most two letters, and less than half of the
/// word, are missing, surplus, wrong or exchanged with their neighbour. Empty if no candidate is near.
std::string suggestion(std::string_view word, const std::vector<std::string_view>& candidates);

}  // namespace kd_tool
