/// \file
/// Splitting an SQL script into statements.
#pragma once

#include <string>
#include <string_view>

namespace kd_lib::detail {

/// Reads a script in blocks of any size and splits it into statements. A ";" outside single quotes ends
/// a statement and belongs to it. A "#" outside them starts a comment, which ends with its line and is
/// removed; quotes inside a comment do not count. Blanks before a statement are removed.
class ScriptSplitter {
public:
    /// Reads `block` up to the end of the next statement and removes what was read from its front.
    /// True when a statement is complete: it is then `statement()` until the next call.
    bool next(std::string_view& block);

    /// The text of the statement so far.
    const std::string& statement() const { return Statement; }

private:
    void skipComment(std::string_view& block);
    void takeText(std::string_view& block);
    std::size_t afterNextSpecial(std::string_view block, std::size_t from);

    std::string Statement;
    bool Complete = false;
    bool InComment = false;
    bool InQuote = false;
};

}  // namespace kd_lib::detail
