// Texts as values of every type, and values as those of other types.

#include "exchange/detail/utf8.h"
#include "exchange/detail/values.h"
#include "support/checked_source.h"
#include "support/options.h"

#include <initializer_list>

using kd_lib::exchange::Cell;
using kd_lib::exchange::CellKind;
using kd_lib::exchange::ColumnType;
using namespace kd_lib::exchange::detail;

namespace {

constexpr ColumnType types[] = {ColumnType::Text,      ColumnType::Number, ColumnType::Integer, ColumnType::BigInteger,
                                ColumnType::Float,     ColumnType::Date,   ColumnType::Boolean, ColumnType::Time,
                                ColumnType::Timestamp, ColumnType::Bytes,  ColumnType::Currency};

void require(bool condition, const char* what)
{
    if (!condition) {
        kd_fuzz::finding(what);
    }
}

void check(const Converted& converted)
{
    const Cell& cell = converted.Value;
    require((cell.Kind == CellKind::Unreadable) == (converted.Problem != nullptr), "unreadable without a reason");
    require(cell.Kind != CellKind::Number || kd_fuzz::isNormalNumber(cell.Text), "a number that is not in normal form");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::string scratch;
    std::string other;
    for (const ColumnType type : types) {
        const Converted first = valueOf(type, text, scratch);
        check(first);
        require(scratch.size() <= text.size() + 1100, "a scratch that is too large");
        if (first.Problem != nullptr) {
            continue;
        }
        for (const ColumnType to : types) {
            check(convert(first.Value, to, other));
        }
    }
    const Converted number = numberOf(text, scratch);
    if (number.Value.Kind == CellKind::Number) {
        const std::string digits(number.Value.Text);
        require(numberOf(digits, scratch).Value.Text == digits, "a number in normal form that changes");
    }
    check(logicalOf(text));
    check(eightDigitDateOf(text));
    return 0;
}
