#include <kd_lib/filetable.h>

#include "detail/messages.h"
#include "detail/recordreader.h"
#include "detail/slicing.h"

#include <kd_lib/console.h>
#include <kd_lib/path.h>
#include <kd_lib/tokenizer.h>

#include <algorithm>
#include <iostream>
#include <limits>
#include <unistd.h>
#include <utility>

namespace kd_lib {

namespace {

/// The standard stream does not use one byte of its buffer; with one more it reads whole pages.
constexpr std::size_t fileBufferSize = 65536 + 1;

constexpr const char* columnSeparators = "|:;";

/// Deliberate: the position to which endFile goes.
constexpr std::uint64_t endFilePosition = 2;

/// The position of the record that follows `before` others of fixed length; the largest number if it exceeds
/// 64 bits, because both are past the end of every file.
std::uint64_t recordPosition(const FileTable& table, std::uint64_t before)
{
    std::uint64_t position = 0;
    const bool fits = !__builtin_mul_overflow(before, table.RecordLength, &position) &&
                      !__builtin_add_overflow(position, table.HeaderLength, &position);
    return fits ? position : std::numeric_limits<std::uint64_t>::max();
}

}  // namespace

FileName::~FileName() = default;

FileTable::FileTable()
{
    Extension = "txt";
}

FileTable::FileTable(const std::string& name) : FileTable()
{
    Name = name;
}

FileTable::~FileTable() = default;

bool FileTable::open(const std::string& name)
{
    if (File.is_open()) {
        return true;
    }
    if (name.empty()) {
        errorMessage(detail::messages::noFileName);
        return false;
    }
    std::string path = Path;
    addEndSlash(path);
    path += name;
    if (!Extension.empty()) {
        path += '.' + Extension;
    }
    checkHomePath(path);
    std::cout << "Table: " << path << std::endl;
    if (::access(path.c_str(), F_OK) != 0) {
        errorMessage(detail::messages::fileMissing);
        return false;
    }
    if (::access(path.c_str(), R_OK) != 0) {
        errorMessage(detail::messages::fileNotReadable);
        return false;
    }
    if (!streamBuffer_) {
        streamBuffer_ = std::make_unique<char[]>(fileBufferSize);
        File.rdbuf()->pubsetbuf(streamBuffer_.get(), fileBufferSize);
    }
    File.open(path, Binary ? std::ios::in | std::ios::binary : std::ios::in);
    if (!is_open()) {
        return false;
    }
    Name = name;
    return true;
}

bool FileTable::openPath(const std::string& path)
{
    if (File.is_open()) {
        return true;
    }
    const std::string oldPath = Path;
    const std::string oldExtension = Extension;
    const std::size_t nameAt = path.rfind('/') + 1;
    // The root keeps its slash, every other directory loses it.
    Path = path.substr(0, nameAt > 1 ? nameAt - 1 : nameAt);
    const std::size_t dot = std::min(path.rfind('.'), path.size());
    const bool hasExtension = dot > nameAt && dot + 1 < path.size();
    Extension = hasExtension ? path.substr(dot + 1) : "";
    if (open(path.substr(nameAt, hasExtension ? dot - nameAt : std::string::npos))) {
        return true;
    }
    Path = oldPath;
    Extension = oldExtension;
    return false;
}

bool FileTable::is_open()
{
    return File.is_open();
}

bool FileTable::close()
{
    if (is_open()) {
        File.clear();
        File.close();
    }
    return true;
}

bool FileTable::getFieldList()
{
    return beginFile() && readHeader();
}

bool FileTable::skipHeader()
{
    beginFile();
    return true;
}

bool FileTable::readHeader()
{
    return true;
}

bool FileTable::fetchRecord()
{
    detail::RecordReader reader(*this);
    if (!reader.read()) {
        return false;
    }
    extractContent(reader.text());
    return !File.fail();
}

bool FileTable::extractContent(const std::string& record)
{
    if (detail::isColumnValue(*this, record)) {
        return FileTable::extractContent(std::string(record));
    }
    detail::sliceRecord(Fields, record, Trim, "src/db/filetable");
    return true;
}

void FileTable::setFieldOffsets(std::string& line)
{
    setFieldOffsets(std::as_const(line));
}

void FileTable::setFieldOffsets(const std::string& line)
{
    Tokenizer positions;
    positions.split(line, columnSeparators);
    int previous = 0;
    for (std::size_t i = 0; i < positions.tokens.size(); ++i) {
        const int position = std::stoi(positions.getToken(i));
        // Unsigned, so that the distance of very different numbers wraps instead of overflowing.
        const auto length = static_cast<int>(static_cast<unsigned int>(position) - static_cast<unsigned int>(previous));
        // Deliberate: a column starts at its own number, and its width is the distance from the previous one.
        TableField field("Field#" + std::to_string(i), UNKNOWN_TYPE, position, length, 0, false);
        Fields.add(field);
        previous = position;
    }
}

bool FileTable::beginFile()
{
    if (!is_open()) {
        return false;
    }
    detail::seekTo(File, 0);
    return true;
}

bool FileTable::endFile()
{
    if (!is_open()) {
        return false;
    }
    detail::seekTo(File, endFilePosition);
    return true;
}

bool FileTable::firstRecord()
{
    if (!is_open()) {
        return false;
    }
    detail::seekTo(File, HeaderLength);
    return true;
}

bool FileTable::nextRecord()
{
    if (!is_open()) {
        return false;
    }
    File.clear();
    File.seekg(static_cast<std::streamoff>(RecordLength), std::ios::cur);
    return true;
}

bool FileTable::lastRecord()
{
    if (!is_open()) {
        return false;
    }
    File.clear();
    // The complement is minus (RecordLength + 1), for every length.
    File.seekg(static_cast<std::streamoff>(~RecordLength), std::ios::end);
    return true;
}

bool FileTable::goRecord(unsigned long n)
{
    if (!is_open()) {
        return false;
    }
    const std::uint64_t before = n <= 1 ? 0 : n - 1;
    if (Binary || RecordEnd != detail::newline) {
        detail::seekTo(File, recordPosition(*this, before));
        return true;
    }
    detail::seekTo(File, HeaderLength);
    detail::RecordReader reader(*this);
    for (std::uint64_t i = 0; i < before && reader.skipLine(); ++i) {
    }
    return true;
}

}  // namespace kd_lib
