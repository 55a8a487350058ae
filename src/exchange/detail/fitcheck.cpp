#include "fitcheck.h"

#include "digits.h"
#include "lanes.h"
#include "misfit.h"
#include "scan.h"
#include "unicode.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kd_lib::exchange::detail {

namespace {

constexpr std::size_t digitsOfPostgreSqlBeforePoint = 131072;
constexpr std::size_t digitsOfPostgreSqlAfterPoint = 16383;

/// At least a digit and the point come before the decimals.
constexpr std::size_t digitAndPoint = 2;

const char* againstCharacters(std::string_view text, std::size_t limit)
{
    return text.size() > limit && countCharacters(text) > limit ? misfit::tooLong : nullptr;
}

const char* againstZeroByte(std::string_view text, std::size_t limit)
{
    if (containsByte(text, '\0')) {
        return misfit::zeroByte;
    }
    return limit != 0 ? againstCharacters(text, limit) : nullptr;
}

template <class Integer>
const char* againstWhole(std::string_view& digits)
{
    constexpr std::size_t alwaysFits = std::numeric_limits<Integer>::digits10;
    if (containsByte(digits, '.') && !takeZeroDecimals(digits)) {
        return misfit::notWhole;
    }
    return digits.size() <= alwaysFits || fits<Integer>(digits) ? nullptr : misfit::tooLarge;
}

const char* againstDigits(std::string_view digits, std::size_t before, std::size_t after)
{
    const DigitCounts counts = countDigits(digits);
    return counts.Before <= before && counts.After <= after ? nullptr : misfit::tooManyDigits;
}

const char* againstFinite(double value, bool infinities)
{
    if (std::isnan(value)) {
        return misfit::noNan;
    }
    return infinities || std::isfinite(value) ? nullptr : misfit::noInfinity;
}

}  // namespace

void FitChecks::add(std::size_t column, FitCheck check)
{
    constexpr std::size_t anySize = std::numeric_limits<std::size_t>::max();
    const std::size_t limit = check.Limit;
    switch (check.Rule) {
    case FitRule::Everything:
        return;
    case FitRule::Characters:
        OfAnyBytes.push_back({column, limit});
        break;
    case FitRule::NoZeroByte:
        WithoutZeroByte.push_back({column, limit != 0 ? limit : anySize});
        break;
    case FitRule::Whole32:
        WithoutPoint.push_back({column, std::numeric_limits<std::int32_t>::digits10});
        break;
    case FitRule::Whole64:
        WithoutPoint.push_back({column, std::numeric_limits<std::int64_t>::digits10});
        break;
    case FitRule::Decimal:
        if (check.Decimals == 0) {
            WithoutPoint.push_back({column, limit});
        } else {
            OfAnyBytes.push_back({column, std::min<std::size_t>(limit, check.Decimals + digitAndPoint)});
        }
        break;
    case FitRule::PostgreSqlNumeric:
        OfAnyBytes.push_back({column, digitsOfPostgreSqlAfterPoint});
        break;
    case FitRule::ExactAsDouble:
    case FitRule::DoubleOrText:
        OfAnyBytes.push_back({column, std::numeric_limits<double>::digits10});
        break;
    case FitRule::NoNan:
    case FitRule::Finite:
        Floats.push_back(column);
        break;
    }
    Checks.push_back({column, check});
}

bool FitChecks::fitsPlainly(const Record& record) const
{
    const std::vector<Cell>& cells = record.Cells;
    SixteenBytes marks = {};
    bool sizes = true;
    for (const PlainSize& plain : WithoutZeroByte) {
        const Cell& cell = cells[plain.Column];
        if (cell.Kind == CellKind::Text) {
            marks |= record.Plain ? SixteenBytes{} : marksOf(cell.Text, '\0');
            sizes &= cell.Text.size() <= plain.Size;
        }
    }
    for (const PlainSize& plain : WithoutPoint) {
        const Cell& cell = cells[plain.Column];
        if (cell.Kind == CellKind::Number) {
            if (record.Plain && cell.Text.size() < Lanes::count) {
                sizes &= (Lanes(cell.Text.data()).equal('.') & ((1U << cell.Text.size()) - 1)) == 0;
            } else {
                marks |= marksOf(cell.Text, '.');
            }
            sizes &= cell.Text.size() <= plain.Size;
        }
    }
    for (const PlainSize& plain : OfAnyBytes) {
        const Cell& cell = cells[plain.Column];
        sizes &= (cell.Kind != CellKind::Text && cell.Kind != CellKind::Number) || cell.Text.size() <= plain.Size;
    }
    for (const std::size_t column : Floats) {
        sizes &= cells[column].Kind != CellKind::Float || std::isfinite(cells[column].Float);
    }
    return sizes && !anySet(marks);
}

const char* FitChecks::reasonAgainst(ColumnCheck& check, Cell& cell)
{
    const FitCheck& limits = check.Check;
    switch (limits.Rule) {
    case FitRule::Everything:
        return nullptr;
    case FitRule::Characters:
        return againstCharacters(cell.Text, limits.Limit);
    case FitRule::NoZeroByte:
        return againstZeroByte(cell.Text, limits.Limit);
    case FitRule::Whole32:
        return againstWhole<std::int32_t>(cell.Text);
    case FitRule::Whole64:
        return againstWhole<std::int64_t>(cell.Text);
    case FitRule::Decimal:
        return againstDigits(cell.Text, limits.Limit, limits.Decimals);
    case FitRule::PostgreSqlNumeric:
        return againstDigits(cell.Text, digitsOfPostgreSqlBeforePoint, digitsOfPostgreSqlAfterPoint);
    case FitRule::ExactAsDouble:
        return isExactAsDouble(cell.Text) ? nullptr : misfit::tooManyDigits;
    case FitRule::DoubleOrText:
        check.KeptAsText += sqliteFormOf(cell.Text) == SqliteForm::Text ? 1U : 0U;
        return nullptr;
    case FitRule::NoNan:
        return againstFinite(cell.Float, true);
    case FitRule::Finite:
        return againstFinite(cell.Float, false);
    }
    return nullptr;
}

void FitChecks::applyEach(Record& record)
{
    for (ColumnCheck& check : Checks) {
        Cell& cell = record.Cells[check.Column];
        if (cell.Kind == CellKind::Null || cell.Kind == CellKind::Unreadable) {
            continue;
        }
        if (const char* const reason = reasonAgainst(check, cell); reason != nullptr) {
            record.reject(check.Column, reason);
        }
    }
}

std::uint64_t FitChecks::keptAsText(std::size_t column) const
{
    const auto found = std::ranges::find(Checks, column, &ColumnCheck::Column);
    return found != Checks.end() ? found->KeptAsText : 0;
}

FitChecks finiteFloats(const std::vector<Column>& columns)
{
    FitChecks checks;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].Type == ColumnType::Float) {
            checks.add(i, {FitRule::Finite});
        }
    }
    return checks;
}

}  // namespace kd_lib::exchange::detail
