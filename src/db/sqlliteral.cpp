#include <kd_lib/sqlliteral.h>

#include "detail/appendliterals.h"
#include "detail/bytes.h"
#include "detail/quotes.h"

namespace kd_lib {

namespace {

constexpr std::string_view nullLiteral = "NULL";

constexpr std::size_t compactDateLength = 8;
constexpr std::size_t compactTimeLength = 6;

/// Writes `length` bytes of `text` from the position `at`, or what is left of them. As with
/// std::string::substr, a piece that starts behind the end throws std::out_of_range.
inline char* writePiece(char* to, std::string_view text, std::size_t at, std::size_t length)
{
    if (text.size() >= at + length) {
        std::memcpy(to, text.data() + at, length);
        return to + length;
    }
    return detail::copyBytes(to, text.substr(at, length));
}

/// Writes a compact date or time as three pieces with `separator` between them. Inline, so that the sizes
/// of the pieces are known.
inline char* writePieces(char* to, std::string_view text, std::size_t firstLength, char separator)
{
    to = writePiece(to, text, 0, firstLength);
    *to++ = separator;
    to = writePiece(to, text, firstLength, 2);
    *to++ = separator;
    return writePiece(to, text, firstLength + 2, 2);
}

char* writeDate(char* to, std::string_view date)
{
    *to++ = detail::quote;
    to = date.size() <= compactDateLength ? writePieces(to, date, 4, '-') : detail::copyBytes(to, date);
    *to++ = detail::quote;
    return to;
}

char* writeTime(char* to, std::string_view time)
{
    // Deliberate: no quote in front, unlike a date.
    to = time.size() <= compactTimeLength ? writePieces(to, time, 2, ':') : detail::copyBytes(to, time);
    *to++ = detail::quote;
    return to;
}

char* writeTimestamp(char* to, std::string_view timestamp)
{
    *to++ = detail::quote;
    to = detail::copyBytes(to, timestamp);
    *to++ = detail::quote;
    return to;
}

char* writeText(char* to, std::string_view text)
{
    if (text.empty()) {
        return detail::copyBytes(to, nullLiteral);
    }
    *to++ = detail::quote;
    to = detail::copyTurningQuotes(to, text);
    *to++ = detail::quote;
    return to;
}

/// Writes the trimmed value of a number, a date or a time; of nothing it is NULL.
char* writeTrimmed(char* to, FIELD_TYPE type, std::string_view trimmed)
{
    if (trimmed.empty()) {
        return detail::copyBytes(to, nullLiteral);
    }
    switch (type) {
    case DATE_TYPE:
        return writeDate(to, trimmed);
    case TIME_TYPE:
        return writeTime(to, trimmed);
    case TIMESTAMP_TYPE:
        return writeTimestamp(to, trimmed);
    default:
        return detail::copyBytes(to, trimmed);
    }
}

/// The most bytes that a literal with its comma takes.
std::size_t literalRoom(const TableField& field)
{
    constexpr std::size_t quotesAndSeparators = 5;
    return field.Value.size() + quotesAndSeparators;
}

/// Writes the field's current value to `to` as a literal, and returns its end.
char* writeLiteral(char* to, const TableField& field)
{
    const std::string_view value = field.Value;
    switch (field.Type) {
    case BOOLEAN_TYPE:
        *to++ = stringToBool(field.Value) ? '1' : '0';
        return to;
    case DECIMAL_TYPE:
    case FLOAT_TYPE:
    case SMALLINT_TYPE:
    case INTEGER_TYPE:
    case BIGINT_TYPE:
    case DATE_TYPE:
    case TIME_TYPE:
    case TIMESTAMP_TYPE:
        return writeTrimmed(to, field.Type, allTrimView(value));
    case CHAR_TYPE:
    case VARCHAR_TYPE:
    case TEXT_TYPE:
        return writeText(to, rightTrimView(value));
    default:
        return detail::copyBytes(to, value);
    }
}

}  // namespace

std::string convertField2Sql(TableField field)
{
    std::string sql = field.Name + ' ' + getFieldTypeName(field.Type);
    if (field.Type == CHAR_TYPE || field.Type == VARCHAR_TYPE) {
        sql += '(' + std::to_string(field.Length) + ')';
    } else if (field.Type == DECIMAL_TYPE) {
        sql += '(' + std::to_string(field.Length) + ',' + std::to_string(field.Decimals) + ')';
    }
    return sql;
}

std::string convertValue2Sql(TableField field)
{
    TableField* const one = &field;
    detail::TextBuffer sql;
    detail::appendLiterals(sql, {&one, 1});
    return std::string(sql.text());
}

void detail::appendLiterals(TextBuffer& sql, std::span<TableField* const> fields)
{
    char* to = sql.room(0);
    for (const TableField* field : fields) {
        to = sql.roomFrom(to, literalRoom(*field));
        to = writeLiteral(to, *field);
        *to++ = ',';
    }
    // The last value has no comma behind it.
    sql.endAt(fields.empty() ? to : to - 1);
}

}  // namespace kd_lib
