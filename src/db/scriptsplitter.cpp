#include "scriptsplitter.h"

namespace kd_lib {

namespace {

constexpr char quote = '\'';
constexpr char commentStart = '#';
constexpr char statementEnd = ';';
constexpr char lineEnd = '\n';

bool isOrdinary(char c)
{
    return c != quote && c != commentStart && c != statementEnd;
}

/// Removes the first `count` characters of `text`, or all of them, and returns them.
std::string_view take(std::string_view& text, std::size_t count)
{
    const std::string_view taken = text.substr(0, count);
    text.remove_prefix(taken.size());
    return taken;
}

}  // namespace

bool ScriptSplitter::next(std::string_view& block)
{
    if (Complete) {
        Statement.clear();
        Complete = false;
    }
    while (!block.empty() && !Complete) {
        if (InComment) {
            takeComment(block);
        } else if (InQuote) {
            takeQuoted(block);
        } else {
            Complete = takeOrdinary(block);
        }
    }
    return Complete;
}

void ScriptSplitter::takeComment(std::string_view& block)
{
    const std::size_t end = block.find(lineEnd);
    InComment = end == std::string_view::npos;
    take(block, InComment ? block.size() : end + 1);
}

void ScriptSplitter::takeQuoted(std::string_view& block)
{
    const std::size_t end = block.find(quote);
    InQuote = end == std::string_view::npos;
    Statement += take(block, InQuote ? block.size() : end + 1);
}

bool ScriptSplitter::takeOrdinary(std::string_view& block)
{
    std::size_t run = 0;
    while (run < block.size() && isOrdinary(block[run])) {
        ++run;
    }
    Statement += take(block, run);
    if (block.empty()) {
        return false;
    }
    const char special = block.front();
    take(block, 1);
    InComment = special == commentStart;
    InQuote = special == quote;
    if (!InComment) {
        Statement += special;
    }
    return special == statementEnd;
}

}  // namespace kd_lib
