#include "binding.h"

#include <kd_lib/text.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <system_error>

namespace kd_tool {

namespace {

/// So many digits fit any int, and so many survive in a double.
constexpr int intDigits = 9;
constexpr int doubleDigits = 15;

constexpr std::size_t dateDigits = 8;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// What a text looks like as a number: an optional minus sign, digits, and at most one point.
struct NumberShape {
    bool Plain = false;   ///< it is of that form
    bool Point = false;   ///< it has a point
    int Significant = 0;  ///< digits from the first one that is not 0

    explicit NumberShape(std::string_view text)
    {
        text.remove_prefix(text.front() == '-' ? 1 : 0);
        bool digits = false;
        for (const char c : text) {
            if (isDigit(c)) {
                digits = true;
                Significant += Significant > 0 || c != '0' ? 1 : 0;
            } else if (c == '.' && !Point) {
                Point = true;
            } else {
                return;
            }
        }
        Plain = digits;
    }
};

/// SQLite's whole numbers have 64 bits.
bool isWholeNumber(std::string_view text)
{
    std::int64_t number = 0;
    return std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc();
}

template <class Number>
Number parsed(std::string_view text)
{
    Number number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

std::string declaredType(const kd_lib::TableField& field)
{
    const std::string length = std::to_string(field.Length);
    switch (field.Type) {
    case kd_lib::CHAR_TYPE:
    case kd_lib::VARCHAR_TYPE:
        return "char(" + length + ')';
    case kd_lib::INTEGER_TYPE:
    case kd_lib::DECIMAL_TYPE:
        return field.Decimals == 0 ? "integer" : "decimal(" + length + ',' + std::to_string(field.Decimals) + ')';
    case kd_lib::FLOAT_TYPE:
        return "float";
    case kd_lib::BOOLEAN_TYPE:
        return "boolean";
    case kd_lib::DATE_TYPE:
        // "date" alone would let SQLite turn a text of digits into a number.
        return "date text";
    default:
        return "text";
    }
}

}  // namespace

std::string quotedName(const std::string& name)
{
    // Doubled, so that what the library makes of them is a quote character inside the name.
    std::string safe;
    for (const char c : name) {
        safe.append(c == '`' ? 2 : 1, c);
    }
    return kd_lib::inQuotes(safe, '"');
}

Binding::Binding(const kd_lib::TableFields& fields) : Fields(fields), Dates(fields.size())
{
    for (const kd_lib::TableField& field : fields) {
        Kinds.push_back(kindOf(field));
    }
}

Binding::Kind Binding::kindOf(const kd_lib::TableField& field)
{
    switch (field.Type) {
    case kd_lib::INTEGER_TYPE:
    case kd_lib::DECIMAL_TYPE:
        return Kind::Number;
    case kd_lib::FLOAT_TYPE:
        return Kind::Float;
    case kd_lib::BOOLEAN_TYPE:
        return Kind::Boolean;
    case kd_lib::DATE_TYPE:
        return Kind::Date;
    default:
        return Kind::Text;
    }
}

std::string Binding::createTable(const std::string& table) const
{
    std::string sql = "CREATE TABLE " + quotedName(table);
    const char* separator = " (";
    for (const kd_lib::TableField& field : Fields) {
        sql += separator + quotedName(field.Name) + ' ' + declaredType(field);
        separator = ", ";
    }
    return sql + ")";
}

std::string Binding::insert(const std::string& table) const
{
    std::string sql = "INSERT INTO " + quotedName(table) + " VALUES (?";
    for (std::size_t i = 1; i < Fields.size(); ++i) {
        sql += ",?";
    }
    return sql + ")";
}

bool Binding::bindRecord(kd_lib::SQLite3& database)
{
    int index = 0;
    for (const Kind kind : Kinds) {
        const std::string& value = Fields.List[static_cast<std::size_t>(index)]->Value;
        ++index;
        if (!bindValue(database, index, kind, value)) {
            return false;
        }
    }
    return true;
}

bool Binding::bindValue(kd_lib::SQLite3& database, int index, Kind kind, const std::string& value)
{
    if (kind == Kind::Text) {
        return value.empty() ? database.bindNULL(index) : database.bindKept(index, value);
    }
    const std::string_view trimmed = kd_lib::allTrimView(value);
    if (trimmed.empty()) {
        return database.bindNULL(index);
    }
    switch (kind) {
    case Kind::Boolean:
        return bindBoolean(database, index, trimmed.front());
    case Kind::Date:
        return bindDate(database, index, trimmed);
    default:
        return bindNumber(database, index, kind, trimmed);
    }
}

bool Binding::bindNumber(kd_lib::SQLite3& database, int index, Kind kind, std::string_view value)
{
    const NumberShape shape(value);
    if (shape.Plain && !shape.Point && shape.Significant <= intDigits) {
        return database.bind(index, parsed<int>(value));
    }
    if (shape.Plain && shape.Point && shape.Significant <= doubleDigits) {
        return database.bind(index, parsed<double>(value));
    }
    // SQLite makes a number of the text where it can: exactly of a whole one, else to 15 digits.
    const bool exact = !shape.Point && kind == Kind::Number && isWholeNumber(value);
    Rounded += shape.Plain && shape.Significant > doubleDigits && !exact ? 1U : 0U;
    return database.bindKept(index, value);
}

bool Binding::bindBoolean(kd_lib::SQLite3& database, int index, char letter)
{
    switch (letter) {
    case 'T':
    case 't':
    case 'Y':
    case 'y':
        return database.bind(index, 1);
    case 'F':
    case 'f':
    case 'N':
    case 'n':
        return database.bind(index, 0);
    default:
        return database.bindNULL(index);
    }
}

bool Binding::bindDate(kd_lib::SQLite3& database, int index, std::string_view value)
{
    if (value.size() != dateDigits || !std::all_of(value.begin(), value.end(), isDigit)) {
        return database.bindKept(index, value);
    }
    std::string& date = Dates[static_cast<std::size_t>(index - 1)];
    date.assign(value.substr(0, 4)).append(1, '-').append(value.substr(4, 2)).append(1, '-').append(value.substr(6));
    return database.bindKept(index, date);
}

}  // namespace kd_tool
