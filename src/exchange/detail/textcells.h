/// \file
/// Converts texts of a file to cells; the same for all sources of text.
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

/// The page of a text file without a mark.
inline constexpr const char* defaultTextPage = "UTF-8";

/// Decodes texts and converts them to the types of their columns; a text that cannot be read gets a flaw.
class TextCells {
public:
    /// `page` must outlive the object. `marked`: the texts come from a `ConvertedInput` of this page.
    TextCells(const CodePage& page, bool marked, EncodingErrors onError);

    /// Sets the columns of the following records.
    void setColumns(const std::vector<Column>& columns);

    /// Fills a cell from its bytes, which the cell may view.
    void set(Record& record, std::size_t column, std::string_view bytes);

    /// The same for UTF-8, for example bytes below 128 in a page based on ASCII.
    void setUtf8(Record& record, std::size_t column, std::string_view bytes)
    {
        if (Types[column] == ColumnType::Text) {
            // Member by member, because copying a whole cell would wait until its members are written.
            Cell& cell = record.Cells[column];
            cell.Text = bytes;
            cell.Kind = CellKind::Text;
        } else {
            setTyped(record, column, bytes);
        }
    }

    /// Whether a text, and each of its pieces between ASCII characters, is UTF-8 without conversion and may be passed
    /// to `setUtf8`.
    bool isUtf8(std::string_view bytes);

    /// A text outside of records, such as the name of a column.
    struct SingleText {
        std::string Utf8;    ///< with U+FFFD for bytes that the page lacks
        std::string Reason;  ///< the bytes that the page lacks; empty: none
    };
    SingleText text(std::string_view bytes);

    /// Whether bytes above 127 were met.
    bool metHighBytes() const { return High; }

    const CodePage& page() const { return Page; }

    /// Whether bytes below 128 are UTF-8 without conversion.
    bool isAsciiBased() const { return Marked || Page.isAsciiBased(); }

private:
    CodePage::Decoded decode(std::string_view bytes, EncodingErrors onError, std::string& scratch) const;
    std::string reason(std::string_view bytes, const CodePage::Decoded& decoded) const;
    void setTyped(Record& record, std::size_t column, std::string_view text);

    const CodePage& Page;
    bool Marked;
    EncodingErrors OnError;
    std::vector<ColumnType> Types;
    std::vector<std::string> Decoded;  // a buffer for each column
    std::vector<std::string> Digits;   // likewise
    bool High = false;
};

}  // namespace kd_lib::exchange::detail
