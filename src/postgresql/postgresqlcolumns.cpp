#include "postgresqlcolumns.h"

namespace kd_lib::exchange::detail {

namespace {

constexpr const char* typesOfTable =
    "SELECT a.attname, t.typname, a.atttypmod FROM pg_attribute a JOIN pg_type t ON t.oid = a.atttypid "
    "WHERE a.attrelid = to_regclass(quote_ident($1)) AND a.attnum > 0 AND NOT a.attisdropped ORDER BY a.attnum";

ExistingColumn columnOf(const Result& rows, int row)
{
    using Kind = ExistingColumn::Kind;
    constexpr std::int32_t header = 4;  // of a type modifier
    ExistingColumn column;
    column.Name = valueOf(rows, row, 0);
    const std::string type = valueOf(rows, row, 1);
    const std::int32_t modifier = std::stoi(valueOf(rows, row, 2));
    if (type == "int2" || type == "int4" || type == "int8") {
        column.Keeps = Kind::Whole;
    } else if (type == "numeric" && modifier >= header) {
        column.Keeps = Kind::Decimal;
        column.Limit = static_cast<std::uint32_t>(modifier - header) & 0x7FFU;
    } else if (type == "float4" || type == "float8") {
        column.Keeps = Kind::Float;
        column.Limit = type == "float4" ? 6 : 15;
    } else if (type == "varchar" || type == "bpchar") {
        column.Keeps = Kind::Text;
        column.Limit = modifier >= header ? static_cast<std::uint32_t>(modifier - header) : 0;
    } else if (type == "date") {
        column.Keeps = Kind::Date;
    } else if (type == "time" || type == "timestamp" || type == "timetz" || type == "timestamptz") {
        column.Keeps = Kind::Moment;
        column.Limit = modifier >= 0 ? static_cast<std::uint32_t>(modifier) : 6;
    }
    return column;
}

}  // namespace

std::vector<ExistingColumn> columnsOfTable(PostgresqlSession& session, const std::string& table)
{
    const Result rows = session.rows(typesOfTable, table);
    std::vector<ExistingColumn> found;
    found.reserve(static_cast<std::size_t>(PQntuples(rows.get())));
    for (int i = 0; i < PQntuples(rows.get()); ++i) {
        found.push_back(columnOf(rows, i));
    }
    return found;
}

}  // namespace kd_lib::exchange::detail
