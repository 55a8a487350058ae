#include "mariadbsource.h"

#include "mariadbcolumns.h"

#include <kd_lib/exchange/servervalue.h>
#include <kd_lib/exchange/sqlitesource.h>

namespace kd_lib::exchange::detail {

namespace {

/// The number of the character set of bytes.
constexpr unsigned int binary = 63;

ColumnType typeOf(const MYSQL_FIELD& field)
{
    switch (field.type) {
    case MYSQL_TYPE_TINY:
        return field.length == 1 ? ColumnType::Boolean : ColumnType::Integer;
    case MYSQL_TYPE_SHORT:
    case MYSQL_TYPE_INT24:
    case MYSQL_TYPE_LONG:
    case MYSQL_TYPE_YEAR:
        return ColumnType::Integer;
    case MYSQL_TYPE_LONGLONG:
        return ColumnType::BigInteger;
    case MYSQL_TYPE_DECIMAL:
    case MYSQL_TYPE_NEWDECIMAL:
        return ColumnType::Number;
    case MYSQL_TYPE_FLOAT:
    case MYSQL_TYPE_DOUBLE:
        return ColumnType::Float;
    case MYSQL_TYPE_DATE:
        return ColumnType::Date;
    case MYSQL_TYPE_TIME:
        return ColumnType::Time;
    case MYSQL_TYPE_DATETIME:
    case MYSQL_TYPE_TIMESTAMP:
        return ColumnType::Timestamp;
    case MYSQL_TYPE_BIT:
    case MYSQL_TYPE_GEOMETRY:
        return ColumnType::Bytes;
    default:
        return field.charsetnr == binary ? ColumnType::Bytes : ColumnType::Text;
    }
}

}  // namespace

MariadbSource::MariadbSource(const std::string& uri, const ServerOptions& options)
    : ServerRows(uri), Session(uri, options)
{
    File = Session.name();
}

MariadbSource::MariadbSource(const std::string& uri, const ServerOptions& options, std::string sql)
    : MariadbSource(uri, options)
{
    run(std::move(sql));
}

MariadbSource::MariadbSource(const std::string& uri, const ServerOptions& options, const std::string& table,
                             const std::vector<std::string>& columns)
    : MariadbSource(uri, options)
{
    run(selectColumns(Engine::MySql, columnsOfTable(Session, table), columns, table, Session.name()));
}

bool MariadbSource::start()
{
    if (Session.send(Sql)) {
        Rows.reset(mysql_use_result(Session.handle()));
    }
    if (!Rows && mysql_errno(Session.handle()) != 0) {
        Session.checkStop();
        throw SqlError(Session.name(), Session.reason(), std::nullopt);
    }
    if (!Rows) {
        Changes = mysql_affected_rows(Session.handle());
        return false;
    }
    if (Columns.empty()) {
        takeColumns();
    }
    return take();
}

void MariadbSource::takeColumns()
{
    for (unsigned int i = 0; i < mysql_num_fields(Rows.get()); ++i) {
        const MYSQL_FIELD& field = *mysql_fetch_field_direct(Rows.get(), i);
        Column column;
        column.Name = field.name;
        column.Type = typeOf(field);
        Columns.push_back(std::move(column));
    }
}

bool MariadbSource::take()
{
    Row = mysql_fetch_row(Rows.get());
    if (Row != nullptr) {
        return true;
    }
    if (mysql_errno(Session.handle()) != 0) {
        Session.checkStop();
        throw SqlError(Session.name(), Session.reason(), std::nullopt);
    }
    endResults();
    return false;
}

void MariadbSource::endResults()
{
    Rows.reset();
    // The last result of a procedure has no rows.
    while (mysql_next_result(Session.handle()) == 0) {
        Rows.reset(mysql_use_result(Session.handle()));
        Rows.reset();
    }
}

void MariadbSource::fill()
{
    const unsigned long* const lengths = mysql_fetch_lengths(Rows.get());
    for (std::size_t i = 0; i < Columns.size(); ++i) {
        Current.Cells[i] =
            Row[i] == nullptr ? Cell::null() : serverValue(Columns[i].Type, std::string_view(Row[i], lengths[i]));
    }
}

}  // namespace kd_lib::exchange::detail
