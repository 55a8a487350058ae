#include "suggestion.h"

#include <algorithm>
#include <array>

namespace kd_tool {

namespace {

constexpr std::size_t longestWord = 32;

/// The number of edits between two words: a letter missing, surplus or wrong, or two neighbours exchanged.
std::size_t distance(std::string_view a, std::string_view b)
{
    std::array<std::array<std::size_t, longestWord + 1>, longestWord + 1> edits{};
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                edits[i][j] = i + j;
                continue;
            }
            const std::size_t other = a[i - 1] == b[j - 1] ? 0 : 1;
            edits[i][j] = std::min({edits[i - 1][j] + 1, edits[i][j - 1] + 1, edits[i - 1][j - 1] + other});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                edits[i][j] = std::min(edits[i][j], edits[i - 2][j - 2] + 1);
            }
        }
    }
    return edits[a.size()][b.size()];
}

}  // namespace

std::string suggestion(std::string_view word, const std::vector<std::string_view>& candidates)
{
    constexpr std::size_t mostEdits = 2;
    std::size_t nearest = mostEdits + 1;
    std::string_view meant;
    if (word.size() > longestWord) {
        return {};
    }
    for (const std::string_view candidate : candidates) {
        const std::size_t edits = candidate.size() <= longestWord ? distance(word, candidate) : nearest;
        if (edits < nearest && 2 * edits < word.size()) {
            nearest = edits;
            meant = candidate;
        }
    }
    return meant.empty() ? std::string() : "; did you mean \"" + std::string(meant) + "\"?";
}

}  // namespace kd_tool
