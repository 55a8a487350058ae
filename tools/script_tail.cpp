#include "script_tail.h"

#include <kd_lib/path.h>
#include <kd_lib/text.h>
#include <kd_lib/tokenizer.h>

#include <algorithm>
#include <fstream>

namespace kd_tool {

namespace {

/// Scripts do not end with longer comments; where one does, there is at most a note too many.
constexpr std::streamoff tailSize = 65536;

std::string readTail(const std::string& script)
{
    std::string path = script;
    kd_lib::checkHomePath(path);
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    file.seekg(std::max<std::streamoff>(size - tailSize, 0));
    std::string tail(static_cast<std::size_t>(std::min(size, tailSize)), '\0');
    file.read(tail.data(), static_cast<std::streamsize>(tail.size()));
    tail.resize(static_cast<std::size_t>(file.gcount()));
    return tail;
}

/// The line up to a "#" outside quotes.
std::string_view withoutComment(std::string_view line)
{
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        quoted = quoted != (line[i] == '\'');
        if (line[i] == '#' && !quoted) {
            return line.substr(0, i);
        }
    }
    return line;
}

}  // namespace

bool endsInsideStatement(const std::string& script)
{
    const std::string tail = readTail(script);
    bool open = false;
    kd_lib::PieceReader lines(tail, "\n");
    for (std::string_view line; lines.next(line);) {
        line = withoutComment(line);
        const std::size_t end = line.rfind(';');
        if (end != std::string_view::npos) {
            open = false;
            line.remove_prefix(end + 1);
        }
        line = kd_lib::allTrimView(line);
        open = open || (!line.empty() && line.substr(0, 2) != "--");
    }
    return open;
}

}  // namespace kd_tool
