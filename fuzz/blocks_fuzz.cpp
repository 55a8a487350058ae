// Tables larger than the blocks in which files are read and scripts are written, compared with the simplest reader.

#include "support/bounded_output.h"
#include "support/calls.h"
#include "support/input_folder.h"
#include "support/options.h"

#include <kd_lib/asciitable.h>
#include <kd_lib/xbase2sql.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr std::size_t outputLimit = 1U << 20U;

/// Files are read in blocks of 65,536 bytes, scripts written in blocks of 262,144.
constexpr std::size_t smallestFile = 60000;
constexpr std::size_t sizeStep = 1500;

/// Bounds the number of records, and so the time of an input.
constexpr std::size_t shortestRecord = 200;

/// Makes any number of bytes from the bytes of an input: neighbours differ, and so do the places of a repetition.
class Bytes {
public:
    explicit Bytes(std::string_view source) : Source(source) {}

    char at(std::size_t position) const
    {
        if (Source.empty()) {
            return static_cast<char>('a' + position % 26);
        }
        return Source[(position + position / Source.size() * 7) % Source.size()];
    }

    std::string take(std::size_t from, std::size_t count) const
    {
        std::string text(count, ' ');
        for (std::size_t i = 0; i < count; ++i) {
            text[i] = at(from + i);
        }
        return text;
    }

private:
    std::string_view Source;
};

struct Column {
    char Letter;
    std::size_t Length;
};

struct PlainTable {
    std::vector<Column> Columns;
    std::size_t HeaderLength = 0;
    std::size_t RecordLength = 1;
    std::string File;
};

void putShort(std::string& bytes, std::size_t at, std::size_t value)
{
    bytes[at] = static_cast<char>(value % 256);
    bytes[at + 1] = static_cast<char>(value / 256);
}

PlainTable makeTable(kd_fuzz::Options& options)
{
    PlainTable table;
    const std::size_t columns = 1 + options.byte() % 9;
    for (std::size_t i = 0; i < columns; ++i) {
        const char letter = "CNDLMFPX"[options.byte() % 8];
        table.Columns.push_back({letter, letter == 'D' ? 8U : options.byte()});
        table.RecordLength += table.Columns.back().Length;
    }
    table.HeaderLength = 32 + 32 * columns + 1 + options.byte() % 31;
    table.RecordLength = std::max(table.RecordLength + options.byte() % 4, shortestRecord);
    std::string& file = table.File;
    file.assign(table.HeaderLength, '\r');
    file[0] = 3;
    putShort(file, 8, table.HeaderLength);
    putShort(file, 10, table.RecordLength);
    for (std::size_t i = 0; i < columns; ++i) {
        const std::string name = "C" + std::to_string(i);
        std::string descriptor(32, '\0');
        descriptor.replace(0, name.size(), name);
        descriptor[11] = table.Columns[i].Letter;
        descriptor[16] = static_cast<char>(table.Columns[i].Length);
        file.replace(32 + 32 * i, 32, descriptor);
    }
    const std::size_t size = smallestFile + options.byte() * sizeStep;
    const bool endMark = (options.byte() & 1U) != 0;
    const Bytes bytes(options.content());
    for (std::size_t record = 0; file.size() + table.RecordLength < size; ++record) {
        file += record % 5 == 3 ? '*' : ' ';
        file += bytes.take(record * 31, table.RecordLength - 1);
    }
    file += endMark ? "\x1a" : "";
    return table;
}

/// The record as the reader must see it.
std::string plainRecord(const PlainTable& table, std::size_t record)
{
    std::string text = table.File.substr(table.HeaderLength + record * table.RecordLength, table.RecordLength);
    for (char& c : text) {
        c = c < ' ' || c > '~' ? ' ' : c;
    }
    return text;
}

std::string plainValue(const std::string& record, std::size_t offset, std::size_t length, bool trim)
{
    std::string value = record.substr(offset, length);
    while (trim && !value.empty() && value.back() == ' ') {
        value.pop_back();
    }
    return value;
}

