// flat_work WORK COUNT FOLDER: makes an input of COUNT records or statements in FOLDER ("make-..."), or
// works on one. Each kind of work returns 0 only if it saw all of them.

#include <kd_lib/asciitable.h>
#include <kd_lib/sqliteconnection.h>
#include <kd_lib/xbase2sql.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <string>

namespace {

constexpr std::size_t textWidth = 20;
constexpr std::size_t numberWidth = 10;
constexpr std::size_t recordLength = 1 + textWidth + numberWidth;
constexpr std::size_t headerLength = 32 + 2 * 32 + 1;

void appendLittleEndian(std::string& bytes, std::uint64_t value, int width)
{
    for (int i = 0; i < width; ++i) {
        bytes += static_cast<char>((value >> (8 * i)) & 0xFFU);
    }
}

void appendDescriptor(std::string& bytes, const std::string& name, char type, std::size_t length)
{
    bytes += name + std::string(11 - name.size(), '\0') + type + std::string(4, '\0');
    appendLittleEndian(bytes, length, 1);
    bytes.append(15, '\0');
}

std::string header(std::uint64_t count)
{
    std::string bytes = "\x03\x7C\x03\x05";
    appendLittleEndian(bytes, count, 4);
    appendLittleEndian(bytes, headerLength, 2);
    appendLittleEndian(bytes, recordLength, 2);
    bytes.append(20, '\0');
    appendDescriptor(bytes, "NAME", 'C', textWidth);
    appendDescriptor(bytes, "NUMBER", 'N', numberWidth);
    return bytes + '\x0D';
}

std::string padded(const std::string& text, std::size_t width)
{
    return text + std::string(width - text.size(), ' ');
}

bool makeDbf(std::uint64_t count, const std::string& folder)
{
    std::ofstream out(folder + "/input.dbf", std::ios::binary);
    out << header(count);
    for (std::uint64_t i = 1; i <= count; ++i) {
        out << ' ' << padded("name of " + std::to_string(i), textWidth) << padded(std::to_string(i), numberWidth);
    }
    out << '\x1A';
    return out.flush().good();
}

bool makeText(std::uint64_t count, const std::string& folder)
{
    std::ofstream out(folder + "/input.csv");
    out << "name|number\n";
    for (std::uint64_t i = 1; i <= count; ++i) {
        out << "name of " << i << '|' << i << '\n';
    }
    return out.flush().good();
}

bool makeScript(std::uint64_t count, const std::string& folder)
{
    std::ofstream out(folder + "/input.sql");
    out << "CREATE TABLE t (name text, number integer);\nBEGIN;\n";
    for (std::uint64_t i = 1; i <= count; ++i) {
        out << "INSERT INTO t VALUES ('name of " << i << "', " << i << ");\n";
    }
    out << "COMMIT;\n";
    return out.flush().good();
}

/// The number column holds the number of each record: their sum shows that all of them were read.
template <class Table>
bool walk(std::uint64_t count, const std::string& folder)
{
    Table table;
    table.Path = folder;
    std::uint64_t sum = 0;
    if (table.open("input") && table.getFieldList()) {
        while (table.fetchRecord()) {
            sum += std::strtoull(table.Fields.get(1)->Value.c_str(), nullptr, 10);
        }
    }
    return sum == count * (count + 1) / 2;
}

bool convert(std::uint64_t count, const std::string& folder)
{
    kd_lib::xBase2Sql table("input");
    table.Path = folder;
    const std::string path = table.convert();
    std::ifstream script(path);
    std::uint64_t inserts = 0;
    for (std::string line; std::getline(script, line);) {
        inserts += line.starts_with("INSERT") ? 1U : 0U;
    }
    return inserts == count;
}

bool import(std::uint64_t count, const std::string& folder)
{
    kd_lib::SQLite3 database;
    database.host = folder;
    const bool stopped = !database.createDatabase("output.db") || database.importSqlFile(folder + "/input.sql");
    return !stopped && database.getRecords("t") == static_cast<std::int64_t>(count);
}

bool query(std::uint64_t count, const std::string&)
{
    kd_lib::SQLite3 database;
    return database.openDatabase(":memory:", true, "") &&
           database.query("WITH RECURSIVE c(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c LIMIT " +
                          std::to_string(count) + ") SELECT n, 'row ' || n AS name FROM c") &&
           database.queryResults() && database.rowsFetched == count;
}

}  // namespace

int main(int argc, char** argv)
{
    using Work = std::function<bool(std::uint64_t, const std::string&)>;
    const std::map<std::string, Work> works = {{"make-dbf", makeDbf},
                                               {"make-text", makeText},
                                               {"make-script", makeScript},
                                               {"walk", walk<kd_lib::xBaseTable>},
                                               {"walk-text", walk<kd_lib::DelimitedTable>},
                                               {"convert", convert},
                                               {"import", import},
                                               {"query", query}};
    const auto work = argc == 4 ? works.find(argv[1]) : works.end();
    if (work == works.end()) {
        std::cerr << "usage: flat_work WORK COUNT FOLDER\n";
        return 2;
    }
    return work->second(std::strtoull(argv[2], nullptr, 10), argv[3]) ? 0 : 1;
}
