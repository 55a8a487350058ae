#include "support/dbf_builder.h"

namespace kd_test {

namespace {

void appendLittleEndian(std::string& bytes, std::uint32_t value, int width)
{
    for (int i = 0; i < width; ++i) {
        bytes += static_cast<char>((value >> (8 * i)) & 0xFFU);
    }
}

}  // namespace

DbfBuilder::DbfBuilder(std::vector<DbfColumn> columns)
    : recordCount(0), headerLength(static_cast<std::uint16_t>(32 + 32 * columns.size() + 1)), recordLength(1),
      Columns(std::move(columns))
{
    for (const DbfColumn& column : Columns) {
        recordLength = static_cast<std::uint16_t>(recordLength + column.length);
    }
}

DbfBuilder& DbfBuilder::date(unsigned char yearFrom1900, unsigned char month, unsigned char day)
{
    Year = yearFrom1900;
    Month = month;
    Day = day;
    return *this;
}

DbfBuilder& DbfBuilder::record(const std::vector<std::string>& values)
{
    return add(' ', values);
}

DbfBuilder& DbfBuilder::deletedRecord(const std::vector<std::string>& values)
{
    return add('*', values);
}

DbfBuilder& DbfBuilder::add(char mark, const std::vector<std::string>& values)
{
    Records += mark;
    for (std::size_t i = 0; i < Columns.size(); ++i) {
        std::string value = i < values.size() ? values[i] : "";
        value.resize(Columns[i].length, ' ');
        Records += value;
    }
    ++recordCount;
    return *this;
}

std::string DbfBuilder::header() const
{
    std::string bytes;
    bytes += static_cast<char>(version);
    bytes += static_cast<char>(Year);
    bytes += static_cast<char>(Month);
    bytes += static_cast<char>(Day);
    appendLittleEndian(bytes, recordCount, 4);
    appendLittleEndian(bytes, headerLength, 2);
    appendLittleEndian(bytes, recordLength, 2);
    bytes.append(20, '\0');
    return bytes;
}

std::string DbfBuilder::descriptors() const
{
    std::string bytes;
    for (const DbfColumn& column : Columns) {
        std::string name = column.name;
        name.resize(11, '\0');
        bytes += name;
        bytes += column.type;
        bytes.append(4, '\0');
        bytes += static_cast<char>(column.length);
        bytes += static_cast<char>(column.decimals);
        bytes.append(13, '\0');
        bytes += static_cast<char>(column.flag);
    }
    return terminator ? bytes + '\x0D' : bytes;
}

std::string DbfBuilder::bytes() const
{
    const std::string bytes = header() + descriptors() + Records;
    return endMark ? bytes + '\x1A' : bytes;
}

}  // namespace kd_test
