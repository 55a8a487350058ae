#include "scriptframe.h"

#include <initializer_list>
#include <string_view>

namespace kd_lib::exchange::detail {

namespace {

constexpr std::string_view newSuffix = "_kd_new";
constexpr std::string_view oldSuffix = "_kd_old";

std::string lines(std::initializer_list<std::string_view> statements)
{
    std::string text;
    for (const std::string_view statement : statements) {
        text.append(statement).append(";\n");
    }
    return text;
}

/// The quoted names of a table, and the statement that creates it under the first one.
struct Names {
    Names(const TableLayout& layout, bool temporary)
        : Table(layout.quotedTable()), New(layout.dialect().nameWithSuffix(layout.table(), newSuffix)),
          Create(layout.createTable(temporary ? New : layout.table())),
          Old(layout.dialect().quoteName(layout.dialect().nameWithSuffix(layout.table(), oldSuffix)))
    {
        New = layout.dialect().quoteName(New);
    }

    std::string Table;
    std::string New;
    std::string Create;
    std::string Old;
};

ScriptFrame postgreSqlFrame(const TableLayout& layout, bool copies)
{
    const Names names(layout, false);
    ScriptFrame frame = {{}, names.Table, lines({"COMMIT"})};
    if (copies) {
        // After a failed COPY, psql would read the rows as statements.
        frame.Before = "\\set ON_ERROR_STOP on\n";
    }
    for (const std::string& statement : layout.session()) {
        frame.Before += lines({statement});
    }
    frame.Before += lines({"BEGIN"});
    if (layout.mode() == TableMode::Replace) {
        frame.Before += lines({"DROP TABLE IF EXISTS " + names.Table});
    }
    if (layout.mode() != TableMode::Append) {
        frame.Before += lines({names.Create});
    }
    return frame;
}

/// A table cannot be created within a transaction. A new one under its final name is harmless; one that replaces
/// another has a temporary name until it is whole. RENAME changes both names at once.
ScriptFrame mySqlFrame(const TableLayout& layout)
{
    const bool replaces = layout.mode() == TableMode::Replace;
    const Names names(layout, replaces);
    ScriptFrame frame = {{}, replaces ? names.New : names.Table, lines({"COMMIT"})};
    for (const std::string& statement : layout.session()) {
        frame.Before += lines({statement});
    }
    if (replaces) {
        frame.Before += lines({"DROP TABLE IF EXISTS " + names.New + ", " + names.Old});
        frame.After +=
            lines({"CREATE TABLE IF NOT EXISTS " + names.Table + " LIKE " + names.New,
                   "RENAME TABLE " + names.Table + " TO " + names.Old + ", " + names.New + " TO " + names.Table,
                   "DROP TABLE " + names.Old});
    }
    if (layout.mode() != TableMode::Append) {
        frame.Before += lines({names.Create});
    }
    frame.Before += lines({"START TRANSACTION"});
    return frame;
}

/// The sqlite3 shell continues after an error, and SQLite ends a transaction by itself if the disk is full. So the rows
/// go into a table that exists only as long as the transaction. An existing table of the final name is dropped before
/// the rows are inserted: afterwards, the DROP alone might succeed. Views must not be checked while the table that they
/// name is missing.
ScriptFrame sqliteFrame(const TableLayout& layout)
{
    const Names names(layout, true);
    const bool replaces = layout.mode() == TableMode::Replace;
    return {.Before = lines({"PRAGMA legacy_alter_table = ON", "BEGIN"}) +
                      (replaces ? lines({"DROP TABLE IF EXISTS " + names.Table}) : "") + lines({names.Create}),
            .Table = names.New,
            .After = lines({"ALTER TABLE " + names.New + " RENAME TO " + names.Table,
                            "DROP TABLE IF EXISTS " + names.New, "COMMIT", "PRAGMA legacy_alter_table = OFF"})};
}

/// Likewise, one statement adds all rows to an existing table: if one row breaks a constraint, none is added.
ScriptFrame sqliteAppendFrame(const TableLayout& layout)
{
    const Names names(layout, true);
    const std::string gathered = "temp." + names.New;
    const std::string columns = layout.columnList();
    return {.Before = lines({"BEGIN", "CREATE TEMP TABLE " + names.New + " (" + columns + ")"}),
            .Table = gathered,
            .After = lines({"INSERT INTO " + names.Table + " (" + columns + ") SELECT " + columns + " FROM " +
                                gathered + " ORDER BY rowid",
                            "DROP TABLE IF EXISTS " + gathered, "COMMIT"})};
}

}  // namespace

ScriptFrame scriptFrame(const TableLayout& layout, bool copies)
{
    switch (layout.dialect().Is) {
    case Engine::PostgreSql:
        return postgreSqlFrame(layout, copies);
    case Engine::MySql:
        return mySqlFrame(layout);
    case Engine::Sqlite:
        break;
    }
    return layout.mode() == TableMode::Append ? sqliteAppendFrame(layout) : sqliteFrame(layout);
}

}  // namespace kd_lib::exchange::detail
