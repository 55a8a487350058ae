/// \file
/// Console output. Every line that the library prints passes through these functions, except a few direct notes, which
/// docs/console-output.md lists. Threads: the functions write to the standard streams and take no lock; the verbosity
/// switch may be read and set from any thread.
#pragma once

#include <kd_lib/export.h>

#include <ostream>
#include <string>

namespace kd_lib {

/// Writes one informational line to standard output: `text` without a prefix, then one line end.
/// The text "\n" alone gives one empty line; a text that already ends with "\n" gets no second one.
KD_LIB_EXPORT void message(const std::string& text);

/// Writes one error line to standard error: `text` without a prefix, then one line end.
KD_LIB_EXPORT void errorMessage(const std::string& text);

/// Writes a block of report text to standard output unchanged; the caller has ended its lines.
KD_LIB_EXPORT void display(const std::string& text);

/// The process-wide switch for optional notes; false until `setVerbose(true)`.
KD_LIB_EXPORT bool isVerbose();

/// Turns optional notes on or off for the whole process.
KD_LIB_EXPORT void setVerbose(bool on);

/// Asks whether to continue a paged listing; false: stop.
/// - Standard input and output are terminals: prompts and reads one key; Enter or blank continues, q stops.
/// - Only standard input is a terminal: true at once, without a prompt.
/// - Standard input is not a terminal: reads one line from it without a prompt; a line that begins
///   with q or n stops, any other line and the end of input continue.
KD_LIB_EXPORT bool more();

/// Writes the characters of `text` to `out` and returns `out`, as the standard operator does.
KD_LIB_EXPORT std::ostream& operator<<(std::ostream& out, std::string text);

}  // namespace kd_lib
