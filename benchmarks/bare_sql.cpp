// The twins of the work with a database: bare SQLite calls.

#include "bare_dbf.h"
#include "bare_work.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sqlite3.h>
#include <stdexcept>

namespace kd_bench::bare {

namespace {

using Connection = std::unique_ptr<sqlite3, int (*)(sqlite3*)>;
using Statement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

void require(bool succeeded, sqlite3* database)
{
    if (!succeeded) {
        throw std::runtime_error(std::string("SQLite: ") + sqlite3_errmsg(database));
    }
}

Connection openDatabase(const std::string& path)
{
    sqlite3* database = nullptr;
    const int code = sqlite3_open(path.c_str(), &database);
    Connection connection(database, sqlite3_close);
    require(code == SQLITE_OK, database);
    return connection;
}

/// Prepares the statement at `sql` and moves `sql` after it; null if only blanks are left.
Statement prepare(sqlite3* database, const char*& sql)
{
    sqlite3_stmt* statement = nullptr;
    require(sqlite3_prepare_v2(database, sql, -1, &statement, &sql) == SQLITE_OK, database);
    return {statement, sqlite3_finalize};
}

void execute(sqlite3* database, const std::string& sql)
{
    require(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK, database);
}

std::uint64_t countRecords(sqlite3* database, const std::string& table)
{
    const std::string sql = "SELECT count(*) FROM " + table;
    const char* text = sql.c_str();
    const Statement statement = prepare(database, text);
    require(sqlite3_step(statement.get()) == SQLITE_ROW, database);
    return static_cast<std::uint64_t>(sqlite3_column_int64(statement.get(), 0));
}

int bindText(sqlite3_stmt* statement, int index, std::string_view text, sqlite3_destructor_type lives)
{
    return sqlite3_bind_text(statement, index, text.data(), static_cast<int>(text.size()), lives);
}

int bindDate(sqlite3_stmt* statement, int index, std::string_view d)
{
    const char date[] = {d[0], d[1], d[2], d[3], '-', d[4], d[5], '-', d[6], d[7]};
    return bindText(statement, index, {date, sizeof date}, SQLITE_TRANSIENT);
}

int bindNumber(sqlite3_stmt* statement, int index, std::string_view text, bool whole)
{
    if (whole) {
        int number = 0;
        std::from_chars(text.data(), text.data() + text.size(), number);
        return sqlite3_bind_int(statement, index, number);
    }
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return sqlite3_bind_double(statement, index, number);
}

/// The record's bytes do not move until the statement has run, so texts are not copied.
int bindValue(sqlite3_stmt* statement, int index, const DbfColumn& column, const char* record)
{
    const std::string_view text = withoutBlanks(column.in(record));
    if (text.empty()) {
        return sqlite3_bind_null(statement, index);
    }
    switch (column.Type) {
    case 'D':
        return bindDate(statement, index, text);
    case 'L':
        return sqlite3_bind_int(statement, index, text == "T" || text == "Y" ? 1 : 0);
    case 'N':
    case 'F':
        return bindNumber(statement, index, withoutLeadingBlanks(text), column.Decimals == 0);
    default:
        return bindText(statement, index, text, SQLITE_STATIC);
    }
}

void createTable(sqlite3* database, const std::string& table, const std::vector<DbfColumn>& columns)
{
    std::string sql = "CREATE TABLE " + table + " (";
    for (const DbfColumn& column : columns) {
        const char* const type = column.Type == 'C' ? " char," : column.Type == 'D' ? " date," : " numeric,";
        sql += column.Name + type;
    }
    sql.back() = ')';
    execute(database, sql);
}

/// Collects the rows of a result and writes them in blocks.
class RowOutput {
public:
    ~RowOutput() { flush(); }

    void append(std::string_view value, char separator)
    {
        Block.append(value) += separator;
        if (separator == '\n' && Block.size() >= blockSize) {
            flush();
        }
    }

private:
    static constexpr std::size_t blockSize = 65536;

    void flush()
    {
        std::fwrite(Block.data(), 1, Block.size(), stdout);
        std::fflush(stdout);
        Block.clear();
    }

    std::string Block;
};

}  // namespace

Tally importScript(const Files& files)
{
    const std::string path = files.input(".sql");
    std::string script(std::filesystem::file_size(path), '\0');
    std::ifstream(path, std::ios::binary).read(script.data(), static_cast<std::streamsize>(script.size()));
    const Connection database = openDatabase(files.output(".db"));
    for (const char* sql = script.c_str(); *sql != '\0';) {
        const Statement statement = prepare(database.get(), sql);
        require(statement == nullptr || sqlite3_step(statement.get()) == SQLITE_DONE, database.get());
    }
    return {countRecords(database.get(), files.Table), 0};
}

Tally loadRecords(const Files& files)
{
    DbfReader table(files.input(".dbf"));
    const Connection database = openDatabase(files.output(".db"));
    execute(database.get(), "BEGIN");
    createTable(database.get(), files.Table, table.columns());
    std::string insert = "INSERT INTO " + files.Table + " VALUES (?";
    for (std::size_t i = 1; i < table.columns().size(); ++i) {
        insert += ",?";
    }
    insert += ')';
    const char* sql = insert.c_str();
    const Statement statement = prepare(database.get(), sql);
    Tally tally;
    while (const char* record = table.next()) {
        if (*record == '*') {
            continue;
        }
        int index = 0;
        for (const DbfColumn& column : table.columns()) {
            require(bindValue(statement.get(), ++index, column, record) == SQLITE_OK, database.get());
        }
        require(sqlite3_step(statement.get()) == SQLITE_DONE, database.get());
        sqlite3_reset(statement.get());
        ++tally.Records;
    }
    execute(database.get(), "COMMIT");
    return tally;
}

Tally printQuery(const Files& files)
{
    const Connection database = openDatabase(files.input(".db"));
    const std::string query = "SELECT * FROM " + files.Table;
    const char* sql = query.c_str();
    const Statement statement = prepare(database.get(), sql);
    const int columns = sqlite3_column_count(statement.get());
    RowOutput out;
    const auto separator = [&](int column) { return column + 1 < columns ? ' ' : '\n'; };
    for (int i = 0; i < columns; ++i) {
        out.append(sqlite3_column_name(statement.get(), i), separator(i));
    }
    Tally tally;
    for (; sqlite3_step(statement.get()) == SQLITE_ROW; ++tally.Records) {
        for (int i = 0; i < columns; ++i) {
            const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), i));
            const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), i));
            out.append({text != nullptr ? text : "", size}, separator(i));
        }
    }
    return tally;
}

}  // namespace kd_bench::bare
