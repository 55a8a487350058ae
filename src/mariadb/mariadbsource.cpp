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
    : ResultSource(uri), Session(uri, options)
{
    File = Session.name();
}

MariadbSource::MariadbSource(const std::string& uri, const ServerOptions& options, std::string sql)
    : MariadbSource(uri, options)
{
    Sql = std::move(sql);
    start();
}

std::unique_ptr<MariadbSource> MariadbSource::ofTable(const std::string& uri, const ServerOptions& options,
                                                      const std::string& table, const std::vector<std::string>& columns)
{
    std::unique_ptr<MariadbSource> source(new MariadbSource(uri, options));
    const std::vector<ExistingColumn> found = columnsOfTable(source->Session, table);
    const Dialect& dialect = dialectOf(Engine::MySql);
    std::string list;
    for (const std::string& column : columns) {
        list.append(list.empty() ? "" : ",");
        list.append(dialect.quoteName(findColumn(found, column, table, source->Session.name()).Name));
    }
    source->Sql = "SELECT " + list + " FROM " + dialect.quoteName(table);
    source->start();
    return source;
}

/// Runs the statement up to its first row.
void MariadbSource::start()
{
    Number = 0;
    if (Session.send(Sql)) {
        Rows.reset(mysql_use_result(Session.handle()));
    }
    if (!Rows && mysql_errno(Session.handle()) != 0) {
        Session.checkStop();
        throw SqlError(Session.name(), Session.reason(), std::nullopt);
    }
    if (!Rows) {
        Changes = mysql_affected_rows(Session.handle());
        return;
    }
    if (Columns.empty()) {
        takeColumns();
    }
    take();
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

/// Reads the next row; false at the end.
bool MariadbSource::take()
{
    Row = Rows ? mysql_fetch_row(Rows.get()) : nullptr;
    if (Row != nullptr) {
        return true;
    }
    if (Rows && mysql_errno(Session.handle()) != 0) {
        Session.checkStop();
        throw SqlError(Session.name(), Session.reason(), std::nullopt);
    }
    endResults();
    return false;
}

void MariadbSource::endResults()
{
    Rows.reset();
    // A procedure has a last result, without rows.
    while (mysql_next_result(Session.handle()) == 0) {
        Rows.reset(mysql_use_result(Session.handle()));
        Rows.reset();
    }
}

bool MariadbSource::read()
{
    // `start` has read the first row, if there is one.
    if (Number != 0 && Rows) {
        take();
    }
    if (Row == nullptr) {
        return false;
    }
    Current.Number = ++Number;
    Current.Cells.resize(Columns.size());
    const unsigned long* const lengths = mysql_fetch_lengths(Rows.get());
    for (std::size_t i = 0; i < Columns.size(); ++i) {
        Current.Cells[i] =
            Row[i] == nullptr ? Cell::null() : serverValue(Columns[i].Type, std::string_view(Row[i], lengths[i]));
    }
    ++Read;
    return true;
}

void MariadbSource::seek(std::uint64_t number)
{
    if (number <= Number) {
        if (Columns.empty()) {
            throw Error(Session.name(), "the statement cannot be run again");
        }
        Row = nullptr;
        endResults();
        start();
    }
    // `Row` is the row that `read` returned last, or the first.
    while (Number + 1 < number && Row != nullptr && (Number++ == 0 || take())) {
    }
}

}  // namespace kd_lib::exchange::detail
