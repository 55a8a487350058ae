/// \file
/// Passes the lines of an inspection to the caller.
#pragma once

#include <kd_lib/exchange/cell.h>
#include <kd_lib/exchange/inspect.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// How many bytes of a long part are passed on.
constexpr std::size_t bytesShown = 64;

/// Passes lines to the callback, and remembers whether one reported damage.
class Inspection {
public:
    Inspection(std::string file, const InspectLine& line, const InspectOptions& options)
        : File(std::move(file)), Line(line), Options(options)
    {
    }

    /// Reports sound bytes. Throws `Stopped` if the caller has stopped the work.
    void report(std::uint64_t offset, std::string_view bytes, std::string_view what, std::string_view meaning)
    {
        give({offset, bytes.size(), bytes, what, meaning, false});
    }

    /// Reports many bytes, of which `bytes` are the first.
    void reportMany(std::uint64_t offset, std::uint64_t length, std::string_view bytes, std::string_view what,
                    std::string_view meaning)
    {
        give({offset, length, bytes, what, meaning, false});
    }

    /// Reports damaged bytes.
    void damaged(std::uint64_t offset, std::string_view bytes, std::string_view what, std::string_view reason)
    {
        Sound = false;
        give({offset, bytes.size(), bytes, what, reason, true});
    }

    bool sound() const { return Sound; }
    const std::string& file() const { return File; }
    const InspectOptions& options() const { return Options; }

private:
    void give(const InspectedBytes& part);

    std::string File;
    const InspectLine& Line;
    const InspectOptions& Options;
    bool Sound = true;
};

/// A cell as people read it: texts in quotation marks, long ones cut.
std::string cellMeaning(const Cell& cell);

/// The beginning of a text in quotation marks.
std::string quotedBeginning(std::string_view text);

// Explains each kind of file.
void inspectDbf(Inspection& to);
void inspectMemoFile(Inspection& to);
void inspectMem(Inspection& to);

}  // namespace kd_lib::exchange::detail
