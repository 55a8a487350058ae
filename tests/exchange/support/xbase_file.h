#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace kd_test {

/// Numbers as bytes of a file.
inline std::string little(std::uint64_t value, int width)
{
    std::string bytes;
    for (int i = 0; i < width; ++i) {
        bytes += static_cast<char>(value >> (8 * i) & 0xFF);
    }
    return bytes;
}

inline std::string big(std::uint64_t value, int width)
{
    const std::string bytes = little(value, width);
    return {bytes.rbegin(), bytes.rend()};
}

inline std::string littleDouble(double value)
{
    return little(std::bit_cast<std::uint64_t>(value), 8);
}

/// A .dbf file of any kind. Every number of the header can be changed before `bytes` is called.
class XbaseFile {
public:
    struct Field {
        std::string Name;
        char Letter;
        unsigned Length;
        unsigned Decimals = 0;
        unsigned Flags = 0;
    };

    XbaseFile(int version, std::vector<Field> fields) : Version(version), Fields(std::move(fields))
    {
        RecordLength = 1;
        for (const Field& field : Fields) {
            RecordLength += field.Length;
        }
        HeaderLength = descriptorsAt() + descriptorSize() * Fields.size() + 1 + (isVisual() ? 263 : 0);
        HeaderLength = isDBase2() ? 521 : HeaderLength;
    }

    /// Adds a record: short values get blanks on the right, long ones are an error of the test.
    XbaseFile& record(const std::vector<std::string>& values, char mark = ' ')
    {
        Records += mark;
        for (std::size_t i = 0; i < Fields.size(); ++i) {
            std::string value = values.at(i);
            value.resize(Fields[i].Length, ' ');
            Records += value;
        }
        ++Count;
        return *this;
    }

    std::string header() const { return isDBase2() ? header2() : isDBase7() ? header7() : header3(); }

    std::string bytes() const { return header() + Records + End; }

    int Version;
    std::vector<Field> Fields;
    std::uint64_t Count = 0;
    std::uint64_t HeaderLength = 0;
    std::uint64_t RecordLength = 0;
    unsigned TableFlags = 0;
    unsigned Language = 0;
    std::string Driver;                 ///< dBase 7
    std::string Date = "\x7C\x02\x1D";  ///< 2024-02-29
    std::string Mark = "\x0D";          ///< after the descriptors
    std::string BackLink;
    std::string Records;
    std::string End = "\x1A";

private:
    bool isDBase2() const { return Version == 0x02; }
    bool isDBase7() const { return Version == 0x04 || Version == 0x8C; }
    bool isVisual() const { return Version >= 0x30 && Version <= 0x32; }
    std::uint64_t descriptorsAt() const { return isDBase7() ? 68 : 32; }
    std::uint64_t descriptorSize() const { return isDBase7() ? 48 : 32; }

    static std::string padded(std::string text, std::size_t width)
    {
        text.resize(width, '\0');
        return text;
    }

    static unsigned highByte(const Field& field)
    {
        return field.Letter == 'C' && field.Length > 255 ? field.Length / 256 : field.Decimals;
    }

    std::string preamble() const
    {
        return little(static_cast<unsigned>(Version), 1) + Date + little(Count, 4) + little(HeaderLength, 2) +
               little(RecordLength, 2) + std::string(16, '\0') + little(TableFlags, 1) + little(Language, 1) +
               std::string(2, '\0');
    }

    std::string header3() const
    {
        std::string bytes = preamble();
        for (const Field& field : Fields) {
            bytes += padded(field.Name, 11) + field.Letter + std::string(4, '\0') + little(field.Length % 256, 1) +
                     little(highByte(field), 1) + little(field.Flags, 1) + std::string(13, '\0');
        }
        bytes += Mark;
        return isVisual() || !BackLink.empty() ? bytes + padded(BackLink, 263) : bytes;
    }

    std::string header7() const
    {
        std::string bytes = preamble() + padded(Driver, 32) + std::string(4, '\0');
        for (const Field& field : Fields) {
            bytes += padded(field.Name, 32) + field.Letter + little(field.Length, 1) + little(field.Decimals, 1) +
                     std::string(13, '\0');
        }
        return bytes + Mark;
    }

    std::string header2() const
    {
        std::string bytes = "\x02" + little(Count, 2) + Date.substr(1, 2) + Date.substr(0, 1) + little(RecordLength, 2);
        for (const Field& field : Fields) {
            bytes += padded(field.Name, 11) + field.Letter + little(field.Length, 1) + std::string(2, '\0') +
                     little(field.Decimals, 1);
        }
        return padded(Fields.size() < 32 ? bytes + Mark : bytes, 520) + (Fields.size() < 32 ? '\0' : Mark.front());
    }
};

/// A dBase III memo file. If every text fits in one block, the n-th text is in block n.
inline std::string memo3(const std::vector<std::string>& texts)
{
    std::string bytes(512, '\0');
    for (const std::string& text : texts) {
        bytes += text + "\x1A\x1A";
        bytes.resize((bytes.size() + 511) / 512 * 512, '\0');
    }
    bytes.replace(0, 4, little(bytes.size() / 512, 4));
    return bytes;
}

/// A dBase IV memo file. `stated`: the block size in the header.
inline std::string memo4(const std::vector<std::string>& texts, unsigned block = 512, int stated = -1)
{
    std::string bytes(block > 24 ? block : 24, '\0');
    bytes.replace(20, 2, little(stated < 0 ? block : static_cast<unsigned>(stated), 2));
    for (const std::string& text : texts) {
        bytes.resize((bytes.size() + block - 1) / block * block, '\0');
        bytes += std::string("\xFF\xFF\x08\0", 4) + little(text.size() + 8, 4) + text;
    }
    bytes.resize((bytes.size() + block - 1) / block * block, '\0');
    bytes.replace(0, 4, little(bytes.size() / block, 4));
    return bytes;
}

/// A FoxPro memo file; the first text is at block 512 / `block`.
inline std::string memoFox(const std::vector<std::string>& texts, unsigned block = 64, unsigned type = 1)
{
    std::string bytes(512, '\0');
    bytes.replace(6, 2, big(block, 2));
    for (const std::string& text : texts) {
        bytes += big(type, 4) + big(text.size(), 4) + text;
        bytes.resize((bytes.size() + block - 1) / block * block, '\0');
    }
    bytes.replace(0, 4, big(bytes.size() / block, 4));
    return bytes;
}

}  // namespace kd_test
