#include "postgresqlsource.h"

#include "postgresqlcolumns.h"

#include <kd_lib/exchange/servervalue.h>
#include <kd_lib/exchange/sqlitesource.h>

#include <charconv>
#include <cstring>
#include <utility>

namespace kd_lib::exchange::detail {

namespace {

/// Values are printed without loss; rows come in the order in which they are stored.
constexpr const char* settings = "SET datestyle = 'ISO, YMD'; SET bytea_output = 'hex'; SET extra_float_digits = 1; "
                                 "SET synchronize_seqscans = off; SET max_parallel_workers_per_gather = 0";

// The server's numbers for its types, which never change.
enum TypeNumber : Oid {
    boolType = 16,
    byteaType = 17,
    int8Type = 20,
    int2Type = 21,
    int4Type = 23,
    oidType = 26,
    float4Type = 700,
    float8Type = 701,
    dateType = 1082,
    timeType = 1083,
    timestampType = 1114,
    numericType = 1700
};

ColumnType typeOf(Oid type)
{
    switch (type) {
    case boolType:
        return ColumnType::Boolean;
    case byteaType:
        return ColumnType::Bytes;
    case int2Type:
    case int4Type:
        return ColumnType::Integer;
    case int8Type:
    case oidType:
        return ColumnType::BigInteger;
    case float4Type:
    case float8Type:
        return ColumnType::Float;
    case numericType:
        return ColumnType::Number;
    case dateType:
        return ColumnType::Date;
    case timeType:
        return ColumnType::Time;
    case timestampType:
        return ColumnType::Timestamp;
    default:
        return ColumnType::Text;
    }
}

/// The byte at which the server reports the fault; the server counts characters, from 1.
std::optional<std::size_t> placeOf(const PGresult* result, std::string_view sql)
{
    const char* const position = PQresultErrorField(result, PG_DIAG_STATEMENT_POSITION);
    std::size_t characters = 0;
    if (position == nullptr) {
        return std::nullopt;
    }
    std::from_chars(position, position + std::strlen(position), characters);
    for (std::size_t i = 0; i < sql.size(); ++i) {
        const bool begins = (static_cast<unsigned char>(sql[i]) & 0xC0U) != 0x80U;
        if (begins && --characters == 0) {
            return i;
        }
    }
    return sql.size();
}

}  // namespace

PostgresqlSource::PostgresqlSource(const std::string& uri, const ServerOptions& options)
    : ServerRows(uri), Session(uri, options)
{
    File = Session.name();
    Session.run(settings);
}

PostgresqlSource::PostgresqlSource(const std::string& uri, const ServerOptions& options, std::string sql)
    : PostgresqlSource(uri, options)
{
    run(std::move(sql));
}

PostgresqlSource::PostgresqlSource(const std::string& uri, const ServerOptions& options, const std::string& table,
                                   const std::vector<std::string>& columns)
    : PostgresqlSource(uri, options)
{
    run(selectColumns(Engine::PostgreSql, columnsOfTable(Session, table), columns, table, Session.name()));
}

bool PostgresqlSource::start()
{
    // In this form the server refuses a text of several statements.
    if (PQsendQueryParams(Session.handle(), Sql.c_str(), 0, nullptr, nullptr, nullptr, nullptr, 0) == 0) {
        Session.fail(nullptr);
    }
    PQsetSingleRowMode(Session.handle());
    const bool found = take();
    if (Columns.empty()) {
        takeColumns();
    }
    return found;
}

void PostgresqlSource::takeColumns()
{
    for (int i = 0; i < PQnfields(Rows.get()); ++i) {
        Column column;
        column.Name = PQfname(Rows.get(), i);
        column.Type = typeOf(PQftype(Rows.get(), i));
        Columns.push_back(std::move(column));
    }
    Buffers.resize(Columns.size());
}

bool PostgresqlSource::take()
{
    Rows.reset(PQgetResult(Session.handle()));
    const ExecStatusType status = PQresultStatus(Rows.get());
    if (status == PGRES_SINGLE_TUPLE) {
        return true;
    }
    if (status == PGRES_EMPTY_QUERY) {
        throw SqlError(Session.name(), "there is no statement", std::nullopt);
    }
    if (status == PGRES_COPY_IN || status == PGRES_COPY_OUT || status == PGRES_COPY_BOTH) {
        throw SqlError(Session.name(), "COPY cannot be used here", std::nullopt);
    }
    if (status != PGRES_TUPLES_OK && status != PGRES_COMMAND_OK) {
        Session.checkStop();
        throw SqlError(Session.name(), kd_lib::detail::postgresqlReason(Rows.get(), Session.handle()),
                       placeOf(Rows.get(), Sql));
    }
    // The server counts the rows of a SELECT too, which are not changes.
    const char* const count = PQcmdTuples(Rows.get());
    if (std::strncmp(PQcmdStatus(Rows.get()), "SELECT", 6) != 0) {
        std::from_chars(count, count + std::strlen(count), Changes);
    }
    while (const Result more{PQgetResult(Session.handle())}) {
        if (PQresultStatus(more.get()) == PGRES_FATAL_ERROR) {
            Session.fail(more.get());
        }
    }
    return false;
}

void PostgresqlSource::fill()
{
    for (std::size_t i = 0; i < Columns.size(); ++i) {
        const int column = static_cast<int>(i);
        Cell& cell = Current.Cells[i];
        if (PQgetisnull(Rows.get(), 0, column) != 0) {
            cell = Cell::null();
            continue;
        }
        const std::string_view text(PQgetvalue(Rows.get(), 0, column),
                                    static_cast<std::size_t>(PQgetlength(Rows.get(), 0, column)));
        cell = Columns[i].Type == ColumnType::Bytes ? hexadecimalBytes(text, Buffers[i])
                                                    : serverValue(Columns[i].Type, text);
    }
}

}  // namespace kd_lib::exchange::detail
