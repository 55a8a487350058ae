#include "postgresqlconnection.h"

#include <kd_lib/text.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>

namespace kd_lib::detail {

namespace {

constexpr const char* unnamed = "";

/// Without this, libpq would print the server's notices.
void passOver(void*, const PGresult*) {}

bool isCopy(ExecStatusType status)
{
    return status == PGRES_COPY_IN || status == PGRES_COPY_OUT || status == PGRES_COPY_BOTH;
}

/// Ends a COPY that has neither a reader nor a writer of its data.
void endCopy(PGconn* handle, ExecStatusType status)
{
    if (status == PGRES_COPY_IN) {
        PQputCopyEnd(handle, "COPY FROM STDIN has no data here");
        return;
    }
    char* row = nullptr;
    while (PQgetCopyData(handle, &row, 0) > 0) {
        PQfreemem(row);
    }
}

std::string digits(double value)
{
    char text[32];
    return {text, std::to_chars(text, std::end(text), value).ptr};
}

std::string textOf(const Parameter& parameter)
{
    switch (parameter.Type) {
    case Parameter::Kind::Integer:
        return std::to_string(parameter.Integer);
    case Parameter::Kind::Real:
        return digits(parameter.Real);
    default:
        return parameter.Text;
    }
}

}  // namespace

std::string postgresqlReason(const char* text)
{
    return allTrim(replaceChar(text, '\n', ' '));
}

std::string postgresqlReason(const PGresult* result, const PGconn* connection)
{
    const auto field = [result](int which) {
        const char* text = PQresultErrorField(result, which);
        return text != nullptr ? postgresqlReason(text) : std::string();
    };
    std::string reason = field(PG_DIAG_MESSAGE_PRIMARY);
    if (reason.empty()) {
        return postgresqlReason(PQerrorMessage(connection));
    }
    if (const std::string more = field(PG_DIAG_MESSAGE_DETAIL); !more.empty()) {
        reason += ": " + more;
    }
    const std::string code = field(PG_DIAG_SQLSTATE);
    return code.empty() ? reason : reason + " [#" + code + "]";
}

PostgresqlConnection::PostgresqlConnection(PGconn* open) : Handle(open)
{
    PQsetNoticeReceiver(Handle, passOver, nullptr);
}

PostgresqlConnection::~PostgresqlConnection()
{
    Current.reset();
    PQfinish(Handle);
}

bool PostgresqlConnection::alive() const
{
    return PQstatus(Handle) == CONNECTION_OK;
}

bool PostgresqlConnection::backslashes() const
{
    const char* standard = PQparameterStatus(Handle, "standard_conforming_strings");
    return standard != nullptr && std::strcmp(standard, "off") == 0;
}

bool PostgresqlConnection::fail(const PGresult* result)
{
    // The first failure is the reason; failures that follow from it say less.
    if (Failure.empty()) {
        Failure = postgresqlReason(result, Handle);
    }
    return false;
}

bool PostgresqlConnection::prepare(const StatementText& statement)
{
    const Result result(PQprepare(Handle, unnamed, statement.Sql.c_str(), 0, nullptr));
    OnServer = PQresultStatus(result.get()) == PGRES_COMMAND_OK;
    return OnServer || fail(result.get());
}

bool PostgresqlConnection::run(const StatementText& statement, const std::vector<Parameter>& parameters,
                               std::vector<std::string>& columns)
{
    if (!OnServer && !prepare(statement)) {
        return false;
    }
    std::vector<std::string> texts;
    std::vector<const char*> values;
    texts.reserve(parameters.size());
    for (const Parameter& parameter : parameters) {
        texts.push_back(textOf(parameter));
        values.push_back(parameter.Type == Parameter::Kind::Null ? nullptr : texts.back().c_str());
    }
    const auto count = static_cast<int>(values.size());
    if (PQsendQueryPrepared(Handle, unnamed, count, values.data(), nullptr, nullptr, 0) == 0) {
        return fail(nullptr);
    }
    PQsetSingleRowMode(Handle);
    Running = true;
    Changed = 0;
    if (!take()) {
        return false;
    }
    for (int i = 0; i < PQnfields(Current.get()); ++i) {
        columns.emplace_back(PQfname(Current.get(), i));
    }
    return true;
}

/// Takes the next result; false at the end of the results, or if the result is a failure.
bool PostgresqlConnection::take()
{
    Current.reset(PQgetResult(Handle));
    Running = Current != nullptr;
    const ExecStatusType status = PQresultStatus(Current.get());
    if (!Running) {
        return false;
    }
    if (isCopy(status)) {
        endCopy(Handle, status);
        if (Failure.empty()) {
            Failure = "COPY has no data here";
        }
        return false;
    }
    if (status == PGRES_EMPTY_QUERY && Failure.empty()) {
        Failure = "the statement is empty";
        return false;
    }
    if (status == PGRES_COMMAND_OK) {
        const char* count = PQcmdTuples(Current.get());
        std::from_chars(count, count + std::strlen(count), Changed);
    }
    return status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK || status == PGRES_SINGLE_TUPLE ||
           fail(Current.get());
}

bool PostgresqlConnection::next(TableFields& row)
{
    // `run` has taken the first result.
    if (!Current && (!Running || !take())) {
        readRest();
        return false;
    }
    if (PQresultStatus(Current.get()) != PGRES_SINGLE_TUPLE) {
        readRest();
        return false;
    }
    const int count = std::min(PQnfields(Current.get()), static_cast<int>(row.size()));
    for (int i = 0; i < count; ++i) {
        const auto length = static_cast<std::size_t>(PQgetlength(Current.get(), 0, i));
        row.List[static_cast<std::size_t>(i)]->Value.assign(PQgetvalue(Current.get(), 0, i), length);
    }
    Current.reset();
    return true;
}

bool PostgresqlConnection::readRest()
{
    while (Running) {
        take();
    }
    Current.reset();
    return Failure.empty();
}

bool PostgresqlConnection::command(const char* sql)
{
    OnServer = false;  // it replaces the unnamed statement
    const Result result(PQexec(Handle, sql));
    if (PQresultStatus(result.get()) != PGRES_COMMAND_OK) {
        return fail(result.get());
    }
    // COMMIT rolls back a transaction that has failed.
    if (std::strcmp(sql, "COMMIT") == 0 && std::strcmp(PQcmdStatus(result.get()), sql) != 0) {
        Failure = "the transaction had failed and was rolled back";
        return false;
    }
    return true;
}

void PostgresqlConnection::drop()
{
    OnServer = false;
}

}  // namespace kd_lib::detail
