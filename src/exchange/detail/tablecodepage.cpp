#include "tablecodepage.h"

#include "../../formats/languagedriver.h"
#include "companionfile.h"
#include "inputfile.h"
#include "utf8.h"
#include "wording.h"

#include <kd_lib/exchange/codepage.h>

#include <filesystem>

namespace kd_lib::exchange::detail {

namespace {

constexpr std::size_t longestName = 64;

/// The first line of a .cpg file, in printable characters.
std::string readCpg(const std::string& path)
{
    InputFile file(path);
    std::string text(longestName, '\0');
    text.resize(file.read(text.data(), text.size()));
    if (text.starts_with(utf8Mark)) {
        text.erase(0, utf8Mark.size());
    }
    text.resize(std::min(text.size(), text.find_first_of(std::string_view("\r\n\x1A\0", 4))));
    std::erase_if(text, [](char c) { return c < ' ' || c > '~'; });
    return text;
}

PageChoice pageOfCpg(const std::string& path)
{
    const std::string name = readCpg(path);
    const std::string file = std::filesystem::path(path).filename().string();
    if (!name.empty() && CodePage::knows(name)) {
        return {name, file};
    }
    return {defaultTablePage, file + " names the unknown code page \"" + name + '"'};
}

PageChoice pageOfHeader(const DbfLayout& layout)
{
    if (layout.LanguageByte != 0) {
        const std::string byte = "language byte " + hex(layout.LanguageByte);
        const std::string page = CodePage::nameOfLanguageByte(layout.LanguageByte);
        return page.empty() ? PageChoice{defaultTablePage, byte + " is not known"} : PageChoice{page, byte};
    }
    if (!layout.Driver.empty()) {
        const std::string driver = "language driver " + printable(layout.Driver);
        const std::string page = formats::codePageOfDriver(layout.Driver);
        const bool known = !page.empty() && CodePage::knows(page);
        return known ? PageChoice{page, driver} : PageChoice{defaultTablePage, driver + " is not known"};
    }
    return {defaultTablePage, "the file names none"};
}

}  // namespace

PageChoice chooseCodePage(const std::string& file, const DbfLayout& layout, const std::string& requested)
{
    if (!requested.empty()) {
        return {requested, "as requested"};
    }
    if (const std::optional<std::string> cpg = findCompanion(file, {"cpg"})) {
        return pageOfCpg(*cpg);
    }
    return pageOfHeader(layout);
}

}  // namespace kd_lib::exchange::detail
