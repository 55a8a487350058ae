#include <kd_lib/exchange/existingcolumn.h>

#include "detail/digits.h"
#include "detail/misfit.h"
#include "detail/moments.h"
#include "detail/scan.h"
#include "detail/unicode.h"

#include <kd_lib/text.h>

#include <algorithm>
#include <cmath>

namespace kd_lib::exchange {

namespace {

namespace misfit = detail::misfit;
using Kind = ExistingColumn::Kind;

constexpr std::uint32_t digitsOfFraction = 3;  // that a cell can have

const char* againstMoment(const ExistingColumn& column, std::uint32_t milliseconds)
{
    if (column.Keeps == Kind::Date) {
        return milliseconds == 0 ? nullptr : "a column of dates does not hold a time of the day";
    }
    std::uint32_t unit = detail::millisecondsOfSecond;
    for (std::uint32_t digit = 0; digit < column.Limit && digit < digitsOfFraction; ++digit) {
        unit /= 10;
    }
    return column.Keeps != Kind::Moment || milliseconds % unit == 0 ? nullptr
                                                                    : "more digits of the second than the column holds";
}

const char* againstNumber(const ExistingColumn& column, std::string_view& digits)
{
    if (column.Keeps == Kind::Whole) {
        return detail::takeZeroDecimals(digits) ? nullptr : misfit::notWhole;
    }
    if (column.Keeps == Kind::Decimal) {
        return detail::countDigits(digits).After <= column.Limit ? nullptr : misfit::tooManyDigits;
    }
    if (column.Keeps == Kind::Float && column.Limit < detail::digitsOfDouble) {
        return detail::countDigits(digits).Significant <= column.Limit ? nullptr : misfit::tooManyDigits;
    }
    return column.Keeps != Kind::Float || detail::isExactAsDouble(digits) ? nullptr : misfit::tooManyDigits;
}

const char* againstReal(const ExistingColumn& column, double value)
{
    if (column.Keeps == Kind::Whole || column.Keeps == Kind::Decimal) {
        const double scaled = value * std::pow(10.0, column.Keeps == Kind::Whole ? 0 : column.Limit);
        return std::floor(scaled) == scaled ? nullptr : misfit::tooManyDigits;
    }
    if (column.Keeps == Kind::Float && column.Limit < detail::digitsOfDouble && std::isfinite(value)) {
        return static_cast<double>(static_cast<float>(value)) == value ? nullptr : misfit::tooManyDigits;
    }
    return nullptr;
}

const char* againstText(const ExistingColumn& column, std::string_view text, Engine engine)
{
    if (engine == Engine::PostgreSql && detail::containsByte(text, '\0')) {
        return misfit::zeroByte;
    }
    const bool limited = column.Keeps == Kind::Text && column.Limit != 0 && text.size() > column.Limit;
    return limited && detail::countCharacters(text) > column.Limit ? misfit::tooLong : nullptr;
}

const char* reasonAgainst(const ExistingColumn& column, Cell& cell, Engine engine)
{
    switch (cell.Kind) {
    case CellKind::Text:
        return againstText(column, cell.Text, engine);
    case CellKind::Number:
        return againstNumber(column, cell.Text);
    case CellKind::Float:
        if (engine == Engine::MySql && !std::isfinite(cell.Float)) {
            return std::isnan(cell.Float) ? misfit::noNan : misfit::noInfinity;
        }
        return againstReal(column, cell.Float);
    case CellKind::Time:
    case CellKind::Timestamp:
        return againstMoment(column, cell.Moment.Milliseconds);
    default:
        return nullptr;
    }
}

}  // namespace

const ExistingColumn& findColumn(const std::vector<ExistingColumn>& columns, const std::string& name,
                                 const std::string& table, const std::string& database)
{
    if (columns.empty()) {
        throw Error(database, "there is no table " + table);
    }
    auto found = std::ranges::find(columns, name, &ExistingColumn::Name);
    if (found == columns.end()) {
        found = std::ranges::find(columns, stringToLower(name),
                                  [](const ExistingColumn& column) { return stringToLower(column.Name); });
    }
    if (found == columns.end()) {
        throw Error(database, "table " + table + " has no column " + name);
    }
    return *found;
}

std::string selectColumns(Engine engine, const std::vector<ExistingColumn>& found,
                          const std::vector<std::string>& columns, const std::string& table,
                          const std::string& database)
{
    const Dialect& dialect = dialectOf(engine);
    std::string list;
    for (const std::string& column : columns) {
        list.append(list.empty() ? "" : ",");
        list.append(dialect.quoteName(findColumn(found, column, table, database).Name));
    }
    return "SELECT " + list + " FROM " + dialect.quoteName(table);
}

ExistingColumns::ExistingColumns(const TableLayout& layout, const std::vector<ExistingColumn>& table,
                                 const std::string& database)
{
    for (const TargetColumn& column : layout.columns()) {
        Columns.push_back(findColumn(table, column.Name, layout.table(), database));
    }
}

void ExistingColumns::fit(Record& record, Engine engine) const
{
    for (std::size_t i = 0; i < Columns.size(); ++i) {
        Cell& cell = record.Cells[i];
        if (const char* const reason = reasonAgainst(Columns[i], cell, engine); reason != nullptr) {
            record.reject(i, reason);
        }
    }
}

}  // namespace kd_lib::exchange
