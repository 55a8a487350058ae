#include "report.h"

namespace kd_tool {

namespace {

constexpr std::uint64_t mostLines = 20;

std::string consequence(exchange::RejectAction action, const std::string& verb)
{
    switch (action) {
    case exchange::RejectAction::Null:
        return verb + " as NULL";
    case exchange::RejectAction::Replace:
        return verb + " with U+FFFD";
    case exchange::RejectAction::Escape:
        return verb + " as \\xNN";
    case exchange::RejectAction::Cut:
        return "the surplus cells are left out";
    case exchange::RejectAction::Skip:
        return "the record is left out";
    case exchange::RejectAction::Stop:
        break;
    }
    return {};
}

std::string lineOf(const exchange::Reject& reject, const std::string& verb)
{
    exchange::Place place = reject.Where;
    place.Offset.reset();  // --rejects has it
    return exchange::Error(place, reject.Reason).what() + ("; " + consequence(reject.Action, verb));
}

}  // namespace

void Report::reject(const exchange::Reject& reject)
{
    if (Rejects != nullptr) {
        Rejects->write(reject);
    }
    if (reject.CauseIsNoted || reject.Action == exchange::RejectAction::Stop) {
        return;  // a note or the error line reports it
    }
    if (++Count <= mostLines) {
        To.trouble(lineOf(reject, Verb));
    }
}

void Report::restOfRejects()
{
    if (Count > mostLines) {
        To.trouble(File + ": " + std::to_string(Count - mostLines) + " more like these" +
                   (Rejects != nullptr ? "" : "; --rejects FILE lists them all"));
    }
}

void Report::printNew(const std::vector<exchange::Note>& notes, std::size_t& printed)
{
    for (; printed < notes.size(); ++printed) {
        const std::string line = File + ": " + notes[printed].Text;
        if (notes[printed].Loss) {
            To.trouble(line);
        } else {
            To.note(line);
        }
    }
}

void Report::tally(const exchange::Tally& tally, const std::string& destination)
{
    To.note(File + ": " + counted(tally.Read, "record") + " read, " + std::to_string(tally.LeftOut) + " left out, " +
            std::to_string(tally.Stored) + ' ' + Verb + (destination.empty() ? "" : " in " + destination));
}

}  // namespace kd_tool
