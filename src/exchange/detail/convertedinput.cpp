#include "convertedinput.h"

#include "wording.h"

#include <algorithm>

namespace kd_lib::exchange::detail {

namespace {

constexpr std::size_t rawBlock = 65536;
constexpr std::size_t markSize = 3;        // a mark and two digits
constexpr std::size_t longestMarked = 16;  // bytes of a character

bool isMark(char c)
{
    return c == ConvertedInput::firstMark || c == ConvertedInput::nextMark;
}

/// UTF-16 without a named byte order has that of the mark at its beginning; without a mark, that of Windows.
std::string converterName(const CodePage& encoding, std::string_view beginning)
{
    const std::string& name = encoding.name();
    if (name != "UTF-16" && name != "UTF16" && name != "UTF-32" && name != "UTF32") {
        return name;
    }
    const bool bigEndian = name.find("16") != std::string::npos
                               ? beginning.starts_with("\xFE\xFF")
                               : beginning.starts_with(std::string_view("\0\0\xFE\xFF", 4));
    return name + (bigEndian ? "BE" : "LE");
}

std::size_t unitOf(const CodePage& encoding)
{
    const std::string& name = encoding.name();
    const auto begins = [&name](std::string_view with) { return name.starts_with(with); };
    if (begins("UTF-16") || begins("UTF16") || begins("UCS-2") || begins("UCS2")) {
        return 2;
    }
    if (begins("UTF-32") || begins("UTF32") || begins("UCS-4") || begins("UCS4")) {
        return 4;
    }
    return encoding.isSingleByte() ? 1 : 0;
}

/// The room that each byte of the file needs; 0: the room may end anywhere. The converter of TSCII holds back up to
/// three characters, and loses some of them when the room ends. None of its bytes becomes more than twelve.
std::size_t roomOfByte(const CodePage& encoding)
{
    return encoding.name() == "TSCII" ? 16 : 0;
}

/// The first bytes of a file, which show the byte order.
std::string beginningOf(InputFile& file)
{
    std::string bytes(4, '\0');
    bytes.resize(file.read(bytes.data(), bytes.size()));
    return bytes;
}

}  // namespace

ConvertedInput::ConvertedInput(InputFile& file, const CodePage& encoding)
    : File(file), Raw(beginningOf(file)), Converter(converterName(encoding, Raw)), Unit(unitOf(encoding)),
      RoomOfByte(roomOfByte(encoding))
{
}

void ConvertedInput::readMore()
{
    Raw.erase(0, RawAt);
    RawAt = 0;
    const std::size_t left = Raw.size();
    Raw.resize(left + rawBlock);
    const std::size_t got = File.readSome(Raw.data() + left, rawBlock);
    Raw.resize(left + got);
    AtEnd = got == 0;
}

void ConvertedInput::mark(std::size_t bytes, char*& to)
{
    for (std::size_t i = 0; i < bytes; ++i) {
        *to++ = i == 0 ? firstMark : nextMark;
        const std::string digits = hex(static_cast<std::uint8_t>(Raw[RawAt++]));
        *to++ = digits[0];
        *to++ = digits[1];
    }
}

void ConvertedInput::convert(char*& to, std::size_t room)
{
    using Stop = SystemConverter::Stop;
    const char* const start = to;
    const char* from = Raw.data() + RawAt;
    const std::size_t all = Raw.size() - RawAt;
    const std::size_t piece = RoomOfByte > 0 ? std::min(all, room / RoomOfByte) : all;
    std::size_t left = piece;
    const Stop stop = Converter.convert(from, left, to, room);
    RawAt += piece - left;
    if (stop == Stop::Incomplete && !AtEnd) {
        readMore();
    } else if (to == start && (stop == Stop::Incomplete || stop == Stop::Unknown)) {
        const std::size_t character = stop == Stop::Incomplete ? left : std::max<std::size_t>(Unit, 1);
        mark(std::min({character, left, longestMarked}), to);
    }
}

std::size_t ConvertedInput::readSome(char* to, std::size_t count)
{
    char* at = to;
    while (at == to && !Finished) {
        if (RawAt < Raw.size()) {
            convert(at, count);
        } else if (!AtEnd) {
            readMore();
        } else {
            Converter.finish(at, count);
            Finished = true;
        }
    }
    return static_cast<std::size_t>(at - to);
}

std::optional<std::uint64_t> ConvertedInput::sizeInFile(std::string_view text) const
{
    if (Unit == 0) {
        return std::nullopt;
    }
    std::uint64_t size = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const unsigned char byte = static_cast<unsigned char>(text[i]);
        if (isMark(text[i])) {
            ++size;
            i += markSize - 1;
        } else if ((byte & 0xC0U) != 0x80U) {
            size += Unit == 2 && byte >= 0xF0U ? 4 : Unit;
        }
    }
    return size;
}

CodePage::Decoded decodeMarked(std::string_view text, EncodingErrors onError, std::string& scratch)
{
    using Outcome = CodePage::Decoded::Outcome;
    const std::string_view::const_iterator found = std::ranges::find_if(text, isMark);
    if (found == text.end()) {
        return {text};
    }
    CodePage::Decoded result;
    result.FirstUnknown = static_cast<std::size_t>(found - text.begin());
    result.Result = onError == EncodingErrors::Strict    ? Outcome::Failed
                    : onError == EncodingErrors::Replace ? Outcome::Replaced
                                                         : Outcome::Escaped;
    scratch.clear();
    for (std::size_t i = 0; i < text.size() && onError != EncodingErrors::Strict; ++i) {
        if (!isMark(text[i])) {
            scratch += text[i];
            continue;
        }
        if (onError == EncodingErrors::Escape) {
            scratch.append("\\x").append(text, i + 1, markSize - 1);
        } else if (text[i] == ConvertedInput::firstMark) {
            scratch += "\xEF\xBF\xBD";
        }
        i += markSize - 1;
    }
    if (onError != EncodingErrors::Strict) {
        result.Text = scratch;
    }
    return result;
}

}  // namespace kd_lib::exchange::detail
