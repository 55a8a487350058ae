/// \file
/// Shared by the commands that carry the records of a file.
#pragma once

#include "console.h"
#include "options.h"
#include "rejectsfile.h"

#include <kd_lib/exchange/source.h>
#include <kd_lib/exchange/target.h>

#include <functional>
#include <memory>
#include <string>

namespace kd_tool {

/// The file of --rejects; nullptr without the option.
std::unique_ptr<RejectsFile> openRejects(const Options& options);

/// Throws a `UsageError` if the output is the input file itself.
void requireOtherFile(const std::string& input, const std::string& output);

/// Throws a `UsageError` if rejects and results would both go to standard output.
void requireTwoOutputs(const Options& options);

/// How one file is carried.
struct Carriage {
    const Options& Asked;
    Console& To;
    RejectsFile* Rejects = nullptr;
    std::string Verb = "stored";  ///< for the messages: "stored", "shown"
    bool Tally = true;            ///< ends with a line of the counts
};

/// Carries all records of `source` into `target` and reports rejects, notes and counts. Returns the exit status; throws
/// what `transfer` throws, after the notes.
int carry(exchange::Source& source, exchange::Target& target, const Carriage& carriage);

/// The same for the only file of a command. Shows the progress, and finishes the rejects' file in any case.
int carryAlone(exchange::Source& source, exchange::Target& target, const Carriage& carriage);

/// Does the work on one file. Its exceptions, except `exchange::Stopped`, become an error line and the matching status.
int withErrorLine(const std::string& file, Console& console, const std::function<int()>& work);

}  // namespace kd_tool
