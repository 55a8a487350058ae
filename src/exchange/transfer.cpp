#include <kd_lib/exchange/transfer.h>

#include <algorithm>

namespace kd_lib::exchange {

namespace {

constexpr std::uint64_t progressBytes = 65536;
constexpr std::uint64_t progressRecords = 256;  // if records are long, or their size is not known

bool ofRow(FlawKind kind)
{
    return kind == FlawKind::RowTooShort || kind == FlawKind::RowTooLong || kind == FlawKind::RecordCut;
}

RejectAction actionOf(FlawKind kind, OnError policy)
{
    if (kind == FlawKind::Replaced) {
        return RejectAction::Replace;
    }
    if (kind == FlawKind::Escaped) {
        return RejectAction::Escape;
    }
    if (policy == OnError::Stop) {
        return RejectAction::Stop;
    }
    if (policy == OnError::Skip || kind == FlawKind::RecordCut) {
        return RejectAction::Skip;
    }
    return kind == FlawKind::RowTooLong ? RejectAction::Cut : RejectAction::Null;
}

Reject rejectOf(Source& source, const Flaw& flaw, OnError policy)
{
    const Record& record = source.record();
    Reject reject;
    reject.Where = {source.file(), record.Number, {}, record.Offset};
    if (!ofRow(flaw.Kind)) {
        const Source::Origin origin = source.origin(flaw.Column);
        reject.Where.Column = source.columns()[flaw.Column].Name;
        reject.Where.Offset = origin.Offset;
        reject.Bytes = origin.Bytes;
    }
    reject.Reason = flaw.Reason;
    reject.Action = actionOf(flaw.Kind, policy);
    reject.CauseIsNoted = flaw.Kind == FlawKind::NoMemoFile;
    return reject;
}

/// Reports progress to the caller, and checks for a stop.
class Watch {
public:
    Watch(const Source& source, const TransferOptions& options) : From(source), Options(options) {}

    void afterRecord()
    {
        const std::uint64_t position = From.position();
        if (position - LastBytes >= progressBytes || ++Records >= progressRecords) {
            LastBytes = position;
            Records = 0;
            report();
        }
    }

    void report() const
    {
        if (Options.Stop.stop_requested()) {
            throw Stopped(From.file(), "stopped");
        }
        if (Options.OnProgress) {
            Options.OnProgress({From.recordsRead(), From.position(), From.size()});
        }
    }

private:
    const Source& From;
    const TransferOptions& Options;
    std::uint64_t LastBytes = 0;
    std::uint64_t Records = 0;
};

bool hasLoss(const std::vector<Note>& notes)
{
    return std::ranges::any_of(notes, &Note::Loss);
}

void carryRecords(Source& source, Target& target, const TransferOptions& options, Tally& tally)
{
    Watch watch(source, options);
    while (tally.Stored < options.Limit && source.next()) {
        Record& record = source.record();
        target.fit(record);
        if (record.Flaws.empty() || applyPolicy(source, options.Policy, options.OnReject, tally)) {
            target.write(record);
            ++tally.Stored;
        }
        watch.afterRecord();
    }
    watch.report();
}

}  // namespace

bool applyPolicy(Source& source, OnError policy, const std::function<void(const Reject&)>& onReject, Tally& tally)
{
    Record& record = source.record();
    bool used = true;
    for (const Flaw& flaw : record.Flaws) {
        const Reject reject = rejectOf(source, flaw, policy);
        ++tally.Rejects;
        tally.Loss = true;
        if (onReject) {
            onReject(reject);
        }
        if (reject.Action == RejectAction::Stop) {
            throw Error(reject.Where, reject.Reason);
        }
        if (flaw.Kind == FlawKind::Unreadable || flaw.Kind == FlawKind::NoMemoFile) {
            record.Cells[flaw.Column] = Cell::null();
        }
        used = used && reject.Action != RejectAction::Skip;
    }
    tally.LeftOut += used ? 0 : 1;
    return used;
}

Tally transfer(Source& source, Target& target, const TransferOptions& options)
{
    Tally tally;
    try {
        target.begin(source.file(), source.columns());
        carryRecords(source, target, options, tally);
        target.finish();
    } catch (...) {
        target.abandon();
        throw;
    }
    tally.Read = source.recordsRead();
    tally.LeftOut += source.recordsLeftOut();
    tally.Loss = tally.Loss || hasLoss(source.notes()) || hasLoss(target.notes());
    return tally;
}

}  // namespace kd_lib::exchange
