/// \file
/// The base of SQL back ends: the current result and its printing, counting, transactions, and the
/// import of script files.
#pragma once

#include <kd_lib/database.h>
#include <kd_lib/export.h>
#include <kd_lib/tablefields.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kd_lib {

/// An abstract SQL database. A back end implements the pure operations on its connection; see
/// examples/own_database.cpp. There is one current result at a time: `query` sets its columns, `fetchRow`
/// reads its rows.
/// The order of the virtual operations is part of the binary interface.
/// Threads: one thread per object, but `processRow` counts for all objects of the process together.
class KD_LIB_EXPORT SqlDatabase : public Database<DatabaseTable> {
public:
    std::uint64_t rowsFetched = 0;          ///< rows of the current result fetched so far
    std::uint64_t resultRows = 0;           ///< 0: no result; 1 after `query`; the row count at the end of a
                                            ///< fetch; the number of changed rows after `execute`
    std::vector<std::string> databaseList;  ///< schema names, filled by `getDatabaseList`
    TableFields queryColumns;               ///< one column per result column, with the current row's values
    std::string errorText;                  ///< the last error message
    std::int32_t columnCount = 0;           ///< number of columns of the current result
    std::uint64_t pageRows = 25;            ///< `processRow` calls `more` after this many values
    bool inTransaction = false;             ///< a transaction has begun and has neither been ended nor rolled back

    SqlDatabase();  ///< default settings, no result, no transaction
    ~SqlDatabase() override;

    using Database<DatabaseTable>::connect;

    /// Executes USE with the name between backquotes, unescaped, and returns the result.
    bool useDatabase(const std::string& name) override;

    /// Executes CREATE DATABASE with the name between backquotes, unescaped, and returns the result.
    bool createDatabase(const std::string& name) override;

    /// Copies the connection's last error into `errorText` and reports it through `message`.
    virtual void setError() = 0;

    /// Executes "BEGIN TRANSACTION" and sets `inTransaction`, even if the statement fails. Does nothing
    /// inside a transaction.
    virtual void beginTransaction();

    /// Executes "END TRANSACTION" and clears `inTransaction`, even if the statement fails. Does nothing
    /// outside a transaction.
    virtual void endTransaction();

    /// Executes "ROLLBACK TRANSACTION" and clears `inTransaction`, even if the statement fails. Does
    /// nothing outside a transaction.
    virtual void rollback();

    /// Fills `databaseList`.
    virtual bool getDatabaseList() = 0;

    /// Links the tables of the database.
    virtual bool getTableList() = 0;

    /// The type for the name of an SQL type; letter case counts. The first rule that applies decides: equals SMALLINT;
    /// equals INT or INTEGER; contains DEC or NUM (decimal); contains FLOAT; contains CHARACTER(
    /// (char); equals CHARACTER VARYING (varchar); equals BLOB, DATE, TIME, TIMESTAMP, BOOLEAN.
    /// Every other name is unknown.
    virtual FIELD_TYPE convertSql2FieldType(std::string type);

    /// Queries the columns of a table.
    virtual bool getColumnList(std::string table) = 0;

    /// Prepares a statement as the current one.
    virtual bool prepare(std::string sql) = 0;

    /// Prepares an INSERT into `table` from the columns of the current result.
    virtual bool prepareInsert(const std::string& table) = 0;

    /// Binds the values of `fields` to the prepared statement and executes it.
    virtual bool preparedRecord(TableFields fields) = 0;

    /// Executes the prepared statement.
    virtual bool execute() = 0;

    /// Prepares and executes a statement.
    virtual bool execute(const std::string& sql) = 0;

    /// Makes the prepared statement's columns the current result.
    virtual bool query() = 0;

    /// Prepares a statement and makes its columns the current result.
    virtual bool query(const std::string& sql) = 0;

    /// The number of records of a table, whose name goes into the statement unchanged; 0 if no count could be
    /// fetched. A count that is not a number throws std::invalid_argument; one that is too large, std::out_of_range.
    virtual std::int64_t getRecords(const std::string& table);

    /// Reads the next row of the current result into `queryColumns`; false at the end.
    virtual bool fetchRow() = 0;

    /// Displays the names of the columns, padded on the left to their lengths, then an empty line and a
    /// rule as wide as the padded columns with a blank after each. Columns of length 0 are neither padded
    /// nor counted; without padded columns there is no rule. Returns true.
    virtual bool printHeader();

    /// Displays the values of the current row, padded like the names. If more than `pageRows` values have
    /// been printed since the last call of `more`, calls it and returns its result; otherwise true.
    /// Deliberate: values are counted, not rows, and for all objects together.
    virtual bool processRow();

    /// Empties the current result; true if `queryColumns` is then empty.
    virtual bool clearResults();

    /// Lists the schema names again, and returns whether `name` is one of them; false if the list fails.
    bool isAttached(const std::string& name);

    /// Runs the statements of a script file one by one through `execute`, starting with the message
    /// "Executing SQL file " and the path. A ";" outside single quotes ends a statement, a "#" outside
    /// them starts a comment up to the line's end; text after the last ";" is not run.
    /// - A missing file: "SQL file ", the path as passed and " does not exist" on standard error, false.
    /// - A failing statement: "Error executing statement" on standard error, `rollback()`, and the import
    ///   stops; the effects of earlier statements stay.
    /// - Deliberate: the result is inverted. It is false for a script that ran to its end, true for one that
    ///   stopped at a failing statement, and false for a file that cannot be read.
    bool importSqlFile(const std::string& path);

    /// Prints the current result: `printHeader`, then `processRow` for every row, until the rows end or
    /// `more` returns false. False when `resultRows` is 0.
    bool queryResults();

    /// Shows `queryColumns` with their definitions.
    void showQueryColumns();

    /// Appends `name` to `databaseList`.
    void addDatabase(std::string name);

private:
    KD_LIB_LOCAL bool runScriptStatement(const std::string& statement);
    KD_LIB_LOCAL void appendRow(std::string TableField::*text);

    std::string rowText_;  // the text of one printed row; a member so that its memory is reused
};

}  // namespace kd_lib
