#include <kd_lib/exchange/dbfsource.h>

#include "detail/columnchoice.h"
#include "detail/dbffacts.h"
#include "detail/dbflayout.h"
#include "detail/dbfrecords.h"
#include "detail/fieldform.h"
#include "detail/filereader.h"
#include "detail/inputfile.h"
#include "detail/memofile.h"
#include "detail/recorddecoder.h"
#include "detail/sourcekind.h"
#include "detail/tablecodepage.h"
#include "detail/tablecolumns.h"
#include "detail/wording.h"

#include <kd_lib/exchange/codepage.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace kd_lib::exchange {

namespace {

detail::DbfLayout layoutOf(detail::InputFile& file)
{
    detail::DbfLayout layout = detail::parseDbfHeader(detail::readDbfHeader(file));
    if (layout.Fault) {
        throw Error(file.path(), *layout.Fault);
    }
    return layout;
}

}  // namespace

/// The state of an open table.
class DbfSource::Reader final : public detail::FileReader {
public:
    Reader(DbfSource& source, const SourceOptions& options);

    bool read() override;
    void seek(std::uint64_t number) override;
    void need(const std::vector<bool>& needed) override;
    Origin origin(std::size_t column) const override;
    std::vector<Fact> facts() const override;
    const detail::InputFile& file() const override { return File; }

private:
    std::vector<detail::WantedField> wantedFields() const;
    void openMemo(const std::vector<detail::WantedField>& wanted);
    std::string missingMemo() const;
    bool isWanted(bool cut);
    void giveRecord(Record& record);
    void giveCutRecord(Record& record);
    void addNotes();
    void noteDeleted();

    detail::InputFile File;
    DbfSource& Of;
    const SourceOptions Options;
    const detail::DbfLayout Layout;
    const detail::PageChoice PageWhy;
    const CodePage Page;
    const detail::TableColumns InFile;
    const std::vector<detail::ChosenColumn> Chosen;
    bool HasMemos = false;
    std::optional<detail::MemoFile> Memo;
    std::optional<detail::RecordDecoder> Decoder;
    detail::DbfRecords Records;
    std::vector<std::size_t> Marks;  ///< columns that hold the deletion mark
    std::uint64_t Deleted = 0;
    bool Started = false;
    bool NotedPage = false;
    bool NotedMemo = false;
    bool NotedDeleted = false;
};

DbfSource::Reader::Reader(DbfSource& source, const SourceOptions& options)
    : File(source.file(), options.Stop), Of(source), Options(options), Layout(layoutOf(File)),
      PageWhy(detail::chooseCodePage(source.file(), Layout, options.Encoding)), Page(PageWhy.Page),
      InFile(detail::columnsOfTable(Layout, Page, !options.NoMemo)),
      Chosen(detail::chooseColumns(source.file(), InFile.Columns, options)), Records(File, Layout)
{
    if (InFile.Columns.empty()) {
        throw Error(source.file(), "there are only memo columns and null flags");
    }
    source.Columns = detail::columnsOf(InFile.Columns, Chosen, options.OnEncodingError);
    source.Current.Cells.resize(source.Columns.size());
    const std::vector<detail::WantedField> wanted = wantedFields();
    openMemo(wanted);
    Decoder.emplace(Layout, wanted, Page, Options.OnEncodingError, Memo ? &*Memo : nullptr);
    Reader::need({});
    for (const std::vector<Note>& some : {detail::layoutNotes(Layout), InFile.Notes}) {
        for (const Note& one : some) {
            source.note(one.Text, one.Loss);
        }
    }
    addNotes();
}

std::vector<detail::WantedField> DbfSource::Reader::wantedFields() const
{
    std::vector<detail::WantedField> wanted;
    for (std::size_t i = 0; i < Chosen.size(); ++i) {
        if (!Chosen[i].isDeletionMark()) {
            wanted.push_back({i, InFile.Fields[Chosen[i].Index], Chosen[i].Type});
        }
    }
    return wanted;
}

/// The table can be read without its memo file: a missing memo file is reported when one of its values is needed.
void DbfSource::Reader::openMemo(const std::vector<detail::WantedField>& wanted)
{
    HasMemos = std::ranges::any_of(wanted, [this](const detail::WantedField& one) {
        return detail::isMemo(detail::formOf(Layout.Fields[one.Index], Layout));
    });
    if (!HasMemos) {
        return;
    }
    std::optional<std::string> path = Options.MemoFile;
    if (path->empty()) {
        path = detail::findMemoFile(Of.file(), Layout);
    }
    if (path) {
        Memo.emplace(*path, detail::memoKindOf(Layout, *path));
    }
}

