#include <kd_lib/exchange/serverscript.h>

#include "detail/digits.h"
#include "detail/inputfile.h"
#include "detail/utf8.h"

#include <kd_lib/blanks.h>
#include <kd_lib/exchange/error.h>
#include <kd_lib/text.h>

#include <algorithm>
#include <utility>

namespace kd_lib::exchange {

namespace {

bool isWordByte(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || detail::isDigit(c) || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

/// Determines whether a ";" is inside the body of a routine, as psql does.
class RoutineBody {
public:
    void note(std::string_view word)
    {
        ++Words;
        if (word.size() > longestWord) {
            return;
        }
        const std::string capitals = stringToUpper(std::string(word));
        if (Words == 1) {
            Creates = capitals == "CREATE";
        } else if (Creates && Words <= 4 && (capitals == "FUNCTION" || capitals == "PROCEDURE")) {
            Routine = true;
        } else if (Routine && (capitals == "BEGIN" || (capitals == "CASE" && Depth > 0))) {
            ++Depth;
        } else if (Routine && capitals == "END" && Depth > 0) {
            --Depth;
        }
    }

    bool inside() const { return Depth > 0; }

private:
    static constexpr std::size_t longestWord = 9;

    std::size_t Words = 0;
    std::size_t Depth = 0;
    bool Creates = false;
    bool Routine = false;
};

}  // namespace

/// Positions are offsets from the first unread byte.
class ServerScript::Reader {
public:
    Reader(const std::string& file, Engine engine, std::size_t longest)
        : File(file), Postgres(engine == Engine::PostgreSql), Longest(longest)
    {
        if (startsWith(detail::utf8Mark)) {
            pass(detail::utf8Mark.size());
        }
    }

    bool next(bool backslashes)
    {
        pass(std::exchange(ToPass, 0));
        if (!passToStatement()) {
            return false;
        }
        FirstLine = Line;
        ++Number;
        const std::size_t end = endOfStatement(backslashes);
        if (end > Longest) {
            failTooLong();
        }
        Statement = std::string_view(Buffer).substr(Passed, end);
        ToPass = end + End.size();
        return true;
    }

    std::string_view copyRows()
    {
        pass(std::exchange(ToPass, 0));
        if (!std::exchange(InRows, true)) {
            pass(endOfLine(0) + 1);  // the statement's own line
        }
        std::size_t end = 0;
        while (!atEnd(end) && end < detail::InputFile::usualRead) {
            const std::size_t lineEnd = endOfLine(end);
            const std::string_view line = std::string_view(Buffer).substr(Passed + end, lineEnd - end);
            if (line == "\\." || line == "\\.\r") {
                ToPass = end == 0 ? lineEnd : end;
                InRows = end != 0;
                return std::string_view(Buffer).substr(Passed, end);
            }
            end = std::min(lineEnd + 1, Buffer.size() - Passed);
        }
        ToPass = end;
        InRows = end != 0;
        return std::string_view(Buffer).substr(Passed, end);
    }

    detail::InputFile File;
    std::string_view Statement;
    std::uint64_t Number = 0;
    std::uint64_t FirstLine = 1;

private:
    [[noreturn]] void fail(const std::string& reason) const
    {
        throw Error(File.path(), "line " + std::to_string(Line) + ": " + reason);
    }

    [[noreturn]] void failTooLong() const { fail("a statement of more than " + std::to_string(Longest) + " bytes"); }

    /// The byte at a position; a zero byte after the end.
    char at(std::size_t position)
    {
        while (Passed + position >= Buffer.size()) {
            if (position > Longest + End.size()) {
                failTooLong();
            }
            Buffer.erase(0, std::exchange(Passed, 0));
            const std::size_t size = Buffer.size();
            Buffer.resize(size + detail::InputFile::usualRead);
            Buffer.resize(size + File.readSome(Buffer.data() + size, detail::InputFile::usualRead));
            if (Buffer.size() == size) {
                return '\0';
            }
        }
        return Buffer[Passed + position];
    }

    bool atEnd(std::size_t position) { return at(position) == '\0' && Passed + position >= Buffer.size(); }

    bool startsWith(std::string_view capitals)
    {
        at(capitals.size() - 1);
        return stringToUpper(Buffer.substr(Passed, capitals.size())) == capitals;
    }

    bool isAt(std::size_t position, std::string_view text)
    {
        at(position + text.size() - 1);
        return std::string_view(Buffer).substr(Passed + position).starts_with(text);
    }

    void pass(std::size_t count)
    {
        const std::string_view passed = std::string_view(Buffer).substr(Passed, count);
        Line += static_cast<std::uint64_t>(std::ranges::count(passed, '\n'));
        Passed += passed.size();
    }

    std::size_t endOfLine(std::size_t position)
    {
        while (!atEnd(position) && at(position) != '\n') {
            ++position;
        }
        return position;
    }

    /// The end of the comment that begins at a position; the position itself if none does.
    std::size_t endOfComment(std::size_t position)
    {
        const char next = at(position + 1);
        switch (at(position)) {
        case '#':
            return Postgres ? position : endOfLine(position);
        case '-': {
            const bool comment = next == '-' && (Postgres || static_cast<unsigned char>(at(position + 2)) <= ' ');
            return comment ? endOfLine(position) : position;
        }
        case '/':
            return next == '*' ? endOfBlockComment(position) : position;
        default:
            return position;
        }
    }

