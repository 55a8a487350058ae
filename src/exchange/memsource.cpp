#include <kd_lib/exchange/memsource.h>

#include "../formats/memfile.h"
#include "detail/columnchoice.h"
#include "detail/filereader.h"
#include "detail/inputfile.h"
#include "detail/memreader.h"
#include "detail/memvalues.h"
#include "detail/sourcekind.h"
#include "detail/tablecodepage.h"
#include "detail/textcells.h"
#include "detail/wording.h"

#include <kd_lib/exchange/codepage.h>

#include <algorithm>

namespace kd_lib::exchange {

namespace {

/// The columns, in this order.
constexpr std::size_t nameColumn = 0;
constexpr std::size_t typeColumn = 1;
constexpr std::size_t valueColumn = 2;

std::vector<Column> columnsInFile()
{
    std::vector<Column> columns(valueColumn + 1);
    columns[nameColumn].Name = "name";
    columns[typeColumn].Name = "type";
    columns[valueColumn].Name = "value";
    return columns;
}

}  // namespace

/// The state of an open file.
class MemSource::Reader final : public detail::FileReader {
public:
    Reader(MemSource& source, const SourceOptions& options);

    bool read() override;
    void seek(std::uint64_t number) override;
    void need(const std::vector<bool>& needed) override;
    Origin origin(std::size_t column) const override;
    std::vector<Fact> facts() const override;
    const detail::InputFile& file() const override { return File; }

private:
    using Found = detail::MemReader::Found;

    bool take();
    void giveRecord(Record& record);
    void giveValue(Record& record, std::size_t column);
    void noteAtEnd();
    const char* whyPage() const { return Options.Encoding.empty() ? "the file names none" : "as requested"; }

