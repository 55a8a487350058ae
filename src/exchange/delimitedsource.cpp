#include <kd_lib/exchange/delimitedsource.h>

#include "detail/columnchoice.h"
#include "detail/delimitedoptions.h"
#include "detail/delimitedrows.h"
#include "detail/delimiterguess.h"
#include "detail/filereader.h"
#include "detail/sourcekind.h"
#include "detail/textcells.h"
#include "detail/typeinference.h"
#include "detail/wording.h"

#include <kd_lib/exchange/codepage.h>

#include <algorithm>
#include <utility>

namespace kd_lib::exchange {

namespace {

constexpr std::uint64_t rowsBetweenLooks = 1024;  // the stop token is tested after as many rows

}  // namespace

/// The state of an open text.
class DelimitedSource::Reader final : public detail::FileReader {
public:
    Reader(DelimitedSource& source, const SourceOptions& options);

    bool read() override;
    void seek(std::uint64_t number) override;
    void need(const std::vector<bool>& needed) override;
    Origin origin(std::size_t column) const override;
    std::vector<Fact> facts() const override;
    const detail::InputFile& file() const override { return Window.file(); }

private:
    const CodePage* pageToConvert() const;
    const detail::DelimitedForm& foundForm();
    std::vector<Column> columnsInFile();
    void inferTypes(std::vector<Column>& columns);
    std::string nameOf(std::size_t column);
    std::string otherDelimiter(std::string_view header) const;
    bool takeRow();
    bool isNull(const detail::DelimitedCell& cell);
    void giveRecord(Record& record);
    void giveRowFlaw(Record& record) const;
    void noteAtEnd();
    const char* whyPage() const { return Options.Encoding.empty() ? "that of text files" : "as requested"; }

