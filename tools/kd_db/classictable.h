/// \file
/// The .dbf table of the classic script.
#pragma once

#include <kd_lib/xbase2sql.h>

#include <cstdint>
#include <functional>
#include <string>

namespace kd_tool {

/// An xBase table whose header fits its file. Its records end with the file, or before one that would start with the
/// end mark (0x1A). A cut record, fewer records than the header counts, and a read error are an `exchange::Error`.
class ClassicTable : public kd_lib::xBase2Sql {
public:
    /// Opens the file, whose name must have an extension; "~" is the home directory. `check` is called every few
    /// records, and may throw.
    ClassicTable(const std::string& file, std::function<void()> check);

    bool fetchRecord() override;

    std::uint64_t deletedRecords() const { return Deleted; }

    /// Records after those that the header counts, and bytes that were read as blanks; after the last record.
    std::uint64_t recordsRead() const { return Number; }
    std::uint64_t blankedBytes();

    [[noreturn]] void fail(const std::string& reason) const;
    [[noreturn]] void failRecord(const std::string& reason) const;

private:
    void openFile();
    void readColumns();
    void dropAfterTerminator();
    void checkShape();
    void endOfRecords();
    std::uint64_t fileSize();

    std::string Argument;
    std::function<void()> Check;
    std::uint64_t Number = 0;
    std::uint64_t Deleted = 0;
};

}  // namespace kd_tool
