// The common behaviour of all table classes: one set of tests walks over five rows of each kind of file. A kind defines
// the class that reads it, the bytes of its file, and the columns and rows that are read. A new class needs a new kind
// in `Kinds`, with its columns and rows: five rows, in records of one length.
#include "support/dbf_builder.h"
#include "support/table_builder.h"

#include <kd_lib/asciitable.h>
#include <kd_lib/filetable.h>
#include <kd_lib/xbasetable.h>

#include <gtest/gtest.h>

#include <string>

using kd_test::captured;
using kd_test::Opened;
using kd_test::Row;
using kd_test::rowOf;
using kd_test::Rows;
using kd_test::rowsOf;

namespace {

/// Every cell differs, and no cell ends with a blank.
const Rows fiveRows = {
    {"r1c1", "r1c2x1", "r1c3-one"}, {"r2c1", "r2c2x2", "r2c3-two"}, {"r3c1", "r3c2x3", "r3c3-333"},
    {"r4c1", "r4c2x4", "r4c3-444"}, {"r5c1", "r5c2x5", "r5c3-555"},
};

std::string lines(const std::string& before, const std::string& between)
{
    std::string text;
    for (const Row& row : fiveRows) {
        text += before + row[0] + between + row[1] + between + row[2] + "\n";
    }
    return text;
}

/// The columns and rows of the kinds below.
struct FiveRows {
    static Row columns() { return {"field#0", "field#1", "field#2"}; }
    static Rows rows() { return fiveRows; }
};

struct Positional : FiveRows {
    static constexpr const char* name = "Positional";
    using Table = kd_lib::FileTable;
    static constexpr unsigned long firstRecord = 1;
    static std::string bytes() { return lines("....", ".."); }
    static void define(Table& table)
    {
        // The width of each column is the distance from the previous number.
        table.setFieldOffsets("4|10|18");
    }
};

struct Ascii : FiveRows {
    static constexpr const char* name = "Ascii";
    using Table = kd_lib::AsciiTable;
    static constexpr unsigned long firstRecord = 1;
    static std::string bytes() { return lines("", ""); }
    static void define(Table& table)
    {
        kd_test::addColumn(table, "field#0", 0, 4);
        kd_test::addColumn(table, "field#1", 4, 6);
        kd_test::addColumn(table, "field#2", 10, 8);
    }
};

struct Delimited : FiveRows {
    static constexpr const char* name = "Delimited";
    using Table = kd_lib::DelimitedTable;
    static constexpr unsigned long firstRecord = 2;  // the line of names is read like any other
    static std::string bytes() { return "Field#0|Field#1|Field#2\n" + lines("", "|"); }
    static void define(Table& table) { EXPECT_TRUE(table.getFieldList()); }
};

struct XBase : FiveRows {
    static constexpr const char* name = "XBase";
    using Table = kd_lib::xBaseTable;
    static constexpr unsigned long firstRecord = 1;
    static std::string bytes()
    {
        kd_test::DbfBuilder builder({{"FIELD#0", 'C', 4}, {"FIELD#1", 'C', 6}, {"FIELD#2", 'C', 8}});
        for (const Row& row : fiveRows) {
            builder.record(row);
        }
        return builder.bytes();
    }
    static void define(Table& table) { EXPECT_TRUE(table.getFieldList()); }
};

using Kinds = testing::Types<Positional, Ascii, Delimited, XBase>;

template <class Kind>
class TableContract : public testing::Test {
public:
    TableContract() : File(Kind::bytes()) { Kind::define(File.table); }

protected:
    kd_lib::FileTable& table() { return File.table; }

    const Row Columns = Kind::columns();
    const Rows Expected = Kind::rows();

    Opened<typename Kind::Table> File;
};

class KindNames {
public:
    template <class Kind>
    static std::string GetName(int)
    {
        return Kind::name;
    }
};

TYPED_TEST_SUITE(TableContract, Kinds, KindNames);

}  // namespace

TYPED_TEST(TableContract, WalkAfterTheDefinitionGivesEveryRow)
{
    EXPECT_EQ(this->Columns, kd_test::namesOf(this->table()));
    EXPECT_EQ(this->Expected, rowsOf(this->table()));
}

TYPED_TEST(TableContract, ValuesAreReadByNumberAndByNameInAnyCase)
{
    kd_lib::FileTable& table = this->table();
    ASSERT_TRUE(table.fetchRecord());
    for (unsigned long i = 0; i < this->Columns.size(); ++i) {
        EXPECT_EQ(this->Expected[0][i], table.Fields.getData(i));
        EXPECT_EQ(this->Expected[0][i], table.Fields.getData(this->Columns[i]));
        EXPECT_EQ(this->Expected[0][i], table.Fields.getData(kd_lib::stringToUpper(this->Columns[i])));
    }
}

TYPED_TEST(TableContract, WalkCanBeRepeatedFromTheFirstRecord)
{
    rowsOf(this->table());
    EXPECT_TRUE(this->table().goRecord(TypeParam::firstRecord));
    EXPECT_EQ(this->Expected, rowsOf(this->table()));
}

TYPED_TEST(TableContract, EveryRecordIsReachedByItsNumberInAnyOrder)
{
    for (const unsigned long i : {4UL, 0UL, 3UL, 1UL, 2UL, 2UL}) {
        EXPECT_TRUE(this->table().goRecord(TypeParam::firstRecord + i));
        ASSERT_TRUE(this->table().fetchRecord()) << i;
        EXPECT_EQ(this->Expected[i], rowOf(this->table()));
    }
}

