/// \file
/// Completion for shells.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kd_tool {

/// The hidden command that the shells' completion files call: `kd_db __complete WORD...`, the words being those after
/// "kd_db" up to the one under the cursor, which may be empty.
inline constexpr std::string_view completionCommand = "__complete";

/// The candidates that begin with the last word, one a line, "CANDIDATE<tab>DESCRIPTION". A last line that begins with
/// ":" makes the shell complete file names: ":files" all, ":files dbf csv" those with one of these extensions in any
/// case of letters, and folders.
std::string completions(const std::vector<std::string>& words);

}  // namespace kd_tool
