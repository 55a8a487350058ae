#include <kd_lib/xbasetable.h>

#include "../formats/dbfheader.h"
#include "detail/messages.h"
#include "detail/recordreader.h"

#include <kd_lib/byteorder.h>
#include <kd_lib/console.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <sstream>

namespace kd_lib {

namespace {

namespace header3 = formats::dbfheader;

// Deliberate: the descriptors of every table are read as those of dBase III.
constexpr const formats::DescriptorShape& descriptor3 = formats::descriptorOf3;

unsigned char byteAt(const char* bytes, std::size_t position)
{
    return static_cast<unsigned char>(bytes[position]);
}

short shortAt(const char* bytes, std::size_t position)
{
    short raw = 0;
    std::memcpy(&raw, bytes + position, sizeof raw);
    return rotate2b(raw);
}

unsigned int unsignedAt(const char* bytes, std::size_t position)
{
    unsigned int raw = 0;
    std::memcpy(&raw, bytes + position, sizeof raw);
    return rotate4b(raw);
}

std::uint64_t signExtended(short value)
{
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
}

void blankUnprintable(char* begin, const char* end)
{
    for (char* byte = begin; byte != end; ++byte) {
        if (std::isprint(static_cast<unsigned char>(*byte)) == 0) {
            *byte = ' ';
        }
    }
}

/// Replaces the bytes that isprint rejects by blanks. Only stretches that are not plain ASCII are tested byte by byte.
void makePrintable(std::string& record)
{
    constexpr std::size_t longestStretch = 128;
    char* const end = record.data() + record.size();
    for (char* byte = record.data(); byte != end;) {
        const std::size_t stretch = std::min(static_cast<std::size_t>(end - byte), longestStretch);
        if (!isPlainAscii(std::string_view(byte, stretch))) {
            blankUnprintable(byte, byte + stretch);
        }
        byte += stretch;
    }
}

}  // namespace

xBaseTable::xBaseTable()
{
    Extension = "dbf";
    Binary = true;
    RecordLength = 0;
    RecordEnd = 0;
}

xBaseTable::xBaseTable(const std::string& name) : xBaseTable()
{
    Name = name;
}

xBaseTable::~xBaseTable() = default;

bool xBaseTable::skipHeader()
{
    if (!is_open()) {
        return false;
    }
    File.clear();
    File.seekp(static_cast<std::streamoff>(HeaderLength), std::ios::beg);
    return true;
}

bool xBaseTable::readHeader()
{
    if (!is_open()) {
        return false;
    }
    Fields.clearList();
    beginFile();
    std::array<char, header3::size> header{};
    File.read(header.data(), header3::size);
    if (File.gcount() == 0) {
        return false;
    }
    Version = byteAt(header.data(), header3::versionAt);
    RecordLength = signExtended(shortAt(header.data(), header3::recordLengthAt));
    LastUpdate = std::to_string(byteAt(header.data(), header3::yearAt) + header3::yearBase) +
                 std::to_string(byteAt(header.data(), header3::monthAt)) +
                 std::to_string(byteAt(header.data(), header3::dayAt));
    const short length = shortAt(header.data(), header3::headerLengthAt);
    const int fieldCount = length / static_cast<int>(descriptor3.Size) - 1;
    // A negative count exceeds the size of any vector, so this throws for it.
    Fields.List.reserve(static_cast<std::size_t>(fieldCount));
    RecordCount = unsignedAt(header.data(), header3::recordCountAt);
    HeaderLength = signExtended(length);
    readDescriptors(fieldCount);
    File.get();
    return true;
}

void xBaseTable::readDescriptors(int count)
{
    int offset = static_cast<int>(formats::firstFieldOffset);
    for (int i = 0; i < count; ++i) {
        std::array<char, descriptor3.Size> descriptor{};
        File.read(descriptor.data(), descriptor3.Size);
        const std::string name(descriptor.data(), ::strnlen(descriptor.data(), descriptor3.NameWidth));
        const int length = byteAt(descriptor.data(), descriptor3.LengthAt);
        TableField field(name, convertXbaseFieldType(byteAt(descriptor.data(), descriptor3.TypeAt)), offset, length,
                         byteAt(descriptor.data(), descriptor3.DecimalsAt),
                         byteAt(descriptor.data(), formats::indexedAt) == formats::indexedFlag);
        Fields.add(field);
        offset += length;
    }
}

FIELD_TYPE xBaseTable::convertXbaseFieldType(unsigned char letter)
{
    switch (letter) {
    case 'C':
        return CHAR_TYPE;
    case 'D':
        return DATE_TYPE;
    case 'F':
        return FLOAT_TYPE;
    case 'L':
        return BOOLEAN_TYPE;
    case 'M':
        return MEMO_TYPE;
    case 'N':
        return INTEGER_TYPE;
    case 'P':
        return BLOB_TYPE;
    default:
        return UNKNOWN_TYPE;
    }
}

bool xBaseTable::convertBoolean(const std::string& value)
{
    const char first = value.empty() ? ' ' : value.front();
    return first != 'F' && first != 'f' && first != 'N' && first != 'n';
}

bool xBaseTable::fetchRecord()
{
    if (!is_open()) {
        errorMessage(detail::messages::tableNotOpen);
        return false;
    }
    if (RecordLength == 0) {
        return false;
    }
    detail::RecordReader reader(*this);
    const bool whole = reader.readBytes();
    std::string& record = reader.text();
    deleted_ = !record.empty() && record.front() == formats::deletedMark;
    if (deleted_ && !ReadDeleted) {
        return true;
    }
    if (whole) {
        makePrintable(record);
        extractContent(record);
    }
    return File.good();
}

void xBaseTable::showHeader()
{
    std::ostringstream text;
    text << "Header information\n"
         << "------------------\n"
         << "Database      : " << Path << '\n'
         << "Table         : " << Name << '\n'
         << "xBase version : " << Version << '\n'
         << "Header length : " << HeaderLength << '\n'
         << "Fields        : " << Fields.size() << '\n'
         << "Last update   : " << LastUpdate << '\n'
         << "Records       : " << RecordCount << '\n'
         << '\n';
    display(text.str());
    Fields.show();
    message("\n");
}

}  // namespace kd_lib
