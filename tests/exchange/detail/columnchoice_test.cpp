#include "detail/columnchoice.h"

#include <kd_lib/exchange/error.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using kd_lib::exchange::Column;
using kd_lib::exchange::ColumnType;
using kd_lib::exchange::DeletedRecords;
using kd_lib::exchange::EncodingErrors;
using kd_lib::exchange::OptionError;
using kd_lib::exchange::SourceOptions;
using namespace kd_lib::exchange::detail;

namespace {

std::vector<Column> threeColumns()
{
    std::vector<Column> columns(3);
    columns[0].Name = "ID";
    columns[0].Type = ColumnType::Number;
    columns[0].Width = columns[0].SourceLength = 10;
    columns[0].Decimals = 2;
    columns[1].Name = "name";
    columns[1].Width = columns[1].SourceLength = 20;
    columns[2].Name = "Name";
    return columns;
}

std::string names(const SourceOptions& options)
{
    const std::vector<Column> inFile = threeColumns();
    std::string all;
    for (const Column& column : columnsOf(inFile, chooseColumns("a.dbf", inFile, options), options.OnEncodingError)) {
        all += (all.empty() ? "" : ",") + column.Name + ':' + typeName(column.Type);
    }
    return all;
}

std::string failure(const SourceOptions& options)
{
    try {
        names(options);
    } catch (const OptionError& error) {
        return error.what();
    }
    return "no error";
}

TEST(ColumnChoice, AllColumnsWithoutOptions)
{
    EXPECT_EQ(names({}), "ID:number,name:text,Name:text");
}

TEST(ColumnChoice, SelectedInTheirOrderByNameExactNameFirst)
{
    EXPECT_EQ(names({.Select = {"Name", "id"}}), "Name:text,ID:number");
    EXPECT_EQ(names({.Select = {"NAME"}}), "name:text");
    EXPECT_EQ(names({.Select = {"ID", "ID"}}), "ID:number,ID:number");
    EXPECT_EQ(failure({.Select = {"ID", "town"}}), "a.dbf: there is no column town");
}

TEST(ColumnChoice, TypesThatTheOptionsGive)
{
    EXPECT_EQ(names({.Types = {{"id", "Text"}, {"Name", "date"}}}), "ID:text,name:text,Name:date");
    EXPECT_EQ(names({.Select = {"ID"}, .Types = {{"Name", "date"}}}), "ID:number");
    EXPECT_EQ(failure({.Types = {{"town", "text"}}}), "a.dbf: there is no column town");
    EXPECT_EQ(failure({.Types = {{"ID", "money"}}}), "a.dbf: column ID: unknown type: money");
}

TEST(ColumnChoice, WidthsOfAnotherType)
{
    const std::vector<Column> inFile = threeColumns();
    const SourceOptions options = {.Types = {{"ID", "text"}, {"name", "number"}}};
    const std::vector<Column> columns =
        columnsOf(inFile, chooseColumns("a.dbf", inFile, options), EncodingErrors::Replace);
    EXPECT_EQ(columns[0].Width, 10U);
    EXPECT_EQ(columns[0].Decimals, 0U);
    EXPECT_EQ(columns[1].Width, 0U);
    const SourceOptions same = {.Types = {{"ID", "number"}}};
    EXPECT_EQ(columnsOf(inFile, chooseColumns("a.dbf", inFile, same), EncodingErrors::Replace)[0].Decimals, 2U);
}

TEST(ColumnChoice, EscapedTextIsFourTimesAsWide)
{
    const std::vector<Column> inFile = threeColumns();
    const std::vector<ChosenColumn> all = chooseColumns("a.dbf", inFile, {});
    const std::vector<Column> plain = columnsOf(inFile, all, EncodingErrors::Replace);
    const std::vector<Column> escaped = columnsOf(inFile, all, EncodingErrors::Escape);
    EXPECT_EQ(escaped[0].Width, plain[0].Width) << "a number";
    EXPECT_EQ(escaped[1].Width, 4 * plain[1].Width);
}

TEST(ColumnChoice, TextOfBinaryValuesMayBeLongerThanTheirBytes)
{
    std::vector<Column> inFile = threeColumns();
    inFile[0].Type = ColumnType::Integer;
    inFile[0].SourceLength = 4;
    const SourceOptions options = {.Types = {{"ID", "text"}}};
    EXPECT_EQ(columnsOf(inFile, chooseColumns("a.dbf", inFile, options), EncodingErrors::Replace)[0].Width, 0U);
}

TEST(ColumnChoice, TheDeletionMarkComesLastUnlessSelected)
{
    constexpr DeletedRecords mark = DeletedRecords::Mark;
    EXPECT_EQ(names({.Deleted = mark}), "ID:number,name:text,Name:text,_deleted:boolean");
    EXPECT_EQ(names({.Select = {"ID"}, .Deleted = mark}), "ID:number,_deleted:boolean");
    EXPECT_EQ(names({.Select = {"_deleted", "ID"}, .Deleted = mark}), "_deleted:boolean,ID:number");
    EXPECT_EQ(failure({.Select = {"_deleted"}}), "a.dbf: there is no column _deleted");
}

TEST(ColumnChoice, EveryTypeHasItsName)
{
    for (const char* name : {"text", "integer", "number", "float", "boolean", "date", "time", "timestamp", "bytes"}) {
        ASSERT_TRUE(typeOfName(name)) << name;
        EXPECT_EQ(kd_lib::exchange::typeName(*typeOfName(name)), name);
    }
    EXPECT_FALSE(typeOfName(""));
}

}  // namespace
