#include <kd_lib/exchange/sqlitesource.h>

#include "detail/lettercase.h"
#include "detail/sqliteaffinity.h"
#include "detail/sqlitedatabase.h"

#include <kd_lib/exchange/statementreader.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <utility>

namespace kd_lib::exchange {

namespace {

using detail::SqliteDatabase;
using detail::StatementHandle;

/// The type of values to expect from a declared type.
ColumnType typeOf(std::string_view declared)
{
    const std::string word = detail::lowered(declared);
    if (word.find("int") != std::string::npos) {
        return ColumnType::BigInteger;
    }
    if (word == "boolean" || word == "bool") {
        return ColumnType::BigInteger;
    }
    if (word == "date" || word == "timestamp" || word == "datetime" || word == "time") {
        return ColumnType::Text;
    }
    switch (detail::affinityOf(word)) {
    case detail::Affinity::Text:
        return ColumnType::Text;
    case detail::Affinity::None:
        return ColumnType::Bytes;
    case detail::Affinity::Real:
        return ColumnType::Float;
    case detail::Affinity::Numeric:
        return ColumnType::Number;
    }
    return ColumnType::Text;
}

ColumnType typeOfValue(int type)
{
    switch (type) {
    case SQLITE_INTEGER:
        return ColumnType::BigInteger;
    case SQLITE_FLOAT:
        return ColumnType::Float;
    case SQLITE_BLOB:
        return ColumnType::Bytes;
    default:
        return ColumnType::Text;
    }
}

std::string selectOf(SqliteDatabase& database, const std::string& table, const std::vector<std::string>& columns)
{
    std::string sql = "SELECT ";
    const char* separator = "";
    for (const std::string& column : columns) {
        sql += std::exchange(separator, ",");
        sql += detail::quotedName(column);
    }
    sql += " FROM main.";
    sql += detail::quotedName(table);
    // A table WITHOUT ROWID, or a view, refuses the name; a column may have it.
    const std::string ordered = sql + " ORDER BY rowid";
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v2(database.handle(), ordered.c_str(), -1, &statement, nullptr);
    sqlite3_finalize(statement);
    return code == SQLITE_OK ? ordered : sql;
}

}  // namespace

/// A statement on a separate connection, or on the caller's.
class SqliteSource::Rows {
public:
    Rows(std::unique_ptr<SqliteDatabase> own, sqlite3* connection, std::string name, const std::string& sql)
        : Own(std::move(own)), Connection(Own != nullptr ? Own->handle() : connection), Name(std::move(name))
    {
        requireOneStatement(sql);
        compile(sql);
        ChangesBefore = sqlite3_total_changes64(Connection);
        // The first row is read at once, because it decides the types of columns without a declaration.
        if (sqlite3_column_count(Statement.get()) > 0) {
            step();
        }
    }

    const std::string& name() const { return Name; }

    std::vector<Column> columns() const
    {
        std::vector<Column> columns(static_cast<std::size_t>(sqlite3_column_count(Statement.get())));
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const int index = static_cast<int>(i);
            const char* const name = sqlite3_column_name(Statement.get(), index);
            const char* const declared = sqlite3_column_decltype(Statement.get(), index);
            columns[i].Name = name != nullptr ? name : "";
            columns[i].Type =
                declared != nullptr && *declared != '\0'
                    ? typeOf(declared)
                    : typeOfValue(State == AtRow ? sqlite3_column_type(Statement.get(), index) : SQLITE_NULL);
        }
        return columns;
    }

    /// Reads the next row into a record; false at the end.
    bool next(Record& record, const std::vector<bool>& needed)
    {
        if (State == Taken || State == Before) {
            step();
        }
        if (State == AtEnd) {
            return false;
        }
        State = Taken;
        record.Number = ++Number;
        const auto count = static_cast<std::size_t>(sqlite3_column_count(Statement.get()));
        record.Cells.resize(count);
        Texts.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            record.Cells[i] = needed.empty() || needed[i] ? cellAt(i) : Cell::null();
        }
        return true;
    }

    void seek(std::uint64_t number)
    {
        if (number <= Number) {
            if (sqlite3_stmt_readonly(Statement.get()) == 0) {
                throw Error(Name, "the rows of a statement that changes the database can be read only once");
            }
            sqlite3_reset(Statement.get());
            State = Before;
            Number = 0;
        }
        while (Number + 1 < number && State != AtEnd) {
            if (State != AtRow) {
                step();
            }
            if (State == AtRow) {
                State = Taken;
                ++Number;
            }
        }
    }

    std::uint64_t changes() const
    {
        return static_cast<std::uint64_t>(sqlite3_total_changes64(Connection) - ChangesBefore);
    }

