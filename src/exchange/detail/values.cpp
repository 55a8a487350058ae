#include "values.h"

#include "digits.h"
#include "lettercase.h"
#include "moments.h"
#include "utf8.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <optional>

namespace kd_lib::exchange::detail {

namespace {

constexpr const char* notANumber = "not a number";
constexpr const char* overflow = "asterisks in place of a number that was too wide";
constexpr const char* notWhole = "not a whole number";
constexpr const char* tooLarge = "the number does not fit in 64 bits";
constexpr const char* exponentTooLarge = "the exponent is too large";
constexpr const char* outsideDouble = "the number is outside the range of a double";
constexpr const char* notABoolean = "not a boolean";
constexpr const char* notADate = "not a date";
constexpr const char* notATime = "not a time";
constexpr const char* notATimestamp = "not a timestamp";
constexpr const char* noConversion = "a value of another type";

constexpr int largestExponent = 1000;

bool isPadding(char c)
{
    return c == ' ' || c == '\0';
}

/// The pieces of a number in its text.
struct NumberPieces {
    bool Negative = false;
    std::string_view Whole;  // without zeros before its last digit; may be empty
    std::string_view Decimals;
    int Exponent = 0;  // up to one more than `largestExponent`

    bool isZero() const
    {
        constexpr std::size_t none = std::string_view::npos;
        return Whole.find_first_not_of('0') == none && Decimals.find_first_not_of('0') == none;
    }
};

bool takeSign(std::string_view& rest)
{
    if (!rest.empty() && (rest[0] == '-' || rest[0] == '+')) {
        rest.remove_prefix(1);
        return true;
    }
    return false;
}

/// Takes an exponent, if there is one; false if it has no digits.
bool takeExponent(std::string_view& rest, int& exponent)
{
    if (rest.empty() || lowerLetter(rest[0]) != 'e') {
        return true;
    }
    rest.remove_prefix(1);
    const bool negative = !rest.empty() && rest[0] == '-';
    takeSign(rest);
    const std::string_view digits = takeDigits(rest);
    for (const char c : digits) {
        exponent = std::min(exponent * 10 + (c - '0'), largestExponent + 1);
    }
    exponent = negative ? -exponent : exponent;
    return !digits.empty();
}

std::optional<NumberPieces> piecesOf(std::string_view text)
{
    NumberPieces pieces;
    std::string_view rest = text;
    pieces.Negative = rest[0] == '-';
    takeSign(rest);
    pieces.Whole = takeDigits(rest);
    bool hasDigits = !pieces.Whole.empty();
    if (!rest.empty() && rest[0] == '.') {
        rest.remove_prefix(1);
        pieces.Decimals = takeDigits(rest);
        hasDigits = hasDigits || !pieces.Decimals.empty();
    }
    if (!hasDigits || !takeExponent(rest, pieces.Exponent) || !rest.empty()) {
        return std::nullopt;
    }
    if (!pieces.Whole.empty()) {
        pieces.Whole.remove_prefix(std::min(pieces.Whole.find_first_not_of('0'), pieces.Whole.size() - 1));
    }
    pieces.Negative = pieces.Negative && !pieces.isZero();
    return pieces;
}

/// The number as a part of its text, if the text has the normal form.
std::optional<std::string_view> viewOf(const NumberPieces& number, std::string_view text)
{
    if (number.Exponent != 0 || number.Whole.empty()) {
        return std::nullopt;
    }
    const char* first = number.Whole.data();
    if (number.Negative && --first != text.data()) {
        return std::nullopt;  // zeros between the sign and the digits
    }
    const std::string_view last = number.Decimals.empty() ? number.Whole : number.Decimals;
    return std::string_view(first, static_cast<std::size_t>(last.data() + last.size() - first));
}

/// Writes the number with its point moved by its exponent.
std::string_view write(const NumberPieces& number, std::string& scratch)
{
    scratch.assign(number.Whole);
    scratch.append(number.Decimals);
    std::ptrdiff_t moved = std::ssize(number.Whole) + number.Exponent;
    if (moved < 0) {
        scratch.insert(0, static_cast<std::size_t>(-moved), '0');
        moved = 0;
    }
    auto point = static_cast<std::size_t>(moved);
    if (point > scratch.size()) {
        scratch.append(point - scratch.size(), '0');
    }
    const std::size_t zeros = std::min(scratch.find_first_not_of('0'), point);
    scratch.erase(0, zeros);
    point -= zeros;
    if (point < scratch.size()) {
        scratch.insert(point, 1, '.');
    }
    if (point == 0) {
        scratch.insert(0, 1, '0');
    }
    if (number.Negative) {
        scratch.insert(0, 1, '-');
    }
    return scratch;
}

bool isOneOf(std::string_view text, std::initializer_list<std::string_view> words)
{
    return std::ranges::any_of(words, [text](std::string_view word) { return equalWithoutCase(text, word); });
}

/// The whole number of `digits` in normal form, which may have decimals of zero.
Converted convertWhole(std::string_view digits)
{
    const std::size_t point = digits.find('.');
    if (point != std::string_view::npos) {
        if (digits.find_first_not_of('0', point + 1) != std::string_view::npos) {
            return Converted::failed(notWhole);
        }
        digits = digits.substr(0, point);
    }
    std::int64_t value = 0;
    if (std::from_chars(digits.data(), digits.data() + digits.size(), value).ec != std::errc()) {
        return Converted::failed(tooLarge);
    }
    return Cell::number(digits);
}

Converted doubleOf(std::string_view digits)
{
    double value = 0;
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, value);
    if (error == std::errc::result_out_of_range) {
        return Converted::failed(outsideDouble);
    }
    return error == std::errc() && stop == end ? Converted(Cell::real(value)) : Converted::failed(notANumber);
}

/// The shortest digits that convert back to the double, in the given form.
std::string_view writeDouble(double value, std::string& scratch, std::chars_format form)
{
    constexpr std::size_t longest = 512;
    scratch.resize(longest);
    const auto [end, error] = std::to_chars(scratch.data(), scratch.data() + longest, value, form);
    scratch.resize(static_cast<std::size_t>(end - scratch.data()));
    return scratch;
}

/// As people write them: 1000000 and 0.001, but 1e+300.
std::string_view textOfDouble(double value, std::string& scratch)
{
    if (std::isnan(value)) {
        return "NaN";
    }
    if (std::isinf(value)) {
        return value < 0 ? "-Infinity" : "Infinity";
    }
    const double size = std::abs(value);
    const bool plain = size == 0 || (size >= 1e-7 && size < 1e21);
    return writeDouble(value, scratch, plain ? std::chars_format::fixed : std::chars_format::scientific);
}

template <class Put>
std::string_view writeMoment(std::string& scratch, Put put)
{
    scratch.resize(timestampSize);
    scratch.resize(static_cast<std::size_t>(put(scratch.data()) - scratch.data()));
    return scratch;
}

/// The text of a cell that has a value.
std::string_view textOf(const Cell& cell, std::string& scratch)
{
    switch (cell.Kind) {
    case CellKind::Float:
        return textOfDouble(cell.Float, scratch);
    case CellKind::Boolean:
        return cell.Boolean ? "true" : "false";
    case CellKind::Date:
        return writeMoment(scratch, [&](char* to) { return putDate(to, cell.Moment.Day); });
    case CellKind::Time:
        return writeMoment(scratch, [&](char* to) { return putTime(to, cell.Moment.Milliseconds); });
    case CellKind::Timestamp:
        return writeMoment(scratch, [&](char* to) { return putTimestamp(to, cell.Moment, 'T'); });
    default:
        return cell.Text;
    }
}

Converted convertFloat(double value, ColumnType to, std::string& scratch)
{
    if (!std::isfinite(value)) {
        return Converted::failed(notANumber);
    }
    // Without an exponent the digits are in normal form, except the sign of zero, and are viewed in place.
    return valueOf(to, writeDouble(value, scratch, std::chars_format::fixed), scratch);
}

Converted convertTimestamp(const Timestamp& moment, ColumnType to)
{
    if (to == ColumnType::Date) {
        return moment.Milliseconds == 0 ? Converted(Cell::date(moment.Day))
                                        : Converted::failed("it has a time of the day");
    }
    return Converted::failed(noConversion);
}

bool isExact(ColumnType type)
{
    return type == ColumnType::Number || type == ColumnType::Currency || type == ColumnType::Integer ||
           type == ColumnType::BigInteger;
}

CellKind kindOf(ColumnType type)
{
    switch (type) {
    case ColumnType::Text:
        return CellKind::Text;
    case ColumnType::Float:
        return CellKind::Float;
    case ColumnType::Boolean:
        return CellKind::Boolean;
    case ColumnType::Date:
        return CellKind::Date;
    case ColumnType::Time:
        return CellKind::Time;
    case ColumnType::Timestamp:
        return CellKind::Timestamp;
    case ColumnType::Bytes:
        return CellKind::Bytes;
    default:
        return CellKind::Number;
    }
}

bool isWhole(ColumnType type)
{
    return type == ColumnType::Integer || type == ColumnType::BigInteger;
}

}  // namespace