    std::size_t endOfBlockComment(std::size_t position)
    {
        std::size_t depth = 0;
        do {
            if (atEnd(position)) {
                return position;
            }
            const bool opens = at(position) == '/' && at(position + 1) == '*' && (Postgres || depth == 0);
            const bool closes = at(position) == '*' && at(position + 1) == '/';
            depth += opens ? 1U : 0U;
            depth -= closes ? 1U : 0U;
            position += opens || closes ? 2 : 1;
        } while (depth > 0);
        return position;
    }

    std::size_t endOfQuotes(std::size_t position, bool backslashes)
    {
        const char quote = at(position++);
        while (!atEnd(position) && at(position) != quote) {
            position += backslashes && at(position) == '\\' ? 2U : 1U;
        }
        return position + 1;
    }

    /// The end of a text between $tag$ and $tag$.
    std::size_t endOfDollarQuotes(std::size_t position)
    {
        std::size_t end = position + 1;
        while (isWordByte(at(end))) {
            ++end;
        }
        const bool digit = detail::isDigit(at(position + 1));
        if (at(end) != '$' || digit) {
            return end;
        }
        const std::string tag = Buffer.substr(Passed + position, end + 1 - position);
        for (++end; !atEnd(end); ++end) {
            if (at(end) == '$' && isAt(end, tag)) {
                return end + tag.size();
            }
        }
        return end;
    }

    /// Skips everything before a statement; false at the end.
    bool passToStatement()
    {
        while (!atEnd(0)) {
            if (isBlank(at(0)) || isAt(0, End)) {
                pass(isBlank(at(0)) ? 1 : End.size());
            } else if (const std::size_t end = hasMeaning() ? 0 : endOfComment(0); end > 0) {
                pass(end);
            } else if (!passClientCommand()) {
                return true;
            }
        }
        return false;
    }

    /// Whether the next comment is one that MySQL executes.
    bool hasMeaning() { return !Postgres && (isAt(0, "/*!") || isAt(0, "/*M!")); }

    /// Carries out, skips or refuses a command for the client; false if there is none.
    bool passClientCommand()
    {
        if (Postgres && at(0) == '\\') {
            const std::size_t lineEnd = endOfLine(0);
            const std::string command = allTrim(Buffer.substr(Passed, lineEnd));
            constexpr std::string_view harmless[] = {"\\restrict ", "\\unrestrict ", "\\set ON_ERROR_STOP"};
            if (std::ranges::none_of(harmless, [&](std::string_view word) { return command.starts_with(word); })) {
                fail("a command of psql: " + command);
            }
            pass(lineEnd);
            return true;
        }
        constexpr std::string_view delimiter = "DELIMITER";
        if (Postgres || !startsWith(delimiter) || !isBlank(at(delimiter.size()))) {
            return false;
        }
        const std::size_t end = endOfLine(0);
        End = allTrim(Buffer.substr(Passed + delimiter.size(), end - delimiter.size()));
        if (End.empty()) {
            fail("DELIMITER without a delimiter");
        }
        pass(end);
        return true;
    }

    std::size_t endOfStatement(bool backslashes)
    {
        RoutineBody body;
        std::size_t brackets = 0;
        std::size_t position = 0;
        while (!atEnd(position)) {
            const char c = at(position);
            if (c == End.front() && brackets == 0 && !body.inside() && isAt(position, End)) {
                return position;
            }
            if (isWordByte(c)) {
                position = passWord(position, body);
            } else if (c == '\'' || c == '"' || c == '`') {
                position = endOfQuotes(position, backslashes && (c == '\'' || (c == '"' && !Postgres)));
            } else if (c == '$' && Postgres) {
                position = endOfDollarQuotes(position);
            } else if (const std::size_t end = endOfComment(position); end > position) {
                position = end;
            } else {
                brackets += c == '(' && Postgres ? 1U : 0U;
                brackets -= c == ')' && brackets > 0 ? 1U : 0U;
                ++position;
            }
        }
        return position;
    }

    std::size_t passWord(std::size_t position, RoutineBody& body)
    {
        std::size_t end = position;
        while (isWordByte(at(end)) || (at(end) == '$' && end > position)) {
            ++end;
        }
        const std::string_view word = std::string_view(Buffer).substr(Passed + position, end - position);
        const bool escapes = Postgres && (word == "E" || word == "e") && Buffer[Passed + end] == '\'';
        body.note(word);
        return escapes ? endOfQuotes(end, true) : end;
    }

    bool Postgres;
    std::size_t Longest;
    std::string Buffer;
    std::size_t Passed = 0;  // of `Buffer`
    std::size_t ToPass = 0;  // the bytes returned so far
    std::string End = ";";
    bool InRows = false;
    std::uint64_t Line = 1;
};

ServerScript::ServerScript(const std::string& file, Engine engine, std::size_t longest)
    : Of(std::make_unique<Reader>(file, engine, longest))
{
}

ServerScript::~ServerScript() = default;

bool ServerScript::next(bool backslashes)
{
    return Of->next(backslashes);
}

std::string_view ServerScript::statement() const
{
    return Of->Statement;
}

std::uint64_t ServerScript::number() const
{
    return Of->Number;
}

std::uint64_t ServerScript::line() const
{
    return Of->FirstLine;
}

std::string_view ServerScript::copyRows()
{
    return Of->copyRows();
}

std::uint64_t ServerScript::position() const
{
    return Of->File.position();
}

std::optional<std::uint64_t> ServerScript::size() const
{
    return Of->File.size();
}

}  // namespace kd_lib::exchange
