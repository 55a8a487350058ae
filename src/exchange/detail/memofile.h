/// \file
/// The memo file of a table.
#pragma once

#include "../../formats/memoheader.h"
#include "dbflayout.h"
#include "filewindow.h"
#include "inputfile.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kd_lib::exchange::detail {

/// An open memo file. Every place and length in it is checked against the file's size.
class MemoFile {
public:
    /// Opens a file. If `kind` is `None`, its extension and contents decide. Throws an `Error` if it cannot be opened,
    /// is not a regular file, or is of a kind that cannot be read. An invalid header is not an error here, but makes
    /// every value unreadable.
    MemoFile(const std::string& path, formats::MemoKind kind);

    /// Reads the value that begins with a block into `value`. Returns a null pointer, or the reason why it cannot be
    /// read, which is a string literal.
    const char* read(std::uint64_t block, std::string& value);

    const std::string& path() const { return File.path(); }
    formats::MemoKind kind() const { return Kind; }
    std::uint32_t blockSize() const { return BlockSize; }
    std::uint64_t headerSize() const { return HeaderSize; }

private:
    void readHeader();
    formats::MemoKind kindOfContents();
    const char* readToMark(std::uint64_t at, std::string& value);
    const char* readBlockOf4(std::uint64_t at, std::string& value);
    const char* readBlockOfFox(std::uint64_t at, std::string& value);
    const char* readBytes(std::uint64_t at, std::uint64_t length, std::string& value);

    InputFile File;
    FileWindow Window;
    formats::MemoKind Kind;
    std::uint32_t BlockSize = 0;
    std::uint64_t HeaderSize = 0;
};

/// The memo file in the table's folder; nothing if there is none.
std::optional<std::string> findMemoFile(const std::string& table, const DbfLayout& layout);

/// The kind of a memo file of this table; `None` if neither the table nor the file's extension determines it.
formats::MemoKind memoKindOf(const DbfLayout& layout, const std::string& path);

/// The name that the memo file of a table should have, for messages.
std::string likelyMemoFile(const std::string& table, const DbfLayout& layout);

}  // namespace kd_lib::exchange::detail
