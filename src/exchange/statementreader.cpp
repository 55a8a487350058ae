#include <kd_lib/exchange/statementreader.h>

#include "detail/digits.h"
#include "detail/lettercase.h"
#include "detail/utf8.h"

#include <kd_lib/exchange/error.h>

#include <algorithm>
#include <utility>

namespace kd_lib::exchange {

namespace {

/// As in SQLite, a vertical tab is not a blank.
bool isSqliteBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r';
}

bool isWordCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || detail::isDigit(c) || c == '_' || c == '$' ||
           static_cast<unsigned char>(c) >= 0x80;
}

/// The character that ends the quotes which `c` opens; 0: it opens none.
char closingQuote(char c)
{
    switch (c) {
    case '\'':
    case '"':
    case '`':
        return c;
    case '[':
        return ']';
    default:
        return 0;
    }
}

/// The characters that have a meaning outside quotes and comments.
constexpr auto specialCharacters = [] {
    std::array<bool, 256> special = {};
    for (const char c : {';', '\'', '"', '`', '[', '-', '/', '#'}) {
        special[static_cast<unsigned char>(c)] = true;
    }
    return special;
}();

bool isSpecial(char c)
{
    return specialCharacters[static_cast<unsigned char>(c)];
}

std::size_t ordinaryCharacters(std::string_view block)
{
    return static_cast<std::size_t>(std::find_if(block.begin(), block.end(), isSpecial) - block.begin());
}

}  // namespace

StatementReader::StatementReader(std::string file, std::size_t longest) : File(std::move(file)), Longest(longest) {}

bool StatementReader::next(std::string_view& block)
{
    if (Complete) {
        startStatement();
    }
    if (MarkBytes < detail::utf8Mark.size()) {
        skipByteOrderMark(block);
    }
    while (!block.empty()) {
        switch (In) {
        case Inside::Code:
            if (readCode(block)) {
                return true;
            }
            break;
        case Inside::Quotes:
            readQuotes(block);
            break;
        case Inside::BlockComment:
            readBlockComment(block);
            break;
        case Inside::LineComment:
        case Inside::HashComment:
            readComment(block);
            break;
        }
    }
    return false;
}

bool StatementReader::finish()
{
    if (Complete) {
        startStatement();
    }
    if (MarkBytes < detail::utf8Mark.size()) {
        append(detail::utf8Mark.substr(0, std::exchange(MarkBytes, detail::utf8Mark.size())));
    }
    takePending();
    Complete = !Text.empty();
    return Complete;
}

void StatementReader::startStatement()
{
    Text.clear();
    Words = Phase::Start;
    WordSize = 0;
    Complete = false;
}

void StatementReader::skipByteOrderMark(std::string_view& block)
{
    while (MarkBytes < detail::utf8Mark.size() && !block.empty()) {
        if (block.front() != detail::utf8Mark[MarkBytes]) {
            const std::size_t count = std::exchange(MarkBytes, detail::utf8Mark.size());
            for (const char c : detail::utf8Mark.substr(0, count)) {
                takeCharacter(c);
            }
            return;
        }
        ++MarkBytes;
        block.remove_prefix(1);
    }
}

void StatementReader::consume(std::string_view& block, std::size_t count)
{
    Line += static_cast<std::uint64_t>(std::count(block.data(), block.data() + count, '\n'));
    block.remove_prefix(count);
}

void StatementReader::append(std::string_view text)
{
    if (text.empty()) {
        return;
    }
    if (Text.empty()) {
        FirstLine = Line;
        ++Number;
    }
    if (text.size() > Longest - Text.size()) {
        throw Error(File, "statement " + std::to_string(Number) + ", line " + std::to_string(FirstLine) +
                              ": longer than " + std::to_string(Longest) + " bytes");
    }
    Text.append(text);
}

bool StatementReader::readCode(std::string_view& block)
{
    // Most of a script: words no longer matter, and no character depends on the next one.
    if (Pending == 0 && (Words == Phase::Plain || Words == Phase::Trigger)) {
        const std::size_t count = ordinaryCharacters(block);
        append(block.substr(0, count));
        consume(block, count);
        if (block.empty()) {
            return false;
        }
    }
    const char c = block.front();
    const bool complete = takeCharacter(c);
    consume(block, 1);
    return complete;
}

