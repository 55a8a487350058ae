#include <kd_lib/exchange/verify.h>

#include "detail/comparablevalue.h"
#include "detail/setoff.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace kd_lib::exchange {

namespace {

using detail::SetOff;

constexpr std::uint64_t recordsBetweenLooks = 1024;

/// Only the part of a long value around the difference is shown.
constexpr std::size_t shownBytes = 200;
constexpr std::size_t shownBefore = 40;

bool continuesCharacter(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
}

/// `text` from byte `from`, cut between characters.
std::string part(const std::string& text, std::size_t from)
{
    while (from < text.size() && continuesCharacter(text[from])) {
        ++from;
    }
    std::size_t end = std::min(text.size(), from + shownBytes);
    while (end < text.size() && continuesCharacter(text[end])) {
        ++end;
    }
    return (from > 0 ? "..." : "") + text.substr(std::min(from, text.size()), end - from) +
           (end < text.size() ? "..." : "");
}

ColumnDifference differenceOf(const std::string& column, std::uint64_t record, const Cell& source, const Cell& table)
{
    const std::string inSource = detail::shownValue(source);
    const std::string inTable = detail::shownValue(table);
    const auto differing = std::ranges::mismatch(inSource, inTable).in1 - inSource.begin();
    const auto place = static_cast<std::size_t>(differing);
    const std::size_t from = place > shownBytes - shownBefore ? place - shownBefore : 0;
    return {column, record, part(inSource, from), part(inTable, from)};
}

/// The source's records as a transfer would carry them.
class Carried {
public:
    Carried(Source& source, TableLayout& layout, const TransferOptions& options)
        : From(source), Layout(layout), Options(options)
    {
    }

    /// With `quiet` the rejects are not reported again.
    bool next(bool quiet)
    {
        static const std::function<void(const Reject&)> nobody;
        while (From.next()) {
            look();
            Record& record = From.record();
            Layout.fit(record);
            if (record.Flaws.empty() ||
                applyPolicy(From, Options.Policy, quiet ? nobody : Options.OnReject, Rejected)) {
                return true;
            }
        }
        return false;
    }

    void look()
    {
        if (++Looked % recordsBetweenLooks != 0) {
            return;
        }
        if (Options.Stop.stop_requested()) {
            throw Stopped(From.file(), "stopped");
        }
        if (Options.OnProgress) {
            Options.OnProgress({From.recordsRead(), From.position(), From.size()});
        }
    }

    const Record& record() const { return From.record(); }
    Source& source() { return From; }
    const Tally& tally() const { return Rejected; }

private:
    Source& From;
    TableLayout& Layout;
    const TransferOptions& Options;
    Tally Rejected;
    std::uint64_t Looked = 0;
};

class Comparison {
public:
    Comparison(Source& source, Source& table, TableLayout& layout, const TransferOptions& options)
        : Records(source, layout, options), Table(table), Columns(source.columns())
    {
    }

    Verification run()
    {
        Verification found = inOrder();
        found.Rejects = Records.tally().Rejects;
        if (!found.agrees() && goBack()) {
            found.Differences = whateverTheOrder(found.Records, found.Rows);
        }
        return found;
    }

private:
    Verification inOrder()
    {
        Verification found;
        Differences differences(Columns.size());
        bool record = Records.next(false);
        bool row = Table.next();
        while (record || row) {
            if (record && row) {
                compare(differences);
            }
            found.Records += record ? 1 : 0;
            found.Rows += row ? 1 : 0;
            record = record && Records.next(false);
            row = row && Table.next();
        }
        found.Differences = listed(differences);
        return found;
    }

    bool goBack()
    {
        try {
            Records.source().seek(1);
            Table.seek(1);
            return true;
        } catch (const Error&) {
            return false;
        }
    }

    std::vector<ColumnDifference> whateverTheOrder(std::uint64_t records, std::uint64_t rows)
    {
        SetOff rest;
        while (Records.next(true)) {
            rest.add(SetOff::Side::First, Records.record().Number, comparable(Records.record()));
        }
        while (Table.next()) {
            Records.look();
            rest.add(SetOff::Side::Second, Table.record().Number, comparable(Table.record()));
        }
        rest.settle();
        Records.source().seek(1);
        Table.seek(1);
        return differencesOf(rest, records > rows ? records - rows : rows - records,
                             records > rows ? SetOff::Side::First : SetOff::Side::Second);
    }

    /// Compares the remaining elements. `longer` has `surplus` elements more: one that has little in common with its
    /// counterpart counts as one of those.
    std::vector<ColumnDifference> differencesOf(SetOff& rest, std::uint64_t surplus, SetOff::Side longer)
    {
        Differences differences(Columns.size());
        bool both = takeRecord(rest) && takeRow(rest);
        while (both) {
            const bool counterparts = surplus == 0 || haveMuchInCommon();
            if (counterparts) {
                compare(differences);
                both = takeRecord(rest) && takeRow(rest);
            } else {
                --surplus;
                both = longer == SetOff::Side::First ? takeRecord(rest) : takeRow(rest);
            }
        }
        return listed(differences);
    }

    bool takeRecord(SetOff& rest)
    {
        const std::optional<std::uint64_t> number = rest.left(SetOff::Side::First);
        if (number) {
            Records.source().seek(*number);
        }
        return number && Records.next(true);
    }

    bool takeRow(SetOff& rest)
    {
        const std::optional<std::uint64_t> number = rest.left(SetOff::Side::Second);
        if (number) {
            Table.seek(*number);
        }
        return number && Table.next();
    }

    bool haveMuchInCommon()
    {
        std::size_t equal = 0;
        for (std::size_t i = 0; i < Columns.size(); ++i) {
            const Cell& inSource = Records.record().Cells[i];
            equal += detail::equalValues(Columns[i].Type, inSource, Table.record().Cells[i], Scratch) ? 1U : 0U;
        }
        return equal * 2 >= Columns.size();
    }

    using Differences = std::vector<std::optional<ColumnDifference>>;

    void compare(Differences& differences)
    {
        const Record& record = Records.record();
        for (std::size_t i = 0; i < Columns.size(); ++i) {
            const Cell& inTable = Table.record().Cells[i];
            if (!differences[i] && !detail::equalValues(Columns[i].Type, record.Cells[i], inTable, Scratch)) {
                differences[i] = differenceOf(Columns[i].Name, record.Number, record.Cells[i], inTable);
            }
        }
    }

    const std::string& comparable(const Record& record)
    {
        Scratch.clear();
        for (std::size_t i = 0; i < Columns.size(); ++i) {
            detail::appendComparable(Scratch, Columns[i].Type, record.Cells[i]);
        }
        return Scratch;
    }

    static std::vector<ColumnDifference> listed(Differences& differences)
    {
        std::vector<ColumnDifference> list;
        for (std::optional<ColumnDifference>& difference : differences) {
            if (difference) {
                list.push_back(std::move(*difference));
            }
        }
        return list;
    }

    Carried Records;
    Source& Table;
    const std::vector<Column>& Columns;
    std::string Scratch;
};

}  // namespace

Verification verify(Source& source, Source& table, TableLayout& layout, const TransferOptions& options)
{
    if (table.columns().size() != source.columns().size()) {
        throw Error(table.file(), "the table's columns are not those of " + source.file());
    }
    return Comparison(source, table, layout, options).run();
}

}  // namespace kd_lib::exchange
