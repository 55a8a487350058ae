/// \file
/// Tables opened on files of given bytes, the values of whole walks, and the damage that tests do to files.
#pragma once

#include "support/console_capture.h"
#include "support/scoped_directory.h"

#include <kd_lib/filetable.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace kd_test {

using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

/// The output of `work` on std::cout: cheaper than `captured`, for tests of many rounds.
template <class Work>
std::string printedBy(Work work)
{
    const std::ostringstream gathered;
    std::streambuf* const before = std::cout.rdbuf(gathered.rdbuf());
    work();
    std::cout.rdbuf(before);
    return gathered.str();
}

/// Opens `table` on the file `name` in `directory`, without the line that `open` prints.
inline bool openQuietly(kd_lib::FileTable& table, const ScopedDirectory& directory, const std::string& name = "sample")
{
    bool opened = false;
    table.Path = directory.path();
    printedBy([&] { opened = table.open(name); });
    return opened;
}

/// A table opened on a scratch file of these bytes; the file is removed at the end of the scope.
template <class Table>
class Opened {
public:
    explicit Opened(const std::string& bytes)
    {
        Directory.write("sample." + table.Extension, bytes);
        EXPECT_TRUE(openQuietly(table, Directory));
    }

    /// Replaces the file and opens it again; the columns stay. The old file is removed first: a file
    /// system may take much longer to overwrite one.
    void reopen(const std::string& bytes)
    {
        table.close();
        std::filesystem::remove(Directory.file("sample." + table.Extension));
        Directory.write("sample." + table.Extension, bytes);
        EXPECT_TRUE(openQuietly(table, Directory));
    }

    std::string directory() const { return Directory.path(); }

    Table table;

private:
    ScopedDirectory Directory;
};

/// The current values of all columns.
inline Row rowOf(const kd_lib::FileTable& table)
{
    Row row;
    for (const kd_lib::TableField& field : table.Fields) {
        row.push_back(field.Value);
    }
    return row;
}

/// Fetches from the current position until `fetchRecord` returns false, which it must before `limit`.
inline Rows rowsOf(kd_lib::FileTable& table, std::size_t limit = 100000)
{
    Rows rows;
    while (table.fetchRecord()) {
        rows.push_back(rowOf(table));
        if (rows.size() > limit) {
            ADD_FAILURE() << "the walk does not end";
            break;
        }
    }
    return rows;
}

/// "offset+length" of every column, in order.
inline Row placesOf(const kd_lib::FileTable& table)
{
    Row places;
    for (const kd_lib::TableField& field : table.Fields) {
        places.push_back(std::to_string(field.Offset) + "+" + std::to_string(field.Length));
    }
    return places;
}

/// The names of all columns.
inline Row namesOf(const kd_lib::FileTable& table)
{
    Row names;
    for (const kd_lib::TableField& field : table.Fields) {
        names.push_back(field.Name);
    }
    return names;
}

/// Appends a column of a positional table.
inline void addColumn(kd_lib::FileTable& table, const std::string& name, int offset, int length)
{
    kd_lib::TableField field(name, kd_lib::UNKNOWN_TYPE, offset, length, 0, false);
    table.Fields.add(field);
}

/// `bytes` with the byte at `position` replaced.
inline std::string withByte(std::string bytes, std::size_t position, unsigned int value)
{
    bytes.at(position) = static_cast<char>(value);
    return bytes;
}

/// `count` characters that differ from their neighbours, so that a shifted slice shows: "abc...zabc...".
inline std::string lettersOf(std::size_t count, std::size_t start = 0)
{
    std::string text(count, ' ');
    for (std::size_t i = 0; i < count; ++i) {
        text[i] = static_cast<char>('a' + (start + i) % 26);
    }
    return text;
}

/// Names a parameterised test after the member `name` of its row.
template <class Case>
std::string caseName(const testing::TestParamInfo<Case>& row)
{
    return row.param.name;
}

/// The slot of a virtual operation in its class's table of operations; the two kinds of destructor
/// take slots 0 and 1. 0 for an operation that is not virtual. It reads the pointer in the layout of the
/// common C++ binary interface.
template <class Operation>
std::size_t slotOf(Operation operation)
{
    std::uintptr_t parts[2] = {0, 0};
    static_assert(sizeof operation == sizeof parts);
    std::memcpy(parts, &operation, sizeof parts);
#if defined(__aarch64__) || defined(__arm__)
    return parts[1] % 2 == 1 ? parts[0] / sizeof(void*) : 0;
#else
    return parts[0] % 2 == 1 ? (parts[0] - 1) / sizeof(void*) : 0;
#endif
}

}  // namespace kd_test
