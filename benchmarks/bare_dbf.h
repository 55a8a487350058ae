/// \file
/// A .dbf file as bare code reads it: some records at a time, each column a slice.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace kd_bench::bare {

/// `text` without the blanks at its end, which are examined eight at a time.
inline std::string_view withoutBlanks(std::string_view text)
{
    constexpr std::uint64_t blanks = 0x2020202020202020U;
    std::size_t size = text.size();
    for (std::uint64_t word = 0; size >= sizeof word; size -= sizeof word) {
        std::memcpy(&word, text.data() + size - sizeof word, sizeof word);
        if (word != blanks) {
            break;
        }
    }
    while (size > 0 && text[size - 1] == ' ') {
        --size;
    }
    return text.substr(0, size);
}

inline std::string_view withoutLeadingBlanks(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(' ');
    return text.substr(first == std::string_view::npos ? text.size() : first);
}

struct DbfColumn {
    std::string Name;  ///< in lower case
    char Type;
    std::size_t Offset;  ///< in the record, whose first byte is the deletion mark
    std::size_t Width;
    int Decimals;

    std::string_view in(const char* record) const { return {record + Offset, Width}; }
};

class DbfReader {
public:
    explicit DbfReader(const std::string& path);
    ~DbfReader() { std::fclose(File); }
    DbfReader(const DbfReader&) = delete;
    DbfReader& operator=(const DbfReader&) = delete;

    const std::vector<DbfColumn>& columns() const { return Columns; }
    std::size_t recordLength() const { return RecordLength; }

    /// The next record; null after the last.
    const char* next()
    {
        if (Next == End && !fill()) {
            return nullptr;
        }
        const char* const record = Next;
        Next += RecordLength;
        return record;
    }

private:
    bool fill();

    std::FILE* File;
    std::vector<DbfColumn> Columns;
    std::size_t RecordLength = 0;
    std::size_t RecordsLeft = 0;
    std::vector<char> Block;
    const char* Next = nullptr;
    const char* End = nullptr;
};

}  // namespace kd_bench::bare
