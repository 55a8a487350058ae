// Rows as literals of SQL.
#include <kd_lib/exchange/rowtext.h>

#include "detail/binarytext.h"
#include "detail/cellform.h"
#include "detail/digits.h"
#include "detail/escape.h"

#include <bit>
#include <cstdint>
#include <string>
#include <unordered_set>

namespace kd_lib::exchange {

namespace {

constexpr char sqlQuote = '\'';

void writeQuote(OutputBlock& out)
{
    out.write(sqlQuote);
}

/// Quotes are doubled, all else is unchanged.
struct DoubledQuotes {
    static constexpr std::size_t Longest = 2;

    static detail::SixteenBytes marks(detail::SixteenBytes bytes)
    {
        return std::bit_cast<detail::SixteenBytes>(bytes == sqlQuote);
    }

    static std::uint32_t plainMarks(const detail::Lanes& lanes) { return lanes.equal(sqlQuote); }

    static char* put(char* to, char byte)
    {
        *to++ = byte;
        if (byte == sqlQuote) {
            *to++ = byte;
        }
        return to;
    }
};

/// Quotes are doubled; characters that have a backslash escape are written with it.
struct Backslashes {
    static constexpr std::size_t Longest = 2;

    static detail::SixteenBytes marks(detail::SixteenBytes bytes)
    {
        return std::bit_cast<detail::SixteenBytes>((bytes == sqlQuote) | (bytes == '\\') | (bytes == '\r') |
                                                   (bytes == 0));
    }

    static std::uint32_t plainMarks(const detail::Lanes& lanes) { return lanes.equal(sqlQuote) | lanes.equal('\\'); }

    static char* put(char* to, char byte)
    {
        const auto pair = [to](char first, char second) {
            to[0] = first;
            to[1] = second;
            return to + 2;
        };
        switch (byte) {
        case sqlQuote:
            return pair(sqlQuote, sqlQuote);
        case '\\':
            return pair('\\', '\\');
        case '\r':
            return pair('\\', 'r');
        case '\0':
            return pair('\\', '0');
        default:
            *to = byte;
            return to + 1;
        }
    }
};

template <class Way, bool Plain>
char* putQuoted(char* to, std::string_view text)
{
    *to++ = sqlQuote;
    to = detail::putShort<Way, Plain>(to, text);
    *to++ = sqlQuote;
    return to;
}

template <class Way>
void writeQuoted(std::string_view text, OutputBlock& out)
{
    writeQuote(out);
    detail::writeEscaped<Way>(text, out);
    writeQuote(out);
}

/// The literal of a blob in SQLite and MySQL.
void writeBlob(std::string_view bytes, OutputBlock& out)
{
    out.write("x'");
    detail::writeHex(bytes, out);
    writeQuote(out);
}

struct PostgreSqlForm : detail::CommonForm {
    static constexpr char Quote = sqlQuote;
    static constexpr char Between = ' ';
    static constexpr detail::ShortWord Null = "NULL";
    static constexpr detail::ShortWord True = "true";
    static constexpr detail::ShortWord False = "false";

    static constexpr std::size_t Longest = 2;

    template <bool Plain>
    static char* shortText(char* to, std::string_view text)
    {
        if (Plain || !detail::containsByte(text, '\r')) {
            return putQuoted<DoubledQuotes, Plain>(to, text);
        }
        *to++ = 'E';
        return putQuoted<Backslashes, Plain>(to, text);
    }

    static void longText(std::string_view text, OutputBlock& out)
    {
        if (!detail::containsByte(text, '\r')) {
            writeQuoted<DoubledQuotes>(text, out);
        } else {
            out.write('E');
            writeQuoted<Backslashes>(text, out);
        }
    }

    static void bytes(std::string_view bytes, OutputBlock& out)
    {
        out.write("'\\x");
        detail::writeHex(bytes, out);
        writeQuote(out);
    }

    /// In quotes: without them the number would be converted through numeric, which has no -0.
    static char* real(char* to, double value)
    {
        *to++ = sqlQuote;
        if (std::isfinite(value)) {
            to = detail::putReal(to, value);
        } else {
            const std::string_view word = std::isnan(value) ? "NaN" : value > 0 ? "Infinity" : "-Infinity";
            to = kd_lib::detail::copyBytes(to, word);
        }
        *to++ = sqlQuote;
        return to;
    }
};

struct MySqlForm : detail::CommonForm {
    static constexpr char Quote = sqlQuote;
    static constexpr char Between = ' ';
    static constexpr detail::ShortWord Null = "NULL";
    static constexpr detail::ShortWord True = "1";
    static constexpr detail::ShortWord False = "0";

    static constexpr std::size_t Longest = Backslashes::Longest;

    template <bool Plain>
    static char* shortText(char* to, std::string_view text)
    {
        return putQuoted<Backslashes, Plain>(to, text);
    }

    static void longText(std::string_view text, OutputBlock& out) { writeQuoted<Backslashes>(text, out); }
    static void bytes(std::string_view bytes, OutputBlock& out) { writeBlob(bytes, out); }

    /// Always with an exponent: without one the number would be a decimal first, which has no -0.
    static char* real(char* to, double value)
    {
        char* const end = detail::putReal(to, value);
        const bool exponent =
            std::string_view(to, static_cast<std::size_t>(end - to)).find('e') != std::string_view::npos;
        return exponent ? end : kd_lib::detail::copyBytes(end, "e0");
    }
};

/// SQLite's literals have no escapes. Characters that clients change, or that would end a text, are replaced by a word
/// that the text does not contain, and the database restores them. A chain of char(13)||... would be too deep for long
/// texts.
class SqliteText {
public:
    explicit SqliteText(std::string_view text) : Text(text) {}

