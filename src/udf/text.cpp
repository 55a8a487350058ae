#include <kd_lib/text.h>

#include <kd_lib/detail/words.h>
#include <kd_lib/replace.h>

#include <algorithm>
#include <array>
#include <bit>

namespace kd_lib {

namespace {

char lowerLetter(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

char upperLetter(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

using detail::SixteenBytes;

/// The distance of each of sixteen bytes from the space. For a byte below the space it wraps to a large one.
SixteenBytes distancesFromSpace(std::string_view s, std::size_t position)
{
    return detail::valueAt<SixteenBytes>(s.data() + position) - ' ';
}

SixteenBytes greater(SixteenBytes a, SixteenBytes b)
{
    return a > b ? a : b;
}

bool equalsInAnyCase(std::string_view s, std::string_view lower)
{
    return std::equal(s.begin(), s.end(), lower.begin(), lower.end(),
                      [](char a, char b) { return lowerLetter(a) == b; });
}

}  // namespace

std::string stringToLower(const std::string& s)
{
    std::string lower = s;
    std::transform(lower.begin(), lower.end(), lower.begin(), lowerLetter);
    return lower;
}

std::string stringToUpper(const std::string& s)
{
    std::string upper = s;
    std::transform(upper.begin(), upper.end(), upper.begin(), upperLetter);
    return upper;
}

bool isPlainAscii(std::string_view s)
{
    constexpr std::size_t width = detail::vectorSize;
    if (s.size() < width) {
        return std::all_of(s.begin(), s.end(), [](char c) { return c >= ' ' && c <= '~'; });
    }
    // The last sixteen bytes may overlap those before them.
    const std::size_t last = s.size() - width;
    SixteenBytes farthest = distancesFromSpace(s, last);
    for (std::size_t at = 0; at < last; at += width) {
        farthest = greater(farthest, distancesFromSpace(s, at));
    }
    const auto notPlain = farthest > '~' - ' ';
    const auto words = std::bit_cast<std::array<detail::Word, 2>>(notPlain);
    return (words[0] | words[1]) == 0;
}

std::string allTrim(const std::string& s)
{
    return std::string(allTrimView(s));
}

std::string rightTrim(const std::string& s)
{
    return std::string(rightTrimView(s));
}

std::string leftPad(const std::string& s, int width, char pad)
{
    const std::size_t wanted = width > 0 ? static_cast<std::size_t>(width) : 0;
    std::string padded(wanted > s.size() ? wanted - s.size() : 0, pad);
    padded += s;
    return padded;
}

std::string replicateChar(int ch, int count)
{
    return std::string(count > 0 ? static_cast<std::size_t>(count) : 0, static_cast<char>(ch));
}

std::string replaceChar(const std::string& s, int from, int to)
{
    std::string replaced = s;
    copyReplacing(replaced.data(), replaced, static_cast<char>(from), static_cast<char>(to));
    return replaced;
}

std::string inQuotes(const std::string& s, char q)
{
    std::string quoted;
    quoted.reserve(s.size() + 2);
    quoted += q;
    for (const char c : s) {
        if (c == q) {
            quoted += q;
        }
        quoted += c;
    }
    quoted += q;
    return quoted;
}

std::string removeQuotes(const std::string& s)
{
    const bool enclosed = s.size() >= 2 && s.front() == s.back() && (s.front() == '"' || s.front() == '\'');
    return enclosed ? s.substr(1, s.size() - 2) : s;
}

bool stringToBool(const std::string& s)
{
    const std::string_view word = allTrimView(s);
    if (word.size() == 1) {
        return word == "1" || lowerLetter(word[0]) == 't' || lowerLetter(word[0]) == 'y';
    }
    return equalsInAnyCase(word, "true") || equalsInAnyCase(word, "yes");
}

bool findStrings(const std::string& s, std::vector<std::string> list)
{
    return std::find(list.begin(), list.end(), s) != list.end();
}

}  // namespace kd_lib
