// The twins of the exchange library: a .dbf table as CSV and as the rows of COPY, by slices and plain copies. They
// trust their input: plain ASCII, numbers in normal form.
#include "bare_dbf.h"
#include "bare_output.h"
#include "bare_work.h"

namespace kd_bench::bare {

namespace {

char* copyDate(char* to, std::string_view text)
{
    const char date[] = {text[0], text[1], text[2], text[3], '-', text[4], text[5], '-', text[6], text[7]};
    return copy(to, {date, sizeof date});
}

bool isTrue(std::string_view text)
{
    return text == "T" || text == "Y" || text == "t" || text == "y";
}

/// The number without the sign of a zero.
char* copyNumber(char* to, std::string_view text)
{
    if (text[0] == '-' && text.find_first_of("123456789") == std::string_view::npos) {
        text.remove_prefix(1);
    }
    return copy(to, text);
}

char* copyCsvText(char* to, std::string_view text)
{
    if (!text.empty() && text.find_first_of(",\"\r\n") == std::string_view::npos) {
        return copy(to, text);
    }
    *to++ = '"';
    for (const char c : text) {
        *to = '"';
        to += c == '"' ? 1 : 0;
        *to++ = c;
    }
    *to++ = '"';
    return to;
}

char* copyCsv(char* to, char type, std::string_view value)
{
    const std::string_view text = withoutBlanks(value);
    if (type == 'C') {
        return copyCsvText(to, text);
    }
    if (text.empty() || text == "?") {
        return to;
    }
    if (type == 'L') {
        return copy(to, isTrue(text) ? "true" : "false");
    }
    return type == 'D' ? copyDate(to, text) : copyNumber(to, withoutLeadingBlanks(text));
}

char* copyRowText(char* to, std::string_view text)
{
    for (const char c : text) {
        *to = '\\';
        to += c == '\\' ? 1 : 0;
        *to++ = c;
    }
    return to;
}

char* copyRow(char* to, char type, std::string_view value)
{
    const std::string_view text = withoutBlanks(value);
    if (type == 'C') {
        return copyRowText(to, text);
    }
    if (text.empty() || text == "?") {
        return copy(to, "\\N");
    }
    if (type == 'L') {
        return copy(to, isTrue(text) ? "t" : "f");
    }
    return type == 'D' ? copyDate(to, text) : copyNumber(to, withoutLeadingBlanks(text));
}

/// Writes the records that are not deleted, each value by `cell`.
template <class Cell>
Tally writeRecords(DbfReader& table, TextOutput& text, char between, Cell cell)
{
    const std::size_t longest = 2 * table.recordLength() + 8 * table.columns().size();
    Tally tally;
    while (const char* record = table.next()) {
        if (*record == '*') {
            continue;
        }
        ++tally.Records;
        char* to = text.room(longest);
        for (const DbfColumn& column : table.columns()) {
            to = cell(to, column.Type, column.in(record));
            *to++ = between;
        }
        to[-1] = '\n';
        text.endAt(to);
    }
    text.flush();
    tally.Bytes = text.written();
    return tally;
}

}  // namespace

Tally dbfToCsv(const Files& files)
{
    DbfReader table(files.input(".dbf"));
    TextOutput text(files.output(".carried"));
    std::string header;
    for (const DbfColumn& column : table.columns()) {
        header += (header.empty() ? "" : ",") + column.Name;
    }
    header += '\n';
    text.endAt(copy(text.room(header.size()), header));
    return writeRecords(table, text, ',', copyCsv);
}

Tally dbfToCopy(const Files& files)
{
    DbfReader table(files.input(".dbf"));
    TextOutput text(files.output(".carried"));
    return {writeRecords(table, text, '\t', copyRow).Records, 0};
}

Tally loadValues(const Files& files)
{
    return {loadRecords(files).Records, 0};
}

Tally countRecords(const Files& files)
{
    return {walkDbf(files).Records, 0};
}

}  // namespace kd_bench::bare
