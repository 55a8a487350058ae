#include "scriptsplitter.h"

#include <kd_lib/dates.h>
#include <kd_lib/text.h>

#include <algorithm>

namespace kd_lib::detail {

namespace {

constexpr char quotationMark = '\'';
constexpr char commentStart = '#';
constexpr char statementEnd = ';';
constexpr char lineEnd = '\n';

/// The position of the first `c` from `from` on, or the end.
std::size_t find(std::string_view text, char c, std::size_t from)
{
    return std::min(text.find(c, from), text.size());
}

/// The position of the first character outside quotes that is not plain text, or the end.
std::size_t findSpecial(std::string_view text, std::size_t from)
{
    const auto isSpecial = [](char c) { return c == quotationMark || c == commentStart || c == statementEnd; };
    return static_cast<std::size_t>(
        std::find_if(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(), isSpecial) - text.begin());
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
            skipComment(block);
        } else {
            takeText(block);
        }
    }
    return Complete;
}

void ScriptSplitter::skipComment(std::string_view& block)
{
    const std::size_t end = find(block, lineEnd, 0);
    InComment = end == block.size();
    block.remove_prefix(InComment ? end : end + 1);
}

void ScriptSplitter::takeText(std::string_view& block)
{
    if (Statement.empty()) {
        block.remove_prefix(leadingBlanks(block));
    }
    std::size_t end = 0;
    while (end < block.size() && !Complete && !InComment) {
        end = afterNextSpecial(block, end);
    }
    Statement += block.substr(0, InComment ? end - 1 : end);
    block.remove_prefix(end);
}

/// Continues after the next character that changes the meaning of the text.
std::size_t ScriptSplitter::afterNextSpecial(std::string_view block, std::size_t from)
{
    const std::size_t special = InQuote ? find(block, quotationMark, from) : findSpecial(block, from);
    if (special == block.size()) {
        return special;
    }
    Complete = block[special] == statementEnd;
    InComment = block[special] == commentStart;
    InQuote = !InQuote && block[special] == quotationMark;
    return special + 1;
}

}  // namespace kd_lib::detail
