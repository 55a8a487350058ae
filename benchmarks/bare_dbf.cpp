#include "bare_dbf.h"

#include "bare_output.h"
#include "bare_work.h"

#include <algorithm>
#include <stdexcept>

namespace kd_bench::bare {

namespace {

constexpr std::size_t blockSize = 65536;
constexpr std::size_t headerSize = 32;
constexpr std::size_t nameWidth = 11;

std::size_t littleEndian(const unsigned char* bytes, int count)
{
    std::size_t value = 0;
    for (int i = count - 1; i >= 0; --i) {
        value = value << 8 | bytes[i];
    }
    return value;
}

char* copyText(char* to, std::string_view text)
{
    *to++ = '\'';
    char* const begin = to;
    to = copy(to, text);
    for (char* at = begin; (at = static_cast<char*>(std::memchr(at, '\'', static_cast<std::size_t>(to - at))));) {
        *at = '`';
    }
    *to++ = '\'';
    return to;
}

char* copyDate(char* to, std::string_view text)
{
    const char date[] = {'\'', text[0], text[1], text[2], text[3], '-', text[4], text[5], '-', text[6], text[7], '\''};
    return copy(to, {date, sizeof date});
}

/// The value as the literal that the library writes.
char* copyLiteral(char* to, char type, std::string_view value)
{
    const std::string_view text = withoutBlanks(value);
    if (type == 'L') {
        *to++ = text == "T" || text == "Y" ? '1' : '0';
        return to;
    }
    if (text.empty()) {
        return copy(to, "NULL");
    }
    if (type == 'C') {
        return copyText(to, text);
    }
    return type == 'D' ? copyDate(to, text) : copy(to, withoutLeadingBlanks(text));
}

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; });
    return text;
}

const char* declaredType(char type)
{
    switch (type) {
    case 'D':
        return " date";
    case 'F':
        return " float";
    case 'L':
        return " boolean";
    case 'N':
        return " integer";
    default:
        return " char";
    }
}

std::string definition(const std::string& table, const std::vector<DbfColumn>& columns)
{
    std::string sql = "DROP TABLE IF EXISTS " + table + ";\nCREATE TABLE IF NOT EXISTS " + table + " (\n";
    for (const DbfColumn& column : columns) {
        sql += column.Name + declaredType(column.Type);
        sql += column.Type == 'C' ? '(' + std::to_string(column.Width) + ')' : "";
        sql += &column == &columns.back() ? "\n" : ",\n";
    }
    return sql + ");\n";
}

std::string insertLead(const std::string& table, const std::vector<DbfColumn>& columns)
{
    std::string sql = "INSERT INTO " + table + "(";
    for (const DbfColumn& column : columns) {
        sql += column.Name + ',';
    }
    sql.back() = ')';
    return sql + " \n VALUES (";
}

}  // namespace

DbfReader::DbfReader(const std::string& path) : File(std::fopen(path.c_str(), "rb"))
{
    unsigned char bytes[headerSize];
    if (File == nullptr || std::fread(bytes, 1, headerSize, File) != headerSize) {
        throw std::runtime_error(path);
    }
    std::setvbuf(File, nullptr, _IONBF, 0);
    RecordsLeft = littleEndian(bytes + 4, 4);
    const std::size_t headerLength = littleEndian(bytes + 8, 2);
    RecordLength = littleEndian(bytes + 10, 2);
    std::size_t offset = 1;
    while (std::fread(bytes, 1, headerSize, File) == headerSize && bytes[0] != '\r') {
        const auto* const name = reinterpret_cast<const char*>(bytes);
        Columns.push_back(
            {lower({name, ::strnlen(name, nameWidth)}), static_cast<char>(bytes[11]), offset, bytes[16], bytes[17]});
        offset += bytes[16];
    }
    std::fseek(File, static_cast<long>(headerLength), SEEK_SET);
    Block.resize((blockSize / RecordLength + 1) * RecordLength);
}

bool DbfReader::fill()
{
    const std::size_t wanted = std::min(Block.size() / RecordLength, RecordsLeft);
    const std::size_t count = wanted == 0 ? 0 : std::fread(Block.data(), RecordLength, wanted, File);
    RecordsLeft -= count;
    Next = Block.data();
    End = Next + count * RecordLength;
    return count > 0;
}

Tally walkDbf(const Files& files)
{
    DbfReader table(files.input(".dbf"));
    std::vector<std::string> row(table.columns().size());
    Tally tally;
    while (const char* record = table.next()) {
        if (*record == '*') {
            continue;
        }
        ++tally.Records;
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i].assign(withoutBlanks(table.columns()[i].in(record)));
            tally.Bytes += row[i].size();
        }
    }
    return tally;
}

Tally writeScript(const Files& files)
{
    DbfReader table(files.input(".dbf"));
    TextOutput script(files.output(".sql"));
    const std::string create = definition(files.Table, table.columns());
    script.endAt(copy(script.room(create.size()), create));
    const std::string lead = insertLead(files.Table, table.columns());
    const std::size_t longest = lead.size() + table.recordLength() + 6 * table.columns().size() + 3;
    std::string last;
    Tally tally;
    while (const char* record = table.next()) {
        ++tally.Records;
        if (*record == '*') {
            // As in the library, a deleted record repeats the statement before it.
            script.endAt(copy(script.room(last.size()), last));
            continue;
        }
        char* const begin = script.room(longest);
        char* to = copy(begin, lead);
        for (const DbfColumn& column : table.columns()) {
            to = copyLiteral(to, column.Type, column.in(record));
            *to++ = ',';
        }
        to = copy(to - 1, ");\n");
        last.assign(begin, to);
        script.endAt(to);
    }
    script.flush();
    tally.Bytes = script.written();
    return tally;
}

}  // namespace kd_bench::bare
