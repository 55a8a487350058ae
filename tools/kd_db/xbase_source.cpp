#include "xbase_source.h"

#include "output.h"
#include "signals.h"

#include <kd_lib/text.h>

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace kd_tool {

namespace {

constexpr std::uint64_t headerSize = 32;
constexpr std::uint64_t longestRecord = 32767;
constexpr char terminator = '\r';
constexpr int endMark = 0x1A;
constexpr std::size_t blockSize = 16384;

/// The library reads such a byte as a blank; a zero byte is a usual way to write one.
bool isBlanked(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte != 0 && (byte < 0x20 || byte > 0x7E);
}

std::uint64_t countBlanked(std::string_view bytes)
{
    return kd_lib::isPlainAscii(bytes)
               ? 0
               : static_cast<std::uint64_t>(std::count_if(bytes.begin(), bytes.end(), isBlanked));
}

}  // namespace

XBaseSource::XBaseSource(const std::string& file) : Source(file)
{
    openFile();
    readColumns();
    dropBehindTerminator();
    checkShape();
}

void XBaseSource::readColumns()
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

/// Some programs put other data between the terminator of the descriptors and the first record, which the
/// library reads as further descriptors.
void XBaseSource::dropBehindTerminator()
{
    std::vector<kd_lib::TableField*>& list = Fields.List;
    const auto first = std::find_if(list.begin(), list.end(), [](const kd_lib::TableField* field) {
        return !field->Name.empty() && field->Name.front() == terminator;
    });
    std::for_each(first, list.end(), [](const kd_lib::TableField* field) { delete field; });
    list.erase(first, list.end());
}

void XBaseSource::checkShape()
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

bool XBaseSource::fetchRecord()
{
    throwIfInterrupted();
    const int first = File.peek();
    if (first == std::fstream::traits_type::eof() || first == endMark) {
        endOfRecords();
        return false;
    }
    ++Number;
    if (!xBase2Sql::fetchRecord()) {
        failRecord(File.bad() ? "cannot be read" : "is cut by the end of the file");
    }
    DeletedRecords += isDeleted() ? 1U : 0U;
    return true;
}

void XBaseSource::endOfRecords()
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
    if (Number > RecordCount) {
        note(file() + ": the header counts " + counted(RecordCount, "record") + ", the file holds " +
             std::to_string(Number));
    }
    const std::uint64_t blanked = blankedBytes();
    if (blanked > 0) {
        note(file() + ": " + counted(blanked, "byte") + " outside printable ASCII read as blanks");
    }
}

std::uint64_t XBaseSource::fileSize()
{
    beginFile();
    File.seekg(0, std::ios::end);
    const auto size = static_cast<std::uint64_t>(File.tellg());
    beginFile();
    return size;
}

/// Counts what the library blanked. It blanks in place, so this looks at the records' bytes once more.
std::uint64_t XBaseSource::blankedBytes()
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
