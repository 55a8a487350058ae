#include "digits.h"

#include "scan.h"

#include <algorithm>

namespace kd_lib::exchange::detail {

namespace {

// Well within the range of a double that is not denormal.
constexpr std::size_t mostDigitsBefore = 300;
constexpr std::size_t mostZerosAfter = 290;

constexpr std::size_t nowhere = std::string_view::npos;

}  // namespace

DigitCounts countDigits(std::string_view number)
{
    if (number.starts_with('-')) {
        number.remove_prefix(1);
    }
    const std::size_t first = number.find_first_not_of("0.");
    if (first == nowhere) {
        return {0, 0, 0, 0};
    }
    const std::size_t point = std::min(number.find('.'), number.size());
    const std::size_t last = number.find_last_not_of("0.");
    DigitCounts counts = {};
    counts.Before = first < point ? point - first : 0;
    counts.After = last > point ? last - point : 0;
    counts.Significant = last - first + 1 - (first < point && point < last ? 1 : 0);
    counts.ZerosAfter = first > point ? first - point - 1 : 0;
    return counts;
}

bool takeZeroDecimals(std::string_view& number)
{
    const std::size_t point = number.find('.');
    if (point == nowhere) {
        return true;
    }
    if (number.find_first_not_of('0', point + 1) != nowhere) {
        return false;
    }
    number = number.substr(0, point);
    if (number == "-0") {
        number.remove_prefix(1);
    }
    return true;
}

bool isExactAsDouble(std::string_view number)
{
    if (number.size() <= digitsOfDouble) {
        return true;
    }
    const DigitCounts counts = countDigits(number);
    return counts.Significant <= digitsOfDouble && counts.Before <= mostDigitsBefore &&
           counts.ZerosAfter <= mostZerosAfter;
}

SqliteForm sqliteFormOf(std::string_view number)
{
    const bool whole = !containsByte(number, '.');
    if (number.size() <= digitsOfDouble) {
        return whole ? SqliteForm::Integer : SqliteForm::Real;
    }
    if (whole) {
        return fits<std::int64_t>(number) ? SqliteForm::Integer : SqliteForm::Text;
    }
    return isExactAsDouble(number) ? SqliteForm::Real : SqliteForm::Text;
}

}  // namespace kd_lib::exchange::detail