/// Reads a character outside quotes and comments; true if it ends the statement.
bool StatementReader::takeCharacter(char c)
{
    if (opensComment(c)) {
        return false;
    }
    if (isWordCharacter(c)) {
        if (WordSize < Word.size()) {
            Word[WordSize] = detail::upperLetter(c);
        }
        WordSize += WordSize <= Word.size() ? 1 : 0;
        append({&c, 1});
        return false;
    }
    endWord();
    if (c == ';') {
        if (Text.empty()) {
            return false;
        }
        append({&c, 1});
        Complete = endsAtSemicolon();
        return Complete;
    }
    if (isSqliteBlank(c)) {
        append(Text.empty() ? std::string_view() : std::string_view(&c, 1));
        return false;
    }
    otherToken();
    append({&c, 1});
    Quote = closingQuote(c);
    In = Quote != 0 ? Inside::Quotes : Inside::Code;
    return false;
}

/// Whether `c` opens a comment or may be the first half of a mark that does.
bool StatementReader::opensComment(char c)
{
    if ((Pending == '-' && c == '-') || (Pending == '/' && c == '*')) {
        In = c == '-' ? Inside::LineComment : Inside::BlockComment;
        Star = false;
        if (!Text.empty()) {
            append({&Pending, 1});
            append({&c, 1});
        }
        Pending = 0;
        return true;
    }
    takePending();
    if (c == '-' || c == '/' || c == '#') {
        endWord();
        Pending = c == '#' ? '\0' : c;
        In = c == '#' ? Inside::HashComment : In;
        return true;
    }
    return false;
}

void StatementReader::takePending()
{
    if (Pending != 0) {
        otherToken();
        append({&Pending, 1});
        Pending = 0;
    }
}

void StatementReader::readQuotes(std::string_view& block)
{
    const std::size_t end = block.find(Quote);
    const std::size_t count = end == std::string_view::npos ? block.size() : end + 1;
    append(block.substr(0, count));
    consume(block, count);
    if (end != std::string_view::npos) {
        // A doubled quote ends the text and begins it again at once.
        In = Inside::Code;
    }
}

void StatementReader::readComment(std::string_view& block)
{
    const std::size_t end = std::min(block.find('\n'), block.size());
    if (In == Inside::LineComment && !Text.empty()) {
        append(block.substr(0, end));
    }
    In = end < block.size() ? Inside::Code : In;
    consume(block, end);
}

void StatementReader::readBlockComment(std::string_view& block)
{
    std::size_t count = 0;
    bool closed = false;
    while (count < block.size() && !closed) {
        const char c = block[count++];
        closed = Star && c == '/';
        Star = c == '*';
    }
    if (!Text.empty()) {
        append(block.substr(0, count));
    }
    consume(block, count);
    In = closed ? Inside::Code : In;
}

bool StatementReader::endsAtSemicolon()
{
    switch (Words) {
    case Phase::Trigger:
    case Phase::TriggerSemicolon:
        Words = Phase::TriggerSemicolon;
        return false;
    default:
        return true;
    }
}

void StatementReader::endWord()
{
    if (WordSize == 0) {
        return;
    }
    const std::string_view word(Word.data(), WordSize <= Word.size() ? WordSize : 0);
    WordSize = 0;
    if (Words == Phase::Start && word == "EXPLAIN") {
        Words = Phase::Explain;
    } else if ((Words == Phase::Start || Words == Phase::Explain) && word == "CREATE") {
        Words = Phase::Create;
    } else if ((Words == Phase::Explain && (word == "QUERY" || word == "PLAN")) ||
               (Words == Phase::Create && (word == "TEMP" || word == "TEMPORARY"))) {
        return;
    } else if (Words == Phase::Create && word == "TRIGGER") {
        Words = Phase::Trigger;
    } else if (Words == Phase::TriggerSemicolon && word == "END") {
        Words = Phase::TriggerEnd;
    } else {
        otherToken();
    }
}

/// A token that is not a keyword.
void StatementReader::otherToken()
{
    const bool inTrigger = Words >= Phase::Trigger;
    Words = inTrigger ? Phase::Trigger : Phase::Plain;
}

}  // namespace kd_lib::exchange
