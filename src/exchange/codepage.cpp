#include <kd_lib/exchange/codepage.h>

#include "../formats/languagebytes.h"
#include "detail/codepagename.h"
#include "detail/systemconverter.h"
#include "detail/utf8.h"

#include <kd_lib/exchange/error.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace kd_lib::exchange {

namespace {

using Outcome = CodePage::Decoded::Outcome;

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";
constexpr std::size_t escapeSize = 4;  // of \xNN, the longest replacement of a byte

char hexDigit(unsigned value)
{
    return "0123456789ABCDEF"[value & 0xFU];
}

/// The text that is being decoded, in a buffer that only grows.
class Output {
public:
    Output(std::string& buffer, EncodingErrors onError, std::string_view bytes)
        : Buffer(buffer), OnError(onError), From(bytes)
    {
        if (Buffer.size() < bytes.size() * escapeSize + escapeSize) {
            Buffer.resize(bytes.size() * escapeSize + escapeSize);
        }
        To = Buffer.data();
    }

    void add(std::string_view utf8)
    {
        if (room() < utf8.size()) {
            grow();
        }
        std::memcpy(To, utf8.data(), utf8.size());
        To += utf8.size();
    }

    /// Replaces bytes of the input that the page lacks. False: the text is unusable.
    bool addUnknown(std::string_view bytes)
    {
        if (Result.Result == Outcome::Known) {
            Result.FirstUnknown = static_cast<std::size_t>(bytes.data() - From.data());
        }
        if (OnError == EncodingErrors::Strict) {
            Result.Result = Outcome::Failed;
            return false;
        }
        if (OnError == EncodingErrors::Replace) {
            Result.Result = Outcome::Replaced;
            add(replacementCharacter);
            return true;
        }
        Result.Result = Outcome::Escaped;
        for (const char c : bytes) {
            const unsigned byte = static_cast<unsigned char>(c);
            const char escape[escapeSize] = {'\\', 'x', hexDigit(byte >> 4U), hexDigit(byte)};
            add({escape, escapeSize});
        }
        return true;
    }

    std::size_t room() const { return Buffer.size() - static_cast<std::size_t>(To - Buffer.data()); }

    /// Makes room, and keeps the text.
    void grow()
    {
        const auto used = static_cast<std::size_t>(To - Buffer.data());
        Buffer.resize(Buffer.size() * 2);
        To = Buffer.data() + used;
    }

    /// Makes room, and discards the text, but not the place of the first unknown byte, which remains the same.
    void restart()
    {
        grow();
        To = Buffer.data();
    }

    CodePage::Decoded decoded() const
    {
        CodePage::Decoded all = Result;
        if (all.Result != Outcome::Failed) {
            all.Text = {Buffer.data(), static_cast<std::size_t>(To - Buffer.data())};
        }
        return all;
    }

    char* To = nullptr;  ///< where the next byte goes

private:
    std::string& Buffer;
    EncodingErrors OnError;
    std::string_view From;
    CodePage::Decoded Result;
};

/// The UTF-8 of one byte.
struct Character {
    static constexpr std::uint8_t unknown = 0;
    static constexpr std::uint8_t beginsLonger = 0xFF;

    char Utf8[3];
    std::uint8_t Length;  ///< 1 to 3, or one of the constants above
};
using Table = std::array<Character, 256>;

std::size_t indexOf(char byte)
{
    return static_cast<unsigned char>(byte);
}

/// The meaning of a single byte.
Character characterOf(detail::SystemConverter& converter, char byte)
{
    char text[16];
    const char* from = &byte;
    std::size_t fromLeft = 1;
    char* to = text;
    std::size_t toLeft = sizeof text;
    converter.reset();
    const auto stop = converter.convert(from, fromLeft, to, toLeft);
    if (stop == detail::SystemConverter::Stop::Unknown) {
        return {{}, Character::unknown};
    }
    converter.finish(to, toLeft);
    const auto length = static_cast<std::size_t>(to - text);
    Character character = {{}, Character::beginsLonger};
    if (stop == detail::SystemConverter::Stop::Done && length > 0 && length <= sizeof character.Utf8) {
        std::memcpy(character.Utf8, text, length);
        character.Length = static_cast<std::uint8_t>(length);
    }
    return character;
}

Table tableOf(const std::array<char16_t, 128>& upperHalf)
{
    Table table = {};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        const char16_t code = byte < 128 ? static_cast<char16_t>(byte) : upperHalf[byte - 128];
        table[byte].Length = static_cast<std::uint8_t>(detail::putUtf8(table[byte].Utf8, code));
    }
    return table;
}

Table tableOf(detail::SystemConverter& converter)
{
    Table table = {};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        table[byte] = characterOf(converter, static_cast<char>(byte));
    }
    return table;
}

void decodeSingleBytes(const Table& table, std::string_view bytes, Output& to)
{
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const Character& character = table[indexOf(bytes[i])];
        if (character.Length != Character::unknown) {
            std::memcpy(to.To, &character, sizeof character);
            to.To += character.Length;
        } else if (!to.addUnknown(bytes.substr(i, 1))) {
            return;
        }
    }
}

