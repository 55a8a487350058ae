#pragma once

#include <kd_lib/exchange/opensource.h>

#include <string>

namespace kd_fuzz {

/// Reads a file as a source, twice, and stops the process if a record is not as the interface promises: cells of their
/// columns' types, texts in UTF-8, numbers in normal form, days of the calendar, a flaw for each unreadable cell, the
/// same records after `seek(1)`. An `Error` is an outcome.
void checkSource(const std::string& file, const kd_lib::exchange::SourceOptions& options);

/// Stops the process with a message.
[[noreturn]] void finding(const std::string& what);

/// Whether a number is as `Cell::Text` has it.
bool isNormalNumber(std::string_view text);

}  // namespace kd_fuzz
