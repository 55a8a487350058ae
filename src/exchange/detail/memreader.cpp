#include "memreader.h"

#include "../../formats/memfile.h"
#include "../../formats/numbers.h"
#include "../../formats/zeroend.h"
#include "lettercase.h"

#include <algorithm>

namespace kd_lib::exchange::detail {

namespace {

namespace memfile = formats::memfile;
using formats::upToZero;

bool isType(char letter)
{
    return letter == 'C' || letter == 'N' || letter == 'D' || letter == 'L';
}

}  // namespace

const char* memFormName(MemForm form)
{
    switch (form) {
    case MemForm::DBase:
        return "dBase III or Clipper";
    case MemForm::FoxPro:
        return "FoxPro";
    case MemForm::Text:
        break;
    }
    return "texts";
}

void MemReader::restart()
{
    Buffer.clear();
    At = Size = 0;
    Start = 0;
    AtEnd = EndMark = false;
}

/// Whether the variable has this many bytes in the file; they are then in memory.
bool MemReader::has(std::size_t count)
{
    if (File.size() && Start + count > *File.size()) {
        return false;  // a damaged length must not cause the whole file to be read
    }
    load(count);
    return Buffer.size() - At >= count;
}

/// Reads this many bytes of the variable, or up to the end of the file.
void MemReader::load(std::size_t count)
{
    if (Buffer.size() - At < count) {
        Buffer.erase(0, At);
        At = 0;
    }
    while (Buffer.size() < count && !AtEnd) {
        const std::size_t before = Buffer.size();
        Buffer.resize(before + InputFile::usualRead);
        const std::size_t got = File.readSome(Buffer.data() + before, InputFile::usualRead);
        Buffer.resize(before + got);
        AtEnd = got == 0;
    }
}

std::uint64_t MemReader::offsetOf(std::string_view piece) const
{
    return Start + static_cast<std::uint64_t>(piece.data() - (Buffer.data() + At));
}

std::string_view MemReader::typeByte() const
{
    return bytes({memfile::typeAt, 1});
}

std::string_view MemReader::lengths() const
{
    return bytes({memfile::lengthAt, 2});
}

bool MemReader::hasBytesAfterEnd()
{
    return has(2);
}

MemReader::Found MemReader::next()
{
    At += Size;
    Start += Size;
    Size = 0;
    Name = Value = {};
    if (!has(1)) {
        return Found::End;
    }
    if (bytes({0, 1})[0] == memfile::fileEnd) {
        EndMark = true;
        return Found::End;
    }
    if (!has(memfile::entrySize)) {
        return Found::Cut;
    }
    const Found found = takeHeader();
    return found != Found::Variable || takeValue() ? found : Found::Cut;
}

/// Determines form, type and name.
MemReader::Found MemReader::takeHeader()
{
    const auto byte = static_cast<std::uint8_t>(typeByte()[0]);
    const bool highBit = (byte & memfile::highBit) != 0;
    const auto letter = static_cast<char>(byte & ~memfile::highBit);
    const bool longName = !highBit && isType(upperLetter(letter)) && !isType(letter);
    Type = upperLetter(letter);
    if (!isType(Type) || (highBit && Type != letter)) {
        Type = static_cast<char>(byte);
        return Found::Unknown;
    }
    Size = memfile::entrySize;
    Name = {memfile::nameAt, upToZero(bytes({memfile::nameAt, memfile::nameWidth})).size()};
    Form = highBit ? MemForm::DBase : MemForm::FoxPro;
    if (longName) {
        return takeLongName() ? Found::Variable : Found::Cut;
    }
    if (Form == MemForm::FoxPro && Name.Length == 0) {
        constexpr std::size_t at = memfile::textFormNameAt;
        Form = MemForm::Text;
        Name = {at, upToZero(bytes({at, memfile::nameWidth - at})).size()};
    }
    return Found::Variable;
}

bool MemReader::takeLongName()
{
    const std::size_t at = Size + memfile::longNameLengthSize;
    if (!has(at)) {
        return false;
    }
    const std::size_t length = formats::little16(bytes({Size, memfile::longNameLengthSize}).data());
    if (!has(at + length)) {
        return false;
    }
    Name = {at, upToZero(bytes({at, length})).size()};
    Size = at + length;
    return true;
}

bool MemReader::takeValue()
{
    if (Form == MemForm::Text) {
        return Type == 'N' ? takeNumberText() : takeText(lengthOfText());
    }
    switch (Type) {
    case 'C':
        return takeText(lengthOfText());
    case 'L':
        return takeBytes(memfile::logicalSize);
    default:
        return takeBytes(memfile::numberSize);
    }
}

/// The length of a text. Published descriptions of FoxPro differ about texts above 255 bytes: the length is used that
/// leads to the zero byte at the text's end.
std::size_t MemReader::lengthOfText()
{
    const std::string_view header = bytes({0, memfile::entrySize});
    const std::size_t low = formats::byteAt(header.data(), memfile::lengthAt);
    if (Form == MemForm::Text) {
        return low;
    }
    const std::size_t high = formats::byteAt(header.data(), memfile::highLengthAt);
    const std::size_t length = (high << 8U) + low;
    const std::size_t other = formats::big32(header.data() + memfile::longLengthAt);
    return Form == MemForm::FoxPro && !endsWithZero(length) && endsWithZero(other) ? other : length;
}

bool MemReader::endsWithZero(std::size_t length)
{
    return length > 0 && has(Size + length) && bytes({Size + length - 1, 1})[0] == '\0';
}

bool MemReader::takeBytes(std::size_t length)
{
    if (!has(Size + length)) {
        return false;
    }
    Value = {Size, length};
    Size += length;
    return true;
}

bool MemReader::takeText(std::size_t length)
{
    if (!takeBytes(length)) {
        return false;
    }
    if (Form == MemForm::Text) {
        Value.Length = upToZero(bytes(Value)).size();
    } else if (bytes(Value).ends_with('\0')) {
        --Value.Length;
    }
    return true;
}

/// Digits up to their mark. Without the mark the end of the number is unknown.
bool MemReader::takeNumberText()
{
    load(Size + memfile::longestNumber);
    const std::size_t length = bytes({Size, memfile::longestNumber}).find(memfile::numberEnd);
    if (length == std::string_view::npos) {
        return false;
    }
    Value = {Size, length};
    Size += length + 1;
    return true;
}

}  // namespace kd_lib::exchange::detail