void decodeUtf8(std::string_view bytes, Output& to)
{
    while (!bytes.empty()) {
        const std::size_t valid = detail::validUtf8Length(bytes);
        to.add(bytes.substr(0, valid));
        bytes.remove_prefix(valid);
        if (bytes.empty()) {
            return;
        }
        const std::size_t length = detail::firstUtf8Piece(bytes).Length;
        if (!to.addUnknown(bytes.substr(0, length))) {
            return;
        }
        bytes.remove_prefix(length);
    }
}

/// The number of bytes of an unknown character: two if a first and a second byte do not belong together.
std::size_t unknownLength(const Table& table, std::string_view rest)
{
    const bool two =
        rest.size() > 1 && table[indexOf(rest[0])].Length == Character::beginsLonger && indexOf(rest[1]) >= 0x80;
    return two ? 2 : 1;
}

/// False if there is too little room. Then the text must be decoded again: a converter that holds characters back, as
/// that of TSCII does, may have lost some of them.
bool fitsMultiByte(detail::SystemConverter& converter, const Table& table, std::string_view bytes, Output& to)
{
    using Stop = detail::SystemConverter::Stop;
    converter.reset();
    while (!bytes.empty()) {
        const char* from = bytes.data();
        std::size_t left = bytes.size();
        std::size_t room = to.room();
        const Stop stop = converter.convert(from, left, to.To, room);
        bytes = {from, left};
        if (stop == Stop::Full) {
            return false;
        }
        if (stop != Stop::Done) {
            const std::size_t length = stop == Stop::Incomplete ? left : unknownLength(table, bytes);
            if (!to.addUnknown(bytes.substr(0, length))) {
                return true;
            }
            bytes.remove_prefix(length);
        }
    }
    std::size_t room = to.room();
    return converter.finish(to.To, room) != Stop::Full;
}

void decodeMultiByte(detail::SystemConverter& converter, const Table& table, std::string_view bytes, Output& to)
{
    while (!fitsMultiByte(converter, table, bytes, to)) {
        to.restart();
    }
}

}  // namespace

/// State for decoding bytes that are not ASCII.
class CodePage::Decoder {
public:
    explicit Decoder(const detail::CodePageName& name)
    {
        if (name.OwnUpperHalf != nullptr) {
            Characters = tableOf(*name.OwnUpperHalf);
        } else {
            Converter = std::make_unique<detail::SystemConverter>(name.Name);
            Characters = tableOf(*Converter);
        }
    }

    bool isSingleByte() const
    {
        return std::ranges::none_of(Characters, [](const Character& c) { return c.Length == Character::beginsLonger; });
    }

    bool isAsciiBased() const
    {
        for (std::size_t byte = 0; byte < 128; ++byte) {
            if (Characters[byte].Length != 1 || indexOf(Characters[byte].Utf8[0]) != byte) {
                return false;
            }
        }
        return true;
    }

    Table Characters;
    std::unique_ptr<detail::SystemConverter> Converter;  // null for the library's own tables
};

CodePage::CodePage(std::string_view name)
{
    const std::optional<detail::CodePageName> found = detail::findCodePage(name);
    if (!found) {
        throw OptionError(std::string(), "unknown code page: " + std::string(name));
    }
    Name = found->Name;
    TheDecoder = std::make_unique<Decoder>(*found);
    Utf8 = Name == "UTF-8";
    SingleByte = TheDecoder->isSingleByte();
    AsciiBased = TheDecoder->isAsciiBased();
}

CodePage::~CodePage() = default;
CodePage::CodePage(CodePage&&) noexcept = default;
CodePage& CodePage::operator=(CodePage&&) noexcept = default;

bool CodePage::knows(std::string_view name)
{
    return detail::findCodePage(name).has_value();
}

std::string CodePage::nameOfLanguageByte(std::uint8_t byte)
{
    return formats::codePageOfLanguageByte(byte);
}

CodePage::Decoded CodePage::decodeOther(std::string_view bytes, EncodingErrors onError, std::string& scratch) const
{
    if (Utf8 && detail::validUtf8Length(bytes) == bytes.size()) {
        return {bytes};
    }
    Output to(scratch, onError, bytes);
    if (Utf8) {
        decodeUtf8(bytes, to);
    } else if (SingleByte) {
        decodeSingleBytes(TheDecoder->Characters, bytes, to);
    } else {
        decodeMultiByte(*TheDecoder->Converter, TheDecoder->Characters, bytes, to);
    }
    return to.decoded();
}

std::string CodePage::reason(std::string_view bytes, const Decoded& decoded) const
{
    const unsigned byte =
        decoded.FirstUnknown < bytes.size() ? static_cast<unsigned char>(bytes[decoded.FirstUnknown]) : 0;
    const std::string text = std::string("byte 0x") + hexDigit(byte >> 4U) + hexDigit(byte);
    return text + (Utf8 ? " is not UTF-8" : " is not in code page " + Name);
}

}  // namespace kd_lib::exchange
