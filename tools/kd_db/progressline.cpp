#include "progressline.h"

#include "textwidth.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace kd_tool {

namespace {

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

}  // namespace

std::string progressLine(const WorkDone& done, double seconds, std::size_t width)
{
    const double rate = static_cast<double>(done.Bytes) / seconds;
    std::string left = done.What;
    std::string right = amount(rate) + "/s";
    if (!done.Size || *done.Size == 0) {
        left += "  " + std::to_string(done.Records) + " records  " + amount(static_cast<double>(done.Bytes));
        return truncated(left + "  " + right, width, "");
    }
    const double share = std::min(static_cast<double>(done.Bytes) / static_cast<double>(*done.Size), 1.0);
    constexpr double hundred = 100;
    left += "  " + std::to_string(static_cast<int>(share * hundred)) + "% ";
    right = " " + right;
    if (rate > 0) {
        right += "  " + duration((static_cast<double>(*done.Size) - static_cast<double>(done.Bytes)) / rate) + " left";
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
