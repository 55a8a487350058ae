#include <kd_lib/tokenizer.h>

namespace kd_lib {

void Tokenizer::split(const std::string& text, const std::string& delimiters)
{
    tokens.clear();
    PieceReader pieces(text, delimiters);
    for (std::string_view piece; pieces.next(piece);) {
        tokens.emplace_back(piece);
    }
}

std::string Tokenizer::getToken(unsigned long index) const
{
    return tokens[index];
}

}  // namespace kd_lib
