#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kd_test {

/// One column of a table under construction.
struct DbfColumn {
    std::string name;
    char type;
    unsigned char length;
    unsigned char decimals = 0;
    unsigned char flag = 0;  ///< byte 31 of the descriptor
};

/// Builds a valid `.dbf` file byte by byte; a test then damages the bytes or the header's numbers.
/// Values are not converted: too short ones are padded with blanks, too long ones are cut.
class DbfBuilder {
public:
    explicit DbfBuilder(std::vector<DbfColumn> columns);

    DbfBuilder& date(unsigned char yearFrom1900, unsigned char month, unsigned char day);
    DbfBuilder& record(const std::vector<std::string>& values);
    DbfBuilder& deletedRecord(const std::vector<std::string>& values);

    unsigned char version = 3;
    bool terminator = true;      ///< 0x0D after the descriptors
    bool endMark = true;         ///< 0x1A after the records
    std::uint32_t recordCount;   ///< as in the header; `record` adds one
    std::uint16_t headerLength;  ///< as in the header; by default 32 + 32 n + 1
    std::uint16_t recordLength;  ///< as in the header; by default 1 + the sum of the lengths

    /// The whole file.
    std::string bytes() const;

    /// The 32 bytes of the file header, the descriptors with their terminator, and the records.
    std::string header() const;
    std::string descriptors() const;
    const std::string& records() const { return Records; }

private:
    DbfBuilder& add(char mark, const std::vector<std::string>& values);

    std::vector<DbfColumn> Columns;
    std::string Records;
    unsigned char Year = 124;
    unsigned char Month = 3;
    unsigned char Day = 5;
};

}  // namespace kd_test
