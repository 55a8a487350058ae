#include "delimitedrows.h"

#include "utf8.h"

#include <kd_lib/exchange/error.h>

namespace kd_lib::exchange::detail {

std::string_view unquoted(const DelimitedCell& cell, char quote, std::string& scratch)
{
    if (!cell.HasDoubledQuotes) {
        return cell.text();
    }
    scratch.clear();
    std::string_view rest = cell.text();
    for (std::size_t at = rest.find(quote); at != std::string_view::npos; at = rest.find(quote)) {
        scratch.append(rest, 0, at + 1);
        rest.remove_prefix(at + 2);
    }
    scratch.append(rest);
    return scratch;
}

DelimitedRows::DelimitedRows(TextWindow& window, const DelimitedForm& form, bool header)
    : Window(window), Reader(window, form), Quote(form.Quote), Header(header)
{
    if (!takeFirst()) {
        throw Error(Window.file().path(), "there is no row");
    }
    std::string scratch;
    for (const DelimitedCell& cell : Reader.cells()) {
        Names.emplace_back(Header ? unquoted(cell, Quote, scratch) : std::string_view());
    }
}

/// Reads the header, or the first record: the first row that is not an empty line.
bool DelimitedRows::takeFirst()
{
    Number = 0;
    Pending = false;
    if (Window.converted() != nullptr) {
        const bool marked = Window.offsetOf(Window.begin()) != 0;
        RowOffset = Window.converted()->sizeInFile(marked ? utf8Mark : std::string_view());
    }
    bool found = takeRow();
    while (found && Reader.isEmptyLine()) {
        found = takeRow();
    }
    Pending = found && !Header;
    return found;
}

void DelimitedRows::restart()
{
    Window.restart();
    Reader.restart();
    takeFirst();
}

/// Tracks the place in a converted file.
void DelimitedRows::pass()
{
    if (RowOffset) {
        const std::optional<std::uint64_t> size = sizeInFile(text());
        RowOffset = size ? std::optional(*RowOffset + *size) : std::nullopt;
    }
}

bool DelimitedRows::takeRow()
{
    if (Reader.rowBegin() != nullptr) {
        pass();
    }
    switch (Reader.next()) {
    case DelimitedReader::Result::Row:
        EndMark = isEndMark();
        return !EndMark;
    case DelimitedReader::Result::End:
        return false;
    case DelimitedReader::Result::TextAfterQuote:
        fail("text after a closing quote");
    case DelimitedReader::Result::QuoteNotClosed:
        break;
    }
    fail("a quote is opened and never closed");
}

bool DelimitedRows::next()
{
    if (Pending) {
        Pending = false;
    } else if (!takeRow()) {
        return false;
    }
    while (Names.size() > 1 && Reader.isEmptyLine()) {
        if (!takeRow()) {
            return false;
        }
    }
    ++Number;
    return true;
}

std::string_view DelimitedRows::text() const
{
    return {Reader.rowBegin(), Reader.rowEnd()};
}

bool DelimitedRows::isEndMark() const
{
    return Reader.rowEnd() == Window.end() && text() == dosEndMark;
}

std::optional<std::uint64_t> DelimitedRows::offsetOf(const char* at) const
{
    if (Window.converted() == nullptr) {
        return Window.offsetOf(at);
    }
    const std::optional<std::uint64_t> before = sizeInFile({Reader.rowBegin(), at});
    return RowOffset && before ? std::optional(*RowOffset + *before) : std::nullopt;
}

std::optional<std::uint64_t> DelimitedRows::sizeInFile(std::string_view text) const
{
    return Window.converted() == nullptr ? text.size() : Window.converted()->sizeInFile(text);
}

void DelimitedRows::fail(const std::string& reason) const
{
    throw Error(Place{Window.file().path(), Number + 1, {}, offsetOf(Reader.rowBegin())},
                "line " + std::to_string(Reader.problemLine()) + ": " + reason);
}

}  // namespace kd_lib::exchange::detail
