/// \file
/// An xBase table as SQL text.
#pragma once

#include <kd_lib/export.h>
#include <kd_lib/xbasetable.h>

#include <ostream>
#include <string>

namespace kd_lib {

/// Writes the statements that create and fill an SQL table from an xBase table. The table name
/// is changed to lower case, column names are written as `Fields` holds them, and only values are quoted.
///
///     kd_lib::xBase2Sql stock("stock");
///     std::string script = stock.convert();   // writes stock.sql
///
/// Threads: one thread per object.
class KD_LIB_EXPORT xBase2Sql : public xBaseTable {
public:
    std::string KeyColumn;      ///< if not empty, the table begins with an auto-increment key of this name
    bool InsertRecords = true;  ///< `convert` writes the table's definition, then an INSERT per record

    /// Whether an override may change `Name` or the names of the columns between two records. A derived class that
    /// never does so can set it to false: then `convert` and `writeScript` do not compare the names for every record.
    bool NamesMayChange = true;

    xBase2Sql();                                  ///< as `xBaseTable`
    explicit xBase2Sql(const std::string& name);  ///< the same, with `Name` set
    ~xBase2Sql() override;

    /// The table's definition, one column per line; `dropFirst` puts DROP TABLE IF EXISTS before it.
    /// Opens the table and reads its header if that has not been done. If the table cannot be opened,
    /// prints the error line "Table is not open" and returns "Error: table is not open".
    std::string createTable(bool dropFirst);

    /// An INSERT with placeholders: "$0", "$1", ... for the dialect "postgresql", "?" for every other.
    /// Deliberate: "sqlite" puts ":" before the names in the column list, not before the placeholders.
    /// Names are not quoted: with a reserved word or a blank in a name, no database accepts the statement; see
    /// `SqlKeyword`.
    std::string prepareInsert(const std::string& dialect);

    /// An INSERT with the current values of the columns as literals.
    std::string insert();

    /// Writes the script `Path`/`Name`.sql: the definition with DROP TABLE, then the records while
    /// `InsertRecords` is set. Closes the table and returns the script's path.
    /// Returns an empty text if the table could not be opened (error line "Table is not open") or the
    /// script could not be created (no message; the table stays open).
    /// - A failed write is not reported: on a full disk the path of a truncated script is returned. If that matters,
    ///   call `writeScript` with your own stream and check its state after `close`.
    /// - The header is read only if `Fields` is empty. Before an object converts a second table, call
    ///   `defineFields`, or the second script has the columns of the first table.
    ///
    /// If `ReadDeleted` is false, a deleted record repeats the INSERT of the previous record.
    std::string convert();

    /// Writes the script of `convert` to `out` and leaves the table open. The caller sees a failed write
    /// in the state of `out`, or as the exception that `out` throws for it; writing stops there. If
    /// the table cannot be opened, the error text that `createTable` returns is written; to avoid that,
    /// open the table first.
    void writeScript(std::ostream& out);

private:
    KD_LIB_LOCAL bool openWithHeader();
    KD_LIB_LOCAL void writeRecords(std::ostream& out);
};

}  // namespace kd_lib