TYPED_TEST(TableContract, WalkContinuesAfterTheRecordReached)
{
    EXPECT_TRUE(this->table().goRecord(TypeParam::firstRecord + 2));
    EXPECT_EQ((Rows{this->Expected[2], this->Expected[3], this->Expected[4]}), rowsOf(this->table()));
}

TYPED_TEST(TableContract, EndOfTheWalkKeepsTheLastRowAndStaysFalse)
{
    rowsOf(this->table());
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(this->table().fetchRecord());
    }
    EXPECT_EQ(this->Expected.back(), rowOf(this->table()));
    EXPECT_TRUE(this->table().File.fail());
}

TYPED_TEST(TableContract, GoRecordAfterTheLastRecordReturnsTrueAndTheFetchFalse)
{
    EXPECT_TRUE(this->table().goRecord(TypeParam::firstRecord + 5));
    EXPECT_FALSE(this->table().fetchRecord());
    EXPECT_TRUE(this->table().goRecord(TypeParam::firstRecord + 500));
    EXPECT_FALSE(this->table().fetchRecord());
    EXPECT_EQ(Row(this->Columns.size()), rowOf(this->table()));
}

TYPED_TEST(TableContract, ClosedTableKeepsItsRowAndGoesNowhere)
{
    kd_lib::FileTable& table = this->table();
    ASSERT_TRUE(table.fetchRecord());
    EXPECT_TRUE(table.close());
    EXPECT_FALSE(table.is_open());
    EXPECT_FALSE(table.goRecord(1));
    EXPECT_FALSE(table.getFieldList());
    captured([&] { EXPECT_FALSE(table.fetchRecord()); });
    EXPECT_EQ(this->Expected[0], rowOf(table));
}

TYPED_TEST(TableContract, ReopenedTableIsWalkedWithTheColumnsItHad)
{
    this->File.reopen(TypeParam::bytes());
    EXPECT_TRUE(this->table().goRecord(TypeParam::firstRecord));
    EXPECT_EQ(this->Expected, rowsOf(this->table()));
}

TYPED_TEST(TableContract, ASecondDefinitionGivesTheColumnsOfTheFile)
{
    this->table().defineFields();
    TypeParam::define(this->File.table);
    EXPECT_EQ(this->Columns.size(), this->table().Fields.size());
    EXPECT_TRUE(this->table().goRecord(TypeParam::firstRecord));
    EXPECT_EQ(this->Expected, rowsOf(this->table()));
}

TYPED_TEST(TableContract, TwoTablesOnOneFileDoNotDisturbEachOther)
{
    typename TypeParam::Table other;
    other.Path = this->File.directory();
    captured([&] { EXPECT_TRUE(other.open("sample")); });
    TypeParam::define(other);
    for (const Row& row : this->Expected) {
        ASSERT_TRUE(this->table().fetchRecord());
        ASSERT_TRUE(other.fetchRecord());
        EXPECT_EQ(row, rowOf(this->table()));
        EXPECT_EQ(row, rowOf(other));
    }
}

TYPED_TEST(TableContract, BaseClassLeadsToTheSameOperations)
{
    kd_lib::DatabaseTable& root = this->table();
    EXPECT_TRUE(root.is_open());
    Rows rows;
    while (root.fetchRecord()) {
        rows.emplace_back();
        for (const kd_lib::TableField& field : root.Fields) {
            rows.back().push_back(field.Value);
        }
    }
    EXPECT_EQ(this->Expected, rows);
    EXPECT_TRUE(root.close());
    EXPECT_FALSE(root.is_open());
    captured([&] { EXPECT_TRUE(root.open()); });
    EXPECT_TRUE(root.is_open());
    root.defineFields();
    EXPECT_EQ(0U, root.Fields.size());
}

TYPED_TEST(TableContract, OverriddenExtractContentSeesEveryRecord)
{
    class Recorder : public TypeParam::Table {
    public:
        bool extractContent(const std::string& record) override
        {
            Records.push_back(record);
            return TypeParam::Table::extractContent(record);
        }
        Row Records;
    };
    Opened<Recorder> file(TypeParam::bytes());
    TypeParam::define(file.table);
    EXPECT_EQ(this->Expected, rowsOf(file.table));
    ASSERT_EQ(5U, file.table.Records.size());
    for (std::size_t i = 0; i < 5; ++i) {
        for (const std::string& value : this->Expected[i]) {
            EXPECT_NE(std::string::npos, file.table.Records[i].find(value));
        }
    }
}

TYPED_TEST(TableContract, WithoutTrimTheRowsAreTheSameIfNoValueEndsWithABlank)
{
    this->table().Trim = false;
    EXPECT_EQ(this->Expected, rowsOf(this->table()));
}

TYPED_TEST(TableContract, PositionGrowsByOneRecordPerFetch)
{
    const auto start = this->table().File.tellg();
    const auto step = (static_cast<std::streamoff>(TypeParam::bytes().size()) - start) / 5;
    for (int i = 1; i <= 5; ++i) {
        ASSERT_TRUE(this->table().fetchRecord());
        EXPECT_EQ(start + i * step, this->table().File.tellg());
        EXPECT_TRUE(this->table().File.good());
    }
}
