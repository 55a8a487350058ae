#include "memvalues.h"

#include "../../formats/julianday.h"
#include "../../formats/numbers.h"
#include "values.h"

#include <bit>
#include <cmath>

namespace kd_lib::exchange::detail {

namespace {

constexpr const char* noSuchDay = "not a day of the calendar";
constexpr const char* notZeroOrOne = "neither 0 nor 1";

/// The day of a Julian day number; an empty date is 0.
Converted dayOf(double julian)
{
    if (julian == 0) {
        return Cell::null();
    }
    const bool inRange =
        julian >= static_cast<double>(formats::firstJulianDay) && julian <= static_cast<double>(formats::lastJulianDay);
    if (!inRange || std::trunc(julian) != julian) {
        return Converted::failed(noSuchDay);
    }
    const formats::CalendarDay day = formats::calendarDay(static_cast<std::int64_t>(julian));
    return Cell::date({static_cast<std::int16_t>(day.Year), static_cast<std::uint8_t>(day.Month),
                       static_cast<std::uint8_t>(day.Day)});
}

Converted valueOfBytes(char type, std::string_view bytes)
{
    if (type == 'L') {
        return bytes[0] == 0 || bytes[0] == 1 ? Converted(Cell::boolean(bytes[0] == 1))
                                              : Converted::failed(notZeroOrOne);
    }
    const double number = std::bit_cast<double>(formats::little64(bytes.data()));
    return type == 'D' ? dayOf(number) : Cell::real(number);
}

Converted valueOfText(char type, std::string_view text, std::string& scratch)
{
    return type == 'L' ? logicalOf(text) : type == 'D' ? eightDigitDateOf(text) : numberOf(text, scratch);
}

}  // namespace

const char* memTypeName(char type)
{
    switch (type) {
    case 'N':
        return "number";
    case 'D':
        return "date";
    case 'L':
        return "boolean";
    default:
        return "text";
    }
}

MemText textOfVariable(const MemReader& reader, std::string& scratch)
{
    const Converted value = reader.form() == MemForm::Text ? valueOfText(reader.type(), reader.value(), scratch)
                                                           : valueOfBytes(reader.type(), reader.value());
    if (value.Problem != nullptr || value.Value.Kind == CellKind::Null) {
        return {std::nullopt, value.Problem};
    }
    if (value.Value.Kind == CellKind::Number) {
        return {value.Value.Text, nullptr};
    }
    return {convert(value.Value, ColumnType::Text, scratch).Value.Text, nullptr};
}

}  // namespace kd_lib::exchange::detail
