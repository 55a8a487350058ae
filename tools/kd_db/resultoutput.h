/// \file
/// Standard output, with a pager if results are longer than the screen.
#pragma once

#include "console.h"
#include "escape.h"
#include "pager.h"

#include <kd_lib/exchange/outputblock.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace kd_tool {

/// Standard output in blocks. Writing throws `ReaderGone` if the reader has gone, an `exchange::Stopped` if a stop is
/// requested while it waits for the reader, and an `exchange::Error` for every other failure. On a terminal the
/// progress bar ends when the first block is written, and the console keeps its lines while the pager runs.
class ResultOutput : public kd_lib::exchange::OutputBlock {
public:
    enum class Paging : unsigned char { Never, LongResults };
    enum class Controls : unsigned char {
        Pass,   ///< the text contains the program's escape sequences
        Escape  ///< on a terminal, control bytes of the data are shown as \xNN
    };

    explicit ResultOutput(Console& console, Paging paging = Paging::Never, Controls controls = Controls::Pass);
    ~ResultOutput() override;

    /// Writes the rest, and waits for the pager.
    void finish();

    /// The same after a failure: shows what was printed before it.
    void abandon() noexcept;

protected:
    void take(std::string_view piece) override;

private:
    void begin();
    void writeShown(std::string_view text);
    void startPager();
    void endPager();
    bool exceedsScreen(std::string_view text) const;
    void writeOut(std::string_view text);

    Console& To;
    bool AtTerminal;
    bool Escapes = false;
    bool Begun = false;
    std::string Command;  // of the pager; empty: none
    std::string Held;     // text that is kept until it is known whether a pager is needed
    ControlEscaper Escaper{true};
    std::string Escaped;
    std::unique_ptr<Pager> Running;
};

}  // namespace kd_tool
