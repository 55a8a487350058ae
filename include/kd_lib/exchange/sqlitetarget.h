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

/// How a database is approached.
struct SqliteOptions {
    std::chrono::milliseconds Patience = std::chrono::seconds(5);  ///< the wait for another program's lock
    std::stop_token Stop = {};  ///< when a stop is requested, waits and long statements end, and `Stopped` is thrown
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
    ~SqliteTarget() override;

    void begin(const std::string& file, const std::vector<Column>& columns) override;
    void fit(Record& record) override;
    void write(const Record& record) override;
    void finish() override;
    void abandon() noexcept override;
    std::string destination() const override;

private:
    class Load;

    std::string Database;
    TableOptions Table;
    SqliteOptions Options;
    std::string Destination;
    std::unique_ptr<Load> Work;
};

}  // namespace kd_lib::exchange
