#include <kd_lib/sqlliteral.h>

#include "appendliterals.h"
#include "bytes.h"

#include <algorithm>
#include <cstdint>

namespace kd_lib {

namespace {

constexpr std::string_view nullLiteral = "NULL";

constexpr std::size_t compactDateLength = 8;
constexpr std::size_t compactTimeLength = 6;

constexpr char quote = '\'';
constexpr char backquote = '`';

constexpr std::size_t wordSize = sizeof(std::uint64_t);

/// Whether one of the first eight bytes at `text` is a single quote.
bool holdsQuote(const char* text)
{
    constexpr std::uint64_t ones = 0x0101010101010101U;
    constexpr std::uint64_t highBits = ones * 0x80;
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, text, wordSize);
    const std::uint64_t zeroWhereQuote = bytes ^ (ones * quote);
    return ((zeroWhereQuote - ones) & ~zeroWhereQuote & highBits) != 0;
}

/// Copies eight bytes, their single quotes turned into backquotes.
void copyWordWithoutQuotes(char* to, const char* from)
{
    std::memcpy(to, from, wordSize);
    if (holdsQuote(from)) {
        std::replace(to, to + wordSize, quote, backquote);
    }
}

/// Copies `text`, its single quotes turned into backquotes, and returns the end of the copy.
char* copyWithoutQuotes(char* to, std::string_view text)
{
    const char* const from = text.data();
    if (text.size() < wordSize) {
        char word[wordSize] = {};
        copyFewBytes(word, from, text.size());
        if (holdsQuote(word)) {
            std::replace(word, word + wordSize, quote, backquote);
        }
        copyFewBytes(to, word, text.size());
        return to + text.size();
    }
    // The last eight bytes may go twice: the second copy is the same.
    const std::size_t last = text.size() - wordSize;
    for (std::size_t at = 0; at < last; at += wordSize) {
        copyWordWithoutQuotes(to + at, from + at);
    }
    copyWordWithoutQuotes(to + last, from + last);
    return to + text.size();
}

/// Writes three pieces of a compact date or time with `separator` between them. As with
/// std::string::substr, a piece that starts behind the end throws std::out_of_range.
char* writePieces(char* to, std::string_view text, std::size_t firstLength, char separator)
{
    to = copyBytes(to, text.substr(0, firstLength));
    *to++ = separator;
    to = copyBytes(to, text.substr(firstLength, 2));
    *to++ = separator;
    return copyBytes(to, text.substr(firstLength + 2, 2));
}

char* writeDate(char* to, std::string_view date)
{
    *to++ = quote;
    to = date.size() <= compactDateLength ? writePieces(to, date, 4, '-') : copyBytes(to, date);
    *to++ = quote;
    return to;
}

char* writeTime(char* to, std::string_view time)
{
    // Deliberate: no quote in front, unlike a date.
    to = time.size() <= compactTimeLength ? writePieces(to, time, 2, ':') : copyBytes(to, time);
    *to++ = quote;
    return to;
}

char* writeTimestamp(char* to, std::string_view timestamp)
{
    *to++ = quote;
    to = copyBytes(to, timestamp);
    *to++ = quote;
    return to;
}

char* writeText(char* to, std::string_view text)
{
    *to++ = quote;
    to = copyWithoutQuotes(to, text);
    *to++ = quote;
    return to;
}

/// Writes a value of a type that knows NULL: of blanks alone it is NULL, otherwise `write` takes it
/// without blanks at both ends.
template <class Write>
char* writeUnlessBlank(char* to, std::string_view value, Write write)
{
    const std::string_view trimmed = allTrimView(value);
    return trimmed.empty() ? copyBytes(to, nullLiteral) : write(to, trimmed);
}

/// The most bytes that `writeLiteral` writes for this field.
std::size_t literalRoom(const TableField& field)
{
    constexpr std::size_t quotesAndSeparators = 4;
    return field.Value.size() + quotesAndSeparators;
}

/// Writes the field's current value to `to` as a literal, and returns its end.
char* writeLiteral(char* to, const TableField& field)
{
    switch (field.Type) {
    case BOOLEAN_TYPE:
        *to++ = stringToBool(field.Value) ? '1' : '0';
        return to;
    case DECIMAL_TYPE:
    case FLOAT_TYPE:
    case SMALLINT_TYPE:
    case INTEGER_TYPE:
    case BIGINT_TYPE:
        return writeUnlessBlank(to, field.Value, copyBytes);
    case DATE_TYPE:
        return writeUnlessBlank(to, field.Value, writeDate);
    case TIME_TYPE:
        return writeUnlessBlank(to, field.Value, writeTime);
    case TIMESTAMP_TYPE:
        return writeUnlessBlank(to, field.Value, writeTimestamp);
    case CHAR_TYPE:
    case VARCHAR_TYPE:
    case TEXT_TYPE: {
        const std::string_view text = rightTrimView(field.Value);
        return text.empty() ? copyBytes(to, nullLiteral) : writeText(to, text);
    }
    default:
        return copyBytes(to, field.Value);
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
    std::string sql(literalRoom(field), ' ');
    const char* const end = writeLiteral(sql.data(), field);
    sql.resize(static_cast<std::size_t>(end - sql.data()));
    return sql;
}

void appendLiterals(TextBuffer& sql, const TableFields& fields)
{
    char* to = sql.room(0);
    for (const TableField* field : fields.List) {
        to = sql.roomFrom(to, literalRoom(*field) + 1);
        to = writeLiteral(to, *field);
        *to++ = ',';
    }
    // The last value has no comma behind it.
    sql.endAt(fields.List.empty() ? to : to - 1);
}

}  // namespace kd_lib
