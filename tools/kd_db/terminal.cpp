#include "terminal.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace kd_tool {

namespace {

std::string_view environment(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::size_t numberOf(const char* name, std::size_t otherwise)
{
    constexpr long most = 10000;
    const long number = std::strtol(std::string(environment(name)).c_str(), nullptr, 10);
    return number > 0 && number <= most ? static_cast<std::size_t>(number) : otherwise;
}

bool isDumb()
{
    return environment("TERM") == "dumb";
}

}  // namespace

bool isTerminal(int descriptor)
{
    return ::isatty(descriptor) == 1;
}

ScreenSize screenSize(int descriptor)
{
    ScreenSize size;
    winsize known{};
    const bool hasSize = ::ioctl(descriptor, TIOCGWINSZ, &known) == 0;
    size.Columns = hasSize && known.ws_col > 0 ? known.ws_col : numberOf("COLUMNS", size.Columns);
    size.Rows = hasSize && known.ws_row > 0 ? known.ws_row : numberOf("LINES", size.Rows);
    return size;
}

bool useColor(When when, int descriptor)
{
    if (when != When::Auto) {
        return when == When::Always;
    }
    return isTerminal(descriptor) && !isDumb() && environment("NO_COLOR").empty();
}

bool localeIsUtf8()
{
    std::string_view locale;
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        locale = locale.empty() ? environment(name) : locale;
    }
    std::string lower(locale);
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return std::tolower(c); });
    return lower.find("utf-8") != std::string::npos || lower.find("utf8") != std::string::npos;
}

}  // namespace kd_tool
