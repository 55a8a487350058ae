#include "text_source.h"

#include "output.h"
#include "signals.h"

#include <kd_lib/text.h>
#include <kd_lib/tokenizer.h>

#include <algorithm>

namespace kd_tool {

namespace {

constexpr std::uint64_t longestLine = 1048576;
constexpr std::size_t mostDigits = 9;
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool isPosition(std::string_view text)
{
    return !text.empty() && text.size() <= mostDigits &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

template <class Table>
TextSource<Table>::TextSource(const std::string& file) : Source(file)
{
    this->RecordLength = longestLine + 1;
}

template <class Table>
bool TextSource<Table>::fetchRecord()
{
    throwIfInterrupted();
    ++Number;
    if (Table::fetchRecord()) {
        return true;
    }
    if (this->File.bad()) {
        failRecord("cannot be read");
    }
    if (!this->File.eof()) {
        failRecord("is longer than " + std::to_string(longestLine) + " bytes");
    }
    --Number;
    return false;
}

template <class Table>
std::string_view TextSource<Table>::checkedLine(std::string_view text, const std::string& where)
{
    // The library's text ends at a zero byte; the stream counts the line's end too, where there is one.
    const auto taken = static_cast<std::size_t>(this->File.gcount()) - (this->File.eof() ? 0 : 1);
    if (text.size() != taken) {
        fail(where + " holds a zero byte");
    }
    if (!text.empty() && text.back() == '\r') {
        text.remove_suffix(1);
    }
    return text;
}

template class TextSource<kd_lib::DelimitedTable>;
template class TextSource<kd_lib::FileTable>;

DelimitedSource::DelimitedSource(const std::string& file, bool tabs, bool unquote) : TextSource(file), Unquote(unquote)
{
    if (tabs) {
        setRMode();
    } else {
        setCsvMode();
    }
    openFile();
    if (!getFieldList()) {
        fail(File.eof() ? "the file is empty" : "the line of names is too long");
    }
    // The records start behind the line of names.
    File.clear();
    HeaderLength = static_cast<std::uint64_t>(File.tellg());
}

bool DelimitedSource::extractFieldNames(const std::string& line)
{
    std::string_view names = checkedLine(line, "the line of names");
    if (names.substr(0, byteOrderMark.size()) == byteOrderMark) {
        names.remove_prefix(byteOrderMark.size());
    }
    Line.assign(names);
    if (!Unquote) {
        return DelimitedTable::extractFieldNames(Line);
    }
    kd_lib::Tokenizer pieces;
    pieces.split(Line, std::string(1, static_cast<char>(Separator)));
    for (const std::string& piece : pieces.tokens) {
        Fields.add(kd_lib::removeQuotes(piece));
    }
    return true;
}

void DelimitedSource::checkPieces(std::string_view line) const
{
    const auto separators = std::count(line.begin(), line.end(), static_cast<char>(Separator));
    const std::size_t pieces = static_cast<std::size_t>(separators) + 1;
    if (pieces != Fields.size()) {
        failRecord("holds " + counted(pieces, "value") + " for " + counted(Fields.size(), "column"));
    }
}

bool DelimitedSource::extractContent(const std::string& record)
{
    const std::string_view line = checkedLine(record, recordName());
    checkPieces(line);
    if (line.size() == record.size()) {
        DelimitedTable::extractContent(record);
    } else {
        Line.assign(line);
        DelimitedTable::extractContent(Line);
    }
    if (Unquote) {
        for (kd_lib::TableField& field : Fields) {
            field.Value = kd_lib::removeQuotes(field.Value);
        }
    }
    return true;
}

PositionalSource::PositionalSource(const std::string& file, const std::string& columns) : TextSource(file)
{
    defineColumns(columns);
    openFile();
}

void PositionalSource::defineColumns(std::string columns)
{
    kd_lib::PieceReader pieces(columns, "|:;");
    for (std::string_view piece; pieces.next(piece);) {
        if (!isPosition(piece)) {
            fail("--columns must be numbers separated by | : or ;");
        }
    }
    setFieldOffsets(columns);
    for (const kd_lib::TableField& field : Fields) {
        if (field.Length < 0) {
            fail("--columns must be numbers that rise");
        }
        Width = std::max(Width, static_cast<std::size_t>(field.Offset) + static_cast<std::size_t>(field.Length));
    }
}

bool PositionalSource::extractContent(const std::string& record)
{
    const std::size_t size = checkedLine(record, recordName()).size();
    if (size < Width) {
        failRecord("has " + std::to_string(size) + " bytes, its columns need " + std::to_string(Width));
    }
    return FileTable::extractContent(record);
}

}  // namespace kd_tool
