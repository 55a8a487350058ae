#include "textcells.h"

#include "convertedinput.h"
#include "utf8.h"
#include "values.h"

namespace kd_lib::exchange::detail {

using Outcome = CodePage::Decoded::Outcome;

TextCells::TextCells(const CodePage& page, bool marked, EncodingErrors onError)
    : Page(page), Marked(marked), OnError(onError)
{
}

void TextCells::setColumns(const std::vector<Column>& columns)
{
    Types.clear();
    for (const Column& column : columns) {
        Types.push_back(column.Type);
    }
    Decoded.resize(columns.size());
    Digits.resize(columns.size());
}

CodePage::Decoded TextCells::decode(std::string_view bytes, EncodingErrors onError, std::string& scratch) const
{
    return Marked ? decodeMarked(bytes, onError, scratch) : Page.decode(bytes, onError, scratch);
}

std::string TextCells::reason(std::string_view bytes, const CodePage::Decoded& decoded) const
{
    if (!Marked) {
        return Page.reason(bytes, decoded);
    }
    return "byte 0x" + std::string(bytes.substr(decoded.FirstUnknown + 1, 2)) + " is not in code page " + Page.name();
}

bool TextCells::isUtf8(std::string_view bytes)
{
    if (isAscii(bytes)) {
        return isAsciiBased();
    }
    High = true;
    return !Marked && Page.isUtf8() && validUtf8Length(bytes) == bytes.size();
}

TextCells::SingleText TextCells::text(std::string_view bytes)
{
    High = High || !isAscii(bytes);
    std::string scratch;
    const CodePage::Decoded decoded = decode(bytes, EncodingErrors::Replace, scratch);
    return {std::string(decoded.Text), decoded.Result == Outcome::Known ? std::string() : reason(bytes, decoded)};
}

void TextCells::set(Record& record, std::size_t column, std::string_view bytes)
{
    if (isAsciiBased() && isAscii(bytes)) {
        setUtf8(record, column, bytes);
        return;
    }
    High = true;
    if (Types[column] == ColumnType::Bytes) {
        record.Cells[column] = Cell::bytes(bytes);
        return;
    }
    const CodePage::Decoded text = decode(bytes, OnError, Decoded[column]);
    if (text.Result == Outcome::Failed) {
        record.reject(column, reason(bytes, text));
        return;
    }
    setUtf8(record, column, text.Text);
    if (text.Result != Outcome::Known && record.Cells[column].Kind != CellKind::Unreadable) {
        const FlawKind kind = text.Result == Outcome::Replaced ? FlawKind::Replaced : FlawKind::Escaped;
        record.Flaws.push_back({column, kind, reason(bytes, text)});
    }
}

void TextCells::setTyped(Record& record, std::size_t column, std::string_view text)
{
    const Converted value = valueOf(Types[column], text, Digits[column]);
    if (value.Problem != nullptr) {
        record.reject(column, value.Problem);
    } else {
        record.Cells[column] = value.Value;
    }
}

}  // namespace kd_lib::exchange::detail
