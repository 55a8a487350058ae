#include "delimitedreader.h"

#include <bit>

namespace kd_lib::exchange::detail {

DelimitedReader::DelimitedReader(TextWindow& window, const DelimitedForm& form)
    : Window(window), Form(form), Find(MarkBytes{{form.Delimiter, form.HasQuotes ? form.Quote : '\n', '\n', '\r'}})
{
    restart();
}

void DelimitedReader::restart()
{
    NextLine = 1;
    Next = Window.begin();
    RowBegin = nullptr;
    load(Next);
}

void DelimitedReader::load(const char* block)
{
    Block = block;
    Found = Find(block);
    const auto left = static_cast<std::size_t>(Window.end() - block);
    if (left < blockSize) {
        Found.Marks &= (std::uint64_t{1} << left) - 1;
    }
    High = High || Found.High != 0;
}

/// The next delimiter, quote or line end; the window's end if there is none.
inline const char* DelimitedReader::nextMark()
{
    while (Found.Marks == 0) {
        if (Window.end() - Block <= static_cast<std::ptrdiff_t>(blockSize)) {
            return Window.end();
        }
        load(Block + blockSize);
    }
    const char* mark = Block + std::countr_zero(Found.Marks);
    Found.Marks &= Found.Marks - 1;
    return mark;
}

DelimitedReader::Result DelimitedReader::next()
{
    RowBegin = Next;
    RowLine = NextLine;
    High = Found.High != 0;
    Step step = Step::NeedsMore;
    while ((step = readRow()) == Step::NeedsMore) {
        Window.more(RowBegin);
        RowBegin = Window.begin();
        load(RowBegin);
    }
    if (step == Step::TextAfterQuote || step == Step::QuoteNotClosed) {
        return step == Step::TextAfterQuote ? Result::TextAfterQuote : Result::QuoteNotClosed;
    }
    NextLine = RowLine + LineEnds;
    return Next == RowBegin ? Result::End : Result::Row;
}

DelimitedReader::Step DelimitedReader::readRow()
{
    const char* const end = Window.end();
    Cells.clear();
    LineEnds = 0;
    const char* cell = RowBegin;
    while (true) {
        const char* mark = nextMark();
        if (mark != end && *mark == Form.Delimiter) {
            Cells.push_back({cell, mark, false, false});
            cell = mark + 1;
            continue;
        }
        if (mark != end && Form.HasQuotes && *mark == Form.Quote) {
            if (mark != cell) {
                continue;  // a quote inside an unquoted cell is an ordinary character
            }
            const Step step = readQuoted(cell, mark);
            if (step != Step::Done) {
                return step;
            }
            if (mark != end && *mark == Form.Delimiter) {
                cell = mark + 1;
                continue;
            }
        } else {
            Cells.push_back({cell, mark, false, false});
        }
        return endRow(mark);
    }
}

/// Reads the cell whose opening quote is at `cell`; `mark` becomes the place of its end.
DelimitedReader::Step DelimitedReader::readQuoted(const char* cell, const char*& mark)
{
    const char* const end = Window.end();
    bool doubled = false;
    ProblemLine = RowLine + LineEnds;
    while (true) {
        mark = nextMark();
        if (mark == end) {
            return Window.atEnd() ? Step::QuoteNotClosed : Step::NeedsMore;
        }
        const char* after = mark + 1;
        if (*mark != Form.Quote) {
            LineEnds += *mark == '\n' || (*mark == '\r' && (after == end || *after != '\n')) ? 1U : 0U;
        } else if (after != end && *after == Form.Quote) {
            mark = nextMark();
            doubled = true;
        } else {
            Cells.push_back({cell + 1, mark, true, doubled});
            return endQuoted(after, mark);
        }
    }
}

/// After a closing quote there must be a delimiter, a line end, or the end.
DelimitedReader::Step DelimitedReader::endQuoted(const char* after, const char*& mark)
{
    if (after == Window.end()) {
        mark = after;
        return Window.atEnd() ? Step::Done : Step::NeedsMore;
    }
    if (*after != Form.Delimiter && *after != '\n' && *after != '\r') {
        ProblemLine = RowLine + LineEnds;
        return Step::TextAfterQuote;
    }
    mark = nextMark();
    return Step::Done;
}

/// Ends the row at a line end, or at the end of the file.
DelimitedReader::Step DelimitedReader::endRow(const char* mark)
{
    const char* const end = Window.end();
    if (mark == end) {
        Next = end;
        return Window.atEnd() ? Step::Done : Step::NeedsMore;
    }
    const char* after = mark + 1;
    if (*mark == '\r' && after == end && !Window.atEnd()) {
        return Step::NeedsMore;
    }
    if (*mark == '\r' && after != end && *after == '\n') {
        nextMark();
        ++after;
    }
    Next = after;
    ++LineEnds;
    return Step::Done;
}

}  // namespace kd_lib::exchange::detail
