/// \file
/// Records as a table for people.
#pragma once

#include "columnwidths.h"

#include <kd_lib/exchange/outputblock.h>
#include <kd_lib/exchange/target.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kd_tool {

/// How a table is printed.
struct TableStyle {
    std::size_t Room = 0;         ///< cells in a line; 0: no limit, and nothing is cut
    bool Colored = false;         ///< headings and NULL differ from text
    std::string_view Mark = ">";  ///< ends a cut cell
    int Terminal = -1;            ///< a descriptor whose width, when the table is laid out, replaces Room
};

/// Prints records under their columns' names: texts to the left, numbers to the right, NULL as that word. The widths
/// are those of the first page of records, so that memory does not grow. A later cell that is wider moves the rest of
/// its line, and is cut if the line would not fit. The block is flushed at the end, but not closed.
class TableView : public kd_lib::exchange::Target {
public:
    TableView(kd_lib::exchange::OutputBlock& output, TableStyle style);

    void begin(const std::string& file, const std::vector<kd_lib::exchange::Column>& columns) override;
    void fit(kd_lib::exchange::Record& record) override;
    void write(const kd_lib::exchange::Record& record) override;
    void finish() override;
    void abandon() noexcept override;

private:
    enum class Look : unsigned char { Left, Right, Null };

    /// Cells one after another in one text.
    struct Row {
        std::string Text;
        std::vector<std::size_t> Ends;
        std::vector<Look> Looks;

        std::string_view cell(std::size_t column) const;
    };

    static void fill(Row& row, const kd_lib::exchange::Record& record, std::size_t columns);
    void layOut();
    void printPage();
    void printHeading();
    void print(const Row& row);
    void appendCell(std::string_view text, Look look, std::size_t column);

    kd_lib::exchange::OutputBlock& Output;
    TableStyle Style;
    std::vector<std::string> Names;
    std::vector<bool> Numeric;
    std::vector<Row> Page;
    std::size_t PageBytes = 0;
    bool Streaming = false;
    std::vector<std::size_t> Widths;
    std::size_t Spare = 0;     ///< cells of a full line that belong to no column
    std::size_t LineLeft = 0;  ///< of these, in the current line
    Row Current;
    std::string Line;
};

}  // namespace kd_tool