    detail::InputFile File;
    MemSource& Of;
    const SourceOptions Options;
    const CodePage Page;
    detail::TextCells Cells;
    detail::MemReader Variables;
    std::vector<detail::ChosenColumn> Chosen;
    detail::NeededColumns Needed;
    std::string Form;
    std::string Scratch;
    Found Next = Found::End;  // the result for the first variable, until that is returned
    bool Pending = false;
    Found Current = Found::End;
    std::uint64_t From = 1;    // number of the first record in the range
    std::uint64_t Number = 0;  // of the current record
    bool Noted = false;
};

MemSource::Reader::Reader(MemSource& source, const SourceOptions& options)
    : File(source.file(), options.Stop), Of(source), Options(options),
      Page(options.Encoding.empty() ? detail::defaultTablePage : options.Encoding),
      Cells(Page, false, options.OnEncodingError), Variables(File), From(options.Records.First)
{
    Next = Variables.next();
    Pending = true;
    if (Next == Found::Unknown) {
        const auto type = static_cast<std::uint8_t>(Variables.typeByte()[0]);
        throw Error(Place{Of.file(), 0, {}, Variables.offsetOf(Variables.typeByte())},
                    "not a .mem file: " + detail::hex(type) + " is not a variable type");
    }
    if (Next == Found::End && !Variables.hasEndMark()) {
        throw Error(Of.file(), "not a .mem file: it is empty, without an end mark");
    }
    Form = Next == Found::Variable ? detail::memFormName(Variables.form()) : "";
    const std::vector<Column> inFile = columnsInFile();
    Chosen = detail::chooseColumns(source.file(), inFile, options);
    source.Columns = detail::columnsOf(inFile, Chosen, options.OnEncodingError);
    source.Current.Cells.resize(source.Columns.size());
    Cells.setColumns(source.Columns);
    Reader::need({});
}

void MemSource::Reader::need(const std::vector<bool>& needed)
{
    Needed = detail::neededColumns(Chosen, needed);
    std::ranges::fill(Of.Current.Cells, Cell::null());
}

/// Reads the next variable that is a record, which may be cut.
bool MemSource::Reader::take()
{
    if (Current == Found::Cut || Current == Found::Unknown) {
        return false;
    }
    Current = Pending ? Next : Variables.next();
    Pending = false;
    if (Current == Found::Unknown) {
        const auto type = static_cast<std::uint8_t>(Variables.typeByte()[0]);
        Of.note("the variable at byte " + std::to_string(Variables.offset()) + " is of the unknown type " +
                    detail::hex(type) + ": it and everything after it cannot be read",
                true);
    }
    const bool taken = Current == Found::Variable || Current == Found::Cut;
    Number += taken ? 1 : 0;
    return taken;
}

bool MemSource::Reader::read()
{
    while (Number < Options.Records.Last && take()) {
        if (Number >= From) {
            ++Of.Read;
            giveRecord(Of.Current);
            return true;
        }
    }
    noteAtEnd();
    return false;
}

void MemSource::Reader::giveRecord(Record& record)
{
    record.Number = Number;
    record.Offset = Variables.offset();
    if (Current == Found::Cut) {
        std::ranges::fill(record.Cells, Cell::unreadable());
        record.Flaws.push_back({0, FlawKind::RecordCut, "the file ends within the variable"});
        return;
    }
    for (const detail::TakenColumn& taken : Needed.Taken) {
        if (taken.Index == nameColumn) {
            Cells.set(record, taken.Column, Variables.name());
        } else if (taken.Index == typeColumn) {
            Cells.setUtf8(record, taken.Column, detail::memTypeName(Variables.type()));
        } else {
            giveValue(record, taken.Column);
        }
    }
    for (const std::size_t mark : Needed.Marks) {
        record.Cells[mark] = Cell::boolean(false);
    }
}

void MemSource::Reader::giveValue(Record& record, std::size_t column)
{
    if (Variables.type() == 'C') {
        Cells.set(record, column, Variables.value());
        return;
    }
    const detail::MemText text = detail::textOfVariable(Variables, Scratch);
    if (text.Problem != nullptr) {
        record.reject(column, text.Problem);
    } else if (!text.Text) {
        record.Cells[column] = Cell::null();
    } else {
        Cells.setUtf8(record, column, *text.Text);
    }
}

void MemSource::Reader::noteAtEnd()
{
    if (Noted) {
        return;
    }
    Noted = true;
    if (Cells.metHighBytes()) {
        Of.noteFact("code page " + Page.name() + ": " + whyPage());
    }
    if (Current == Found::End && !Variables.hasEndMark() && Variables.form() != detail::MemForm::Text) {
        Of.note("the end mark is missing");
    }
    if (Current == Found::End && Variables.hasEndMark() && Variables.hasBytesAfterEnd()) {
        Of.note("there are bytes after the end mark");
    }
}

void MemSource::Reader::seek(std::uint64_t number)
{
    From = std::max(number, Options.Records.First);
    if (From > Number) {
        return;
    }
    if (!File.seekable()) {
        throw Error(Of.file(), "it can be read only once");
    }
    File.seek(0);
    Variables.restart();
    Number = 0;
    Current = Found::End;
    Pending = false;
}

Source::Origin MemSource::Reader::origin(std::size_t column) const
{
    if (Chosen[column].isDeletionMark() || Current != Found::Variable) {
        return {};
    }
    const std::string_view bytes = Chosen[column].Index == nameColumn   ? Variables.name()
                                   : Chosen[column].Index == typeColumn ? Variables.typeByte()
                                                                        : Variables.value();
    return {Variables.offsetOf(bytes), bytes};
}

std::vector<Fact> MemSource::Reader::facts() const
{
    return {{"kind", Form.empty() ? "memory variables" : "memory variables, form of " + Form},
            {"code page", Page.name() + " (" + whyPage() + ')'}};
}

MemSource::MemSource(const std::string& file, const SourceOptions& options) : FileSource(file)
{
    detail::refuseForeignOptions(file, SourceKind::Mem, options);
    readBy(std::make_unique<Reader>(*this, options));
}

MemSource::~MemSource() = default;

}  // namespace kd_lib::exchange
