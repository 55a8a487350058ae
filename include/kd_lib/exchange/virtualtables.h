/// \file
/// Files as tables of a SQLite connection.
#pragma once

#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/opensource.h>
#include <kd_lib/export.h>

#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

struct sqlite3;

namespace kd_lib::exchange {

namespace detail {
class SqliteDatabase;
}

/// Callbacks for events while statements read files. They must not throw, and must not use the connection.
struct VirtualTableEvents {
    std::function<void(const Reject&)> OnReject = {};                       ///< a cell became NULL; once for each cell
    std::function<void(const std::string& file, const Note&)> OnNote = {};  ///< once for each note
};

/// Registers the module `kd` on a connection. With it, statements read files in place:
///
///     registerTables(connection);
///     CREATE VIRTUAL TABLE people USING kd('people.dbf');
///     CREATE VIRTUAL TABLE temp.old USING kd('old.txt', columns='name:1-8,town:9-24', encoding=cp852);
///     SELECT town, count(*) FROM people GROUP BY town;
///
/// Records are streamed; memory does not grow with the file. Only the columns that a statement uses are decoded (and
/// rejected). `rowid` is the record's number. Conditions on it find records of a .dbf without reading the others; a
/// text is read up to them. The tables are read-only. Each statement opens the file again; the file must keep its
/// columns.
///
/// Names and declared types are those of a load into SQLite, and so are the values, with an unreadable cell as NULL.
///
/// Options, each at most once, except `type`: `from=dbf|csv|tsv|fixed|mem`, `select='A,B'`, `deleted=skip|keep|mark`,
/// `encoding=NAME`, `encoding_errors=replace|strict|escape`, `memo=FILE`, `no_memo=1`, `columns=LIST`, `delimiter=C`,
/// `quote=C|none`, `header=0`, `infer=1`, `null=TEXT`, `type='COLUMN=TYPE'`, `names=lower|keep`: the same as those of
/// `SourceOptions` and `TableOptions`. Values with commas, blanks or quotes are quoted as in SQL.
///
/// Throws an `Error` if SQLite refuses the module.
KD_LIB_EXPORT void registerTables(sqlite3* connection, VirtualTableEvents events = {});

/// A table of a `TableConnection`.
struct FileTableOptions {
    std::string File;
    std::string Table;  ///< empty: the file's name without folder and extension, in lower case
    SourceOptions Options = {};
    bool MayFail = false;  ///< a file that cannot be opened is left out, with a note of the loss
};

/// A SQLite connection in memory whose tables are files, for queries over files in place.
///
///     TableConnection tables(tableFilesIn("old"));
///     SqliteSource rows(tables.handle(), "old", "SELECT * FROM orders JOIN customers USING (id)");
class KD_LIB_EXPORT TableConnection {
public:
    /// Creates a table for each file. Files whose tables would have the same name get `_2`, `_3`, ..., with a note.
    /// Throws an `Error` if a file without `MayFail` cannot be opened.
    explicit TableConnection(const std::vector<FileTableOptions>& files, VirtualTableEvents events = {},
                             std::stop_token stop = {});
    ~TableConnection();
    TableConnection(const TableConnection&) = delete;
    TableConnection& operator=(const TableConnection&) = delete;

    /// Owned by this object. On this connection, words in double quotes are always names, never texts.
    sqlite3* handle() const;

    /// The tables' names, in the order of the files.
    const std::vector<std::string>& tables() const { return Tables; }

private:
    std::stop_token Stop;
    std::unique_ptr<detail::SqliteDatabase> Database;
    std::vector<std::string> Tables;
};

/// The files of a folder (without its subfolders) that can be tables: those whose extension names a kind of file,
/// sorted by name. Each is read with `options`, and has `MayFail` set. Text with fixed columns is included if `options`
/// names the columns. Throws an `Error` if the folder cannot be read or has no such file.
KD_LIB_EXPORT std::vector<FileTableOptions> tableFilesIn(const std::string& folder, const SourceOptions& options = {});

}  // namespace kd_lib::exchange
