#include "appendliterals.h"

#include <kd_lib/blanks.h>
#include <kd_lib/replace.h>
#include <kd_lib/text.h>

namespace kd_lib::detail {

namespace {

constexpr char apostrophe = '\'';
constexpr char backquote = '`';
constexpr std::string_view nullLiteral = "NULL";

constexpr std::size_t compactDateLength = 8;
constexpr std::size_t compactTimeLength = 6;

/// Writes a compact date or time as three pieces with `separator` between them. A piece that starts after the end
/// throws std::out_of_range.
inline void putPieces(TextWriter& sql, std::string_view text, std::size_t firstLength, char separator)
{
    sql.put(text.substr(0, firstLength));
    sql.put(separator);
    sql.put(text.substr(firstLength, 2));
    sql.put(separator);
    sql.put(text.substr(firstLength + 2, 2));
}

inline void putDate(TextWriter& sql, std::string_view date)
{
    sql.put(apostrophe);
    if (date.size() <= compactDateLength) {
        putPieces(sql, date, 4, '-');
    } else {
        sql.put(date);
    }
    sql.put(apostrophe);
}

inline void putTime(TextWriter& sql, std::string_view time)
{
    // Deliberate: no quote before it, unlike a date.
    if (time.size() <= compactTimeLength) {
        putPieces(sql, time, 2, ':');
    } else {
        sql.put(time);
    }
    sql.put(apostrophe);
}

inline void putTimestamp(TextWriter& sql, std::string_view timestamp)
{
    sql.put(apostrophe);
    sql.put(timestamp);
    sql.put(apostrophe);
}

char* copyWithoutQuotes(char* to, std::string_view text)
{
    return copyReplacing(to, text, apostrophe, backquote);
}

inline void putText(TextWriter& sql, std::string_view text)
{
    if (text.empty()) {
        sql.put(nullLiteral);
        return;
    }
    sql.put(apostrophe);
    sql.put(text, copyWithoutQuotes);
    sql.put(apostrophe);
}

/// The trimmed value of a number, a date or a time; an empty one is NULL.
inline void putTrimmed(TextWriter& sql, FIELD_TYPE type, std::string_view trimmed)
{
    if (trimmed.empty()) {
        sql.put(nullLiteral);
        return;
    }
    switch (type) {
    case DATE_TYPE:
        return putDate(sql, trimmed);
    case TIME_TYPE:
        return putTime(sql, trimmed);
    case TIMESTAMP_TYPE:
        return putTimestamp(sql, trimmed);
    default:
        return sql.put(trimmed);
    }
}

/// The most bytes that a literal with its comma needs.
std::size_t literalRoom(const TableField& field)
{
    constexpr std::size_t quotesAndSeparators = 5;
    return field.Value.size() + quotesAndSeparators;
}

inline void putLiteral(TextWriter& sql, const TableField& field)
{
    const std::string_view value = field.Value;
    switch (field.Type) {
    case BOOLEAN_TYPE:
        return sql.put(stringToBool(field.Value) ? '1' : '0');
    case DECIMAL_TYPE:
    case FLOAT_TYPE:
    case SMALLINT_TYPE:
    case INTEGER_TYPE:
    case BIGINT_TYPE:
    case DATE_TYPE:
    case TIME_TYPE:
    case TIMESTAMP_TYPE:
        return putTrimmed(sql, field.Type, allTrimView(value));
    case CHAR_TYPE:
    case VARCHAR_TYPE:
    case TEXT_TYPE:
        return putText(sql, rightTrimView(value));
    default:
        return sql.put(value);
    }
}

}  // namespace

void appendLiterals(TextBuffer& sql, std::span<TableField* const> fields)
{
    TextWriter writer(sql, 0);
    for (const TableField* field : fields) {
        writer.reserve(literalRoom(*field));
        putLiteral(writer, *field);
        writer.put(',');
    }
    if (!fields.empty()) {
        writer.dropLast();
    }
}

}  // namespace kd_lib::detail
