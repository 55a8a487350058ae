#include "resultoutput.h"

#include "exitstatus.h"
#include "signals.h"
#include "terminal.h"

#include <kd_lib/exchange/error.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace kd_tool {

namespace {

constexpr const char* outputName = "standard output";

/// Waits until the descriptor accepts bytes. False: a stop is requested.
bool waitForReader(int descriptor)
{
    constexpr int interval = 100;
    pollfd waiting = {descriptor, POLLOUT, 0};
    while (::poll(&waiting, 1, interval) == 0) {
        if (stopToken().stop_requested()) {
            return false;
        }
    }
    return true;
}

}  // namespace

ResultOutput::ResultOutput(Console& console, Paging paging, Controls controls)
    : To(console), AtTerminal(isTerminal(STDOUT_FILENO))
{
    if (AtTerminal) {
        Escapes = controls == Controls::Escape;
        Command = paging == Paging::LongResults ? pagerCommand() : "";
    }
}

ResultOutput::~ResultOutput()
{
    endPager();
}

void ResultOutput::take(std::string_view piece)
{
    if (!AtTerminal || Begun) {
        writeShown(piece);
        return;
    }
    // Whether a pager is needed is known only after a full screen, or at the end.
    Held += piece;
    if (Command.empty() || exceedsScreen(Held)) {
        begin();
    }
}

void ResultOutput::begin()
{
    Begun = true;
    To.endWork();
    if (!Command.empty() && exceedsScreen(Held)) {
        startPager();
    }
    writeShown(std::exchange(Held, {}));
}

void ResultOutput::writeShown(std::string_view text)
{
    if (Escapes) {
        Escaped.clear();
        Escaper.append(Escaped, text);
        text = Escaped;
    }
    writeOut(text);
}

/// Lines that are wider than the terminal need several rows.
bool ResultOutput::exceedsScreen(std::string_view text) const
{
    const ScreenSize size = screenSize(STDOUT_FILENO);
    const auto lines = static_cast<std::size_t>(std::ranges::count(text, '\n'));
    return lines >= size.Rows || text.size() / size.Columns >= size.Rows + lines;
}

void ResultOutput::startPager()
{
    Running = std::make_unique<Pager>(Command);
    if (Running->descriptor() < 0) {
        Running.reset();
        return;
    }
    To.hold();
}

void ResultOutput::endPager()
{
    if (Running) {
        const bool found = Running->wait();
        Running.reset();
        To.release();
        if (!found) {
            To.trouble("the pager \"" + Command + "\" is not installed; use --no-pager");
        }
    }
}

void ResultOutput::writeOut(std::string_view text)
{
    const int descriptor = Running ? Running->descriptor() : STDOUT_FILENO;
    while (!text.empty()) {
        if (!waitForReader(descriptor)) {
            throw kd_lib::exchange::Stopped(outputName, "stopped");
        }
        // A pipe that accepts any bytes accepts this many without waiting.
        const ssize_t written = ::write(descriptor, text.data(), std::min<std::size_t>(text.size(), PIPE_BUF));
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EPIPE) {
            throw ReaderGone();
        } else if (errno != EINTR) {
            throw kd_lib::exchange::Error(outputName, std::generic_category().message(errno));
        }
    }
}

void ResultOutput::finish()
{
    flush();
    if (!Held.empty()) {
        begin();
    }
    endPager();
}

void ResultOutput::abandon() noexcept
{
    try {
        finish();
    } catch (...) {
        return;  // the earlier failure is the one to report
    }
}

}  // namespace kd_tool
