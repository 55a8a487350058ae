#include "unicode.h"

#include <algorithm>
#include <utf8proc.h>

namespace kd_lib::exchange::detail {

namespace {

const utf8proc_uint8_t* bytesOf(std::string_view text)
{
    return reinterpret_cast<const utf8proc_uint8_t*>(text.data());
}

bool continues(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// Passes each character through `change`.
template <class Change>
std::string changed(std::string_view text, Change change)
{
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const int character = takeCharacter(text);
        if (character < 0) {
            result += replacementCharacter;
        } else {
            appendCharacter(result, change(character));
        }
    }
    return result;
}

}  // namespace

int takeCharacter(std::string_view& rest)
{
    utf8proc_int32_t character = -1;
    const auto size = static_cast<utf8proc_ssize_t>(std::min<std::size_t>(rest.size(), 4));
    const utf8proc_ssize_t taken = utf8proc_iterate(bytesOf(rest), size, &character);
    rest.remove_prefix(taken > 0 ? static_cast<std::size_t>(taken) : 1);
    return taken > 0 ? character : -1;
}

void appendCharacter(std::string& text, int character)
{
    utf8proc_uint8_t bytes[4];
    const auto count = static_cast<std::size_t>(utf8proc_encode_char(character, bytes));
    text.append(reinterpret_cast<const char*>(bytes), count);
}

std::size_t countCharacters(std::string_view text)
{
    return static_cast<std::size_t>(std::ranges::count_if(text, [](char byte) { return !continues(byte); }));
}

std::string_view firstBytes(std::string_view text, std::size_t count)
{
    if (count >= text.size()) {
        return text;
    }
    while (count > 0 && continues(text[count])) {
        --count;
    }
    return text.substr(0, count);
}

std::string_view firstCharacters(std::string_view text, std::size_t count)
{
    std::string_view rest = text;
    for (; count > 0 && !rest.empty(); --count) {
        takeCharacter(rest);
    }
    return text.substr(0, text.size() - rest.size());
}

std::string lowerCase(std::string_view text)
{
    return changed(text, [](int character) { return utf8proc_tolower(character); });
}

std::string caseFolded(std::string_view text)
{
    // Upper case first: some letters have two lower-case forms.
    return changed(text, [](int character) { return utf8proc_tolower(utf8proc_toupper(character)); });
}

}  // namespace kd_lib::exchange::detail
