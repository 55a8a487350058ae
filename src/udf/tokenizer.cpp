#include <kd_lib/tokenizer.h>

#include <utility>

namespace kd_lib {

void Tokenizer::split(const std::string& text, const std::string& delimiters)
{
    // The text may be one of the old pieces, so they are replaced last.
    std::vector<std::string> pieces;
    PieceReader reader(text, delimiters);
    for (std::string_view piece; reader.next(piece);) {
        pieces.emplace_back(piece);
    }
    tokens = std::move(pieces);
}

std::string Tokenizer::getToken(unsigned long index) const
{
    return tokens[index];
}

}  // namespace kd_lib
