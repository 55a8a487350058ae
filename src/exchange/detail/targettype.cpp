#include "targettype.h"

#include "digits.h"

#include <algorithm>

namespace kd_lib::exchange::detail {

namespace {

constexpr std::uint32_t digitsOfInteger = 9;      // any 9 digits fit in 32 bits
constexpr std::uint32_t digitsOfBigInteger = 18;  // any 18 digits fit in 64 bits

constexpr std::uint32_t mySqlDigits = 65;
constexpr std::uint32_t mySqlDecimals = 30;

TargetType wholeType(const char* word, FitRule rule)
{
    return {word, {rule}};
}

/// decimal(digits,decimals)
TargetType decimalType(std::uint32_t digits, std::uint32_t decimals)
{
    std::string text = "decimal(" + std::to_string(digits);
    text += decimals != 0 ? ',' + std::to_string(decimals) + ')' : ")";
    return {std::move(text), {FitRule::Decimal, digits - decimals, decimals}};
}

/// The smallest decimal that holds every number of `width` characters, if MySQL has one.
TargetType mySqlNumber(std::uint32_t width, bool decimals)
{
    if (width == 0) {
        return decimalType(mySqlDigits, mySqlDecimals);
    }
    if (!decimals) {
        return decimalType(std::min(width, mySqlDigits), 0);
    }
    const std::uint32_t after = std::min(width - 1, mySqlDecimals);
    return decimalType(std::min(width, mySqlDigits - after) + after, after);
}

TargetType sqliteNumber(const Column& column)
{
    if (column.Decimals == 0 || column.Width == 0 || column.Width > digitsOfDouble) {
        return {"", {FitRule::DoubleOrText}};
    }
    return {"numeric", {FitRule::ExactAsDouble}};
}

TargetType numberType(const Dialect& dialect, const Column& column)
{
    if (column.Decimals == 0 && column.Width != 0 && column.Width <= digitsOfBigInteger) {
        // SQLite's integers have 64 bits, whatever the name of their type.
        return column.Width <= digitsOfInteger && dialect.Is != Engine::Sqlite
                   ? wholeType(dialect.Types.Integer, FitRule::Whole32)
                   : wholeType(dialect.Types.BigInteger, FitRule::Whole64);
    }
    switch (dialect.Is) {
    case Engine::Sqlite:
        return sqliteNumber(column);
    case Engine::PostgreSql:
        return {"numeric", {FitRule::PostgreSqlNumeric}};
    case Engine::MySql:
        break;
    }
    return mySqlNumber(column.Width, column.Decimals != 0);
}

TargetType textType(const Dialect& dialect, std::uint32_t width)
{
    if (width == 0 || width > dialect.VarcharCharacters) {
        return longTextType(dialect);
    }
    TargetType type = longTextType(dialect);
    type.Text = dialect.Types.Varchar + ('(' + std::to_string(width) + ')');
    type.Check.Rule = dialect.Is == Engine::PostgreSql ? FitRule::NoZeroByte : FitRule::Characters;
    type.Check.Limit = width;
    type.VarcharCharacters = width;
    return type;
}

TargetType floatType(const Dialect& dialect)
{
    switch (dialect.Is) {
    case Engine::Sqlite:
        return {dialect.Types.Float, {FitRule::NoNan}};
    case Engine::PostgreSql:
        return {dialect.Types.Float, {}};
    case Engine::MySql:
        break;
    }
    return {dialect.Types.Float, {FitRule::Finite}};
}

}  // namespace

TargetType longTextType(const Dialect& dialect)
{
    const FitRule rule = dialect.Is == Engine::PostgreSql ? FitRule::NoZeroByte : FitRule::Everything;
    return {dialect.Types.Text, {rule}};
}

TargetType targetType(const Dialect& dialect, const Column& column)
{
    const TypeWords& words = dialect.Types;
    switch (column.Type) {
    case ColumnType::Text:
        return textType(dialect, column.Width);
    case ColumnType::Number:
        return numberType(dialect, column);
    case ColumnType::Integer:
        return wholeType(words.Integer, FitRule::Whole32);
    case ColumnType::BigInteger:
        return wholeType(words.BigInteger, FitRule::Whole64);
    case ColumnType::Currency:
        // 15 digits before the point and 4 after it always fit in numeric(19,4).
        return {words.Currency, {*words.Currency == '\0' ? FitRule::DoubleOrText : FitRule::Everything}};
    case ColumnType::Float:
        return floatType(dialect);
    case ColumnType::Boolean:
        return {words.Boolean, {}};
    case ColumnType::Date:
        return {words.Date, {}};
    case ColumnType::Time:
        return {words.Time, {}};
    case ColumnType::Timestamp:
        return {words.Timestamp, {}};
    case ColumnType::Bytes:
        return {words.Bytes, {}};
    }
    return longTextType(dialect);
}

}  // namespace kd_lib::exchange::detail
