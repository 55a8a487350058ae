#include "progressbar.h"

#include "escape.h"
#include "terminal.h"
#include "textwidth.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace kd_tool {

namespace {

constexpr std::chrono::milliseconds delay(1000);
constexpr std::chrono::milliseconds redrawInterval(100);
constexpr std::string_view eraseLine = "\r\x1b[K";

/// "12.3 MB": three digits or so, in powers of 1000.
std::string amount(double bytes)
{
    constexpr std::array<const char*, 5> units = {"B", "kB", "MB", "GB", "TB"};
    constexpr double step = 1000;
    std::size_t unit = 0;
    for (; bytes >= step && unit + 1 < units.size(); ++unit) {
        bytes /= step;
    }
    std::array<char, 32> text{};
    constexpr double fine = 100;
    std::snprintf(text.data(), text.size(), unit > 0 && bytes < fine ? "%.1f %s" : "%.0f %s", bytes, units[unit]);
    return text.data();
}

/// "1:02:03", "2:03"
std::string duration(double seconds)
{
    constexpr double most = 360000;
    constexpr unsigned sixty = 60;
    const auto whole = static_cast<unsigned>(std::clamp(seconds, 0.0, most));
    const unsigned minutes = whole / sixty;
    std::array<char, 32> text{};
    if (minutes < sixty) {
        std::snprintf(text.data(), text.size(), "%u:%02u", minutes, whole % sixty);
    } else {
        std::snprintf(text.data(), text.size(), "%u:%02u:%02u", minutes / sixty, minutes % sixty, whole % sixty);
    }
    return text.data();
}

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
    What = oneLine(what);
    Size = size;
    Bytes = Records = 0;
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
    Bytes += bytes;
    Records += records;
    const Clock::time_point now = Clock::now();
    if (!Active || now - Began < delay || (now - Drawn < redrawInterval && Shown)) {
        return;
    }
    Drawn = now;
    Shown = true;
    const double seconds = std::chrono::duration<double>(now - Began).count();
    writeAll(std::string(eraseLine) + line(seconds, screenSize(STDERR_FILENO).Columns - 1));
}

std::string ProgressBar::line(double seconds, std::size_t width) const
{
    const double rate = static_cast<double>(Bytes) / seconds;
    std::string left = What;
    std::string right = amount(rate) + "/s";
    if (!Size || *Size == 0) {
        left += "  " + std::to_string(Records) + " records  " + amount(static_cast<double>(Bytes));
        return truncated(left + "  " + right, width, "");
    }
    const double share = std::min(static_cast<double>(Bytes) / static_cast<double>(*Size), 1.0);
    constexpr double hundred = 100;
    left += "  " + std::to_string(static_cast<int>(share * hundred)) + "% ";
    right = " " + right;
    if (rate > 0) {
        right += "  " + duration((static_cast<double>(*Size) - static_cast<double>(Bytes)) / rate) + " left";
    }
    const std::size_t used = textWidth(left) + textWidth(right) + 2;
    constexpr std::size_t leastBar = 5;
    constexpr std::size_t mostBar = 40;
    if (used + leastBar > width) {
        return truncated(left + right, width, "");
    }
    const std::size_t bar = std::min(width - used, mostBar);
    const auto filled = static_cast<std::size_t>(share * static_cast<double>(bar));
    return left + '[' + std::string(filled, '#') + std::string(bar - filled, '-') + ']' + right;
}

}  // namespace kd_tool
