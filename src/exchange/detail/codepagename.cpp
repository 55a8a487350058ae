#include "codepagename.h"

#include "../../formats/languagebytes.h"
#include "codepagetables.h"
#include "digits.h"
#include "lettercase.h"
#include "systemconverter.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <vector>

namespace kd_lib::exchange::detail {

namespace {

/// The name without regard to case, blanks, line ends, hyphens and underscores.
std::string keyOf(std::string_view name)
{
    std::string key;
    for (const char c : name) {
        if (static_cast<unsigned char>(c) > ' ' && c != '-' && c != '_') {
            key += lowerLetter(c);
        }
    }
    return key;
}

std::string trimmedUpper(std::string_view name)
{
    const std::string_view blanks = " \t\r\n";
    const std::size_t first = name.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return uppered(name.substr(first, name.find_last_not_of(blanks) - first + 1));
}

/// The digits of a key such as "852", "cp852", "ansi1252"; empty if it is something else.
std::string_view pageNumber(std::string_view key)
{
    constexpr std::string_view prefixes[] = {"",    "cp",  "ansi",    "oem",      "ibm", "dos",
                                             "win", "iso", "windows", "codepage", "mac", "xcp"};
    for (const std::string_view prefix : prefixes) {
        if (key.starts_with(prefix) && isDigits(key.substr(prefix.size()))) {
            return key.substr(prefix.size());
        }
    }
    return {};
}

std::optional<CodePageName> ownPage(std::string_view key)
{
    const auto isOne = [key](std::initializer_list<std::string_view> names) {
        return std::ranges::find(names, key) != names.end();
    };
    if (isOne({"kamenicky", "keybcs2", "895", "cp895", "867", "cp867"})) {
        return CodePageName{"Kamenicky", &kamenickyPage};
    }
    if (isOne({"mazovia", "620", "cp620", "790", "cp790"})) {
        return CodePageName{"Mazovia", &mazoviaPage};
    }
    if (isOne({"macgreek", "xmacgreek", "10006", "cp10006"})) {
        return CodePageName{"MacGreek", &macGreekPage};
    }
    return std::nullopt;
}

/// iconv's possible names for a number, or for a name that iconv lacks; the first one that it knows is used.
std::vector<std::string> candidates(std::string_view name, const std::string& key)
{
    if (key == "utf8" || key == "65001" || key == "cp65001") {
        return {"UTF-8"};
    }
    if (key == "sjis" || key == "shiftjis") {
        return {"CP932"};  // files of this name usually have the characters of Windows
    }
    const std::string number(pageNumber(key));
    if (number.size() >= 5 && number.size() <= 6 && number.starts_with("8859")) {
        return {"ISO-8859-" + number.substr(4)};
    }
    if (number.size() == 5 && number >= "28591" && number <= "28606") {
        return {"ISO-8859-" + std::to_string(std::stoi(number) - 28590)};
    }
    constexpr std::pair<std::string_view, const char*> numbered[] = {
        {"10000", "MACINTOSH"}, {"10007", "MAC-CYRILLIC"}, {"10029", "MAC-CENTRALEUROPE"},
        {"20127", "ASCII"},     {"20866", "KOI8-R"},       {"21866", "KOI8-U"},
        {"54936", "GB18030"},   {"1200", "UTF-16LE"},      {"1201", "UTF-16BE"},
        {"51932", "EUC-JP"},    {"51949", "EUC-KR"}};
    for (const auto& [page, iconvName] : numbered) {
        if (number == page) {
            return {iconvName};
        }
    }
    std::vector<std::string> names;
    if (!number.empty()) {
        names.push_back("CP" + number);
        names.push_back("IBM" + number);
    }
    names.push_back(trimmedUpper(name));
    names.push_back(trimmedUpper(key));
    return names;
}

/// "LDID/87": the page of a language byte.
std::optional<CodePageName> pageOfLanguage(std::string_view digits)
{
    std::uint8_t byte = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), byte);
    if (error != std::errc() || end != digits.data() + digits.size()) {
        return std::nullopt;
    }
    return findCodePage(formats::codePageOfLanguageByte(byte));
}

}  // namespace

std::optional<CodePageName> findCodePage(std::string_view name)
{
    const std::string key = keyOf(name);
    constexpr std::string_view language = "ldid/";
    if (key.starts_with(language)) {
        return pageOfLanguage(std::string_view(key).substr(language.size()));
    }
    if (std::optional<CodePageName> own = ownPage(key)) {
        return own;
    }
    for (const std::string& candidate : candidates(name, key)) {
        if (SystemConverter(candidate).isOpen()) {
            return CodePageName{candidate, nullptr};
        }
    }
    return std::nullopt;
}

}  // namespace kd_lib::exchange::detail