class Comparison {
public:
    Comparison(const PlainTable& plain, bool trim, bool readDeleted) : Plain(plain)
    {
        Values.resize(plain.Columns.size());
        Table.Path = kd_fuzz::inputFolder();
        Table.Trim = trim;
        Table.ReadDeleted = readDeleted;
        kd_fuzz::require(Table.open("input") && Table.getFieldList(), "a good table opens");
        kd_fuzz::require(Table.Fields.size() == plain.Columns.size(), "every column is defined");
        Records = (plain.File.size() - plain.HeaderLength) / plain.RecordLength;
    }

    void walk()
    {
        Table.firstRecord();
        for (std::size_t record = 0; record < Records; ++record) {
            fetch(record);
        }
        kd_fuzz::require(!Table.fetchRecord(), "the walk ends with the file");
    }

    void jump(kd_fuzz::Options options)
    {
        for (int i = 0; i < 20 && Records > 0; ++i) {
            const std::size_t record = (options.byte() * 256 + options.byte()) % Records;
            Table.goRecord(record + 1);
            fetch(record);
        }
    }

    /// The script must be the same as the single statements.
    void script()
    {
        std::string expected = Table.createTable(true);
        bool whole = true;
        try {
            for (Table.firstRecord(); Table.fetchRecord();) {
                expected += Table.insert();
            }
        } catch (const std::out_of_range&) {
            // After a short date the script ends; the statements before it are in the script.
            whole = false;
        }
        std::ostringstream out;
        bool written = true;
        try {
            Table.writeScript(out);
        } catch (const std::out_of_range&) {
            written = false;
        }
        kd_fuzz::require(out.str() == expected && whole == written, "the script is that of single statements");
    }

private:
    void fetch(std::size_t record)
    {
        const std::string text = plainRecord(Plain, record);
        kd_fuzz::require(Table.fetchRecord(), "every record is fetched");
        kd_fuzz::require(Table.isDeleted() == (text.front() == '*'), "the deletion mark is read");
        std::size_t offset = 1;
        for (std::size_t i = 0; i < Values.size(); ++i) {
            const std::size_t length = Plain.Columns[i].Length;
            if (!Table.isDeleted() || Table.ReadDeleted) {
                Values[i] = plainValue(text, offset, length, Table.Trim);
            }
            kd_fuzz::require(Table.Fields.List[i]->Value == Values[i], "the values are those of the plain reader");
            offset += length;
        }
    }

    const PlainTable& Plain;
    kd_lib::xBase2Sql Table;
    std::vector<std::string> Values;
    std::size_t Records = 0;
};

void compareTable(kd_fuzz::Options options, bool trim, bool readDeleted)
{
    const PlainTable plain = makeTable(options);
    kd_fuzz::writeInput("input.dbf", plain.File);
    Comparison comparison(plain, trim, readDeleted);
    comparison.walk();
    comparison.jump(options);
    comparison.script();
}

/// Keeps the record that an override gets.
class Lines : public kd_lib::AsciiTable {
public:
    bool extractContent(const std::string& record) override
    {
        Text = record;
        return true;
    }
    std::string Text;
};

void compareLines(kd_fuzz::Options options, std::size_t recordLength)
{
    const std::size_t size = smallestFile + options.byte() * sizeStep;
    const std::string file = Bytes(options.content()).take(0, size);
    kd_fuzz::writeInput("input.txt", file);
    Lines table;
    table.Path = kd_fuzz::inputFolder();
    table.RecordLength = recordLength;
    kd_fuzz::require(table.open("input"), "a text file opens");
    for (std::size_t start = 0; start < size;) {
        const std::size_t end = std::min(file.find('\n', start), size);
        if (end - start >= recordLength) {
            break;
        }
        const std::string line = file.substr(start, end - start);
        kd_fuzz::require(table.fetchRecord(), "every line is fetched");
        kd_fuzz::require(table.Text == line.substr(0, line.find('\0')), "the line is that of the plain reader");
        start = end + 1;
    }
    kd_fuzz::require(!table.fetchRecord(), "the walk ends at a long line or with the file");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kd_fuzz::Options options(data, size);
    const kd_fuzz::BoundedOutput output(outputLimit);
    const unsigned int kind = options.byte();
    if (kind % 4 == 3) {
        compareLines(options, (kind & 8U) != 0 ? 100 : 70000 + kind);
    } else {
        compareTable(options, (kind & 4U) != 0, (kind & 8U) != 0);
    }
    return 0;
}