    void write(OutputBlock& out) const
    {
        const bool returns = detail::containsByte(Text, '\r');
        const bool zeros = detail::containsByte(Text, '\0');
        const std::string returnWord = returns ? unusedWord("\\r") : "";
        const std::string zeroWord = zeros ? unusedWord("\\0") : "";
        out.write(returns && zeros ? "replace(replace(" : "replace(");
        writeQuote(out);
        writePieces(returnWord, zeroWord, out);
        writeQuote(out);
        putBack(zeroWord, "0", out);
        putBack(returnWord, "13", out);
    }

private:
    static void putBack(const std::string& word, const char* code, OutputBlock& out)
    {
        if (!word.empty()) {
            out.write(",'" + word + "',char(" + code + "))");
        }
    }

    /// `begin`, followed by a number if the text contains it. Its only backslash is at its beginning, so the word
    /// cannot arise at its borders with the text either.
    std::string unusedWord(const std::string& begin) const
    {
        std::size_t found = 0;
        for (std::size_t at = Text.find(begin); at != std::string_view::npos; at = Text.find(begin, at + 1)) {
            ++found;
        }
        if (found == 0) {
            return begin;
        }
        // There are more numbers of this many digits than places in the text.
        std::uint64_t number = 1;
        while (number <= found) {
            number *= 10;
        }
        const std::size_t digits = std::to_string(number).size();
        std::unordered_set<std::string_view> used;
        for (std::size_t at = Text.find(begin); at != std::string_view::npos; at = Text.find(begin, at + 1)) {
            used.insert(Text.substr(at + begin.size(), digits));
        }
        while (used.contains(std::to_string(number))) {
            ++number;
        }
        return begin + std::to_string(number);
    }

    void writePieces(const std::string& returnWord, const std::string& zeroWord, OutputBlock& out) const
    {
        std::string_view rest = Text;
        while (!rest.empty()) {
            const std::size_t end = rest.find_first_of(std::string_view("\r\0", 2));
            detail::writeEscaped<DoubledQuotes>(rest.substr(0, end), out);
            if (end == std::string_view::npos) {
                break;
            }
            out.write(rest[end] == '\r' ? returnWord : zeroWord);
            rest.remove_prefix(end + 1);
        }
    }

    std::string_view Text;
};

struct SqliteForm : detail::CommonForm {
    static constexpr char Quote = sqlQuote;
    static constexpr char Between = ' ';
    static constexpr detail::ShortWord Null = "NULL";
    static constexpr detail::ShortWord True = "1";
    static constexpr detail::ShortWord False = "0";

    static constexpr std::size_t Longest = DoubledQuotes::Longest;

    static bool isLong(const Cell& cell)
    {
        return CommonForm::isLong(cell) || (cell.Kind == CellKind::Text && isReplaced(cell.Text));
    }

    template <bool Plain>
    static char* shortText(char* to, std::string_view text)
    {
        return putQuoted<DoubledQuotes, Plain>(to, text);
    }

    static void longText(std::string_view text, OutputBlock& out)
    {
        if (isReplaced(text)) {
            SqliteText(text).write(out);
        } else {
            writeQuoted<DoubledQuotes>(text, out);
        }
    }

    static void bytes(std::string_view bytes, OutputBlock& out) { writeBlob(bytes, out); }

    static bool isReplaced(std::string_view text)
    {
        return detail::containsAny(text, [](detail::SixteenBytes bytes) {
            return std::bit_cast<detail::SixteenBytes>((bytes == '\r') | (bytes == 0));
        });
    }

    /// Never a whole number, which would be an integer in a column without a type.
    static char* real(char* to, double value)
    {
        if (std::isinf(value)) {
            return kd_lib::detail::copyBytes(to, value > 0 ? "9e999" : "-9e999");
        }
        char* const end = detail::putReal(to, value);
        const bool whole =
            std::string_view(to, static_cast<std::size_t>(end - to)).find_first_of(".e") == std::string_view::npos;
        return whole ? kd_lib::detail::copyBytes(end, ".0") : end;
    }
};

template <class Form>
void writeValues(const Record& record, OutputBlock& out)
{
    out.write('(');
    detail::writeCells<Form>(record, ',', ')', out);
}

/// In a column without a type, digits that no number of SQLite can keep become a text.
void writeSqliteValues(const TableLayout& layout, const Record& record, OutputBlock& out)
{
    Cell digits;
    const auto seen = [&](std::size_t column, const Cell& cell) -> const Cell& {
        if (cell.Kind != CellKind::Number || !layout.columns()[column].Type.empty() ||
            detail::sqliteFormOf(cell.Text) != detail::SqliteForm::Text) {
            return cell;
        }
        digits = Cell::text(cell.Text);
        return digits;
    };
    out.write('(');
    detail::writeCells<SqliteForm>(record, ',', ')', out, seen);
}

}  // namespace

void writeInsertRow(const TableLayout& layout, const Record& record, OutputBlock& out)
{
    switch (layout.dialect().Is) {
    case Engine::Sqlite:
        writeSqliteValues(layout, record, out);
        break;
    case Engine::PostgreSql:
        writeValues<PostgreSqlForm>(record, out);
        break;
    case Engine::MySql:
        writeValues<MySqlForm>(record, out);
        break;
    }
}

}  // namespace kd_lib::exchange
