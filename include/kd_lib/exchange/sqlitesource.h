/// \file
/// The rows of an SQL query as records.
#pragma once

#include <kd_lib/exchange/source.h>
#include <kd_lib/exchange/sqlitetarget.h>
#include <kd_lib/export.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct sqlite3;

namespace kd_lib::exchange {

/// A statement that the database refused. `Reason` is the database's message.
class KD_LIB_EXPORT SqlError : public Error {
public:
    SqlError(const std::string& database, std::string reason, std::optional<std::size_t> at)
        : Error(database, std::move(reason)), At(at)
    {
    }

    std::optional<std::size_t> At;  ///< byte of the statement where the fault is, from 0; nothing: not known
};

/// The rows of one statement. Cells have the kinds of SQLite's values: null, number (an integer), float, text, bytes.
/// The type of a column is that of its declaration or, if it has none, that of the first row's value. It is a hint
/// only: a value of SQLite may be of any kind, whatever its column's declaration. Records are numbered in their order,
/// from 1. `origin` has no bytes, and `size` is not known.
///
///     SqliteSource rows("people.db", "SELECT town, count(*) FROM people GROUP BY town");
///     for (const Record& row : rows) use(row[0].text(), row[1].integer());
class KD_LIB_EXPORT SqliteSource : public Source {
public:
    /// Runs a statement on an existing database file. Throws a `SqlError` if SQLite refuses it, or if the text holds no
    /// statement or more than one. A statement that changes the database runs too; it is finished when `next` has
    /// returned false.
    SqliteSource(const std::string& database, const std::string& sql, const SqliteOptions& options = {});

    /// The same on a connection that the caller keeps open (`TableConnection::handle`, or any other). Errors call the
    /// connection `name`. The options do not change it: it keeps its handlers.
    SqliteSource(sqlite3* connection, std::string name, const std::string& sql);

    /// The rows of these columns of a table. They are in the order of the rowids, which is that of a load; if the table
    /// has no rowids, in the order of its primary key. Throws an `Error` if the table lacks a column.
    static std::unique_ptr<SqliteSource> ofTable(const std::string& database, const std::string& table,
                                                 const std::vector<std::string>& columns,
                                                 const SqliteOptions& options = {});

    ~SqliteSource() override;

    /// Rows that the statement inserted, changed or deleted.
    std::uint64_t changes() const;

    Origin origin(std::size_t column) const override;
    void seek(std::uint64_t number) override;  ///< going back runs a reading statement again
    std::uint64_t position() const override { return 0; }
    std::optional<std::uint64_t> size() const override { return std::nullopt; }

protected:
    bool read() override;

private:
    class KD_LIB_LOCAL Rows;
    KD_LIB_LOCAL explicit SqliteSource(std::unique_ptr<Rows> rows);

    std::unique_ptr<Rows> Result;
};

}  // namespace kd_lib::exchange
