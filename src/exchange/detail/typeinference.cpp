#include "typeinference.h"

#include "moments.h"
#include "values.h"
#include "wording.h"

#include <algorithm>

namespace kd_lib::exchange::detail {

namespace {

/// The longest text that is accepted as a number.
constexpr std::size_t longestNumber = 1000;

bool isAsPrinted(const Converted& number, std::string_view text)
{
    return number.Value.Kind == CellKind::Number && number.Value.Text == text;
}

}  // namespace

void TypeInference::add(std::string_view text, std::uint64_t record)
{
    ++Values;
    Days = Days && parseDate(text).has_value();
    if (Exact) {
        addNumber(text);
    }
    if (!Exact && !Days && TextRecord == 0) {
        TextRecord = record;
    }
}

void TypeInference::addNumber(std::string_view text)
{
    Exact = text.size() <= longestNumber && isAsPrinted(numberOf(text, Scratch), text);
    if (!Exact) {
        Whole = false;
        return;
    }
    const std::size_t point = std::min(text.find('.'), text.size());
    const auto decimals = static_cast<std::uint32_t>(point < text.size() ? text.size() - point - 1 : 0);
    Whole = Whole && decimals == 0 && wholeNumberOf(text, Scratch).Value.Kind == CellKind::Number;
    WholeWidth = std::max(WholeWidth, static_cast<std::uint32_t>(point));
    Decimals = std::max(Decimals, decimals);
}

ColumnType TypeInference::type() const
{
    if (Values == 0) {
        return ColumnType::Text;
    }
    return Whole ? ColumnType::BigInteger : Exact ? ColumnType::Number : Days ? ColumnType::Date : ColumnType::Text;
}

Column TypeInference::applyTo(Column column) const
{
    column.Type = type();
    if (column.Type == ColumnType::Number) {
        column.Decimals = Decimals;
        column.Width = WholeWidth + (Decimals > 0 ? Decimals + 1 : 0);
    }
    return column;
}

std::string TypeInference::evidence() const
{
    const ColumnType found = type();
    if (found == ColumnType::Text) {
        return Values == 0 ? "text without a value" : "text because of record " + std::to_string(TextRecord);
    }
    return typeName(found) + (found == ColumnType::Number ? " with " + count(Decimals, "decimal") : "");
}

std::string evidenceOf(const std::vector<Column>& columns, const std::vector<TypeInference>& types,
                       std::uint64_t records)
{
    std::string line = "types found in " + count(records, "record") + ": ";
    for (std::size_t i = 0; i < columns.size(); ++i) {
        line += (i > 0 ? ", " : "") + columns[i].Name + ' ' + types[i].evidence();
    }
    return line;
}

}  // namespace kd_lib::exchange::detail
