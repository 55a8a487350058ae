#include "recordreader.h"

#include <algorithm>
#include <string_view>

namespace kd_lib::detail {

namespace {

/// The longest record that is read directly into the text. Room for a longer one is not initialised, so that only the
/// bytes that are read need memory: the length is only an upper bound.
constexpr std::size_t longestDirect = 65536;

}  // namespace

void seekTo(std::istream& file, std::uint64_t position)
{
    file.clear();
    file.seekg(static_cast<std::streamoff>(position), std::ios::beg);
}

bool isValueOf(const TableFields& fields, const std::string& text)
{
    return std::any_of(fields.List.begin(), fields.List.end(),
                       [&text](const TableField* field) { return &field->Value == &text; });
}

char* RecordReader::room()
{
    if (Table.RecordLength > Table.roomSize_) {
        if (Table.RecordLength > Text.max_size()) {
            // Throws the standard exception if no text can be as long.
            Text.resize(Table.RecordLength);
        }
        Table.room_ = std::make_unique_for_overwrite<char[]>(Table.RecordLength);
        Table.roomSize_ = Table.RecordLength;
    }
    return Table.room_.get();
}

bool RecordReader::skipLine()
{
    Table.File.getline(room(), static_cast<std::streamsize>(Table.RecordLength), '\n');
    return !Table.File.fail();
}

bool RecordReader::readBytes()
{
    std::fstream& file = Table.File;
    const std::uint64_t length = Table.RecordLength;
    if (length > longestDirect) {
        char* const to = room();
        file.read(to, static_cast<std::streamsize>(length));
        Text.assign(to, static_cast<std::size_t>(file.gcount()));
        return !file.fail();
    }
    if (Text.size() != length) {
        Text.resize(length);
    }
    file.read(Text.data(), static_cast<std::streamsize>(length));
    if (!file.fail()) {
        return true;
    }
    Text.resize(static_cast<std::size_t>(file.gcount()));
    return false;
}

bool RecordReader::read()
{
    if (Table.RecordEnd != newline) {
        if (Table.RecordLength == 0 || !readBytes()) {
            return false;
        }
        Text.resize(std::min(Text.size(), Text.find('\0')));
        return true;
    }
    if (!skipLine()) {
        return false;
    }
    // The zero byte that ends the line replaces its newline.
    const auto size = std::min(static_cast<std::uint64_t>(Table.File.gcount()), Table.RecordLength);
    const std::string_view line(Table.room_.get(), static_cast<std::size_t>(size));
    Text.assign(line.substr(0, line.find('\0')));
    return true;
}

}  // namespace kd_lib::detail