private:
    enum RowState { Before, AtRow, Taken, AtEnd };

    void requireOneStatement(const std::string& sql) const
    {
        if (sql.find('\0') != std::string::npos) {
            throw SqlError(Name, "the statement holds a zero byte", sql.find('\0'));
        }
        StatementReader reader(Name);
        std::string_view rest = sql;
        if (!reader.next(rest) && !reader.finish()) {
            throw SqlError(Name, "the text holds no SQL statement", std::nullopt);
        }
        if (reader.next(rest) || reader.finish()) {
            throw SqlError(Name, "the text holds more than one statement", std::nullopt);
        }
    }

    void compile(const std::string& sql)
    {
        sqlite3_stmt* compiled = nullptr;
        const int size = static_cast<int>(sql.size()) + 1;
        const int code = sqlite3_prepare_v2(Connection, sql.c_str(), size, &compiled, nullptr);
        Statement.reset(compiled);
        if (code != SQLITE_OK) {
            const int at = sqlite3_error_offset(Connection);
            fail(at >= 0 ? std::optional(static_cast<std::size_t>(at)) : std::nullopt);
        }
        if (compiled == nullptr) {
            throw SqlError(Name, "the text holds no SQL statement", std::nullopt);
        }
    }

    void step()
    {
        const int code = sqlite3_step(Statement.get());
        if (code != SQLITE_ROW && code != SQLITE_DONE) {
            fail(std::nullopt);
        }
        State = code == SQLITE_ROW ? AtRow : AtEnd;
    }

    [[noreturn]] void fail(std::optional<std::size_t> at) const
    {
        if (Own != nullptr) {
            Own->throwIfStopped();
        }
        if (sqlite3_errcode(Connection) == SQLITE_INTERRUPT) {
            throw Stopped(Name, "stopped");
        }
        throw SqlError(Name, detail::reasonOf(Connection), at);
    }

    Cell cellAt(std::size_t column)
    {
        sqlite3_stmt* const row = Statement.get();
        const int index = static_cast<int>(column);
        const auto bytes = [&](const void* data) {
            return std::string_view(static_cast<const char*>(data),
                                    static_cast<std::size_t>(sqlite3_column_bytes(row, index)));
        };
        switch (sqlite3_column_type(row, index)) {
        case SQLITE_INTEGER: {
            std::array<char, 24>& room = Texts[column];
            const auto value = static_cast<std::int64_t>(sqlite3_column_int64(row, index));
            const char* const end = std::to_chars(room.data(), room.data() + room.size(), value).ptr;
            return Cell::number({room.data(), static_cast<std::size_t>(end - room.data())});
        }
        case SQLITE_FLOAT:
            return Cell::real(sqlite3_column_double(row, index));
        case SQLITE_TEXT:
            return Cell::text(bytes(sqlite3_column_text(row, index)));
        case SQLITE_BLOB:
            return Cell::bytes(bytes(sqlite3_column_blob(row, index)));
        default:
            return Cell::null();
        }
    }

    std::unique_ptr<SqliteDatabase> Own;  // null: the caller's connection
    sqlite3* Connection;
    std::string Name;
    StatementHandle Statement;
    RowState State = Before;
    std::uint64_t Number = 0;
    std::int64_t ChangesBefore = 0;
    std::vector<std::array<char, 24>> Texts;  // of whole numbers
};

namespace {

std::unique_ptr<SqliteDatabase> opened(const std::string& name, const SqliteOptions& options)
{
    auto database = std::make_unique<SqliteDatabase>(name, name);
    database->heed(options.Stop, options.Patience);
    return database;
}

}  // namespace

SqliteSource::SqliteSource(const std::string& database, const std::string& sql, const SqliteOptions& options)
    : SqliteSource(std::make_unique<Rows>(opened(database, options), nullptr, database, sql))
{
}

SqliteSource::SqliteSource(sqlite3* connection, std::string name, const std::string& sql)
    : SqliteSource(std::make_unique<Rows>(nullptr, connection, std::move(name), sql))
{
}

SqliteSource::SqliteSource(std::unique_ptr<Rows> rows) : Source(rows->name()), Result(std::move(rows))
{
    Columns = Result->columns();
}

SqliteSource::~SqliteSource() = default;

std::unique_ptr<SqliteSource> SqliteSource::ofTable(const std::string& database, const std::string& table,
                                                    const std::vector<std::string>& columns,
                                                    const SqliteOptions& options)
{
    auto own = opened(database, options);
    // SQLite would treat the quoted name of a missing column as a text.
    sqlite3_db_config(own->handle(), SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    const std::string sql = selectOf(*own, table, columns);
    return std::unique_ptr<SqliteSource>(
        new SqliteSource(std::make_unique<Rows>(std::move(own), nullptr, database, sql)));
}

std::uint64_t SqliteSource::changes() const
{
    return Result->changes();
}

bool SqliteSource::read()
{
    if (!Result->next(Current, Needed)) {
        return false;
    }
    ++Read;
    return true;
}

Source::Origin SqliteSource::origin(std::size_t) const
{
    return {};
}

void SqliteSource::seek(std::uint64_t number)
{
    Result->seek(number);
}

}  // namespace kd_lib::exchange
