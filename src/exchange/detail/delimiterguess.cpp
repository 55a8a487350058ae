#include "delimiterguess.h"

#include "wording.h"

namespace kd_lib::exchange::detail {

namespace {

/// The rows as a delimiter splits them.
struct Trial {
    std::size_t Cells = 0;  // of the first row
    std::size_t Rows = 0;
    std::size_t Alike = 0;  // rows with as many cells as the first

    bool cuts() const { return Cells > 1; }

    bool isBetterThan(const Trial& other) const
    {
        return cuts() && (!other.cuts() || Alike * other.Rows > other.Alike * Rows);
    }

    void addRow(std::size_t cells)
    {
        Cells = Rows == 0 ? cells : Cells;
        Alike += cells == Cells ? 1 : 0;
        ++Rows;
    }
};

/// Removes the row at the beginning of `rest`, and returns the number of its cells. An empty line has none.
std::size_t takeRow(std::string_view& rest, const DelimitedForm& form)
{
    std::size_t cells = 1;
    bool quoted = false;
    bool atCell = true;
    std::size_t at = 0;
    for (; at < rest.size(); ++at) {
        const char c = rest[at];
        if (form.HasQuotes && c == form.Quote && (atCell || quoted)) {
            quoted = !quoted;  // a doubled quote closes and opens again
            atCell = !quoted;
        } else if (!quoted && (c == '\n' || c == '\r')) {
            break;
        } else {
            atCell = !quoted && c == form.Delimiter;
            cells += atCell ? 1 : 0;
        }
    }
    const bool empty = at == 0;
    rest.remove_prefix(at < rest.size() ? at + 1 : at);
    return empty ? 0 : cells;
}

Trial tryOut(std::string_view sample, bool whole, const DelimitedForm& form)
{
    Trial trial;
    while (!sample.empty()) {
        const std::size_t cells = takeRow(sample, form);
        if (cells > 0 && (whole || !sample.empty())) {
            trial.addRow(cells);
        }
    }
    return trial;
}

}  // namespace

std::string delimiterName(char delimiter)
{
    return delimiter == '\t' ? "tab" : std::string("'") + delimiter + '\'';
}

DelimiterGuess guessDelimiter(std::string_view sample, bool whole, const DelimitedForm& form)
{
    DelimitedForm tried = form;
    Trial best;
    char found = form.Delimiter;
    for (const char delimiter : {',', ';', '\t', '|', ':'}) {
        tried.Delimiter = delimiter;
        const Trial trial = tryOut(sample, whole, tried);
        if (trial.isBetterThan(best)) {
            best = trial;
            found = delimiter;
        }
    }
    if (!best.cuts()) {
        return {found,
                "the delimiter is assumed to be " + delimiterName(found) + ": none splits the first row into columns"};
    }
    return {found, "the delimiter is " + delimiterName(found) + ": it cuts " + std::to_string(best.Alike) +
                       " of the first " + count(best.Rows, "row") + " into " + count(best.Cells, "column")};
}

}  // namespace kd_lib::exchange::detail
