/// \file
/// Completion for shells.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kd_tool {

/// The hidden command that the shells' completion files call: `kd_db __complete WORD...`. The words are those after
/// "kd_db", up to the word under the cursor, which may be empty.
inline constexpr std::string_view completionCommand = "__complete";

/// The candidates that begin with the last word, one a line, "CANDIDATE<tab>DESCRIPTION". A last line that begins with
/// ":" makes the shell complete file names: after ":files" all, after ":files dbf csv" folders and files with one of
/// these extensions in any letter case. No file is read.
std::string completions(const std::vector<std::string>& words);

/// The same for names of columns and tables, and for SQL. The names come from the files and the database that earlier
/// words name, but not from servers.
std::string nameCompletions(const std::vector<std::string>& words);

/// A completion must be fast: 50 ms of wall-clock time after this call, the process ends with status 0. Its output
/// until then is used. Measured without optimisation, in processor time: 2 ms for the columns of one .dbf, 11 ms for a
/// database of 300 tables, 260 ms for a folder of 300 files, which therefore gets no names.
void limitCompletionTime();

}  // namespace kd_tool
