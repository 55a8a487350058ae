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
/// case of letters, and folders. No file is read.
std::string completions(const std::vector<std::string>& words);

/// The same for names of columns and tables, and for SQL: read from the files and the database that the words before
/// name, but not from servers.
std::string nameCompletions(const std::vector<std::string>& words);

/// A completion must be fast: after 50 ms of wall-clock time from now on the process ends with status 0. Its output
/// until then is used. Measured without optimisation, in processor time: 2 ms for the columns of one .dbf, 11 ms for a
/// database of 300 tables, 260 ms for a folder of 300 files, which therefore gets no names.
void limitCompletionTime();

}  // namespace kd_tool
