#include "mariadbconnection.h"

#include <errmsg.h>
#include <mysqld_error.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace kd_lib::detail {

namespace {

/// Holds numbers, dates and short texts; longer values are fetched in a second call.
constexpr std::size_t firstBufferSize = 256;

bool isLoss(unsigned int number)
{
    return number == CR_SERVER_GONE_ERROR || number == CR_SERVER_LOST || number == ER_CONNECTION_KILLED ||
           number == ER_SERVER_SHUTDOWN;
}

MYSQL_BIND boundTo(const Parameter& parameter, unsigned long& length)
{
    MYSQL_BIND bind = {};
    // The interface lacks the const; it does not write here.
    switch (parameter.Type) {
    case Parameter::Kind::Null:
        bind.buffer_type = MYSQL_TYPE_NULL;
        break;
    case Parameter::Kind::Text:
        length = std::strlen(parameter.Text.c_str());
        bind.buffer_type = MYSQL_TYPE_STRING;
        bind.buffer = const_cast<char*>(parameter.Text.data());
        bind.buffer_length = length;
        bind.length = &length;
        break;
    case Parameter::Kind::Integer:
        bind.buffer_type = MYSQL_TYPE_LONGLONG;
        bind.buffer = const_cast<std::int64_t*>(&parameter.Integer);
        break;
    case Parameter::Kind::Real:
        bind.buffer_type = MYSQL_TYPE_DOUBLE;
        bind.buffer = const_cast<double*>(&parameter.Real);
        break;
    }
    return bind;
}

}  // namespace

MariadbConnection::MariadbConnection(Mysql open) : Handle(std::move(open)) {}

MariadbConnection::~MariadbConnection()
{
    Prepared.reset();
    Rows.reset();
}

bool MariadbConnection::backslashes() const
{
    return (Handle->server_status & SERVER_STATUS_NO_BACKSLASH_ESCAPES) == 0;
}

bool MariadbConnection::fail()
{
    const unsigned int number = mysql_errno(handle());
    Lost = Lost || isLoss(number);
    if (Failure.empty()) {
        Failure = mariadbReason(mysql_error(handle()), number);
    }
    Open = RowsOpen = false;
    return false;
}

bool MariadbConnection::failPrepared()
{
    const unsigned int number = mysql_stmt_errno(Prepared.get());
    Lost = Lost || isLoss(number);
    if (Failure.empty()) {
        Failure = mariadbReason(mysql_stmt_error(Prepared.get()), number);
    }
    Open = RowsOpen = false;
    return false;
}

bool MariadbConnection::prepare(const StatementText& statement)
{
    drop();
    if (statement.Names.empty()) {
        return true;
    }
    Prepared.reset(mysql_stmt_init(handle()));
    if (!Prepared) {
        return fail();
    }
    if (mysql_stmt_prepare(Prepared.get(), statement.Sql.data(), statement.Sql.size()) != 0) {
        failPrepared();
        Prepared.reset();
        return false;
    }
    if (mysql_stmt_param_count(Prepared.get()) != statement.Occurrences.size()) {
        Failure = "the server sees other parameters in the statement";
        Prepared.reset();
        return false;
    }
    return true;
}

bool MariadbConnection::run(const StatementText& statement, const std::vector<Parameter>& parameters,
                            std::vector<std::string>& columns)
{
    Changed = 0;
    if (Prepared) {
        if (!runPrepared(statement, parameters)) {
            return false;
        }
    } else {
        if (mysql_real_query(handle(), statement.Sql.data(), statement.Sql.size()) != 0) {
            return fail();
        }
        Open = true;
        if (!takeResult()) {
            return false;
        }
    }
    for (unsigned int i = 0; Rows && i < mysql_num_fields(Rows.get()); ++i) {
        columns.emplace_back(mysql_fetch_field_direct(Rows.get(), i)->name);
    }
    return true;
}

/// Takes the result of the last text statement.
bool MariadbConnection::takeResult()
{
    Rows.reset(mysql_use_result(handle()));
    RowsOpen = Rows != nullptr;
    if (!Rows && mysql_errno(handle()) != 0) {
        return fail();
    }
    if (!Rows) {
        Changed = mysql_affected_rows(handle());
    }
    return true;
}

