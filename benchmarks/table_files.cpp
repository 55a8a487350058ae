// The kinds of files that a generated table is written as.

#include "generator.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

namespace kd_bench {

namespace {

constexpr std::size_t dbfNameWidth = 11;

/// One kind of file: its beginning, a record, and its end.
class TableWriter {
public:
    explicit TableWriter(const RecordGenerator& records) : Records(records) {}
    virtual ~TableWriter() = default;

    virtual void begin(std::string& out, std::uint64_t count) = 0;
    virtual void record(std::string& out) = 0;
    virtual void end(std::string&) {}

protected:
    const std::vector<Column>& columns() const { return Records.columns(); }

    /// The values padded to their widths: numbers to the right, all others to the left.
    void appendPadded(std::string& out) const
    {
        for (std::size_t i = 0; i < columns().size(); ++i) {
            const Column& column = columns()[i];
            const std::string& value = Records.values()[i];
            const std::size_t padding = column.Width - value.size();
            const bool number = column.Type == 'N' || column.Type == 'F';
            out.append(number ? padding : 0, ' ').append(value).append(number ? 0 : padding, ' ');
        }
    }

    /// "YYYY-MM-DD" from the eight digits of a date.
    static std::string withDashes(const std::string& date)
    {
        return date.substr(0, 4) + '-' + date.substr(4, 2) + '-' + date.substr(6);
    }

    const RecordGenerator& Records;
};

void appendLittleEndian(std::string& out, std::uint64_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i) {
        out += static_cast<char>((value >> (8 * i)) & 0xFFU);
    }
}

class DbfWriter : public TableWriter {
public:
    using TableWriter::TableWriter;

    void begin(std::string& out, std::uint64_t count) override
    {
        std::size_t recordLength = 1;
        for (const Column& column : columns()) {
            recordLength += column.Width;
        }
        out += std::string("\x03\x63\x0B\x1E", 4);
        appendLittleEndian(out, count, 4);
        appendLittleEndian(out, 32 * (columns().size() + 1) + 1, 2);
        appendLittleEndian(out, recordLength, 2);
        out.append(20, '\0');
        for (const Column& column : columns()) {
            appendDescriptor(out, column);
        }
        out += '\r';
    }

    void record(std::string& out) override
    {
        out += Records.deleted() ? '*' : ' ';
        appendPadded(out);
    }

    void end(std::string& out) override { out += '\x1A'; }

private:
    static void appendDescriptor(std::string& out, const Column& column)
    {
        out += column.Name;
        out.append(dbfNameWidth - column.Name.size(), '\0');
        out += column.Type;
        out.append(4, '\0');
        appendLittleEndian(out, column.Width, 1);
        appendLittleEndian(out, static_cast<std::uint64_t>(column.Decimals), 1);
        out.append(14, '\0');
    }
};

class CsvWriter : public TableWriter {
public:
    CsvWriter(const RecordGenerator& records, bool quotes) : TableWriter(records), Quotes(quotes) {}

    void begin(std::string& out, std::uint64_t) override
    {
        for (const Column& column : columns()) {
            appendValue(out, column.Name);
        }
        out.back() = '\n';
    }

    void record(std::string& out) override
    {
        if (Records.deleted()) {
            return;
        }
        for (const std::string& value : Records.values()) {
            appendValue(out, value);
        }
        out.back() = '\n';
    }

private:
    /// The value and a comma after it.
    void appendValue(std::string& out, const std::string& value) const
    {
        if (!Quotes) {
            out.append(value) += ',';
            return;
        }
        out += '"';
        for (const char c : value) {
            out.append(c == '"' ? 2 : 1, c);
        }
        out += "\",";
    }

    bool Quotes;
};

class PositionalWriter : public TableWriter {
public:
    using TableWriter::TableWriter;

    void begin(std::string&, std::uint64_t) override {}

    void record(std::string& out) override
    {
        if (!Records.deleted()) {
            appendPadded(out);
            out += '\n';
        }
    }
};

class ScriptWriter : public TableWriter {
public:
    ScriptWriter(const RecordGenerator& records, std::string table) : TableWriter(records), Table(std::move(table)) {}

    void begin(std::string& out, std::uint64_t) override
    {
        out += "CREATE TABLE " + Table + " (";
        for (const Column& column : columns()) {
            out += column.Name + ' ' + declaredType(column) + ',';
        }
        out.back() = ')';
        out += ";\nBEGIN;\n";
    }

    void record(std::string& out) override
    {
        if (Records.deleted()) {
            return;
        }
        out += "INSERT INTO " + Table + " VALUES(";
        for (std::size_t i = 0; i < columns().size(); ++i) {
            appendLiteral(out, columns()[i].Type, Records.values()[i]);
            out += ',';
        }
        out.back() = ')';
        out += ";\n";
    }

    void end(std::string& out) override { out += "COMMIT;\n"; }

private:
    static const char* declaredType(const Column& column)
    {
        switch (column.Type) {
        case 'C':
            return "VARCHAR";
        case 'D':
            return "DATE";
        case 'L':
            return "BOOLEAN";
        default:
            return column.Decimals > 0 ? "NUMERIC" : "INTEGER";
        }
    }

    static void appendLiteral(std::string& out, char type, const std::string& value)
    {
        if (value.empty() || value == "?") {
            out += "NULL";
        } else if (type == 'L') {
            out += value == "T" || value == "Y" ? '1' : '0';
        } else if (type == 'D') {
            out += '\'' + withDashes(value) + '\'';
        } else if (type == 'C') {
            out += '\'';
            for (const char c : value) {
                out.append(c == '\'' ? 2 : 1, c);
            }
            out += '\'';
        } else {
            out += value;
        }
    }

    std::string Table;
};

std::unique_ptr<TableWriter> writerFor(const std::filesystem::path& path, const RecordGenerator& records,
                                       Profile profile)
{
    const std::string kind = path.extension();
    if (kind == ".dbf") {
        return std::make_unique<DbfWriter>(records);
    }
    if (kind == ".csv") {
        return std::make_unique<CsvWriter>(records, profile == Profile::Quoted);
    }
    if (kind == ".txt") {
        return std::make_unique<PositionalWriter>(records);
    }
    if (kind == ".sql") {
        return std::make_unique<ScriptWriter>(records, path.stem());
    }
    throw std::invalid_argument(path.string() + ": tables are written as .dbf, .csv, .txt and .sql");
}

}  // namespace

void writeTable(const std::string& path, Profile profile, std::uint64_t count, std::uint64_t seed)
{
    constexpr std::size_t blockSize = 65536;
    RecordGenerator records(profile, seed);
    const std::unique_ptr<TableWriter> writer = writerFor(path, records, profile);
    std::ofstream file(path, std::ios::binary);
    std::string block;
    const auto flush = [&] {
        file.write(block.data(), static_cast<std::streamsize>(block.size()));
        block.clear();
    };
    writer->begin(block, count);
    for (std::uint64_t i = 0; i < count; ++i) {
        records.next();
        writer->record(block);
        if (block.size() >= blockSize) {
            flush();
        }
    }
    writer->end(block);
    flush();
    if (!file.flush()) {
        throw std::runtime_error(path + ": cannot be written");
    }
}

}  // namespace kd_bench
