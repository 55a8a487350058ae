#include "classictable.h"

#include "console.h"
#include "exitstatus.h"

#include <kd_lib/exchange/error.h>
#include <kd_lib/path.h>
#include <kd_lib/text.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace kd_tool {

namespace {

constexpr std::uint64_t headerSize = 32;
constexpr std::uint64_t longestRecord = 32767;
constexpr char terminator = '\r';
constexpr int endMark = 0x1A;
constexpr std::size_t blockSize = 16384;
constexpr std::uint64_t recordsPerCheck = 16;

/// Whether the library reads this byte as a blank, although it is not one. A zero byte is a usual way to write a blank.
bool isBlanked(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte != 0 && (byte < 0x20 || byte > 0x7E);
}

std::uint64_t countBlanked(std::string_view bytes)
{
    return kd_lib::isPlainAscii(bytes) ? 0 : static_cast<std::uint64_t>(std::ranges::count_if(bytes, isBlanked));
}

/// Throws the reason if a file cannot be read: the library opens it by name, and does not return the reason.
void requireReadable(const std::string& file)
{
    std::string path = file;
    kd_lib::checkHomePath(path);
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat about {};
    const bool opened = descriptor >= 0 && ::fstat(descriptor, &about) == 0;
    const int error = errno;
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    if (!opened) {
        throw kd_lib::exchange::Error(file, std::generic_category().message(error));
    }
    if (!S_ISREG(about.st_mode)) {
        throw kd_lib::exchange::Error(file, S_ISDIR(about.st_mode) ? "Is a directory" : "is not a regular file");
    }
}

}  // namespace

ClassicTable::ClassicTable(const std::string& file, std::function<void()> check)
    : Argument(file), Check(std::move(check))
{
    NamesMayChange = false;
    openFile();
    readColumns();
    dropAfterTerminator();
    checkShape();
}

void ClassicTable::openFile()
{
    const std::size_t slash = Argument.rfind('/');
    const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
    // The root keeps its slash, every other folder loses it.
    Path = Argument.substr(0, start > 1 ? start - 1 : start);
    std::string name = Argument.substr(start);
    const std::size_t dot = name.rfind('.');
    Extension = name.substr(dot + 1);
    name.resize(dot);
    if (name.empty()) {
        fail("the file has no name before its extension");
    }
    requireReadable(Argument);
    if (!open(name)) {
        fail("cannot be opened");
    }
}

void ClassicTable::fail(const std::string& reason) const
{
    throw kd_lib::exchange::Error(Argument, reason);
}

void ClassicTable::failRecord(const std::string& reason) const
{
    fail("record " + std::to_string(Number) + ' ' + reason);
}

void ClassicTable::readColumns()
{
    if (fileSize() < headerSize) {
        fail("the file is too short for a table's header");
    }
    bool read = false;
    try {
        read = getFieldList();
    } catch (const std::length_error&) {
        read = false;
    }
    if (!read || HeaderLength < headerSize || HeaderLength > fileSize()) {
        fail("the header's length does not fit the file");
    }
}

/// Some programs write other data between the terminator of the descriptors and the first record. The library reads it
/// as further descriptors.
void ClassicTable::dropAfterTerminator()
{
    std::vector<kd_lib::TableField*>& list = Fields.List;
    const auto first = std::ranges::find_if(list, [](const kd_lib::TableField* field) {
        return !field->Name.empty() && field->Name.front() == terminator;
    });
    std::for_each(first, list.end(), [](const kd_lib::TableField* field) { delete field; });
    list.erase(first, list.end());
}

void ClassicTable::checkShape()
{
    if (Fields.size() == 0) {
        fail("the header defines no columns");
    }
    if (RecordLength == 0 || RecordLength > longestRecord) {
        fail("the header's record length is not usable");
    }
    const kd_lib::TableField& last = *Fields.List.back();
    const auto end = static_cast<std::uint64_t>(last.Offset) + static_cast<std::uint64_t>(last.Length);
    if (end > RecordLength) {
        fail("the columns need " + counted(end, "byte") + ", a record has " + std::to_string(RecordLength));
    }
}

bool ClassicTable::fetchRecord()
{
    if (Number % recordsPerCheck == 0) {
        Check();
    }
    const int first = File.peek();
    if (first == std::fstream::traits_type::eof() || first == endMark) {
        endOfRecords();
        return false;
    }
    ++Number;
    if (!xBase2Sql::fetchRecord()) {
        failRecord(File.bad() ? "cannot be read" : "is cut by the end of the file");
    }
    Deleted += isDeleted() ? 1U : 0U;
    return true;
}

void ClassicTable::endOfRecords()
{
    if (File.bad()) {
        ++Number;
        failRecord("cannot be read");
    }
    if (Number < RecordCount) {
        const std::string counts = std::to_string(RecordCount);
        ++Number;
        failRecord("is missing: the header counts " + counts);
    }
}

std::uint64_t ClassicTable::fileSize()
{
    beginFile();
    File.seekg(0, std::ios::end);
    const auto size = static_cast<std::uint64_t>(File.tellg());
    beginFile();
    return size;
}

/// The library replaces bytes by blanks in place, so this reads the records' bytes once more.
std::uint64_t ClassicTable::blankedBytes()
{
    firstRecord();
    std::uint64_t blanked = 0;
    std::uint64_t rest = Number * RecordLength;
    std::vector<char> block(blockSize);
    while (rest > 0) {
        const std::uint64_t wanted = std::min<std::uint64_t>(rest, block.size());
        File.read(block.data(), static_cast<std::streamsize>(wanted));
        const auto count = static_cast<std::size_t>(File.gcount());
        if (count == 0) {
            break;
        }
        blanked += countBlanked(std::string_view(block.data(), count));
        rest -= count;
    }
    File.clear();
    return blanked;
}

}  // namespace kd_tool
