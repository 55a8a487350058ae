#include <kd_lib/asciitable.h>

#include "detail/recordreader.h"
#include "detail/slicing.h"

#include <kd_lib/detail/bytes.h>
#include <kd_lib/tokenizer.h>

#include <utility>

namespace kd_lib {

namespace {

constexpr int comma = 44;
constexpr int tab = 9;
constexpr int doubleQuote = 34;

}  // namespace

AsciiTable::AsciiTable() = default;

AsciiTable::AsciiTable(const std::string& name)
{
    BaseName = name;
    Name = BaseName;
}

AsciiTable::AsciiTable(std::string& name) : AsciiTable(std::as_const(name)) {}

AsciiTable::~AsciiTable() = default;

bool AsciiTable::isCommentLine(const std::string& line)
{
    return line.find(static_cast<char>(CommentChar)) != std::string::npos;
}

bool AsciiTable::extractContent(const std::string& record)
{
    if (detail::isColumnValue(*this, record)) {
        return AsciiTable::extractContent(std::string(record));
    }
    detail::sliceRecord(Fields, record, Trim, "src/db/asciitable");
    return true;
}

DelimitedTable::DelimitedTable()
{
    Extension = "csv";
    HasFieldNames = true;
}

DelimitedTable::~DelimitedTable() = default;

void DelimitedTable::setCsvMode()
{
    Separator = comma;
    Quote = doubleQuote;
    RecordEnd = detail::newline;
}

void DelimitedTable::setRMode()
{
    Separator = tab;
    Quote = doubleQuote;
    RecordEnd = detail::newline;
}

void DelimitedTable::setExcelMode()
{
    setCsvMode();
}

bool DelimitedTable::skipHeader()
{
    // Deliberate: the byte RecordLength, not the end of the first line.
    if (is_open() && HasFieldNames) {
        detail::seekTo(File, RecordLength);
    }
    return true;
}

bool DelimitedTable::readHeader()
{
    if (!HasFieldNames) {
        return false;
    }
    detail::RecordReader reader(*this);
    if (!reader.read() || isCommentLine(reader.text())) {
        return false;
    }
    extractFieldNames(reader.text());
    return !File.fail();
}

bool DelimitedTable::extractFieldNames(const std::string& line)
{
    Tokenizer names;
    names.split(line, std::string(1, static_cast<char>(Separator)));
    for (const std::string& name : names.tokens) {
        Fields.add(name);
    }
    return true;
}

bool DelimitedTable::extractContent(const std::string& record)
{
    if (detail::isColumnValue(*this, record)) {
        return DelimitedTable::extractContent(std::string(record));
    }
    const char separator = static_cast<char>(Separator);
    PieceReader pieces(record, std::string_view(&separator, 1));
    std::string_view piece;
    for (TableField* field : Fields.List) {
        if (!pieces.next(piece)) {
            break;
        }
        detail::assignValue(field->Value, piece);
    }
    return true;
}

}  // namespace kd_lib