bool MariadbConnection::runPrepared(const StatementText& statement, const std::vector<Parameter>& parameters)
{
    std::vector<unsigned long> lengths(statement.Occurrences.size());
    std::vector<MYSQL_BIND> binds;
    for (const std::size_t parameter : statement.Occurrences) {
        binds.push_back(boundTo(parameters[parameter], lengths[binds.size()]));
    }
    if (mysql_stmt_bind_param(Prepared.get(), binds.data()) != 0 || mysql_stmt_execute(Prepared.get()) != 0) {
        return failPrepared();
    }
    Open = true;
    Rows.reset(mysql_stmt_result_metadata(Prepared.get()));
    RowsOpen = Rows != nullptr;
    if (!Rows) {
        Changed = mysql_stmt_affected_rows(Prepared.get());
        return true;
    }
    Buffers.resize(mysql_num_fields(Rows.get()));
    for (Buffer& buffer : Buffers) {
        buffer.Text.resize(std::max(buffer.Text.size(), firstBufferSize));
    }
    bindBuffers();
    return true;
}

void MariadbConnection::bindBuffers()
{
    Bound.assign(Buffers.size(), {});
    for (std::size_t i = 0; i < Buffers.size(); ++i) {
        Bound[i].buffer_type = MYSQL_TYPE_STRING;
        Bound[i].buffer = Buffers[i].Text.data();
        Bound[i].buffer_length = Buffers[i].Text.size();
        Bound[i].length = &Buffers[i].Length;
        Bound[i].is_null = &Buffers[i].Null;
        Bound[i].error = &Buffers[i].Cut;
    }
    mysql_stmt_bind_result(Prepared.get(), Bound.data());
}

bool MariadbConnection::next(TableFields& row)
{
    if (RowsOpen && (Prepared ? nextPrepared(row) : nextText(row))) {
        return true;
    }
    readRest();
    return false;
}

bool MariadbConnection::nextText(TableFields& row)
{
    const MYSQL_ROW values = mysql_fetch_row(Rows.get());
    if (values == nullptr) {
        RowsOpen = false;
        return mysql_errno(handle()) != 0 && fail();
    }
    const unsigned long* lengths = mysql_fetch_lengths(Rows.get());
    const std::size_t count = std::min<std::size_t>(mysql_num_fields(Rows.get()), row.size());
    for (std::size_t i = 0; i < count; ++i) {
        row.List[i]->Value.assign(values[i] != nullptr ? values[i] : "", values[i] != nullptr ? lengths[i] : 0);
    }
    return true;
}

bool MariadbConnection::nextPrepared(TableFields& row)
{
    const int code = mysql_stmt_fetch(Prepared.get());
    if (code != 0 && code != MYSQL_DATA_TRUNCATED) {
        RowsOpen = false;
        return code != MYSQL_NO_DATA && failPrepared();
    }
    bool grown = false;
    for (std::size_t i = 0; i < std::min(Buffers.size(), row.size()); ++i) {
        Buffer& buffer = Buffers[i];
        if (buffer.Null == 0 && buffer.Length > buffer.Text.size()) {
            buffer.Text.resize(buffer.Length);
            Bound[i].buffer = buffer.Text.data();
            Bound[i].buffer_length = buffer.Text.size();
            mysql_stmt_fetch_column(Prepared.get(), &Bound[i], static_cast<unsigned int>(i), 0);
            grown = true;
        }
        row.List[i]->Value.assign(buffer.Text, 0, buffer.Null != 0 ? 0 : buffer.Length);
    }
    if (grown) {
        bindBuffers();
    }
    return true;
}

bool MariadbConnection::readRest()
{
    if (Prepared) {
        return readPreparedRest();
    }
    while (Open) {
        while (RowsOpen && mysql_fetch_row(Rows.get()) != nullptr) {
        }
        RowsOpen = false;
        if (Rows && mysql_errno(handle()) != 0) {
            fail();
            break;
        }
        Rows.reset();
        // 0: one more result, -1: none, any other number: a failure.
        const int more = mysql_next_result(handle());
        Open = more == 0;
        if (more > 0 || (more == 0 && !takeResult())) {
            fail();
        }
    }
    Rows.reset();
    return Failure.empty();
}

bool MariadbConnection::readPreparedRest()
{
    while (Open) {
        int code = 0;
        while (RowsOpen && (code == 0 || code == MYSQL_DATA_TRUNCATED)) {
            code = mysql_stmt_fetch(Prepared.get());
            RowsOpen = code == 0 || code == MYSQL_DATA_TRUNCATED;
        }
        if (code == 1) {
            failPrepared();
        }
        mysql_stmt_free_result(Prepared.get());
        // A procedure returns several results; those after the first are ignored.
        const int more = mysql_stmt_next_result(Prepared.get());
        Open = more == 0;
        RowsOpen = false;
        if (more > 0) {
            failPrepared();
        }
    }
    Rows.reset();
    return Failure.empty();
}

bool MariadbConnection::command(const char* sql)
{
    return mysql_real_query(handle(), sql, std::strlen(sql)) == 0 || fail();
}

void MariadbConnection::drop()
{
    readRest();
    Prepared.reset();
    Buffers.clear();
    Bound.clear();
}

}  // namespace kd_lib::detail
