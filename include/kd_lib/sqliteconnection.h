/// \file
/// The SQLite back end. It needs no SQLite header.
#pragma once

#include <kd_lib/export.h>
#include <kd_lib/sqldatabase.h>

#include <set>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace kd_lib {

/// One SQLite connection. `host` is the directory of database files, by default "localhost": set it to "" to open files
/// by their paths. There is one current statement. `database` is the path of the open file. A failure of SQLite puts
/// its message, " [#", its code and "]" into `errorText`, reports that once through `message`, and returns false.
///
///     kd_lib::SQLite3 shop;
///     shop.host = "";
///     if (shop.useDatabase("shop.db") && shop.query("SELECT name, price FROM article")) {
///         shop.queryResults();
///         shop.finalize();
///     }
///
/// A statement or connection that a new one replaces stays open until `disconnect` or destruction, unless closing it
/// makes no visible difference. So a half-read statement may be taken from `statement` and put back later, to be read
/// further or ended with `finalize`. Threads: one thread per object.
class KD_LIB_EXPORT SQLite3 : public SqlDatabase {
public:
    bool loadEnabled = false;           ///< whether extension loading is enabled; never set by the library
    sqlite3* handle = nullptr;          ///< the open connection; null: disconnected
    sqlite3_stmt* statement = nullptr;  ///< the current statement

    SQLite3();            ///< engine "SQLITE3", disconnected
    ~SQLite3() override;  ///< disconnects

    using SqlDatabase::connect;

    /// \name Connection
    /// @{

    /// Whether there is a connection.
    bool isConnected() const override;

    /// Whether there is none.
    bool isDisconnected() const override;

    /// Closes the connection; true when no connection is left. `database`, `errorText` and the current
    /// result become empty; the statements and the replaced connections are closed too. False, with the
    /// error reported and the connection kept, when SQLite does not close it.
    /// An open transaction is discarded, but `inTransaction` keeps its value: call `rollback` or `endTransaction`
    /// before, or `beginTransaction` does nothing on the next connection.
    bool disconnect() override;

    /// Opens an existing database file: `openDatabase(name, false, "")`.
    bool useDatabase(const std::string& name) override;

    /// Opens a database file, or creates it if it is missing: `openDatabase(name, true, "")`.
    bool createDatabase(const std::string& name) override;

    /// Opens the file `databasePath(name)`, or an in-memory database for ":memory:", and sets `database` to its
    /// path. A connection that was open before is replaced, not closed.
    /// - Empty name: false, nothing changes.
    /// - No file and `create` false: the message "Cannot find database", false. A connection that was open remains
    ///   the current one, although `database` is empty.
    /// - SQLite fails: reported, false; `handle` is what SQLite returned.
    /// Deliberate: an `encoding` is set by a PRAGMA on the connection that was open before this call.
    bool openDatabase(const std::string& name, bool create, const std::string& encoding);

    /// `name` in the directory `host`, where "~" means the home directory; `name` alone when
    /// `host` is empty.
    std::string databasePath(const std::string& name);

    /// The reason why `name` could not be opened, with its path: `localhost/shop.db: unable to open database file
    /// [#14]; there is no directory localhost (host is "localhost")`. Empty after a success.
    std::string failureAt(const std::string& name);

    /// Attaches the database file at `path` ("~" allowed, `host` not applied) under the schema name
    /// `alias`, which goes into the statement unchanged. Without a connection: the message "No main
    /// database has been opened", false.
    bool attach(const std::string& path, const std::string& alias);

    /// Detaches the schema `alias`, which goes into the statement unchanged.
    bool detach(const std::string& alias);

    /// Extensions are never loaded: returns false.
    bool enableLoad();

    /// Extensions are never loaded: reports "Enable SQLite3 to load extensions", or "Enabling extension
    /// failed" when `loadEnabled` is true, and returns false.
    bool loadExtension(const std::string& path);

    /// Copies the connection's error into `errorText` and reports it; does nothing when there is none.
    void setError() override;
    /// @}

    /// \name Lists
    /// Each runs a query and finalises it. Except in `getRecords`, the end of its rows commits an open transaction.
    /// Names go into the statement unchanged and unquoted.
    /// @{

    /// Fills `databaseList` with the schema names.
    bool getDatabaseList() override;

    /// Replaces the linked tables by the tables of the main schema.
    bool getTableList() override;

    /// Queries the columns of a table and fetches all rows. Deliberate: no row is kept; `queryColumns`
    /// holds the last one, and the linked tables are deleted.
    bool getColumnList(std::string table) override;

