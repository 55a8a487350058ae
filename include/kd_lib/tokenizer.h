/// \file
/// Cutting a text into pieces at delimiter characters.
#pragma once

#include <kd_lib/export.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kd_lib {

/// Reads the pieces of a text without copying them. Empty pieces count, also at both ends, and an empty
/// text is one empty piece: a text with n delimiters has n + 1 pieces.
/// The text and the delimiters must outlive the reader and the pieces.
/// Threads: one thread per object.
class PieceReader {
public:
    /// Cuts at every character of `text` that occurs in `delimiters`.
    PieceReader(std::string_view text, std::string_view delimiters) : Rest(text), Delimiters(delimiters) {}

    /// Sets `piece` to the next piece and returns true; returns false after the last one.
    bool next(std::string_view& piece)
    {
        if (Done) {
            return false;
        }
        const std::size_t end = Delimiters.size() == 1 ? Rest.find(Delimiters.front()) : Rest.find_first_of(Delimiters);
        Done = end == std::string_view::npos;
        piece = Rest.substr(0, end);
        Rest.remove_prefix(Done ? Rest.size() : end + 1);
        return true;
    }

private:
    std::string_view Rest;
    std::string_view Delimiters;
    bool Done = false;
};

/// Cuts a text and keeps copies of its pieces.
/// Threads: one thread per object.
class KD_LIB_EXPORT Tokenizer {
public:
    /// The pieces of the last `split`, in the order of the text.
    std::vector<std::string> tokens;

    /// Replaces `tokens` by the pieces of `text`, as `PieceReader` cuts them. `delimiters` is a set of
    /// single characters; they belong to no piece.
    void split(const std::string& text, const std::string& delimiters);

    /// A copy of piece `index`, counted from 0; `index` must be below `tokens.size()`.
    std::string getToken(unsigned long index) const;
};

}  // namespace kd_lib
