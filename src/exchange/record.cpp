#include <kd_lib/exchange/record.h>

#include "detail/lettercase.h"

#include <algorithm>
#include <charconv>

namespace kd_lib::exchange {

namespace {

std::chrono::year_month_day dayOf(Date date)
{
    return {std::chrono::year(date.Year), std::chrono::month(date.Month), std::chrono::day(date.Day)};
}

}  // namespace

void Value::fail(const std::string& reason) const
{
    throw Error(Place{{}, Record, TheColumn.Name, {}}, reason);
}

bool Value::isNull() const
{
    if (TheCell.Kind == CellKind::Unreadable) {
        fail("the cell is unreadable");
    }
    return TheCell.Kind == CellKind::Null;
}

const Cell* Value::cellOf(CellKind kind) const
{
    if (isNull()) {
        return nullptr;
    }
    if (TheCell.Kind != kind) {
        fail("the column holds values of type " + typeName(TheColumn.Type));
    }
    return &TheCell;
}

std::optional<std::string_view> Value::text() const
{
    const Cell* cell = cellOf(CellKind::Text);
    return cell != nullptr ? std::optional(cell->Text) : std::nullopt;
}

std::optional<std::string_view> Value::digits() const
{
    const Cell* cell = cellOf(CellKind::Number);
    return cell != nullptr ? std::optional(cell->Text) : std::nullopt;
}

std::optional<std::int64_t> Value::integer() const
{
    return scaled(0);
}

std::optional<std::int64_t> Value::scaled(unsigned decimals) const
{
    const Cell* cell = cellOf(CellKind::Number);
    if (cell == nullptr) {
        return std::nullopt;
    }
    const std::size_t point = std::min(cell->Text.find('.'), cell->Text.size());
    std::string_view after = cell->Text.substr(std::min(point + 1, cell->Text.size()));
    const std::size_t last = after.find_last_not_of('0');
    after = after.substr(0, last == std::string_view::npos ? 0 : last + 1);
    if (after.size() > decimals) {
        fail(decimals == 0 ? "the number has decimals"
                           : "the number has more than " + std::to_string(decimals) + " decimals");
    }
    std::string units(cell->Text.substr(0, point));
    units.append(after).append(decimals - after.size(), '0');
    std::int64_t value = 0;
    if (std::from_chars(units.data(), units.data() + units.size(), value).ec != std::errc()) {
        fail("the number does not fit in 64 bits");
    }
    return value;
}

std::optional<double> Value::real() const
{
    if (!isNull() && TheCell.Kind == CellKind::Float) {
        return TheCell.Float;
    }
    const Cell* cell = cellOf(CellKind::Number);
    if (cell == nullptr) {
        return std::nullopt;
    }
    double value = 0;
    const std::string_view digits = cell->Text;
    if (std::from_chars(digits.data(), digits.data() + digits.size(), value).ec != std::errc()) {
        fail("the number is outside the range of a double");
    }
    return value;
}

std::optional<bool> Value::boolean() const
{
    const Cell* cell = cellOf(CellKind::Boolean);
    return cell != nullptr ? std::optional(cell->Boolean) : std::nullopt;
}

std::optional<std::chrono::year_month_day> Value::date() const
{
    const Cell* cell = cellOf(CellKind::Date);
    return cell != nullptr ? std::optional(dayOf(cell->Moment.Day)) : std::nullopt;
}

std::optional<std::chrono::milliseconds> Value::time() const
{
    const Cell* cell = cellOf(CellKind::Time);
    return cell != nullptr ? std::optional(std::chrono::milliseconds(cell->Moment.Milliseconds)) : std::nullopt;
}

std::optional<std::chrono::sys_time<std::chrono::milliseconds>> Value::timestamp() const
{
    const Cell* cell = cellOf(CellKind::Timestamp);
    if (cell == nullptr) {
        return std::nullopt;
    }
    return std::chrono::sys_days(dayOf(cell->Moment.Day)) + std::chrono::milliseconds(cell->Moment.Milliseconds);
}

std::optional<std::string_view> Value::bytes() const
{
    const Cell* cell = cellOf(CellKind::Bytes);
    return cell != nullptr ? std::optional(cell->Text) : std::nullopt;
}

void Record::reject(std::size_t column, std::string_view reason, FlawKind kind)
{
    Cells[column] = Cell::unreadable();
    Flaws.push_back({column, kind, std::string(reason)});
}

Value Record::operator[](std::string_view column) const
{
    const auto named = [&](auto same) {
        return std::ranges::find_if(*Columns, [&](const Column& c) { return same(c.Name, column); });
    };
    auto found = named([](std::string_view a, std::string_view b) { return a == b; });
    if (found == Columns->end()) {
        found = named(detail::equalWithoutCase);
    }
    if (found == Columns->end()) {
        throw Error(Place{{}, 0, std::string(column), {}}, "no such column");
    }
    return (*this)[static_cast<std::size_t>(found - Columns->begin())];
}

}  // namespace kd_lib::exchange