    /// The number of records of a table; 0 if no count could be fetched. If `table` is more than a name, the first
    /// value may not be a count: one that is not a number throws std::invalid_argument, a too large one
    /// std::out_of_range.
    std::int64_t getRecords(const std::string& table) override;

    /// SQLite's type codes: 1 integer, 2 float, 3 text, 4 blob, 5 the value 15, any other 0.
    FIELD_TYPE convertFieldType(int storageClass);
    /// @}

    /// \name Statements
    /// @{

    /// Prepares the first statement of `sql`, with every backquote turned into a double quote. The
    /// current result and `errorText` are emptied first. False without a message when disconnected.
    bool prepare(std::string sql) override;

    /// Steps the statement once. True if it has finished: `resultRows` is then the number of changed rows; after a
    /// statement that changes none, such as CREATE TABLE, it is the count of the last INSERT, UPDATE or DELETE. False
    /// for every other result, even a row: the failure is reported, an open transaction is rolled back, the statement
    /// is finalised, and `errorText` keeps the reason.
    bool execute() override;

    /// Prepares, executes and resets the statement, so that it can run again.
    bool execute(const std::string& sql) override;

    /// Makes the statement's columns the current result, names in lower case; `resultRows` becomes 1,
    /// also for a statement without columns. True.
    bool query() override;

    /// Prepares `sql` and makes its columns the current result.
    bool query(const std::string& sql) override;

    /// Fetches the next row; NULL becomes the empty text. On a busy database it tries six times in all.
    /// At the end of the rows, `resultRows` becomes their number, an open transaction is ended, and the result is
    /// false. Ending a transaction also empties `queryColumns` and sets `resultRows`. An error of code 1 is
    /// reported; every other failure returns false without a message.
    bool fetchRow() override;

    /// Empties the current result; true.
    bool clearResults() override;

    /// Resets the statement. False if its last step had failed; that error is reported unless it was before.
    bool resetResults();

    /// Destroys the statement. False if its last step had failed, even a step by the caller through
    /// `sqlite3_step(statement)`; that error is reported unless it was before.
    bool finalize();

    /// Prepares "INSERT INTO table (columns) VALUES (:columns)" for the columns of the current result,
    /// which is then emptied. False without columns. Names go into the statement unchanged and unquoted.
    bool prepareInsert(const std::string& table) override;

    /// Binds each value of `fields` as text to the parameter with the field's name, ":" included, and
    /// executes the statement. A name without a parameter is reported and skipped. A parameter without a
    /// name in `fields` keeps its value. A failing execution is also reported on standard error. False for
    /// an empty list; false without a message when there is no connection or no statement.
    bool preparedRecord(TableFields fields) override;
    /// @}

    /// \name Binding
    /// Parameters are counted from 1. A failure is reported and returns false.
    /// @{
    bool bind(int index, std::string value);                ///< text up to its first zero byte
    bool bind(int index, int value);                        ///< whole number
    bool bind(int index, double value);                     ///< number; NaN binds NULL and returns true
    bool bind(const std::string& name, std::string value);  ///< text, for the parameter `name`
    bool bindNULL(int index);                               ///< NULL; a failure is not reported

    /// Text, zero bytes included, that SQLite does not copy: it must not change until the statement has
    /// been executed and another value is bound or the statement is finalised.
    bool bindKept(int index, std::string_view value);
    /// @}

    /// \name Transactions
    /// As in `SqlDatabase`; the statement that is executed is finalised. `rollback` keeps `errorText`.
    /// @{
    void beginTransaction() override;
    void endTransaction() override;
    void rollback() override;
    /// @}

private:
    KD_LIB_LOCAL bool succeeded(int code);
    KD_LIB_LOCAL std::string connectionError() const;
    KD_LIB_LOCAL int step();
    KD_LIB_LOCAL void reportFailureOf(const sqlite3_stmt* failed);
    KD_LIB_LOCAL void statementEnded();
    KD_LIB_LOCAL void supersedeStatement();
    KD_LIB_LOCAL void closeEverything();

    std::set<sqlite3_stmt*> superseded_;             // replaced while they ran: they keep their locks
    std::vector<sqlite3*> replaced_;                 // connections that openDatabase replaced
    bool running_ = false;                           // the last step of the current statement left it running
    const sqlite3_stmt* reportedFailure_ = nullptr;  // the statement whose last step failed and was reported
};

}  // namespace kd_lib
