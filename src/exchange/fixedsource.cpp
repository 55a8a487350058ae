#include <kd_lib/exchange/fixedsource.h>

#include "detail/columnchoice.h"
#include "detail/fieldtexts.h"
#include "detail/filereader.h"
#include "detail/fixedcolumns.h"
#include "detail/sourcekind.h"
#include "detail/textcells.h"
#include "detail/textlines.h"
#include "detail/textwindow.h"
#include "detail/wording.h"

#include <kd_lib/exchange/codepage.h>

#include <algorithm>

namespace kd_lib::exchange {

namespace {

std::vector<Column> columnsInFile(const std::vector<detail::FixedColumn>& layout)
{
    std::vector<Column> columns;
    for (const detail::FixedColumn& one : layout) {
        Column column;
        column.Name = one.Name;
        column.Width = column.SourceLength = one.Length;
        columns.push_back(std::move(column));
    }
    return columns;
}

std::uint32_t endOf(const std::vector<detail::FixedColumn>& layout)
{
    return std::ranges::max(layout, {}, &detail::FixedColumn::end).end();
}

}  // namespace

/// The state of an open text.
class FixedSource::Reader final : public detail::FileReader {
public:
    Reader(FixedSource& source, const SourceOptions& options);

    bool read() override;
    void seek(std::uint64_t number) override;
    void need(const std::vector<bool>& needed) override;
    Origin origin(std::size_t column) const override;
    std::vector<Fact> facts() const override;
    const detail::InputFile& file() const override { return Window.file(); }

private:
    bool takeLine();
    std::string_view cellOf(const detail::FixedColumn& column) const;
    void giveRecord(Record& record);
    void checkEncoding() const;
    void noteAtEnd();
    const char* whyPage() const { return Options.Encoding.empty() ? "that of text files" : "as requested"; }

    FixedSource& Of;
    const SourceOptions Options;
    const std::vector<detail::FixedColumn> Layout;
    const std::uint32_t LayoutEnd;
    const CodePage Page;
    detail::TextWindow Window;
    detail::TextLines Lines;
    detail::TextCells Cells;
    std::vector<detail::ChosenColumn> Chosen;
    detail::NeededColumns Needed;
    std::uint64_t From = 1;    // number of the first record in the range
    std::uint64_t Number = 0;  // of the current record
    std::uint64_t Longer = 0;  // lines with text after the last column
    bool Noted = false;
};

FixedSource::Reader::Reader(FixedSource& source, const SourceOptions& options)
    : Of(source), Options(options), Layout(detail::parseFixedColumns(source.file(), options.FixedColumns)),
      LayoutEnd(endOf(Layout)), Page(options.Encoding.empty() ? detail::defaultTextPage : options.Encoding),
      Window(source.file(), nullptr, options.Stop), Lines(Window), Cells(Page, false, options.OnEncodingError),
      From(options.Records.First)
{
    checkEncoding();
    const std::vector<Column> inFile = columnsInFile(Layout);
    Chosen = detail::chooseColumns(source.file(), inFile, options);
    source.Columns = detail::columnsOf(inFile, Chosen, options.OnEncodingError);
    source.Current.Cells.resize(source.Columns.size());
    Cells.setColumns(source.Columns);
    Reader::need({});
}

/// Columns are counted in bytes, and lines end with a byte: both need a page based on ASCII.
void FixedSource::Reader::checkEncoding() const
{
    if (!Page.isAsciiBased()) {
        throw OptionError(Of.file(), "text in fixed columns cannot be read in " + Page.name() +
                                         ": its bytes are not based on ASCII; convert the file to UTF-8 first");
    }
    if (const char* wide = Page.isUtf8() ? detail::wideEncoding(Window) : nullptr) {
        throw Error(Of.file(), std::string("the text is ") + wide + ": convert the file to UTF-8 first");
    }
}

void FixedSource::Reader::need(const std::vector<bool>& needed)
{
    Needed = detail::neededColumns(Chosen, needed);
    std::ranges::fill(Of.Current.Cells, Cell::null());
}

/// Reads the next line that is a record.
bool FixedSource::Reader::takeLine()
{
    bool found = Lines.next();
    while (found && Lines.line().empty() && Layout.size() > 1) {
        found = Lines.next();
    }
    Number += found ? 1 : 0;
    return found;
}

bool FixedSource::Reader::read()
{
    while (Number < Options.Records.Last && takeLine()) {
        if (Number >= From) {
            ++Of.Read;
            giveRecord(Of.Current);
            return true;
        }
    }
    noteAtEnd();
    return false;
}

/// The bytes of a column in the line.
std::string_view FixedSource::Reader::cellOf(const detail::FixedColumn& column) const
{
    const std::string_view line = Lines.line();
    return line.substr(std::min<std::size_t>(column.Offset, line.size()), column.Length);
}

void FixedSource::Reader::giveRecord(Record& record)
{
    const std::string_view line = Lines.line();
    record.Number = Number;
    record.Offset = Window.offsetOf(line.data());
    const bool ascii = isAscii(line);
    for (const detail::TakenColumn& taken : Needed.Taken) {
        const std::string_view cell = cellOf(Layout[taken.Index]);
        if (cell.empty()) {
            record.Cells[taken.Column].Kind = CellKind::Null;
            continue;
        }
        const std::string_view text = detail::withoutPaddingAtEnd(cell.data(), cell.size());
        if (ascii) {
            Cells.setUtf8(record, taken.Column, text);
        } else {
            Cells.set(record, taken.Column, text);
        }
    }
    for (const std::size_t mark : Needed.Marks) {
        record.Cells[mark] = Cell::boolean(false);
    }
    if (line.size() > LayoutEnd && line.find_first_not_of(' ', LayoutEnd) != std::string_view::npos) {
        ++Longer;
    }
}

void FixedSource::Reader::noteAtEnd()
{
    if (Noted) {
        return;
    }
    Noted = true;
    if (Cells.metHighBytes()) {
        Of.noteFact("code page " + Page.name() + ": " + whyPage());
    }
    if (Longer > 0) {
        Of.note(detail::count(Longer, "line") + (Longer == 1 ? " has" : " have") + " text after byte " +
                std::to_string(LayoutEnd) + ", where the last column ends");
    }
    if (Lines.hasEndMark()) {
        Of.note("the byte 1A at the end, the end mark of DOS, is left out");
    }
}

void FixedSource::Reader::seek(std::uint64_t number)
{
    From = std::max(number, Options.Records.First);
    if (From > Number) {
        return;
    }
    if (!Window.file().seekable()) {
        throw Error(Of.file(), "it can be read only once");
    }
    Window.restart();
    Lines.restart();
    Number = 0;
}

Source::Origin FixedSource::Reader::origin(std::size_t column) const
{
    if (Chosen[column].isDeletionMark()) {
        return {};
    }
    const std::string_view cell = cellOf(Layout[Chosen[column].Index]);
    if (cell.empty()) {
        return {};
    }
    return {Window.offsetOf(cell.data()), cell};
}

std::vector<Fact> FixedSource::Reader::facts() const
{
    return {{"kind", "text in fixed columns"}, {"code page", Page.name() + " (" + whyPage() + ')'}};
}

FixedSource::FixedSource(const std::string& file, const SourceOptions& options) : FileSource(file)
{
    detail::refuseForeignOptions(file, SourceKind::Fixed, options);
    readBy(std::make_unique<Reader>(*this, options));
}

FixedSource::~FixedSource() = default;

}  // namespace kd_lib::exchange
