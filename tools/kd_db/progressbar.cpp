#include "progressbar.h"

#include "escape.h"
#include "terminal.h"

#include <string_view>
#include <unistd.h>
#include <utility>

namespace kd_tool {

namespace {

constexpr std::chrono::milliseconds delay(1000);
constexpr std::chrono::milliseconds redrawInterval(100);
constexpr std::string_view eraseLine = "\r\x1b[K";

void writeAll(std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
        if (written <= 0) {
            return;  // the failure cannot be reported anywhere
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace

void ProgressBar::begin(std::string what, std::optional<std::uint64_t> size)
{
    Done = {oneLine(what), size, 0, 0};
    Began = Drawn = Clock::now();
    Active = true;
}

void ProgressBar::end()
{
    clear();
    Active = false;
}

void ProgressBar::clear()
{
    if (std::exchange(Shown, false)) {
        writeAll(eraseLine);
    }
}

void ProgressBar::add(std::uint64_t bytes, std::uint64_t records)
{
    Done.Bytes += bytes;
    Done.Records += records;
    const Clock::time_point now = Clock::now();
    if (!Active || now - Began < delay || (now - Drawn < redrawInterval && Shown)) {
        return;
    }
    Drawn = now;
    Shown = true;
    const double seconds = std::chrono::duration<double>(now - Began).count();
    writeAll(std::string(eraseLine) + progressLine(Done, seconds, screenSize(STDERR_FILENO).Columns - 1));
}

}  // namespace kd_tool
