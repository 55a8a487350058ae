#include <kd_lib/detail/statementtext.h>

#include <kd_lib/dates.h>
#include <kd_lib/text.h>

#include <algorithm>

namespace kd_lib::detail {

namespace {

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isWordByte(char c)
{
    return isLetter(c) || isDigit(c) || c == '$';
}

/// One pass over a statement. Every step appends the text that it reads to the result.
class Reader {
public:
    Reader(std::string_view sql, SqlForm form, bool backslashes)
        : Sql(sql), Postgres(form == SqlForm::PostgreSql), Backslashes(backslashes)
    {
        Result.Sql.reserve(sql.size());
    }

    StatementText read()
    {
        while (At < Sql.size()) {
            step();
        }
        return std::move(Result);
    }

private:
    char at(std::size_t place) const { return place < Sql.size() ? Sql[place] : '\0'; }

    void take(std::size_t count)
    {
        Result.Sql.append(Sql.substr(At, count));
        At = std::min(At + count, Sql.size());
    }

    void step()
    {
        switch (const char c = Sql[At]; c) {
        case '\'':
            takeQuoted('\'', Backslashes || (Postgres && followsEscapeLetter()));
            return;
        case '"':
            takeQuoted('"', !Postgres && Backslashes);
            return;
        case '`':
            takeBackquoted();
            return;
        case '-':
        case '#':
        case '/':
            takeCommentOrSign(c);
            return;
        case '$':
            Postgres ? takeDollar() : take(1);
            return;
        case ':':
            takeColon();
            return;
        case '?':
            Postgres ? take(1) : takeParameter(1, 0);
            return;
        case '[':
        case ']':
            Brackets += c == '[' ? 1 : -1;
            take(1);
            return;
        default:
            isWordByte(c) ? takeWord() : take(1);
        }
    }

    void takeWord()
    {
        std::size_t end = At;
        while (end < Sql.size() && isWordByte(Sql[end])) {
            ++end;
        }
        take(end - At);
    }

    /// Whether the quote follows the E of an escape string.
    bool followsEscapeLetter() const
    {
        return At > 0 && (Sql[At - 1] == 'E' || Sql[At - 1] == 'e') && (At == 1 || !isWordByte(Sql[At - 2]));
    }

    void takeQuoted(char quote, bool escapes)
    {
        std::size_t end = At + 1;
        while (end < Sql.size() && Sql[end] != quote) {
            end += escapes && Sql[end] == '\\' ? 2U : 1U;
        }
        take(end + 1 - At);  // after a doubled quote the text continues
    }

    void takeBackquoted()
    {
        const std::size_t end = Sql.find('`', At + 1);
        if (!Postgres || end == std::string_view::npos) {
            take(end == std::string_view::npos ? 1 : end + 1 - At);
            return;
        }
        Result.Sql += '"';
        for (const char c : Sql.substr(At + 1, end - At - 1)) {
            Result.Sql.append(c == '"' ? 2 : 1, c);
        }
        Result.Sql += '"';
        At = end + 1;
    }

    void takeCommentOrSign(char c)
    {
        const char next = at(At + 1);
        const bool toLineEnd = (c == '#' && !Postgres) ||
                               (c == '-' && next == '-' && (Postgres || static_cast<unsigned char>(at(At + 2)) <= ' '));
        if (toLineEnd) {
            take(std::min(Sql.find('\n', At), Sql.size()) - At);
        } else if (c == '/' && next == '*') {
            takeBlockComment();
        } else {
            take(1);
        }
    }

    void takeBlockComment()
    {
        std::size_t depth = 1;
        std::size_t end = At + 2;
        while (end < Sql.size() && depth > 0) {
            const std::string_view pair = Sql.substr(end, 2);
            depth += pair == "/*" && Postgres ? 1U : 0U;
            depth -= pair == "*/" ? 1U : 0U;
            end += pair == "*/" || (pair == "/*" && Postgres) ? 2U : 1U;
        }
        take(end - At);
    }

    /// A parameter such as $1, or a text between $tag$ and $tag$.
    void takeDollar()
    {
        std::size_t end = At + 1;
        if (isDigit(at(end))) {
            std::size_t number = 0;
            for (; isDigit(at(end)) && number < 65536; ++end) {
                number = number * 10 + static_cast<std::size_t>(Sql[end] - '0');
            }
            if (number <= 65535 && Result.Names.size() < number) {
                Result.Names.resize(number);
            }
            take(end - At);
            return;
        }
        while (isLetter(at(end)) || isDigit(at(end))) {
            ++end;
        }
        if (at(end) != '$') {
            take(1);
            return;
        }
        const std::string_view tag = Sql.substr(At, end + 1 - At);
        const std::size_t close = Sql.find(tag, end + 1);
        take(close == std::string_view::npos ? Sql.size() - At : close + tag.size() - At);
    }

    void takeColon()
    {
        std::size_t end = At + 1;
        if (at(end) == ':' || !isLetter(at(end)) || Brackets > 0) {
            take(at(end) == ':' ? 2 : 1);
            return;
        }
        while (isLetter(at(end)) || isDigit(at(end))) {
            ++end;
        }
        const auto number = static_cast<std::size_t>(Result.number(Sql.substr(At, end - At)));
        takeParameter(end - At, number);
    }

    /// Replaces `length` bytes by the parameter of this number, or by a new one if the number is 0.
    void takeParameter(std::size_t length, std::size_t number)
    {
        if (number == 0) {
            Result.Names.emplace_back(length > 1 ? Sql.substr(At, length) : std::string_view());
            number = Result.Names.size();
        }
        At += length;
        if (Postgres) {
            Result.Sql += '$' + std::to_string(number);
        } else {
            Result.Sql += '?';
            Result.Occurrences.push_back(number - 1);
        }
    }

    std::string_view Sql;
    bool Postgres;
    bool Backslashes;
    std::size_t At = 0;
    int Brackets = 0;
    StatementText Result;
};

}  // namespace

int StatementText::number(std::string_view name) const
{
    const auto found = name.empty() ? Names.end() : std::find(Names.begin(), Names.end(), name);
    return found == Names.end() ? 0 : static_cast<int>(found - Names.begin()) + 1;
}

StatementText readStatement(std::string_view sql, SqlForm form, bool backslashes)
{
    return Reader(sql, form, backslashes).read();
}

}  // namespace kd_lib::detail
