/// \file
/// Standard error of the program: lines, and the progress bar between them.
#pragma once

#include "options.h"
#include "progressbar.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace kd_tool {

/// Writes whole lines, whatever control bytes their text contains. Usable by several threads.
class Console {
public:
    /// Applies --quiet, --color and --progress.
    void configure(const Options& options);

    /// A line about a failure, or a value that could not be carried: `kd_db: LINE`.
    void trouble(const std::string& line);

    /// A line of information; none with --quiet.
    void note(const std::string& line);

    /// A line without prefix, whatever the options.
    void say(const std::string& line);

    /// Keeps all lines until `release`, because the screen shows something else.
    void hold();
    void release();

    /// Begins long work with this number of bytes, or of unknown size.
    void beginWork(const std::string& what, std::optional<std::uint64_t> size);
    void advance(std::uint64_t bytes, std::uint64_t records);
    void endWork();

private:
    void put(const std::string& text);
    void writeLine(std::string_view mark, std::string_view color, const std::string& line);

    std::mutex Lock;
    bool Quiet = false;
    bool Colored = false;
    bool ShowsProgress = false;
    bool Held = false;
    std::string Kept;
    ProgressBar Bar;
};

/// Work that shows its progress while this object exists.
class WorkInProgress {
public:
    WorkInProgress(Console& console, const std::string& what, std::optional<std::uint64_t> size) : Of(console)
    {
        Of.beginWork(what, size);
    }
    ~WorkInProgress() { Of.endWork(); }
    WorkInProgress(const WorkInProgress&) = delete;
    WorkInProgress& operator=(const WorkInProgress&) = delete;

private:
    Console& Of;
};

/// `count` and the word for it: "1 record", "2 records".
std::string counted(std::uint64_t count, const std::string& word);

}  // namespace kd_tool
