#include <kd_lib/serverdatabase.h>

#include "detail/columntype.h"

#include <kd_lib/console.h>
#include <kd_lib/detail/serverconnection.h>
#include <kd_lib/detail/statementtext.h>
#include <kd_lib/text.h>

#include <cmath>
#include <utility>

namespace kd_lib {

namespace detail {

/// The state of a `ServerDatabase`.
struct ServerState {
    const ServerWords Words;
    std::unique_ptr<ServerConnection> Connection;
    std::unique_ptr<StatementText> Statement;  // null: none is prepared
    std::vector<Parameter> Parameters;
    std::vector<std::string> Columns;  // names of the current result as the server has them
    std::string Failure;               // the last one
    bool Running = false;              // the current result has not been read to its end
};

}  // namespace detail

ServerDatabase::ServerDatabase(const char* engineName, const detail::ServerWords& words)
    : state_(new detail::ServerState{words, {}, {}, {}, {}, {}})
{
    engine = engineName;
    host.clear();
    user.clear();
}

ServerDatabase::~ServerDatabase() = default;

detail::ServerConnection* ServerDatabase::connection() const
{
    return state_->Connection.get();
}

void ServerDatabase::adopt(std::unique_ptr<detail::ServerConnection> connection)
{
    disconnect();
    state_->Connection = std::move(connection);
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
    return state_->Connection && state_->Connection->alive();
}

bool ServerDatabase::isDisconnected() const
{
    return !isConnected();
}

bool ServerDatabase::disconnect()
{
    clearResults();
    errorText.clear();
    state_->Failure.clear();
    database.clear();
    state_->Statement.reset();
    state_->Parameters.clear();
    state_->Running = false;
    inTransaction = false;
    state_->Connection.reset();
    return true;
}

bool ServerDatabase::createDatabase(const std::string& name)
{
    return execute("CREATE DATABASE " + quoted(name));
}

std::string ServerDatabase::quoted(const std::string& name) const
{
    return inQuotes(name, state_->Words.Quote);
}

void ServerDatabase::setError()
{
    if (!state_->Failure.empty()) {
        errorText = state_->Failure;
        message(errorText);
    }
}

bool ServerDatabase::fail(const std::string& reason)
{
    state_->Failure = reason;
    setError();
    return false;
}

/// Reports the connection's failure and ends the transaction: some servers abort it at its first failure, others would
/// keep half of it.
bool ServerDatabase::failStatement()
{
    fail(state_->Connection ? std::exchange(state_->Connection->Failure, {}) : "not connected");
    rollback();
    return false;
}

bool ServerDatabase::prepare(std::string sql)
{
    errorText.clear();
    clearResults();
    rowsFetched = 0;
    if (!state_->Connection) {
        return false;
    }
    finalize();
    state_->Failure.clear();
    state_->Statement = std::make_unique<detail::StatementText>(
        detail::readStatement(sql, state_->Connection->form(), state_->Connection->backslashes()));
    state_->Parameters.assign(state_->Statement->Names.size(), {});
    if (!state_->Connection->prepare(*state_->Statement)) {
        state_->Statement.reset();
        return failStatement();
    }
    return true;
}

/// Starts the prepared statement.
bool ServerDatabase::run()
{
    if (!state_->Statement) {
        return fail("no statement is prepared");
    }
    rowsFetched = 0;
    clearResults();
    state_->Running = state_->Connection->readRest() &&
                      state_->Connection->run(*state_->Statement, state_->Parameters, state_->Columns);
    return state_->Running;
}

bool ServerDatabase::execute()
{
    if (!state_->Statement) {
        return fail("no statement is prepared");
    }
    if (run() && state_->Connection->readRest()) {
        state_->Running = false;
        clearResults();
        resultRows = state_->Connection->changedRows();
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
    if (!state_->Statement) {
        return fail("no statement is prepared");
    }
    if (!run()) {
        failStatement();
        finalize();
        return false;
    }
    for (const std::string& name : state_->Columns) {
        queryColumns.add(name);
    }
    columnCount = static_cast<std::int32_t>(state_->Columns.size());
    resultRows = 1;
    return true;
}

bool ServerDatabase::query(const std::string& sql)
{
    return prepare(sql) && query();
}

bool ServerDatabase::fetchRow()
{
    if (!state_->Running) {
        return false;
    }
    if (state_->Connection->next(queryColumns)) {
        ++rowsFetched;
        return true;
    }
    state_->Running = false;
    if (!state_->Connection->Failure.empty()) {
        return failStatement();
    }
    resultRows = rowsFetched;
    endTransaction();
    return false;
}

bool ServerDatabase::clearResults()
{
    SqlDatabase::clearResults();
    state_->Columns.clear();
    columnCount = 0;
    return true;
}

bool ServerDatabase::finalize()
{
    state_->Running = false;
    if (state_->Connection) {
        state_->Connection->readRest();
        state_->Connection->drop();
        state_->Connection->Failure.clear();
    }
    state_->Statement.reset();
    state_->Parameters.clear();
    return true;
}

bool ServerDatabase::prepareInsert(const std::string& table)
{
    if (queryColumns.size() == 0 || state_->Columns.size() != queryColumns.size()) {
        return false;
    }
    std::string names;
    std::string values;
    std::vector<std::string> parameters;
    for (std::size_t i = 0; i < state_->Columns.size(); ++i) {
        const char* separator = i == 0 ? "" : ",";
        names.append(separator).append(quoted(state_->Columns[i]));
        values.append(separator).append(":p").append(std::to_string(i));
        parameters.push_back(":" + queryColumns.List[i]->Name);
    }
    if (!prepare("INSERT INTO " + quoted(table) + " (" + names + ") VALUES (" + values + ")")) {
        return false;
    }
    state_->Statement->Names = std::move(parameters);
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
    const bool found = index >= 1 && static_cast<std::size_t>(index) <= state_->Parameters.size();
    if (found) {
        state_->Parameters[static_cast<std::size_t>(index) - 1] = std::move(value);
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
    return bind(state_->Statement ? state_->Statement->number(name) : 0, std::move(value));
}

bool ServerDatabase::bindNULL(int index)
{
    return bindValue(index, {});
}

void ServerDatabase::command(const char* sql)
{
    if (!state_->Connection) {
        return;
    }
    state_->Running = false;
    state_->Connection->readRest();
    state_->Connection->Failure.clear();
    if (!state_->Connection->command(sql)) {
        fail(std::exchange(state_->Connection->Failure, {}));
    }
}

void ServerDatabase::beginTransaction()
{
    if (!inTransaction) {
        command(state_->Words.Begin);
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
    if (!state_->Parameters.empty()) {
        bind(1, table);
    }
    return query();
}

bool ServerDatabase::getDatabaseList()
{
    databaseList.clear();
    const bool listed = list(state_->Words.Databases, "");
    while (listed && state_->Connection->next(queryColumns)) {
        addDatabase(queryColumns.getData(0));
    }
    finalize();
    return listed;
}

bool ServerDatabase::getTableList()
{
    clearTableList();
    const bool listed = list(state_->Words.Tables, "");
    while (listed && state_->Connection->next(queryColumns)) {
        linkTable(queryColumns.getData(0));
    }
    finalize();
    return listed;
}

bool ServerDatabase::getColumnList(std::string table)
{
    clearTableList();
    columnList.clearList();
    const bool listed = list(state_->Words.Columns, table);
    while (listed && state_->Connection->next(queryColumns)) {
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
