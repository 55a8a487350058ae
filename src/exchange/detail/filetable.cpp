#include "filetable.h"

#include "sourcekind.h"

#include <kd_lib/exchange/transfer.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <sys/stat.h>

namespace kd_lib::exchange::detail {

namespace {

/// With more rejects than this, some may be reported twice.
constexpr std::size_t mostReportedRejects = 65536;

constexpr std::uint64_t likelyRecordLength = 50;
constexpr std::uint64_t unknownSize = 50'000'000;
constexpr std::size_t highestBit = 63;

FileState stateOf(const std::string& file)
{
    struct stat status = {};
    if (::stat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return {};
    }
    return {status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size), status.st_mtim.tv_sec,
            status.st_mtim.tv_nsec};
}

bool sameColumns(const std::vector<Column>& a, const std::vector<Column>& b)
{
    return std::ranges::equal(a, b, [](const Column& x, const Column& y) {
        return x.Name == y.Name && x.Type == y.Type && x.Width == y.Width && x.Decimals == y.Decimals;
    });
}

TableOptions tableOptions(NameCase names)
{
    TableOptions options;
    options.Table = "t";
    options.Names = names;
    return options;
}

}  // namespace

FileTable::FileTable(TableArguments arguments, const VirtualTableEvents& events)
    : Arguments(std::move(arguments)), Events(events), Spare(open()), Columns(Spare.From->columns()),
      Layout(dialectOf(Engine::Sqlite), Arguments.File, Columns, tableOptions(Arguments.Names))
{
    estimate(*Spare.From);
    if (Events.OnReject) {
        ReportReject = [this](const Reject& reject) { reportOnce(reject); };
    }
    reportNotes(Spare);
    if (Events.OnNote) {
        for (const Note& note : Layout.notes()) {
            Events.OnNote(Arguments.File, note);
        }
    }
}

OpenTable FileTable::open() const
{
    if (Arguments.File == "-") {
        throw Error("-", "standard input can be read only once; a table must be a file");
    }
    const FileState state = stateOf(Arguments.File);
    return {openSource(Arguments.File, Arguments.Options), state};
}

void FileTable::estimate(const Source& source)
{
    const SourceKind kind = Arguments.Options.Kind;
    Fixed = (kind == SourceKind::Automatic ? kindOfName(Arguments.File) : kind) == SourceKind::Dbf;
    const std::uint64_t length =
        std::accumulate(Columns.begin(), Columns.end(), std::uint64_t{1},
                        [](std::uint64_t sum, const Column& c) { return sum + c.SourceLength; });
    Estimate = source.size().value_or(unknownSize) / (Fixed ? length : likelyRecordLength) + 1;
}

OpenTable FileTable::take()
{
    if (Spare.From != nullptr && (Spare.Fresh || Spare.State != FileState()) &&
        Spare.State == stateOf(Arguments.File)) {
        return std::exchange(Spare, OpenTable());
    }
    OpenTable table = open();
    if (!sameColumns(table.From->columns(), Columns)) {
        throw Error(Arguments.File, "the columns of the file have changed; create the table again");
    }
    return table;
}

void FileTable::giveBack(OpenTable table)
{
    reportNotes(table);
    Spare = std::move(table);
}

void FileTable::reportNotes(OpenTable& table)
{
    const std::vector<Note>& notes = table.From->notes();
    for (; table.NotesReported < notes.size(); ++table.NotesReported) {
        const Note& note = notes[table.NotesReported];
        if (ReportedNotes.insert(note.Text).second && Events.OnNote) {
            Events.OnNote(Arguments.File, note);
        }
    }
}

void FileTable::reportOnce(const Reject& reject)
{
    const std::pair key(reject.Where.Record, std::hash<std::string>()(reject.Where.Column));
    if (ReportedRejects.contains(key)) {
        return;
    }
    if (ReportedRejects.size() < mostReportedRejects) {
        ReportedRejects.insert(key);
    }
    Events.OnReject(reject);
}

FileScan::~FileScan()
{
    if (Open.From != nullptr) {
        Table.giveBack(std::move(Open));
    }
}

void FileScan::start(const RecordRange& range, std::uint64_t used)
{
    if (Open.From == nullptr) {
        Open = Table.take();
        need(used);
    } else if (used != Used) {
        need(used);
    }
    if (!Open.Fresh || range.First > 1) {
        Open.From->seek(range.First);
    }
    Open.Fresh = false;
    Last = range.Last;
    End = range.First > range.Last;
    if (!End) {
        next();
    }
}

void FileScan::need(std::uint64_t used)
{
    std::vector<bool> needed(Open.From->columns().size());
    for (std::size_t i = 0; i < needed.size(); ++i) {
        needed[i] = (used >> std::min(i, highestBit) & 1U) != 0;
    }
    Open.From->need(needed);
    Used = used;
}

void FileScan::next()
{
    Source& source = *Open.From;
    while (source.next()) {
        Record& record = source.record();
        if (record.Number > Last) {
            break;
        }
        Table.layout().fit(record);
        if (record.Flaws.empty() || applyPolicy(source, OnError::Null, Table.onReject(), Rejects)) {
            return;
        }
    }
    End = true;
    Table.reportNotes(Open);
}

}  // namespace kd_lib::exchange::detail
