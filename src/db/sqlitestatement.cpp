// The statement side of SQLite3.

#include <kd_lib/sqliteconnection.h>

#include "detail/sqlitecalls.h"

#include <kd_lib/console.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace kd_lib {

void SQLite3::statementEnded()
{
    running_ = false;
    // A caller may have put a superseded statement back.
    superseded_.erase(statement);
}

void SQLite3::supersedeStatement()
{
    if (running_) {
        superseded_.insert(statement);
    } else if (!superseded_.contains(statement)) {
        sqlite3_finalize(statement);
    }
    statement = nullptr;
    running_ = false;
    reportedFailure_ = nullptr;
}

int SQLite3::step()
{
    reportedFailure_ = nullptr;
    const int code = sqlite3_step(statement);
    if (code == SQLITE_ROW || code == SQLITE_BUSY) {
        running_ = true;
    } else {
        statementEnded();
    }
    return code;
}

void SQLite3::reportFailureOf(const sqlite3_stmt* failed)
{
    // SQLite repeats the result of a failed step when the statement is reset or finalised. Another statement, or
    // another error, comes from a step that the caller made.
    const bool reported = failed != nullptr && failed == reportedFailure_ && errorText == connectionError();
    if (!reported) {
        setError();
        reportedFailure_ = failed;
    }
}

bool SQLite3::prepare(std::string sql)
{
    errorText.clear();
    clearResults();
    resultRows = 0;
    rowsFetched = 0;
    if (isDisconnected()) {
        return false;
    }
    sql = replaceChar(sql, '`', '"');
    supersedeStatement();
    // The length includes the zero byte at the end: without it, SQLite copies the text.
    const auto length = static_cast<int>(sql.size() + 1);
    if (!succeeded(sqlite3_prepare_v2(handle, sql.c_str(), length, &statement, nullptr))) {
        clearResults();
        return false;
    }
    return true;
}

bool SQLite3::execute()
{
    if (step() == SQLITE_DONE) {
        resultRows = static_cast<std::uint64_t>(sqlite3_changes(handle));
        return true;
    }
    reportFailureOf(statement);
    // The statement does not continue, even in the middle of a result: the rollback may close it.
    statementEnded();
    if (inTransaction) {
        rollback();
    }
    clearResults();
    finalize();
    return false;
}

bool SQLite3::execute(const std::string& sql)
{
    if (!prepare(sql) || !execute()) {
        return false;
    }
    resetResults();
    return true;
}

bool SQLite3::query()
{
    columnCount = sqlite3_column_count(statement);
    for (int i = 0; i < columnCount; ++i) {
        const char* name = sqlite3_column_name(statement, i);
        queryColumns.add(std::string(name != nullptr ? name : ""));
    }
    resultRows = 1;
    return true;
}

bool SQLite3::query(const std::string& sql)
{
    return prepare(sql) && query();
}

bool SQLite3::fetchRow()
{
    switch (detail::retriedWhileBusy([this] { return step(); })) {
    case SQLITE_ERROR:
        reportFailureOf(statement);
        return false;
    case SQLITE_ROW:
        break;
    case SQLITE_DONE:
        resultRows = rowsFetched;
        endTransaction();
        return false;
    default:
        return false;
    }
    const int columns = std::min(columnCount, static_cast<int>(queryColumns.size()));
    for (int i = 0; i < columns; ++i) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
        queryColumns.List[static_cast<std::size_t>(i)]->Value.assign(text != nullptr ? text : "");
    }
    ++rowsFetched;
    return true;
}

bool SQLite3::clearResults()
{
    SqlDatabase::clearResults();
    return true;
}

bool SQLite3::resetResults()
{
    const bool reset = sqlite3_reset(statement) == SQLITE_OK;
    if (!reset) {
        reportFailureOf(statement);
    }
    statementEnded();
    reportedFailure_ = nullptr;
    return reset;
}

bool SQLite3::finalize()
{
    statementEnded();
    const sqlite3_stmt* const ended = statement;
    // The statement is destroyed even if this fails, so a repeated call must not use it again.
    const bool finalized =
        detail::retriedWhileBusy([this] { return sqlite3_finalize(std::exchange(statement, nullptr)); }) == SQLITE_OK;
    if (!finalized) {
        reportFailureOf(ended);
    }
    reportedFailure_ = nullptr;
    return finalized;
}

bool SQLite3::prepareInsert(const std::string& table)
{
    if (queryColumns.size() == 0) {
        return false;
    }
    std::string names;
    std::string parameters;
    const char* separator = "";
    for (const TableField& column : queryColumns) {
        names += separator;
        names += column.Name;
        parameters += separator;
        parameters += ':';
        parameters += column.Name;
        separator = ",";
    }
    return prepare("INSERT INTO " + stringToLower(table) + " (\n" + names + ") \n\tVALUES (" + parameters + ");\n");
}

bool SQLite3::preparedRecord(TableFields fields)
{
    if (fields.size() == 0 || isDisconnected() || statement == nullptr) {
        return false;
    }
    // The reason printed below must belong to this call.
    std::string before = std::exchange(errorText, {});
    for (const TableField& field : fields) {
        bind(field.Name, field.Value);
    }
    if (!execute()) {
        if (!errorText.empty()) {
            errorMessage(errorText);
        }
        return false;
    }
    resetResults();
    if (errorText.empty()) {
        errorText = std::move(before);
    }
    return true;
}

bool SQLite3::bind(int index, std::string value)
{
    return succeeded(sqlite3_bind_text(statement, index, value.c_str(), -1, SQLITE_TRANSIENT));
}

bool SQLite3::bindKept(int index, std::string_view value)
{
    // A size that an int cannot hold is longer than SQLite accepts.
    const std::size_t longest = std::numeric_limits<int>::max();
    const auto length = static_cast<int>(std::min(value.size(), longest));
    return succeeded(sqlite3_bind_text(statement, index, value.empty() ? "" : value.data(), length, SQLITE_STATIC));
}

bool SQLite3::bind(int index, int value)
{
    return succeeded(sqlite3_bind_int(statement, index, value));
}

bool SQLite3::bind(int index, double value)
{
    if (std::isnan(value)) {
        sqlite3_bind_null(statement, index);
        return true;
    }
    return succeeded(sqlite3_bind_double(statement, index, value));
}

bool SQLite3::bind(const std::string& name, std::string value)
{
    return bind(sqlite3_bind_parameter_index(statement, name.c_str()), std::move(value));
}

bool SQLite3::bindNULL(int index)
{
    return sqlite3_bind_null(statement, index) == SQLITE_OK;
}

void SQLite3::beginTransaction()
{
    if (!inTransaction) {
        SqlDatabase::beginTransaction();
        finalize();
    }
}

void SQLite3::endTransaction()
{
    if (inTransaction) {
        SqlDatabase::endTransaction();
        finalize();
    }
}

void SQLite3::rollback()
{
    if (inTransaction) {
        const std::string reason = errorText;
        SqlDatabase::rollback();
        finalize();
        errorText = reason.empty() ? errorText : reason;
    }
}

}  // namespace kd_lib
