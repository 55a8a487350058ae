#include "script_tail.h"

#include <kd_lib/path.h>
#include <kd_lib/text.h>
#include <kd_lib/tokenizer.h>

#include <algorithm>
#include <fstream>

namespace kd_tool {

namespace {

/// A text inside quotes that is longer can at most cost a note too many or too few.
constexpr std::streamoff tailSize = 65536;

std::string readTail(const std::string& script)
{
    std::string path = script;
    kd_lib::checkHomePath(path);
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = std::max<std::streamoff>(file.tellg(), 0);
    file.seekg(std::max<std::streamoff>(size - tailSize, 0));
    std::string tail(static_cast<std::size_t>(std::min(size, tailSize)), '\0');
    file.read(tail.data(), static_cast<std::streamsize>(tail.size()));
    tail.resize(static_cast<std::size_t>(file.gcount()));
    return tail;
}

/// Reads a script's text as the library splits it, and knows whether a statement is under way.
class StatementState {
public:
    void take(char c)
    {
        if (InComment) {
            InComment = c != '\n';
        } else if (c == '\'') {
            InQuote = !InQuote;
            Open = true;
        } else if (InQuote) {
            return;
        } else if (c == '#') {
            InComment = true;
        } else if (c == ';') {
            Open = false;
        } else if (!kd_lib::isBlank(c)) {
            Open = true;
        }
    }

    bool open() const { return Open; }

private:
    bool InComment = false;
    bool InQuote = false;
    bool Open = false;
};

}  // namespace

bool endsInsideStatement(const std::string& script)
{
    const std::string tail = readTail(script);
    StatementState state;
    kd_lib::PieceReader lines(tail, "\n");
    for (std::string_view line; lines.next(line);) {
        // SQL's own comments between the statements do no harm.
        if (state.open() || kd_lib::allTrimView(line).substr(0, 2) != "--") {
            std::for_each(line.begin(), line.end(), [&state](char c) { state.take(c); });
            state.take('\n');
        }
    }
    return state.open();
}

}  // namespace kd_tool
