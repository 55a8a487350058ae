#include "console.h"

#include "escape.h"
#include "terminal.h"

#include <cstdlib>
#include <unistd.h>
#include <utility>

namespace kd_tool {

namespace {

bool showsProgress(When when)
{
    if (when != When::Auto) {
        return when == When::Always;
    }
    const char* terminal = std::getenv("TERM");
    return isTerminal(STDERR_FILENO) && (terminal == nullptr || std::string_view(terminal) != "dumb");
}

}  // namespace

void Console::configure(const Options& options)
{
    Quiet = options.Quiet;
    Colored = useColor(options.Color, STDERR_FILENO);
    ShowsProgress = showsProgress(options.Progress);
}

void Console::trouble(const std::string& line)
{
    writeLine("kd_db: ", style::red, line);
}

void Console::note(const std::string& line)
{
    if (!Quiet) {
        say(line);
    }
}

void Console::say(const std::string& line)
{
    writeLine("", "", line);
}

void Console::writeLine(std::string_view mark, std::string_view color, const std::string& line)
{
    std::string text;
    if (!mark.empty()) {
        text = Colored ? std::string(color) + std::string(mark) + std::string(style::plain) : std::string(mark);
    }
    text += oneLine(line) + '\n';
    const std::lock_guard guard(Lock);
    if (Held) {
        Kept += text;
        return;
    }
    Bar.clear();
    put(text);
}

void Console::put(const std::string& text)
{
    std::string_view rest = text;
    while (!rest.empty()) {
        const ssize_t written = ::write(STDERR_FILENO, rest.data(), rest.size());
        if (written <= 0) {
            return;  // the failure cannot be reported anywhere
        }
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
}

void Console::hold()
{
    const std::lock_guard guard(Lock);
    Held = true;
}

void Console::release()
{
    const std::lock_guard guard(Lock);
    Held = false;
    put(std::exchange(Kept, {}));
}

void Console::beginWork(const std::string& what, std::optional<std::uint64_t> size)
{
    if (ShowsProgress) {
        const std::lock_guard guard(Lock);
        Bar.begin(what, size);
    }
}

void Console::advance(std::uint64_t bytes, std::uint64_t records)
{
    if (ShowsProgress) {
        const std::lock_guard guard(Lock);
        Bar.add(bytes, records);
    }
}

void Console::endWork()
{
    if (ShowsProgress) {
        const std::lock_guard guard(Lock);
        Bar.end();
    }
}

std::string counted(std::uint64_t count, const std::string& word)
{
    return std::to_string(count) + ' ' + word + (count == 1 ? "" : "s");
}

}  // namespace kd_tool
