#include "recordreader.h"

#include <algorithm>
#include <string_view>

namespace kd_lib::detail {

namespace {

/// The room for a record whose length is not known to be true: a longer one gets more as its bytes come.
constexpr std::size_t firstRoom = 65536;

/// Twice the room, at most `limit`.
std::size_t moreRoom(std::size_t room, std::uint64_t limit)
{
    return static_cast<std::size_t>(std::min<std::uint64_t>(limit, 2 * room));
}

/// Reads a line of less than `limit` characters into `line`, and returns how many bytes the stream has read. The
/// state of the stream is then that of one read with `limit` bytes of room.
std::size_t readLongLine(std::istream& file, std::string& line, std::uint64_t limit)
{
    // A line that fills the first room is no failure: the stream must not throw for it.
    const std::ios::iostate thrown = file.exceptions();
    file.exceptions(std::ios::goodbit);
    std::size_t size = 0;
    for (std::size_t room = firstRoom;; room = moreRoom(room, limit)) {
        line.resize(room);
        file.getline(line.data() + size, static_cast<std::streamsize>(room - size), '\n');
        const auto count = static_cast<std::size_t>(file.gcount());
        if (size > 0 && count == 0 && file.eof()) {
            // The line ended with the room before.
            file.clear(std::ios::eofbit);
        }
        const bool full = file.rdstate() == std::ios::failbit && count == room - size - 1;
        size += count;
        if (!full || room == limit) {
            break;
        }
        file.clear();
    }
    file.exceptions(thrown);
    return size;
}

/// Reads a line of less than `limit` characters to the start of `line`, as `readLongLine` does.
inline std::size_t readLine(std::istream& file, std::string& line, std::uint64_t limit)
{
    if (limit > firstRoom) {
        return readLongLine(file, line, limit);
    }
    line.resize(limit);
    file.getline(line.data(), static_cast<std::streamsize>(limit), '\n');
    return static_cast<std::size_t>(file.gcount());
}

/// Reads `length` bytes into `text`, which holds them alone, or fewer where the file ends.
void readLongBytes(std::istream& file, std::string& text, std::uint64_t length)
{
    if (length > text.max_size()) {
        text.resize(length);
    }
    std::size_t size = 0;
    for (std::size_t room = firstRoom;; room = moreRoom(room, length)) {
        text.resize(room);
        file.read(text.data() + size, static_cast<std::streamsize>(room - size));
        size += static_cast<std::size_t>(file.gcount());
        if (file.fail() || room == length) {
            break;
        }
    }
    text.resize(size);
}

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

bool RecordReader::skipLine()
{
    readLine(Table.File, Table.lineBuffer_, Table.RecordLength);
    return !Table.File.fail();
}

bool RecordReader::readBytes()
{
    if (Table.RecordLength > firstRoom) {
        readLongBytes(Table.File, Text, Table.RecordLength);
        return !Table.File.fail();
    }
    Text.resize(Table.RecordLength);
    Table.File.read(Text.data(), static_cast<std::streamsize>(Text.size()));
    if (Table.File.fail()) {
        Text.resize(static_cast<std::size_t>(Table.File.gcount()));
        return false;
    }
    return true;
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
    const std::size_t size = readLine(Table.File, Table.lineBuffer_, Table.RecordLength);
    if (Table.File.fail()) {
        return false;
    }
    // The zero byte that ends the line takes the place of its newline.
    const std::string_view line(Table.lineBuffer_.data(), std::min(Table.lineBuffer_.size(), size));
    Text.assign(line.substr(0, line.find('\0')));
    return true;
}

}  // namespace kd_lib::detail
