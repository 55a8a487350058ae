#include "sqlplace.h"

#include "escape.h"
#include "textwidth.h"

#include <algorithm>
#include <string_view>

namespace kd_tool {

std::vector<std::string> placeInSql(const std::string& sql, std::optional<std::size_t> at)
{
    constexpr std::size_t before = 40;
    constexpr std::size_t most = 76;
    if (!at || *at > sql.size()) {
        return {};
    }
    const std::size_t newline = *at > 0 ? sql.rfind('\n', *at - 1) : std::string::npos;
    const std::size_t start = newline == std::string::npos ? 0 : newline + 1;
    const std::string_view line =
        std::string_view(sql).substr(start, std::min(sql.find('\n', *at), sql.size()) - start);
    const std::string left = oneLine(line.substr(0, *at - start));
    std::string_view shown = left;
    while (textWidth(shown) > before) {
        shown.remove_prefix(fittingPart(shown, 2).size());
    }
    const std::string text = std::string(shown) + oneLine(line.substr(*at - start));
    return {"  " + std::string(fittingPart(text, most)), "  " + std::string(textWidth(shown), ' ') + '^'};
}

}  // namespace kd_tool
