#include "fitcheck.h"

#include "digits.h"
#include "scan.h"
#include "unicode.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kd_lib::exchange::detail {

namespace {

constexpr std::size_t digitsOfPostgreSqlBeforePoint = 131072;
constexpr std::size_t digitsOfPostgreSqlAfterPoint = 16383;

/// What a number with decimals has before them, at the least.
constexpr std::size_t digitAndPoint = 2;

constexpr const char* tooLong = "longer than the column";
constexpr const char* zeroByte = "a zero byte in a text";
constexpr const char* notWhole = "a column of whole numbers does not hold decimals";
constexpr const char* tooLarge = "outside the range of the column";
constexpr const char* tooManyDigits = "more digits than the column holds";
constexpr const char* noNan = "the target has no NaN";
constexpr const char* noInfinity = "the target has no infinity";

const char* againstCharacters(std::string_view text, std::size_t limit)
{
    return text.size() > limit && countCharacters(text) > limit ? tooLong : nullptr;
}

const char* againstZeroByte(std::string_view text, std::size_t limit)
{
    if (containsByte(text, '\0')) {
        return zeroByte;
    }
    return limit != 0 ? againstCharacters(text, limit) : nullptr;
}

template <class Integer>
const char* againstWhole(std::string_view& digits)
{
    constexpr std::size_t alwaysFits = std::numeric_limits<Integer>::digits10;
    if (containsByte(digits, '.') && !takeZeroDecimals(digits)) {
        return notWhole;
    }
    return digits.size() <= alwaysFits || fits<Integer>(digits) ? nullptr : tooLarge;
}

const char* againstDigits(std::string_view digits, std::size_t before, std::size_t after)
{
    const DigitCounts counts = countDigits(digits);
    return counts.Before <= before && counts.After <= after ? nullptr : tooManyDigits;
}

const char* againstFinite(double value, bool infinities)
{
    if (std::isnan(value)) {
        return noNan;
    }
    return infinities || std::isfinite(value) ? nullptr : noInfinity;
}

}  // namespace

void FitChecks::add(std::size_t column, FitCheck check)
{
    if (check.Rule != FitRule::Everything) {
        Checks.push_back({column, check});
    }
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
        if (cell.Text.size() <= limits.Limit && cell.Text.size() <= limits.Decimals + digitAndPoint) {
            return nullptr;
        }
        return againstDigits(cell.Text, limits.Limit, limits.Decimals);
    case FitRule::PostgreSqlNumeric:
        if (cell.Text.size() <= digitsOfPostgreSqlAfterPoint) {
            return nullptr;
        }
        return againstDigits(cell.Text, digitsOfPostgreSqlBeforePoint, digitsOfPostgreSqlAfterPoint);
    case FitRule::ExactAsDouble:
        return isExactAsDouble(cell.Text) ? nullptr : tooManyDigits;
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

void FitChecks::apply(Record& record)
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
