/// \file
/// Loads a SQLite database.
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

/// How a database is approached.
struct SqliteOptions {
    std::chrono::milliseconds Patience = std::chrono::seconds(5);  ///< the wait for another program's lock
    std::stop_token Stop = {};  ///< when a stop is requested, waits and long statements end, and `Stopped` is thrown
};

/// A database into which several tables are loaded, one after the other, each in a transaction of its own: a table that
/// fails leaves nothing, and does not stop the others. It costs less than a `SqliteTarget` for each by itself, above all
/// for a new database: that appears, with all its tables, in `finish`.
///
///     SqliteBatch batch("all.db");
///     for (const std::string& file : files) {
///         SqliteTarget target(batch);
///         transfer(*openSource(file), target);
///     }
///     batch.finish();
class KD_LIB_EXPORT SqliteBatch {
public:
    /// Opens the database, or makes it as `SqliteTarget` does. Throws an `Error` where it cannot.
    explicit SqliteBatch(std::string database, SqliteOptions options = {});

    /// A new database that is not finished leaves nothing.
    ~SqliteBatch();
    SqliteBatch(const SqliteBatch&) = delete;
    SqliteBatch& operator=(const SqliteBatch&) = delete;

    /// Gives a new database its name, if it holds a table. Throws an `Error` where that cannot be, and where another
    /// program has made the database meanwhile and it does not take one of the tables (the others are in it). No target
    /// may follow.
    void finish();

private:
    friend class SqliteTarget;

    std::unique_ptr<detail::LoadDatabase> Database;
};

/// Stores records in a table of a SQLite database, in one transaction: all of them or none.
///
/// The database file is made where there is none. A new database is built under another name in the same folder
/// (`.kd_db-...`) and gets its own in `finish`; no file that another program may have stored data in is ever
/// replaced or removed. If another program has made the database meanwhile, the table goes into that one. An existing
/// database is locked from `begin` to `finish`; a database that stays locked is an `Error`.
///
/// Names and types are those of `TableLayout`. How the values are stored:
///
/// | cell | stored as |
/// |---|---|
/// | text | text |
/// | whole number | integer; beyond 64 bits, in a column without type, the text of its digits |
/// | number with decimals | real; where a double does not give the digits back the text of the digits, in a column without type |
/// | float | real; NaN is unreadable |
/// | boolean | 1 or 0 |
/// | date, time, timestamp | text: YYYY-MM-DD, HH:MM:SS.mmm, YYYY-MM-DD HH:MM:SS.mmm |
/// | bytes | blob |
///
/// With `TableMode::Append` the table that exists decides: its columns are found by their names (without regard to the
/// case of ASCII letters), and a value that SQLite would change because of the column's declared type is unreadable.
/// A statement that the database refuses (a constraint) is an `Error` that names the record.
///
///     SqliteTarget target("people.db");
///     transfer(*openSource("people.dbf"), target);
class KD_LIB_EXPORT SqliteTarget : public Target {
public:
    explicit SqliteTarget(std::string database, TableOptions table = {}, SqliteOptions options = {});

    /// The same in a batch, which must outlive this. One target at a time.
    explicit SqliteTarget(SqliteBatch& batch, TableOptions table = {});

    ~SqliteTarget() override;

    void begin(const std::string& file, const std::vector<Column>& columns) override;
    void fit(Record& record) override;
    void write(const Record& record) override;
    void finish() override;
    void abandon() noexcept override;
    std::string destination() const override;

private:
    class Load;

    std::string Name;
    SqliteBatch* Batch = nullptr;
    TableOptions Table;
    SqliteOptions Options;
    std::string Destination;
    std::unique_ptr<detail::LoadDatabase> Own;  // null: the batch's
    std::unique_ptr<Load> Work;                 // after the database: it ends before that closes
};

}  // namespace kd_lib::exchange