std::string_view withoutPadding(std::string_view text)
{
    while (!text.empty() && isPadding(text.back())) {
        text.remove_suffix(1);
    }
    while (!text.empty() && isPadding(text.front())) {
        text.remove_prefix(1);
    }
    return text;
}

Converted numberOf(std::string_view text, std::string& scratch)
{
    text = withoutPadding(text);
    if (text.empty()) {
        return Cell::null();
    }
    const std::optional<NumberPieces> pieces = piecesOf(text);
    if (!pieces) {
        return Converted::failed(text.find_first_not_of('*') == std::string_view::npos ? overflow : notANumber);
    }
    if (std::abs(pieces->Exponent) > largestExponent) {
        return Converted::failed(exponentTooLarge);
    }
    const std::optional<std::string_view> view = viewOf(*pieces, text);
    return Cell::number(view ? *view : write(*pieces, scratch));
}

Converted wholeNumberOf(std::string_view text, std::string& scratch)
{
    const Converted number = numberOf(text, scratch);
    return number.Value.Kind == CellKind::Number ? convertWhole(number.Value.Text) : number;
}

Converted floatOf(std::string_view text)
{
    text = withoutPadding(text);
    if (text.empty()) {
        return Cell::null();
    }
    std::string_view unsignedText = text;
    const bool negative = text[0] == '-';
    takeSign(unsignedText);
    if (unsignedText.empty() ||
        (!isDigit(unsignedText[0]) && unsignedText[0] != '.' && !isOneOf(unsignedText, {"nan", "inf", "infinity"}))) {
        return Converted::failed(notANumber);
    }
    return doubleOf(negative ? text : unsignedText);
}

