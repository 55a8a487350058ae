/// \file
/// Loads tables into a SQLite database.
#pragma once

#include <kd_lib/exchange/target.h>
#include <kd_lib/export.h>

#include <chrono>
#include <memory>
#include <stop_token>
#include <string>

namespace kd_lib::exchange {

namespace detail {
class LoadDatabase;
}

/// Options for the use of a database.
struct SqliteOptions {
    std::chrono::milliseconds Patience = std::chrono::seconds(5);  ///< how long to wait for another program's lock
    std::stop_token Stop = {};  ///< when a stop is requested, waits and long statements end, and `Stopped` is thrown
};

/// A database into which several tables are loaded, one after the other, each in a separate transaction: a table that
/// fails leaves nothing, and does not stop the others. This is faster than separate `SqliteTarget`s, above all for
/// a new database, which appears in `finish` with all its tables.
///
///     SqliteBatch batch("all.db");
///     for (const std::string& file : files) {
///         SqliteTarget target(batch);
///         transfer(*openSource(file), target);
///     }
///     batch.finish();
class KD_LIB_EXPORT SqliteBatch {
public:
    /// Opens the database, or creates it as `SqliteTarget` does. Throws an `Error` if that fails.
    explicit SqliteBatch(std::string database, SqliteOptions options = {});

    /// Removes a new database that is not finished.
    ~SqliteBatch();
    SqliteBatch(const SqliteBatch&) = delete;
    SqliteBatch& operator=(const SqliteBatch&) = delete;

    /// Gives a new database its name, if it holds a table. If another program has created the database meanwhile,
    /// stores the tables in that one. Throws an `Error` if that fails; the tables that could be stored stay. No target
    /// may follow.
    void finish();

private:
    friend class SqliteTarget;

    std::unique_ptr<detail::LoadDatabase> Database;
};

/// Stores records in a table of a SQLite database, in one transaction: all of them or none.
///
/// A database file that does not exist is created. It is built under a temporary name in the same folder (`.kd_db-...`)
/// and renamed in `finish`; no file in which another program may have stored data is ever replaced or removed. If
/// another program has created the database meanwhile, the table is stored in that one. An existing database is locked
/// from `begin` to `finish`; a database that stays locked is an `Error`.
///
/// Names and types are those of `TableLayout`. How the values are stored:
///
/// | cell | stored as |
/// |---|---|
/// | text | text |
/// | whole number | integer; beyond 64 bits, in a column without a type, the text of its digits |
/// | number with decimals | real; in a column without a type the text of the digits, if a double loses some |
/// | float | real; NaN is unreadable |
/// | boolean | 1 or 0 |
/// | date, time, timestamp | text: YYYY-MM-DD, HH:MM:SS.mmm, YYYY-MM-DD HH:MM:SS.mmm |
/// | bytes | blob |
///
/// With `TableMode::Append` the columns of the existing table are found by their names (without regard to the case of
/// ASCII letters), and a value that SQLite would change because of the column's declared type is unreadable. A
/// statement that the database refuses (a constraint) is an `Error` that names the record.
///
///     SqliteTarget target("people.db");
///     transfer(*openSource("people.dbf"), target);
class KD_LIB_EXPORT SqliteTarget : public Target {
public:
    explicit SqliteTarget(std::string database, TableOptions table = {}, SqliteOptions options = {});

    /// The same in a batch, which must outlive this target. One target at a time.
    explicit SqliteTarget(SqliteBatch& batch, TableOptions table = {});

    ~SqliteTarget() override;

    void begin(const std::string& file, const std::vector<Column>& columns) override;
    void fit(Record& record) override;
    void write(const Record& record) override;
    void finish() override;
    void abandon() noexcept override;
    std::string destination() const override;

private:
    class KD_LIB_LOCAL Load;

    std::string Name;
    SqliteBatch* Batch = nullptr;
    TableOptions Table;
    SqliteOptions Options;
    std::string Destination;
    std::unique_ptr<detail::LoadDatabase> Own;  // null: the batch's
    std::unique_ptr<Load> Work;                 // after the database: it ends before that closes
};

}  // namespace kd_lib::exchange
