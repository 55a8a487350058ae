#include "textlines.h"

#include <cstring>

namespace kd_lib::exchange::detail {

void TextLines::restart()
{
    Next = Window.begin();
    Number = 0;
}

/// CR ends the lines if the first CR or LF is a CR without LF.
void TextLines::findLineEnd()
{
    std::size_t first = std::string_view::npos;
    std::string_view text;
    while (true) {
        text = {Next, Window.end()};
        first = text.find_first_of("\r\n");
        if (Window.atEnd() || (first != std::string_view::npos && first + 1 < text.size())) {
            break;
        }
        Window.more(Next);
        Next = Window.begin();
    }
    const bool carriageReturn = first != std::string_view::npos && text[first] == '\r';
    LineEnd = carriageReturn && text.substr(first + 1, 1) != "\n" ? '\r' : '\n';
}

bool TextLines::next()
{
    if (LineEnd == '\0') {
        findLineEnd();
    }
    const char* end = nullptr;
    while (true) {
        const std::string_view rest(Next, Window.end());
        end = rest.empty() ? nullptr : static_cast<const char*>(std::memchr(rest.data(), LineEnd, rest.size()));
        if (end != nullptr || Window.atEnd()) {
            break;
        }
        Window.more(Next);
        Next = Window.begin();
    }
    const bool ended = end != nullptr;
    Line = {Next, ended ? end : Window.end()};
    if (!ended && (Line.empty() || Line == dosEndMark)) {
        EndMark = !Line.empty();
        return false;
    }
    Next = ended ? end + 1 : Window.end();
    if (LineEnd == '\n' && Line.ends_with('\r')) {
        Line.remove_suffix(1);
    }
    ++Number;
    return true;
}

}  // namespace kd_lib::exchange::detail