Converted logicalOf(std::string_view text)
{
    text = withoutPadding(text);
    if (text.empty() || text == "?") {
        return Cell::null();
    }
    const char letter = text.size() == 1 ? lowerLetter(text[0]) : '\0';
    if (letter == 't' || letter == 'y') {
        return Cell::boolean(true);
    }
    return letter == 'f' || letter == 'n' ? Converted(Cell::boolean(false)) : Converted::failed(notABoolean);
}

Converted booleanOf(std::string_view text)
{
    text = withoutPadding(text);
    if (isOneOf(text, {"true", "yes", "1"})) {
        return Cell::boolean(true);
    }
    return isOneOf(text, {"false", "no", "0"}) ? Converted(Cell::boolean(false)) : logicalOf(text);
}

Converted eightDigitDateOf(std::string_view text)
{
    text = withoutPadding(text);
    if (text.empty() || text == "00000000") {
        return Cell::null();
    }
    const std::optional<Date> day = parseEightDigits(text);
    return day ? Converted(Cell::date(*day)) : Converted::failed(notADate);
}

Converted dateOf(std::string_view text)
{
    text = withoutPadding(text);
    const std::optional<Date> day = parseDate(text);
    return day ? Converted(Cell::date(*day)) : eightDigitDateOf(text);
}

Converted timeOf(std::string_view text)
{
    text = withoutPadding(text);
    const std::optional<std::uint32_t> time = parseTime(text);
    return time ? Converted(Cell::time(*time)) : text.empty() ? Converted(Cell::null()) : Converted::failed(notATime);
}

Converted timestampOf(std::string_view text)
{
    text = withoutPadding(text);
    if (text.empty()) {
        return Cell::null();
    }
    const std::optional<Timestamp> moment = parseTimestamp(text);
    return moment ? Converted(Cell::timestamp(*moment)) : Converted::failed(notATimestamp);
}

Converted valueOf(ColumnType type, std::string_view text, std::string& scratch)
{
    switch (type) {
    case ColumnType::Text:
        return Cell::text(text);
    case ColumnType::Number:
    case ColumnType::Currency:
        return numberOf(text, scratch);
    case ColumnType::Integer:
    case ColumnType::BigInteger:
        return wholeNumberOf(text, scratch);
    case ColumnType::Float:
        return floatOf(text);
    case ColumnType::Boolean:
        return booleanOf(text);
    case ColumnType::Date:
        return dateOf(text);
    case ColumnType::Time:
        return timeOf(text);
    case ColumnType::Timestamp:
        return timestampOf(text);
    case ColumnType::Bytes:
        break;
    }
    return Cell::bytes(text);
}

Converted convert(const Cell& cell, ColumnType to, std::string& scratch)
{
    if (cell.Kind == CellKind::Null || cell.Kind == CellKind::Unreadable) {
        return cell;
    }
    if (cell.Kind == kindOf(to)) {
        return isWhole(to) ? convertWhole(cell.Text) : Converted(cell);
    }
    if (to == ColumnType::Text || to == ColumnType::Bytes) {
        const std::string_view text = textOf(cell, scratch);
        if (to == ColumnType::Text && cell.Kind == CellKind::Bytes && validUtf8Length(text) != text.size()) {
            return Converted::failed("the bytes are not UTF-8");
        }
        return to == ColumnType::Text ? Cell::text(text) : Cell::bytes(text);
    }
    switch (cell.Kind) {
    case CellKind::Text:
    case CellKind::Number:
        return valueOf(to, cell.Text, scratch);
    case CellKind::Float:
        return isExact(to) ? convertFloat(cell.Float, to, scratch) : Converted::failed(noConversion);
    case CellKind::Boolean:
        return isExact(to) ? Cell::number(cell.Boolean ? "1" : "0") : Converted::failed(noConversion);
    case CellKind::Date:
        return to == ColumnType::Timestamp ? Cell::timestamp({cell.Moment.Day, 0}) : Converted::failed(noConversion);
    case CellKind::Timestamp:
        return convertTimestamp(cell.Moment, to);
    default:
        return Converted::failed(noConversion);
    }
}

}  // namespace kd_lib::exchange::detail
