#include <kd_lib/sqldatabase.h>

#include "detail/messages.h"
#include "detail/scriptsplitter.h"

#include <kd_lib/console.h>
#include <kd_lib/path.h>

#include <fstream>
#include <iostream>
#include <unistd.h>
#include <utility>

namespace kd_lib {

namespace {

/// The standard stream does not use one byte of its buffer; with one more it reads whole pages.
constexpr std::size_t scriptBlockSize = 65536 + 1;

bool contains(const std::string& text, const char* piece)
{
    return text.find(piece) != std::string::npos;
}

/// Deliberate: four characters never equal the word, so every statement of a script is executed and
/// none is queried.
bool isQuery(const std::string& statement)
{
    return contains(stringToUpper(statement.substr(1, 4)), "SELECT");
}

}  // namespace

SqlDatabase::SqlDatabase() = default;

SqlDatabase::~SqlDatabase() = default;

bool SqlDatabase::useDatabase(const std::string& name)
{
    return execute("USE `" + name + "`");
}

bool SqlDatabase::createDatabase(const std::string& name)
{
    return execute("CREATE DATABASE `" + name + "`");
}

void SqlDatabase::beginTransaction()
{
    if (!inTransaction) {
        execute("BEGIN TRANSACTION");
        inTransaction = true;
    }
}

void SqlDatabase::endTransaction()
{
    if (inTransaction) {
        execute("END TRANSACTION");
        inTransaction = false;
    }
}

void SqlDatabase::rollback()
{
    if (inTransaction) {
        // Cleared first: a failing statement inside a transaction rolls back, and this is one.
        inTransaction = false;
        execute("ROLLBACK TRANSACTION");
    }
}

FIELD_TYPE SqlDatabase::convertSql2FieldType(std::string type)
{
    if (type == "SMALLINT") {
        return SMALLINT_TYPE;
    }
    if (type == "INT" || type == "INTEGER") {
        return INTEGER_TYPE;
    }
    if (contains(type, "DEC") || contains(type, "NUM")) {
        return DECIMAL_TYPE;
    }
    if (contains(type, "FLOAT")) {
        return FLOAT_TYPE;
    }
    if (contains(type, "CHARACTER(")) {
        return CHAR_TYPE;
    }
    static const std::pair<const char*, FIELD_TYPE> words[] = {
        {"CHARACTER VARYING", VARCHAR_TYPE}, {"BLOB", BLOB_TYPE},      {"DATE", DATE_TYPE}, {"TIME", TIME_TYPE},
        {"TIMESTAMP", TIMESTAMP_TYPE},       {"BOOLEAN", BOOLEAN_TYPE}};
    for (const auto& [word, meaning] : words) {
        if (type == word) {
            return meaning;
        }
    }
    return UNKNOWN_TYPE;
}

std::int64_t SqlDatabase::getRecords(const std::string& table)
{
    if (!query("SELECT COUNT(*) AS count FROM " + table)) {
        return 0;
    }
    // Its result does not matter: a column without a value counts as 0.
    fetchRow();
    const TableField* count = queryColumns.get("count");
    return count != nullptr && !count->Value.empty() ? std::stol(count->Value) : 0;
}

void SqlDatabase::appendRow(std::string TableField::*text)
{
    rowText_.clear();
    for (std::size_t i = 0; i < queryColumns.size(); ++i) {
        const TableField& column = *queryColumns.List[i];
        const std::string& value = column.*text;
        if (column.Length > 0) {
            rowText_ += leftPad(value, column.Length, ' ');
        } else {
            rowText_ += value;
        }
        rowText_ += i + 1 < queryColumns.size() ? ' ' : '\n';
    }
}

bool SqlDatabase::printHeader()
{
    appendRow(&TableField::Name);
    int width = 0;
    for (const TableField& column : queryColumns) {
        width += column.Length > 0 ? column.Length + 1 : 0;
    }
    if (width != 0) {
        rowText_ += '\n' + replicateChar('-', width);
    }
    display(rowText_);
    return true;
}

bool SqlDatabase::processRow()
{
    static std::uint64_t rows = 0;
    appendRow(&TableField::Value);
    display(rowText_);
    rows += queryColumns.size();
    if (rows <= pageRows) {
        return true;
    }
    const bool goOn = more();
    rows = goOn ? 0 : rows;
    return goOn;
}

bool SqlDatabase::clearResults()
{
    queryColumns.clearList();
    resultRows = 0;
    return queryColumns.size() == 0;
}

bool SqlDatabase::isAttached(const std::string& name)
{
    return getDatabaseList() && findStrings(name, databaseList);
}

bool SqlDatabase::runScriptStatement(const std::string& statement)
{
    if (!isQuery(statement)) {
        if (execute(statement)) {
            return true;
        }
        std::cerr << detail::messages::statementFailed << std::endl;
        rollback();
        return false;
    }
    if (!query(statement)) {
        std::cerr << detail::messages::queryFailed << std::endl;
    } else if (resultRows != 0) {
        queryResults();
    }
    return true;
}

bool SqlDatabase::importSqlFile(const std::string& path)
{
    std::string expanded = path;
    checkHomePath(expanded);
    if (::access(expanded.c_str(), F_OK) != 0) {
        std::cerr << detail::messages::scriptMissingBefore << path << detail::messages::scriptMissingAfter << std::endl;
        return false;
    }
    message(detail::messages::executingScript + expanded);
    std::string streamBuffer(scriptBlockSize, '\0');
    std::ifstream file;
    file.rdbuf()->pubsetbuf(streamBuffer.data(), static_cast<std::streamsize>(streamBuffer.size()));
    file.open(expanded);
    std::string buffer(scriptBlockSize, '\0');
    detail::ScriptSplitter splitter;
    bool stopped = false;
    // The script may be a pipe: complete statements run before the next read, which may wait.
    while (!stopped && file.peek() != std::ifstream::traits_type::eof()) {
        const auto size = file.readsome(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        std::string_view block(buffer.data(), static_cast<std::size_t>(size));
        while (!stopped && splitter.next(block)) {
            stopped = !runScriptStatement(splitter.statement());
        }
    }
    // Deliberate: the result is inverted. At the end of the script the read has failed; a failing statement
    // stops before that.
    return stopped;
}

bool SqlDatabase::queryResults()
{
    if (resultRows == 0) {
        return false;
    }
    printHeader();
    while (fetchRow() && processRow()) {
    }
    return true;
}

void SqlDatabase::showQueryColumns()
{
    queryColumns.show();
}

void SqlDatabase::addDatabase(std::string name)
{
    databaseList.push_back(std::move(name));
}

}  // namespace kd_lib