void DbfSource::Reader::need(const std::vector<bool>& needed)
{
    Decoder->need(needed);
    Marks.clear();
    for (std::size_t i = 0; i < Chosen.size(); ++i) {
        if (Chosen[i].isDeletionMark() && (needed.empty() || needed[i])) {
            Marks.push_back(i);
        }
    }
    std::ranges::fill(Of.Current.Cells, Cell::null());
}

bool DbfSource::Reader::read()
{
    using Found = detail::DbfRecords::Found;
    if (!Started) {
        seek(1);
    }
    while (Records.number() < Options.Records.Last) {
        const Found found = Records.next();
        addNotes();
        if (found == Found::End) {
            break;
        }
        if (!isWanted(found == Found::CutRecord)) {
            continue;
        }
        Record& record = Of.Current;
        record.Number = Records.number();
        record.Offset = Records.offset();
        record.Deleted = Records.deleted();
        if (found == Found::CutRecord) {
            giveCutRecord(record);
        } else {
            giveRecord(record);
        }
        return true;
    }
    noteDeleted();
    return false;
}

/// Counts the record that was read. False: it is left out.
bool DbfSource::Reader::isWanted(bool cut)
{
    if (Records.number() < Options.Records.First) {
        return false;
    }
    ++Of.Read;
    if (cut || !Records.deleted()) {
        return true;
    }
    ++Deleted;
    if (Options.Deleted != DeletedRecords::Skip) {
        return true;
    }
    ++Of.LeftOut;
    return false;
}

void DbfSource::Reader::giveRecord(Record& record)
{
    Decoder->decode(Records.bytes().data(), record);
    for (const std::size_t mark : Marks) {
        record.Cells[mark] = Cell::boolean(record.Deleted);
    }
    if (Decoder->metHighByte() || Decoder->metMissingMemo()) {
        addNotes();
    }
}

void DbfSource::Reader::giveCutRecord(Record& record)
{
    std::ranges::fill(record.Cells, Cell::unreadable());
    record.Flaws.push_back({0, FlawKind::RecordCut,
                            "the file ends within the record, after " + std::to_string(Records.bytes().size()) +
                                " of " + detail::count(Layout.RecordLength, "byte")});
}

/// Adds notes about findings since the last call.
void DbfSource::Reader::addNotes()
{
    if (Records.hasNotes()) {
        for (const Note& one : Records.takeNotes()) {
            Of.note(one.Text, one.Loss);
        }
    }
    if (!NotedPage && (InFile.HighBytes || Decoder->metHighByte())) {
        NotedPage = true;
        Of.noteFact("code page " + Page.name() + ": " + PageWhy.Reason);
    }
    if (!NotedMemo && Decoder->metMissingMemo()) {
        NotedMemo = true;
        Of.note("memo file: " + missingMemo() + "; its values cannot be read", true);
    }
}

std::string DbfSource::Reader::missingMemo() const
{
    return Of.file() == "-" ? "none for standard input" : detail::likelyMemoFile(Of.file(), Layout) + " is missing";
}

std::vector<Fact> DbfSource::Reader::facts() const
{
    std::vector<Fact> facts{{"kind", detail::kindOfTable(Layout)},
                            {"last change", detail::lastChange(Layout)},
                            {"code page", Page.name() + " (" + PageWhy.Reason + ')'}};
    if (HasMemos) {
        facts.push_back({"memo file", Memo ? detail::memoFact(*Memo) : missingMemo()});
    }
    std::ranges::copy(detail::factsOfHeader(Layout), std::back_inserter(facts));
    return facts;
}

void DbfSource::Reader::noteDeleted()
{
    if (NotedDeleted || Deleted == 0 || Options.Deleted == DeletedRecords::Mark) {
        return;
    }
    NotedDeleted = true;
    const bool skipped = Options.Deleted == DeletedRecords::Skip;
    Of.note(detail::count(Deleted, "deleted record") + (skipped ? " left out" : " kept"));
}

void DbfSource::Reader::seek(std::uint64_t number)
{
    Started = true;
    number = std::max({number, Options.Records.First, std::uint64_t{1}});
    if (number != Records.number() + 1) {
        Records.goTo(number);
    }
}

Source::Origin DbfSource::Reader::origin(std::size_t column) const
{
    const std::string_view bytes = Records.bytes();
    if (Chosen[column].isDeletionMark()) {
        return {Records.offset(), bytes.substr(0, 1)};
    }
    const detail::DbfField& field = Layout.Fields[InFile.Fields[Chosen[column].Index]];
    return {Records.offset() + field.Offset,
            bytes.substr(std::min<std::size_t>(field.Offset, bytes.size()), field.Length)};
}

DbfSource::DbfSource(const std::string& file, const SourceOptions& options) : FileSource(file)
{
    detail::refuseForeignOptions(file, SourceKind::Dbf, options);
    readBy(std::make_unique<Reader>(*this, options));
}

DbfSource::~DbfSource() = default;

}  // namespace kd_lib::exchange
