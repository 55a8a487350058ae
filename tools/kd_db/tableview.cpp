#include "tableview.h"

#include "celltext.h"
#include "terminal.h"
#include "textwidth.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace kd_tool {

namespace exchange = kd_lib::exchange;

namespace {

constexpr std::size_t pageRecords = 200;
constexpr std::size_t pageBytes = 262144;
constexpr std::string_view gap = "  ";

bool isNumeric(exchange::ColumnType type)
{
    using Type = exchange::ColumnType;
    return type == Type::Number || type == Type::Integer || type == Type::BigInteger || type == Type::Currency ||
           type == Type::Float;
}

}  // namespace

std::string_view TableView::Row::cell(std::size_t column) const
{
    const std::size_t start = column > 0 ? Ends[column - 1] : 0;
    return std::string_view(Text).substr(start, Ends[column] - start);
}

TableView::TableView(exchange::OutputBlock& output, TableStyle style) : Output(output), Style(style) {}

void TableView::begin(const std::string&, const std::vector<exchange::Column>& columns)
{
    for (const exchange::Column& column : columns) {
        std::string name;
        appendCellText(name, exchange::Cell::text(column.Name));
        Names.push_back(std::move(name));
        Numeric.push_back(isNumeric(column.Type));
    }
}

void TableView::fit(exchange::Record&)
{
    // Every value can be shown.
}

void TableView::fill(Row& row, const exchange::Record& record, std::size_t columns)
{
    using Kind = exchange::CellKind;
    row.Text.clear();
    row.Ends.clear();
    row.Looks.clear();
    for (std::size_t i = 0; i < columns; ++i) {
        const exchange::Cell& cell = record.Cells[i];
        appendCellText(row.Text, cell);
        row.Ends.push_back(row.Text.size());
        row.Looks.push_back(cell.Kind == Kind::Null                                 ? Look::Null
                            : cell.Kind == Kind::Number || cell.Kind == Kind::Float ? Look::Right
                                                                                    : Look::Left);
    }
}

void TableView::write(const exchange::Record& record)
{
    if (Streaming) {
        fill(Current, record, Widths.size());
        print(Current);
        return;
    }
    fill(Page.emplace_back(), record, Names.size());
    PageBytes += Page.back().Text.size();
    if (Page.size() >= pageRecords || PageBytes >= pageBytes) {
        printPage();
    }
}

void TableView::layOut()
{
    std::vector<ColumnNeed> needs;
    for (std::size_t i = 0; i < Names.size(); ++i) {
        ColumnNeed need = {textWidth(Names[i]), !Numeric[i]};
        bool number = false;
        bool text = false;
        for (const Row& row : Page) {
            need.Width = std::max(need.Width, textWidth(row.cell(i)));
            number = number || row.Looks[i] == Look::Right;
            text = text || row.Looks[i] == Look::Left;
        }
        // The result of an expression has no declared type; its values decide.
        Numeric[i] = (Numeric[i] || number) && !text;
        need.Cuttable = !Numeric[i];
        needs.push_back(need);
    }
    if (Style.Terminal >= 0) {
        Style.Room = screenSize(Style.Terminal).Columns;
    }
    Widths = columnWidths(needs, Style.Room, gap.size());
    const std::size_t gaps = Widths.empty() ? 0 : gap.size() * (Widths.size() - 1);
    Spare = Style.Room - std::min(Style.Room, std::accumulate(Widths.begin(), Widths.end(), gaps));
    if (Widths.size() < Names.size()) {
        Notes.push_back({std::to_string(Widths.size()) + " of " + std::to_string(Names.size()) +
                         " columns fit on the screen; --select chooses others, --format csv prints all"});
    }
}

void TableView::printPage()
{
    layOut();
    printHeading();
    for (const Row& row : Page) {
        print(row);
    }
    Page.clear();
    Page.shrink_to_fit();
    Streaming = true;
}

void TableView::printHeading()
{
    Line.clear();
    for (std::size_t i = 0; i < Widths.size(); ++i) {
        Line += i > 0 ? gap : "";
        Line += Style.Colored ? style::bold : "";
        appendCell(Names[i], Numeric[i] ? Look::Right : Look::Left, i);
        Line += Style.Colored ? style::plain : "";
    }
    Line += '\n';
    for (std::size_t i = 0; i < Widths.size(); ++i) {
        Line += i > 0 ? gap : "";
        Line.append(Widths[i], '-');
    }
    Line += '\n';
    Output.write(Line);
}

void TableView::print(const Row& row)
{
    Line.clear();
    LineLeft = Spare;
    for (std::size_t i = 0; i < Widths.size(); ++i) {
        Line += i > 0 ? gap : "";
        appendCell(row.cell(i), row.Looks[i], i);
    }
    Line.resize(Line.find_last_not_of(' ') + 1);
    Line += '\n';
    Output.write(Line);
}

void TableView::appendCell(std::string_view text, Look look, std::size_t column)
{
    const std::size_t width = Widths[column];
    std::string cut;
    std::size_t cells = textWidth(text);
    if (cells > width && Style.Room > 0) {
        if (cells > width + LineLeft) {
            cut = truncated(text, width + LineLeft, Style.Mark);
            text = cut;
            cells = textWidth(text);
        }
        LineLeft -= cells - std::min(cells, width);
    }
    const std::size_t padding = width - std::min(cells, width);
    const bool right = look == Look::Right || (look == Look::Null && Numeric[column]);
    const bool last = column + 1 == Widths.size();
    Line.append(right ? padding : 0, ' ');
    if (look == Look::Null && Style.Colored) {
        Line += style::dim;
        Line += text;
        Line += style::plain;
    } else {
        Line += text;
    }
    Line.append(right || last ? 0 : padding, ' ');
}

void TableView::finish()
{
    if (!Streaming) {
        printPage();
    }
    Output.flush();
}

void TableView::abandon() noexcept
{
    try {
        // Shows the records read before the failure, as if the page were full.
        if (!Streaming && !Page.empty()) {
            printPage();
        }
    } catch (...) {
        // The earlier failure is the one to report.
        return;
    }
}

}  // namespace kd_tool
