#include "tableview.h"

#include <gtest/gtest.h>

namespace kd_tool {

using kd_lib::exchange::Cell;
using kd_lib::exchange::Column;
using kd_lib::exchange::ColumnType;
using kd_lib::exchange::Record;

class Collected : public kd_lib::exchange::OutputBlock {
public:
    std::string Text;

protected:
    void take(std::string_view piece) override { Text += piece; }
};

std::vector<Column> columns(std::initializer_list<std::pair<const char*, ColumnType>> described)
{
    std::vector<Column> all;
    for (const auto& [name, type] : described) {
        Column column;
        column.Name = name;
        column.Type = type;
        all.push_back(column);
    }
    return all;
}

const std::vector<Column> people = columns({{"NAME", ColumnType::Text}, {"SUM", ColumnType::Number}});

std::string printed(const std::vector<Column>& columns, const std::vector<std::vector<Cell>>& rows, TableStyle style)
{
    Collected sink;
    TableView view(sink, style);
    view.begin("people.dbf", columns);
    for (const std::vector<Cell>& cells : rows) {
        Record record;
        record.Cells = cells;
        view.fit(record);
        view.write(record);
    }
    view.finish();
    return sink.Text;
}

TEST(TableView, TextsAreAlignedLeftAndNumbersRight)
{
    EXPECT_EQ(
        printed(people, {{Cell::text("Ada Quill"), Cell::number("24.00")}, {Cell::text("Ben"), Cell::number("7")}}, {}),
        "NAME         SUM\n"
        "---------  -----\n"
        "Ada Quill  24.00\n"
        "Ben            7\n");
}

TEST(TableView, NullIsVisibleAndDiffersFromTheEmptyText)
{
    EXPECT_EQ(printed(people, {{Cell::null(), Cell::null()}, {Cell::text(""), Cell::number("1")}}, {}), "NAME   SUM\n"
                                                                                                        "----  ----\n"
                                                                                                        "NULL  NULL\n"
                                                                                                        "         1\n");
}

TEST(TableView, ATableWithoutRecordsHasItsHeading)
{
    EXPECT_EQ(printed(people, {}, {}), "NAME  SUM\n----  ---\n");
}

TEST(TableView, ValuesOfAnExpressionDecideItsType)
{
    EXPECT_EQ(printed(columns({{"count(*)", ColumnType::Text}, {"x", ColumnType::Text}}),
                      {{Cell::number("7"), Cell::null()}}, {}),
              "count(*)  x\n"
              "--------  ----\n"
              "       7  NULL\n");
}

TEST(TableView, CellsAreCutIfThereIsALimit)
{
    EXPECT_EQ(printed(people, {{Cell::text("a text that is far too long"), Cell::number("24.00")}}, {20, false, ">"}),
              "NAME             SUM\n"
              "-------------  -----\n"
              "a text that >  24.00\n");
}

TEST(TableView, WideCharactersAreAligned)
{
    EXPECT_EQ(printed(people,
                      {{Cell::text("\xE6\x9D\xB1\xE4\xBA\xAC"), Cell::number("1")},
                       {Cell::text("u\xCC\x88"), Cell::number("2")}},
                      {}),
              "NAME  SUM\n"
              "----  ---\n"
              "\xE6\x9D\xB1\xE4\xBA\xAC    1\n"
              "u\xCC\x88       2\n");
}

TEST(TableView, ColumnsWithoutRoomAreLeftOutAndReported)
{
    Collected sink;
    TableView view(sink, {.Room = 10});
    view.begin("a", people);
    Record record;
    record.Cells = {Cell::text("r1c1"), Cell::number("1234567")};
    view.write(record);
    view.finish();
    EXPECT_EQ(sink.Text, "NAME\n----\nr1c1\n");
    ASSERT_EQ(view.notes().size(), 1U);
    EXPECT_FALSE(view.notes().front().Loss);
    EXPECT_EQ(view.notes().front().Text,
              "1 of 2 columns fit on the screen; --select chooses others, --format csv prints all");
}

TEST(TableView, WidthsAreThoseOfTheFirstPage)
{
    std::vector<std::vector<Cell>> rows(200, {Cell::text("abcd"), Cell::number("1")});
    rows.push_back({Cell::text("far wider"), Cell::number("2")});
    std::string text = printed(people, rows, {});
    EXPECT_EQ(text.substr(text.size() - 15), "far wider    2\n");
    EXPECT_EQ(printed(people, rows, {80, false, ">"}), text) << "there is room for it";
    text = printed(people, rows, {11, false, ">"});
    EXPECT_EQ(text.substr(text.size() - 12), "far w>    2\n");
    rows.back() = {Cell::text("abcd"), Cell::number("123456")};
    text = printed(people, rows, {80, false, ">"});
    EXPECT_EQ(text.substr(text.size() - 13), "abcd  123456\n");
}

TEST(TableView, FirstPageEndsWithTheRecordThatMakesItAQuarterOfAMebibyte)
{
    for (const std::size_t size : {262142U, 262143U}) {
        const std::string text = printed(
            people, {{Cell::text(std::string(size, 'x')), Cell::number("1")}, {Cell::text(""), Cell::number("123456")}},
            {});
        const std::string lastColumn = size == 262142 ? "  ------" : "  ---";
        EXPECT_EQ(text.substr(text.find('-'), size + lastColumn.size() + 1),
                  std::string(size, '-') + lastColumn + '\n');
    }
}

TEST(TableView, ARoomOfOneCellIsALimit)
{
    EXPECT_EQ(printed(columns({{"N", ColumnType::Text}}), {{Cell::text("abc")}}, {1, false, ">"}), "N\n-\n>\n");
}

TEST(TableView, ColourMarksHeadingsAndNull)
{
    EXPECT_EQ(printed(people, {{Cell::null(), Cell::number("1")}}, {0, true, ">"}),
              "\x1b[1mNAME\x1b[0m  \x1b[1mSUM\x1b[0m\n"
              "----  ---\n"
              "\x1b[2mNULL\x1b[0m    1\n");
}

TEST(TableView, RecordsBeforeAFailureAreShown)
{
    Collected sink;
    TableView view(sink, {});
    view.begin("a", people);
    Record record;
    record.Cells = {Cell::text("r1c1"), Cell::number("1")};
    view.write(record);
    view.abandon();
    sink.flush();
    EXPECT_EQ(sink.Text, "NAME  SUM\n----  ---\nr1c1    1\n");
}

}  // namespace kd_tool
