#include "sql_words.h"

#include <kd_lib/text.h>

#include <algorithm>
#include <string>

namespace kd_tool {

namespace {

constexpr std::string_view blanks = " \t\n\f\r";
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool startsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

/// Removes everything up to and with `end`.
void skipBehind(std::string_view& text, std::string_view end)
{
    const std::size_t found = text.find(end);
    text.remove_prefix(found == std::string_view::npos ? text.size() : found + end.size());
}

/// Removes what SQLite passes over in front of a word: blanks, byte order marks and comments.
void skipNothing(std::string_view& text)
{
    for (std::size_t before = text.size() + 1; text.size() < before;) {
        before = text.size();
        text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
        if (startsWith(text, byteOrderMark)) {
            text.remove_prefix(byteOrderMark.size());
        } else if (startsWith(text, "--")) {
            skipBehind(text, "\n");
        } else if (startsWith(text, "/*")) {
            skipBehind(text, "*/");
        }
    }
}

bool isWordCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80 || c == '$';
}

/// Removes the next word and returns it in capitals; empty where none stands.
std::string takeWord(std::string_view& text)
{
    skipNothing(text);
    std::size_t size = 0;
    while (size < text.size() && isWordCharacter(text[size])) {
        ++size;
    }
    std::string word = kd_lib::stringToUpper(std::string(text.substr(0, size)));
    text.remove_prefix(size);
    return word;
}

bool beginsTrigger(std::string_view sql)
{
    if (takeWord(sql) != "CREATE") {
        return false;
    }
    const std::string word = takeWord(sql);
    return word == "TRIGGER" || ((word == "TEMP" || word == "TEMPORARY") && takeWord(sql) == "TRIGGER");
}

/// Removes the first statement with its ";". Quotes of any kind and comments protect a ";".
void skipStatement(std::string_view& sql)
{
    while (!sql.empty()) {
        skipNothing(sql);
        const char first = sql.empty() ? ';' : sql.front();
        sql.remove_prefix(sql.empty() ? 0 : 1);
        if (first == ';') {
            return;
        }
        if (first == '\'' || first == '"' || first == '`') {
            skipBehind(sql, std::string_view(&first, 1));
        } else if (first == '[') {
            skipBehind(sql, "]");
        }
    }
}

/// Most statements begin with another letter: they need no closer look.
bool canBeTransactionWord(std::string_view text)
{
    return !text.empty() && std::string_view("bBcCeErR").find(text.front()) != std::string_view::npos;
}

}  // namespace

TransactionWord transactionWord(std::string_view statement)
{
    skipNothing(statement);
    if (!canBeTransactionWord(statement)) {
        return TransactionWord::None;
    }
    const std::string word = takeWord(statement);
    if (word == "BEGIN") {
        return TransactionWord::Begin;
    }
    if (word == "COMMIT" || word == "END") {
        return TransactionWord::Commit;
    }
    if (word != "ROLLBACK") {
        return TransactionWord::None;
    }
    std::string next = takeWord(statement);
    if (next == "TRANSACTION") {
        next = takeWord(statement);
        if (next != "TO" && !next.empty()) {
            next = takeWord(statement);  // an old form names the transaction
        }
    }
    return next == "TO" ? TransactionWord::None : TransactionWord::Rollback;
}

bool holdsSecondStatement(std::string_view sql)
{
    // The statements inside a trigger end with ";" as well.
    if (beginsTrigger(sql)) {
        return false;
    }
    skipStatement(sql);
    skipNothing(sql);
    while (startsWith(sql, ";")) {
        sql.remove_prefix(1);
        skipNothing(sql);
    }
    return !sql.empty();
}

}  // namespace kd_tool
