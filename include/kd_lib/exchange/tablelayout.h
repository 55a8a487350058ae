/// \file
/// A table of an SQL database for the columns of a source.
#pragma once

#include <kd_lib/exchange/column.h>
#include <kd_lib/exchange/dialect.h>
#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/record.h>
#include <kd_lib/exchange/target.h>
#include <kd_lib/export.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange {

/// A column of the table in the database.
struct TargetColumn {
    std::string Name;  ///< without quotes
    std::string Type;  ///< as in CREATE TABLE; empty: none (SQLite)
};

/// Names and types in a dialect for the columns of a source, the SQL that creates the table, and the check whether a
/// record fits into it. All SQL targets share it, so that a script and a load create the same table.
///
///     TableLayout layout(dialectOf(Engine::PostgreSql), "people.dbf", source.columns(), {});
///     database.execute(layout.createTable(layout.table()));
///     ... "INSERT INTO " + layout.quotedTable() + " (" + layout.columnList() + ") VALUES ..."
///
/// A SQLite column has no type if its numbers may have more digits than a double keeps. Such a number is kept as the
/// text of its digits (`SqliteForm` in `src/exchange/detail/digits.h` chooses), with one note per column.
class KD_LIB_EXPORT TableLayout {
public:
    /// Chooses names and types. `file` names the table unless the options do. Throws an `Error` if no table of the
    /// database can have these columns. `columns` is not needed afterwards.
    TableLayout(const Dialect& dialect, const std::string& file, const std::vector<Column>& columns,
                const TableOptions& options);
    ~TableLayout();
    TableLayout(TableLayout&&) noexcept;
    TableLayout& operator=(TableLayout&&) noexcept;

    const Dialect& dialect() const { return *To; }
    TableMode mode() const { return Mode; }

    const std::string& table() const { return Table; }  ///< without quotes
    std::string quotedTable() const { return To->quoteName(Table); }

    /// A column for each column of the source, in its order; the key is not among them.
    const std::vector<TargetColumn>& columns() const { return Columns; }

    /// The key column, which the database numbers, without quotes; empty: none.
    const std::string& key() const { return Key; }

    /// The quoted names of the columns with "," between them, without the key.
    std::string columnList() const;

    /// CREATE TABLE for a table of this name (`table()`, or a temporary one), without ";".
    std::string createTable(std::string_view name) const;

    /// The statements, without ";", that a session must run first: those of the dialect, and further ones for this
    /// table.
    const std::vector<std::string>& session() const { return Session; }

    /// Marks the cells that the table cannot hold, by `Record::reject`: see `Target::fit`. Decimals that are all zeros
    /// are removed if the column takes whole numbers only.
    void fit(Record& record);

    /// Names that changed; after the last record also the columns with digits kept as text.
    std::vector<Note> notes() const;

    /// The note that `count` numbers of a column were kept as text.
    static Note textNote(const std::string& column, std::uint64_t count);

private:
    struct KD_LIB_LOCAL Checks;

    const Dialect* To;
    TableMode Mode;
    std::string Table;
    std::string Key;
    std::vector<TargetColumn> Columns;
    std::vector<std::string> Session;
    std::vector<Note> NameNotes;
    std::unique_ptr<Checks> Fit;
};

}  // namespace kd_lib::exchange