    DelimitedSource& Of;
    const SourceOptions Options;
    const CodePage Page;
    detail::DelimitedForm Form;
    detail::TextWindow Window;
    detail::DelimitedRows Rows;
    detail::TextCells Cells;
    std::vector<detail::ChosenColumn> Chosen;
    detail::NeededColumns Needed;
    std::vector<std::string> Unquoted;  // a buffer for each column
    mutable std::string OriginBytes;
    std::uint64_t From = 1;  // number of the first record in the range
    std::string Hint;        // about the delimiter
    bool Noted = false;
};

DelimitedSource::Reader::Reader(DelimitedSource& source, const SourceOptions& options)
    : Of(source), Options(options), Page(options.Encoding.empty() ? detail::defaultTextPage : options.Encoding),
      Form(detail::delimitedForm(source.file(), options)), Window(source.file(), pageToConvert(), options.Stop),
      Rows(Window, foundForm(), options.Header), Cells(Page, Window.converted() != nullptr, options.OnEncodingError),
      From(options.Records.First)
{
    std::vector<Column> inFile = columnsInFile();
    if (options.Infer) {
        inferTypes(inFile);
    }
    Chosen = detail::chooseColumns(source.file(), inFile, options);
    source.Columns = detail::columnsOf(inFile, Chosen, options.OnEncodingError);
    source.Current.Cells.resize(source.Columns.size());
    Cells.setColumns(source.Columns);
    Unquoted.resize(source.Columns.size());
    Reader::need({});
}

const CodePage* DelimitedSource::Reader::pageToConvert() const
{
    detail::DelimitedForm form = Form;
    if (detail::findsDelimiter(Options)) {
        form.Delimiter = '|';  // the highest possible
    }
    return detail::pageToConvert(Page, form);
}

/// The form, with the delimiter found in the text if the options ask for that.
const detail::DelimitedForm& DelimitedSource::Reader::foundForm()
{
    if (const char* wide = Page.isUtf8() ? detail::wideEncoding(Window) : nullptr) {
        throw Error(Of.file(), std::string("the text is ") + wide + ": name it as the encoding");
    }
    if (detail::findsDelimiter(Options)) {
        Window.fill(detail::delimiterSampleSize);
        const auto size = static_cast<std::size_t>(Window.end() - Window.begin());
        const std::string_view sample(Window.begin(), std::min(size, detail::delimiterSampleSize));
        const bool whole = Window.atEnd() && sample.size() == size;
        const detail::DelimiterGuess guess = detail::guessDelimiter(sample, whole, Form);
        Form.Delimiter = guess.Delimiter;
        Of.note(guess.Evidence);
    }
    return Form;
}

std::vector<Column> DelimitedSource::Reader::columnsInFile()
{
    std::vector<Column> columns(Rows.names().size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        columns[i].Name = Options.Header ? nameOf(i) : "column_" + std::to_string(i + 1);
    }
    if (columns.size() == 1 && Options.Header && Options.Delimiter.empty()) {
        Hint = otherDelimiter(columns[0].Name);
        if (!Hint.empty()) {
            Of.note("there is one column, " + columns[0].Name + ": " + Hint);
        }
    }
    return columns;
}

std::string DelimitedSource::Reader::nameOf(std::size_t column)
{
    const detail::TextCells::SingleText name = Cells.text(Rows.names()[column]);
    if (!name.Reason.empty()) {
        Of.note("name of column " + std::to_string(column + 1) + ": " + name.Reason + "; U+FFFD in its place", true);
    }
    return name.Utf8;
}

/// A note if the text seems to have another delimiter.
std::string DelimitedSource::Reader::otherDelimiter(std::string_view header) const
{
    for (const char delimiter : {';', '\t', '|', ','}) {
        if (header.find(delimiter) != std::string_view::npos) {
            return "the delimiter may be " + detail::delimiterName(delimiter) + " instead of " +
                   detail::delimiterName(Form.Delimiter);
        }
    }
    return {};
}

bool DelimitedSource::Reader::isNull(const detail::DelimitedCell& cell)
{
    if (cell.Quoted) {
        return false;
    }
    const std::string_view text = cell.text();
    return text.empty() ||
           (Options.Null && (isAscii(text) ? text == *Options.Null : Cells.text(text).Utf8 == *Options.Null));
}

void DelimitedSource::Reader::inferTypes(std::vector<Column>& columns)
{
    if (!Window.file().seekable()) {
        throw OptionError(Of.file(), "the types of columns cannot be found in a text that can be read only once");
    }
    detail::TextWindow window(Of.file(), pageToConvert());
    detail::DelimitedRows rows(window, Form, Options.Header);
    std::vector<detail::TypeInference> types(columns.size());
    while (rows.next()) {
        if (rows.number() % rowsBetweenLooks == 0 && Options.Stop.stop_requested()) {
            throw Stopped(Of.file(), "stopped");
        }
        const std::size_t count = std::min(columns.size(), rows.cells().size());
        for (std::size_t i = 0; i < count; ++i) {
            if (!isNull(rows.cells()[i])) {
                types[i].add(rows.cells()[i].text(), rows.number());
            }
        }
    }
    Of.note(detail::evidenceOf(columns, types, rows.number()));
    for (std::size_t i = 0; i < columns.size(); ++i) {
        columns[i] = types[i].applyTo(std::move(columns[i]));
    }
}

void DelimitedSource::Reader::need(const std::vector<bool>& needed)
{
    Needed = detail::neededColumns(Chosen, needed);
    std::ranges::fill(Of.Current.Cells, Cell::null());
}

bool DelimitedSource::Reader::takeRow()
{
    try {
        return Rows.next();
    } catch (const Error& error) {
        if (Hint.empty()) {
            throw;
        }
        throw Error(error.Where, error.Reason + "; " + Hint);
    }
}

bool DelimitedSource::Reader::read()
{
    while (Rows.number() < Options.Records.Last && takeRow()) {
        if (Rows.number() >= From) {
            ++Of.Read;
            giveRecord(Of.Current);
            return true;
        }
    }
    noteAtEnd();
    return false;
}

void DelimitedSource::Reader::giveRecord(Record& record)
{
    const std::vector<detail::DelimitedCell>& cells = Rows.cells();
    record.Number = Rows.number();
    record.Offset = Rows.offsetOf(cells[0].raw().data()).value_or(0);
    if (cells.size() != Rows.names().size()) {
        giveRowFlaw(record);
    }
    const bool utf8 = Rows.mayHaveHighBytes() ? Cells.isUtf8(Rows.text()) : Cells.isAsciiBased();
    for (const detail::TakenColumn& taken : Needed.Taken) {
        if (taken.Index >= cells.size() || isNull(cells[taken.Index])) {
            record.Cells[taken.Column].Kind = CellKind::Null;
            continue;
        }
        const detail::DelimitedCell& cell = cells[taken.Index];
        const std::string_view text = detail::unquoted(cell, Form.Quote, Unquoted[taken.Column]);
        if (utf8) {
            Cells.setUtf8(record, taken.Column, text);
        } else {
            Cells.set(record, taken.Column, text);
        }
    }
    for (const std::size_t mark : Needed.Marks) {
        record.Cells[mark] = Cell::boolean(false);
    }
}

void DelimitedSource::Reader::giveRowFlaw(Record& record) const
{
    const std::size_t has = Rows.cells().size();
    const std::size_t wanted = Rows.names().size();
    record.Flaws.push_back({0, has < wanted ? FlawKind::RowTooShort : FlawKind::RowTooLong,
                            "line " + std::to_string(Rows.line()) + ": " + detail::count(has, "cell") + " instead of " +
                                std::to_string(wanted)});
}

void DelimitedSource::Reader::noteAtEnd()
{
    if (Noted) {
        return;
    }
    Noted = true;
    if (Cells.metHighBytes()) {
        Of.noteFact("code page " + Page.name() + ": " + whyPage());
    }
    if (Rows.hasEndMark()) {
        Of.note("the byte 1A at the end, the end mark of DOS, is left out");
    }
}

void DelimitedSource::Reader::seek(std::uint64_t number)
{
    From = std::max(number, Options.Records.First);
    if (From > Rows.number()) {
        return;
    }
    if (!Window.file().seekable()) {
        throw Error(Of.file(), "it can be read only once");
    }
    Rows.restart();
}

Source::Origin DelimitedSource::Reader::origin(std::size_t column) const
{
    if (Chosen[column].isDeletionMark() || Chosen[column].Index >= Rows.cells().size()) {
        return {};
    }
    const std::string_view raw = Rows.cells()[Chosen[column].Index].raw();
    const std::optional<std::uint64_t> offset = Rows.offsetOf(raw.data());
    if (Window.converted() == nullptr) {
        return {offset, raw};
    }
    if (!offset || !Window.file().seekable()) {
        return {offset, {}};
    }
    OriginBytes.resize(static_cast<std::size_t>(Rows.sizeInFile(raw).value_or(0)));
    OriginBytes.resize(Window.file().readAt(*offset, OriginBytes.data(), OriginBytes.size()));
    return {offset, OriginBytes};
}

std::vector<Fact> DelimitedSource::Reader::facts() const
{
    return {{"kind", "delimited text"},
            {"code page", Page.name() + " (" + whyPage() + ')'},
            {"delimiter", detail::delimiterName(Form.Delimiter)},
            {"quote", Form.HasQuotes ? detail::delimiterName(Form.Quote) : "none"},
            {"header", Options.Header ? "the first row" : "none"}};
}

DelimitedSource::DelimitedSource(const std::string& file, const SourceOptions& options) : FileSource(file)
{
    const SourceKind kind = options.Kind == SourceKind::Tsv ? SourceKind::Tsv : SourceKind::Csv;
    detail::refuseForeignOptions(file, kind, options);
    readBy(std::make_unique<Reader>(*this, options));
}

DelimitedSource::~DelimitedSource() = default;

}  // namespace kd_lib::exchange
