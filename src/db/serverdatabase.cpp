#include <kd_lib/serverdatabase.h>

#include "detail/columntype.h"

#include <kd_lib/console.h>
#include <kd_lib/detail/serverconnection.h>
#include <kd_lib/detail/statementtext.h>
#include <kd_lib/text.h>

#include <cmath>
#include <utility>

namespace kd_lib {

ServerDatabase::ServerDatabase(const char* engineName, const Words& words) : TheWords(words)
{
    engine = engineName;
    host.clear();
    user.clear();
}

ServerDatabase::~ServerDatabase() = default;

void ServerDatabase::adopt(std::unique_ptr<detail::ServerConnection> connection)
{
    disconnect();
    Connection = std::move(connection);
}

bool ServerDatabase::connect(const std::string& hostName, const std::string& userName, const std::string& userPassword,
                             const std::string& databaseName)
{
    host = hostName;
    user = userName;
    password = userPassword;
    database = databaseName;
    return connect();
}

bool ServerDatabase::isConnected() const
{
    return Connection && Connection->alive();
}

bool ServerDatabase::isDisconnected() const
{
    return !isConnected();
}

bool ServerDatabase::disconnect()
{
    clearResults();
    errorText.clear();
    Failure.clear();
    database.clear();
    Statement.reset();
    Parameters.clear();
    Running = false;
    inTransaction = false;
    Connection.reset();
    return true;
}

bool ServerDatabase::createDatabase(const std::string& name)
{
    return execute("CREATE DATABASE " + quoted(name));
}

std::string ServerDatabase::quoted(const std::string& name) const
{
    return inQuotes(name, TheWords.Quote);
}

void ServerDatabase::setError()
{
    if (!Failure.empty()) {
        errorText = Failure;
        message(errorText);
    }
}

bool ServerDatabase::fail(const std::string& reason)
{
    Failure = reason;
    setError();
    return false;
}

/// Reports the connection's failure and ends the transaction: some servers abort it at its first failure, others would
/// keep half of it.
bool ServerDatabase::failStatement()
{
    fail(Connection ? std::exchange(Connection->Failure, {}) : "not connected");
    rollback();
    return false;
}

bool ServerDatabase::prepare(std::string sql)
{
    errorText.clear();
    clearResults();
    rowsFetched = 0;
    if (!Connection) {
        return false;
    }
    finalize();
    Failure.clear();
    Statement = std::make_unique<detail::StatementText>(
        detail::readStatement(sql, Connection->form(), Connection->backslashes()));
    Parameters.assign(Statement->Names.size(), {});
    if (!Connection->prepare(*Statement)) {
        Statement.reset();
        return failStatement();
    }
    return true;
}

/// Starts the prepared statement.
bool ServerDatabase::run()
{
    if (!Statement) {
        return fail("no statement is prepared");
    }
    rowsFetched = 0;
    clearResults();
    Running = Connection->readRest() && Connection->run(*Statement, Parameters, Columns);
    return Running;
}

bool ServerDatabase::execute()
{
    if (!Statement) {
        return fail("no statement is prepared");
    }
    if (run() && Connection->readRest()) {
        Running = false;
        clearResults();
        resultRows = Connection->changedRows();
        return true;
    }
    failStatement();
    clearResults();
    finalize();
    return false;
}

bool ServerDatabase::execute(const std::string& sql)
{
    return prepare(sql) && execute();
}

bool ServerDatabase::query()
{
    if (!Statement) {
        return fail("no statement is prepared");
    }
    if (!run()) {
        failStatement();
        finalize();
        return false;
    }
    for (const std::string& name : Columns) {
        queryColumns.add(name);
    }
    columnCount = static_cast<std::int32_t>(Columns.size());
    resultRows = 1;
    return true;
}

bool ServerDatabase::query(const std::string& sql)
{
    return prepare(sql) && query();
}

bool ServerDatabase::fetchRow()
{
    if (!Running) {
        return false;
    }
    if (Connection->next(queryColumns)) {
        ++rowsFetched;
        return true;
    }
    Running = false;
    if (!Connection->Failure.empty()) {
        return failStatement();
    }
    resultRows = rowsFetched;
    endTransaction();
    return false;
}

bool ServerDatabase::clearResults()
{
    SqlDatabase::clearResults();
    Columns.clear();
    columnCount = 0;
    return true;
}

bool ServerDatabase::finalize()
{
    Running = false;
    if (Connection) {
        Connection->readRest();
        Connection->drop();
        Connection->Failure.clear();
    }
    Statement.reset();
    Parameters.clear();
    return true;
}

bool ServerDatabase::prepareInsert(const std::string& table)
{
    if (queryColumns.size() == 0 || Columns.size() != queryColumns.size()) {
        return false;
    }
    std::string names;
    std::string values;
    std::vector<std::string> parameters;
    for (std::size_t i = 0; i < Columns.size(); ++i) {
        const char* separator = i == 0 ? "" : ",";
        names.append(separator).append(quoted(Columns[i]));
        values.append(separator).append(":p").append(std::to_string(i));
        parameters.push_back(":" + queryColumns.List[i]->Name);
    }
    if (!prepare("INSERT INTO " + quoted(table) + " (" + names + ") VALUES (" + values + ")")) {
        return false;
    }
    Statement->Names = std::move(parameters);
    return true;
}

bool ServerDatabase::preparedRecord(TableFields fields)
{
    if (fields.size() == 0) {
        return false;
    }
    for (const TableField& field : fields) {
        bind(field.Name, field.Value);
    }
    if (!execute()) {
        errorMessage(errorText);
        return false;
    }
    return true;
}

bool ServerDatabase::bindValue(int index, detail::Parameter value)
{
    const bool found = index >= 1 && static_cast<std::size_t>(index) <= Parameters.size();
    if (found) {
        Parameters[static_cast<std::size_t>(index) - 1] = std::move(value);
    }
    return found;
}

bool ServerDatabase::bind(int index, std::string value)
{
    using Kind = detail::Parameter::Kind;
    return bindValue(index, {Kind::Text, std::move(value)}) || fail("the statement has no such parameter");
}

bool ServerDatabase::bind(int index, int value)
{
    using Kind = detail::Parameter::Kind;
    return bindValue(index, {Kind::Integer, {}, value}) || fail("the statement has no such parameter");
}

bool ServerDatabase::bind(int index, double value)
{
    using Kind = detail::Parameter::Kind;
    if (std::isnan(value)) {
        bindNULL(index);
        return true;
    }
    return bindValue(index, {Kind::Real, {}, 0, value}) || fail("the statement has no such parameter");
}

bool ServerDatabase::bind(const std::string& name, std::string value)
{
    return bind(Statement ? Statement->number(name) : 0, std::move(value));
}

bool ServerDatabase::bindNULL(int index)
{
    return bindValue(index, {});
}

void ServerDatabase::command(const char* sql)
{
    if (!Connection) {
        return;
    }
    Running = false;
    Connection->readRest();
    Connection->Failure.clear();
    if (!Connection->command(sql)) {
        fail(std::exchange(Connection->Failure, {}));
    }
}

void ServerDatabase::beginTransaction()
{
    if (!inTransaction) {
        command(TheWords.Begin);
        inTransaction = true;
    }
}

void ServerDatabase::endTransaction()
{
    if (inTransaction) {
        inTransaction = false;
        command("COMMIT");
    }
}

void ServerDatabase::rollback()
{
    if (inTransaction) {
        inTransaction = false;
        const std::string reason = errorText;
        // The server has rolled back the transaction of a lost connection.
        if (isConnected()) {
            command("ROLLBACK");
        }
        errorText = reason.empty() ? errorText : reason;
    }
}

bool ServerDatabase::list(const char* sql, const std::string& table)
{
    if (!prepare(sql)) {
        return false;
    }
    if (!Parameters.empty()) {
        bind(1, table);
    }
    return query();
}

bool ServerDatabase::getDatabaseList()
{
    databaseList.clear();
    const bool listed = list(TheWords.Databases, "");
    while (listed && Connection->next(queryColumns)) {
        addDatabase(queryColumns.getData(0));
    }
    finalize();
    return listed;
}

bool ServerDatabase::getTableList()
{
    clearTableList();
    const bool listed = list(TheWords.Tables, "");
    while (listed && Connection->next(queryColumns)) {
        linkTable(queryColumns.getData(0));
    }
    finalize();
    return listed;
}

bool ServerDatabase::getColumnList(std::string table)
{
    clearTableList();
    columnList.clearList();
    const bool listed = list(TheWords.Columns, table);
    while (listed && Connection->next(queryColumns)) {
        const std::string type = queryColumns.getData("type");
        TableField column = detail::serverColumn(queryColumns.getData("name"), convertSql2FieldType(type), type);
        columnList.add(column);
    }
    finalize();
    return columnList.size() != 0;
}

FIELD_TYPE ServerDatabase::convertSql2FieldType(std::string type)
{
    const FIELD_TYPE known = detail::serverType(type);
    return known != UNKNOWN_TYPE ? known : SqlDatabase::convertSql2FieldType(std::move(type));
}

std::int64_t ServerDatabase::getRecords(const std::string& table)
{
    const std::int64_t count = SqlDatabase::getRecords(quoted(table));
    finalize();
    return count;
}

}  // namespace kd_lib
