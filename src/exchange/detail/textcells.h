/// \file
/// Texts of a file to the cells of a record; the same for all sources of text.
#pragma once

#include "columnchoice.h"

#include <kd_lib/exchange/codepage.h>
#include <kd_lib/exchange/opensource.h>
#include <kd_lib/exchange/record.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange::detail {

/// Decodes texts and gives them the types of their columns, with a flaw for what cannot be read.
class TextCells {
public:
    /// `page` must outlive the object. `marked`: the texts come from a `ConvertedInput` of this page.
    TextCells(const CodePage& page, bool marked, EncodingErrors onError);

    /// For the columns that the records have from now on.
    void setColumns(const std::vector<Column>& columns);

    /// Fills a cell from its bytes, which the cell may view.
    void set(Record& record, std::size_t column, std::string_view bytes);

    /// The same for UTF-8, such as bytes of which all are below 128 in a page based on ASCII.
    void setUtf8(Record& record, std::size_t column, std::string_view bytes)
    {
        if (Types[column] == ColumnType::Text) {
            // Member by member: a whole cell that is copied at once waits for its members to be written.
            Cell& cell = record.Cells[column];
            cell.Text = bytes;
            cell.Kind = CellKind::Text;
        } else {
            setTyped(record, column, bytes);
        }
    }

    /// Whether a text is UTF-8 as it is, and so is each of its pieces that ASCII characters separate: they may go to
    /// `setUtf8`.
    bool isUtf8(std::string_view bytes);

    /// A text by itself, such as the name of a column.
    struct SingleText {
        std::string Utf8;    ///< with U+FFFD for what the page lacks
        std::string Reason;  ///< what the page lacks; empty: nothing
    };
    SingleText text(std::string_view bytes);

    /// Whether bytes above 127 were met.
    bool metHighBytes() const { return High; }

    const CodePage& page() const { return Page; }

    /// Whether bytes below 128 are UTF-8 as they are.
    bool isAsciiBased() const { return Marked || Page.isAsciiBased(); }

private:
    CodePage::Decoded decode(std::string_view bytes, EncodingErrors onError, std::string& scratch) const;
    std::string reason(std::string_view bytes, const CodePage::Decoded& decoded) const;
    void setTyped(Record& record, std::size_t column, std::string_view text);

    const CodePage& Page;
    bool Marked;
    EncodingErrors OnError;
    std::vector<ColumnType> Types;
    std::vector<std::string> Decoded;  // a scratch for each column
    std::vector<std::string> Digits;   // likewise
    bool High = false;
};

}  // namespace kd_lib::exchange::detail
