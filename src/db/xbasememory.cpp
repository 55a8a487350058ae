#include <kd_lib/xbasememory.h>

#include <array>
#include <cctype>
#include <cstring>
#include <iostream>

namespace kd_lib {

namespace {

// An entry header.
constexpr std::size_t entrySize = 32;
constexpr std::size_t nameAt = 1;
constexpr std::size_t nameWidth = 10;
constexpr std::size_t typeAt = 11;
constexpr std::size_t lengthAt = 16;
constexpr std::size_t decimalsAt = 17;

/// One more than the longest value, so that the text in the buffer always ends inside it.
constexpr std::size_t valueBufferSize = 256;

constexpr char numberEnd = '@';

using Entry = std::array<char, entrySize>;
using ValueBuffer = std::array<char, valueBufferSize>;

unsigned int byteAt(const Entry& entry, std::size_t position)
{
    return static_cast<unsigned char>(entry[position]);
}

void writeHeader(std::ostream& out, const Entry& entry)
{
    const char* const name = entry.data() + nameAt;
    out.write(name, static_cast<std::streamsize>(::strnlen(name, nameWidth)));
    out << ' ' << entry[typeAt] << ' ' << byteAt(entry, lengthAt) << '.' << byteAt(entry, decimalsAt) << ' ';
}

void writeText(std::ostream& out, std::istream& file, unsigned int length, ValueBuffer& value)
{
    // Deliberate: the buffer is not cleared, so a shorter value is followed by the rest of a longer previous one.
    file.read(value.data(), length);
    out << ' ';
    out.write(value.data(), static_cast<std::streamsize>(::strnlen(value.data(), value.size())));
}

void writeNumber(std::ostream& out, std::istream& file)
{
    for (char byte = 0; file.get(byte) && byte != numberEnd;) {
        const int code = static_cast<unsigned char>(byte);
        if (std::isdigit(code) != 0) {
            // Deliberate: the digit's character code, not the digit.
            out << code;
        }
    }
}

void writeValue(std::ostream& out, std::istream& file, const Entry& entry, ValueBuffer& value)
{
    switch (entry[typeAt]) {
    case 'C':
    case 'D':
    case 'L':
        writeText(out, file, byteAt(entry, lengthAt), value);
        break;
    case 'N':
        writeNumber(out, file);
        break;
    default:
        break;
    }
}

}  // namespace

xBaseMemory::xBaseMemory()
{
    Extension = "mem";
}

xBaseMemory::xBaseMemory(const std::string& name) : xBaseMemory()
{
    Name = name;
}

xBaseMemory::~xBaseMemory() = default;

bool xBaseMemory::read()
{
    if (!is_open()) {
        return false;
    }
    Fields.clearList();
    beginFile();
    Entry entry{};
    ValueBuffer value{};
    // The state is tested after a line is written, so one more line is written at the end of the file.
    while (!File.fail()) {
        File.read(entry.data(), entrySize);
        writeHeader(std::cout, entry);
        writeValue(std::cout, File, entry, value);
        std::cout << "|\n";
    }
    return true;
}

bool xBaseMemory::write()
{
    return true;
}

}  // namespace kd_lib
