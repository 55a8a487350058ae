/// \file
/// The report on the work on one file.
#pragma once

#include "console.h"
#include "rejectsfile.h"

#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/transfer.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kd_tool {

/// Prints the rejects of a file, at most 20 of them, then its notes and its tally. One thread per object.
class Report {
public:
    /// `verb` is used in the lines: "stored", "shown".
    Report(Console& console, RejectsFile* rejects, std::string file, std::string verb)
        : To(console), Rejects(rejects), File(std::move(file)), Verb(std::move(verb))
    {
    }

    void reject(const exchange::Reject& reject);

    /// Prints the new notes; each list only grows.
    void sourceNotes(const std::vector<exchange::Note>& notes) { printNew(notes, SourceNotes); }
    void targetNotes(const std::vector<exchange::Note>& notes) { printNew(notes, TargetNotes); }

    /// Prints the count of the rejects that were not printed one by one.
    void restOfRejects();

    /// `FILE: 5 records read, 1 left out, 4 stored in table people`
    void tally(const exchange::Tally& tally, const std::string& destination);

private:
    void printNew(const std::vector<exchange::Note>& notes, std::size_t& printed);

    Console& To;
    RejectsFile* Rejects;
    std::string File;
    std::string Verb;
    std::uint64_t Count = 0;
    std::size_t SourceNotes = 0;
    std::size_t TargetNotes = 0;
};

}  // namespace kd_tool
