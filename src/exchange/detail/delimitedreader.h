/// \file
/// Splits delimited text into rows and cells.
#pragma once

#include "bytemarks.h"
#include "textwindow.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange::detail {

/// How the text is written.
struct DelimitedForm {
    char Delimiter = ',';
    char Quote = '"';
    bool HasQuotes = true;
};

/// A cell of the text.
struct DelimitedCell {
    const char* Begin;  ///< of the bytes between the quotes, or between the delimiters
    const char* End;
    bool Quoted;
    bool HasDoubledQuotes;

    std::string_view text() const { return {Begin, static_cast<std::size_t>(End - Begin)}; }

    /// With its quotes.
    std::string_view raw() const { return {Begin - (Quoted ? 1 : 0), text().size() + (Quoted ? 2 : 0)}; }
};

/// Reads rows: cells are separated by the delimiter, rows by LF, CR LF or CR. A cell that begins with a quote ends with
/// one. In between, delimiters and line ends are ordinary characters, and two quotes are one. A quote elsewhere is an
/// ordinary character.
class DelimitedReader {
public:
    /// Starts at the beginning of `window`, which must outlive the object.
    DelimitedReader(TextWindow& window, const DelimitedForm& form);

    enum class Result : std::uint8_t {
        Row,
        End,
        TextAfterQuote,  ///< a cell continues after its closing quote; nothing more can be read
        QuoteNotClosed   ///< the same for a cell whose closing quote is missing
    };

    /// Reads the next row. Cells view the window until the next call.
    Result next();

    /// The cells of the row. An empty line is one cell, unquoted and empty.
    const std::vector<DelimitedCell>& cells() const { return Cells; }

    bool isEmptyLine() const { return Cells.size() == 1 && !Cells[0].Quoted && Cells[0].Begin == Cells[0].End; }

    /// False: all bytes of the row are below 128. True: there may be others.
    bool mayHaveHighBytes() const { return High; }

    const char* rowBegin() const { return RowBegin; }  ///< null before the first row
    const char* rowEnd() const { return Next; }        ///< after its line end
    std::uint64_t line() const { return RowLine; }     ///< of the row's first line, from 1

    /// The line with the text after a closing quote, or with the opening quote that is not closed.
    std::uint64_t problemLine() const { return ProblemLine; }

    /// Starts again at the beginning of the window, which must have been restarted or not moved.
    void restart();

private:
    enum class Step : std::uint8_t { Done, NeedsMore, TextAfterQuote, QuoteNotClosed };

    void load(const char* block);
    const char* nextMark();
    Step readRow();
    Step readQuoted(const char* cell, const char*& mark);
    Step endQuoted(const char* after, const char*& mark);
    Step endRow(const char* mark);

    TextWindow& Window;
    DelimitedForm Form;
    Marks Find;
    std::vector<DelimitedCell> Cells;
    const char* Next = nullptr;
    const char* RowBegin = nullptr;
    const char* Block = nullptr;
    BlockMarks Found = {0, 0};
    std::uint64_t RowLine = 1;
    std::uint64_t LineEnds = 0;  // in the current row
    std::uint64_t NextLine = 1;
    std::uint64_t ProblemLine = 0;
    bool High = false;
};

}  // namespace kd_lib::exchange::detail
