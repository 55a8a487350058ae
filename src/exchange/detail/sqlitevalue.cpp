#include "sqlitevalue.h"

#include <array>
#include <charconv>

namespace kd_lib::exchange::detail {

namespace {

/// Powers of ten that a double holds exactly.
constexpr std::array<double, 23> powersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                                1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

/// Whole numbers of at most this many digits are exact in a double, and fit in 64 bits.
constexpr std::size_t exactDigits = 15;

}  // namespace

std::size_t writeMoment(CellKind kind, const Timestamp& moment, char* to)
{
    const char* const end = kind == CellKind::Date   ? putDate(to, moment.Day)
                            : kind == CellKind::Time ? putTime(to, moment.Milliseconds)
                                                     : putTimestamp(to, moment, ' ');
    return static_cast<std::size_t>(end - to);
}

double realOf(std::string_view digits)
{
    if (digits.size() <= exactDigits) {
        // Both numbers are exact, so their quotient is the double nearest to the true value.
        std::uint64_t whole = 0;
        std::size_t decimals = 0;
        bool pointSeen = false;
        for (const char c : digits) {
            if (c == '.') {
                pointSeen = true;
            } else if (c != '-') {
                whole = whole * 10 + static_cast<unsigned>(c - '0');
                decimals += pointSeen ? 1 : 0;
            }
        }
        const double value = static_cast<double>(whole) / powersOfTen[decimals];
        return digits.front() == '-' ? -value : value;
    }
    double value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

std::int64_t wholeOf(std::string_view digits)
{
    std::int64_t value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

}  // namespace kd_lib::exchange::detail
