// A client's class may do this in its overrides: pass other text to the base operation, read more of the file, and
// define type names.
#include "support/dbf_builder.h"
#include "support/table_builder.h"

#include <kd_lib/asciitable.h>
#include <kd_lib/filetable.h>
#include <kd_lib/sqliteconnection.h>
#include <kd_lib/xbasetable.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

using kd_test::Opened;
using kd_test::Row;
using kd_test::Rows;
using kd_test::rowsOf;

namespace {

// Longer than a text that a string keeps without allocating: a view of it would dangle.
const Rows fourRows = {
    {"r1c1", "the first row of the table"},
    {"r2c1", "the second row of this table"},
    {"r3c1", "the third row of this table"},
    {"r4c1", "the fourth row of the table"},
};
constexpr int secondWidth = 30;

std::string padded(const std::string& text)
{
    return text + std::string(static_cast<std::size_t>(secondWidth) - text.size(), ' ');
}

std::string lines(const std::string& between, bool pad)
{
    std::string text;
    for (const Row& row : fourRows) {
        text += row[0] + between + (pad ? padded(row[1]) : row[1]) + "\n";
    }
    return text;
}

template <class Table>
struct PositionalBase {
    using Base = Table;
    static std::string bytes() { return lines("", true); }
    static void define(Table& table)
    {
        kd_test::addColumn(table, "first", 0, 4);
        kd_test::addColumn(table, "second", 4, secondWidth);
    }
};

struct DelimitedBase {
    using Base = kd_lib::DelimitedTable;
    static std::string bytes() { return "first|second\n" + lines("|", false); }
    static void define(Base& table) { EXPECT_TRUE(table.getFieldList()); }
};

struct XBaseBase {
    using Base = kd_lib::xBaseTable;
    static std::string bytes()
    {
        kd_test::DbfBuilder builder({{"FIRST", 'C', 4}, {"SECOND", 'C', secondWidth}});
        for (const Row& row : fourRows) {
            builder.record(row);
        }
        return builder.bytes();
    }
    static void define(Base& table) { EXPECT_TRUE(table.getFieldList()); }
};

/// Notes whether `work` changes the text of a call.
template <class Work>
bool changedBy(const std::string& argument, Work work)
{
    const std::string before = argument;
    const std::string_view view = argument;
    work();
    return argument != before || view.data() != argument.data() || view != before;
}

template <class Kind>
class TableOverride : public testing::Test {
};

using Bases =
    testing::Types<PositionalBase<kd_lib::FileTable>, PositionalBase<kd_lib::AsciiTable>, DelimitedBase, XBaseBase>;
TYPED_TEST_SUITE(TableOverride, Bases);

/// A client's types with common names.
struct Record {
    int number = 1;
};
using Line = Record;
using Deleted = Record;
using FileBuffer = Record;
using Running = Record;
using Replaced = Record;
using Superseded = Record;

}  // namespace

TYPED_TEST(TableOverride, KeepsItsRecordWhenItPassesOtherTextToTheBaseOperation)
{
    class Padding : public TypeParam::Base {
    public:
        bool extractContent(const std::string& record) override
        {
            const std::string other = record + "     and more than the record had before";
            Changed = changedBy(record, [&] { TypeParam::Base::extractContent(other); }) || Changed;
            return true;
        }
        bool Changed = false;
    };
    Opened<Padding> file(TypeParam::bytes());
    TypeParam::define(file.table);
    EXPECT_EQ(4U, rowsOf(file.table).size());
    EXPECT_FALSE(file.table.Changed);
}

TYPED_TEST(TableOverride, KeepsItsRecordWhenItFetchesTheNextOne)
{
    class Joining : public TypeParam::Base {
    public:
        bool extractContent(const std::string& record) override
        {
            if (Inside) {
                return TypeParam::Base::extractContent(record);
            }
            Inside = true;
            Changed = changedBy(record, [&] { this->fetchRecord(); }) || Changed;
            Inside = false;
            Seconds.push_back(this->Fields.getData(1UL));
            return TypeParam::Base::extractContent(record);
        }
        Row Seconds;
        bool Changed = false;
        bool Inside = false;
    };
    Opened<Joining> file(TypeParam::bytes());
    TypeParam::define(file.table);
    EXPECT_EQ((Rows{fourRows[0], fourRows[2]}), rowsOf(file.table));
    EXPECT_EQ((Row{fourRows[1][1], fourRows[3][1]}), file.table.Seconds);
    EXPECT_FALSE(file.table.Changed);
}

TYPED_TEST(TableOverride, KeepsItsRecordWhenItGoesToAnotherOne)
{
    class Going : public TypeParam::Base {
    public:
        bool extractContent(const std::string& record) override
        {
            const std::streamoff here = this->File.tellg();
            Changed = changedBy(record, [&] { this->goRecord(3); }) || Changed;
            this->File.seekg(here);
            return TypeParam::Base::extractContent(record);
        }
        bool Changed = false;
    };
    Opened<Going> file(TypeParam::bytes());
    TypeParam::define(file.table);
    EXPECT_EQ(fourRows, rowsOf(file.table));
    EXPECT_FALSE(file.table.Changed);
}

TYPED_TEST(TableOverride, RecordMayBeTheValueOfAnyColumn)
{
    for (const std::size_t column : {0U, 1U}) {
        Opened<typename TypeParam::Base> file(TypeParam::bytes());
        TypeParam::define(file.table);
        const bool delimited = std::is_same_v<TypeParam, DelimitedBase>;
        const int offset = std::is_same_v<TypeParam, XBaseBase> ? 1 : 0;
        std::string& value = file.table.Fields.get(column)->Value;
        value = std::string(static_cast<std::size_t>(offset), ' ') + "abcd" + (delimited ? "|" : "") +
                padded("the value of a column itself");
        file.table.extractContent(value);
        EXPECT_EQ("abcd", file.table.Fields.getData(0UL));
        EXPECT_EQ("the value of a column itself", file.table.Fields.getData(1UL).substr(0, 28));
    }
}

TYPED_TEST(TableOverride, WalkContinuesAfterAnOverrideThatThrew)
{
    class Throwing : public TypeParam::Base {
    public:
        bool extractContent(const std::string& record) override
        {
            if (std::exchange(Throws, false)) {
                throw std::string("refused");
            }
            return TypeParam::Base::extractContent(record);
        }
        bool Throws = true;
    };
    Opened<Throwing> file(TypeParam::bytes());
    TypeParam::define(file.table);
    EXPECT_THROW(file.table.fetchRecord(), std::string);
    EXPECT_EQ((Rows{fourRows[1], fourRows[2], fourRows[3]}), rowsOf(file.table));
}

TEST(FieldNamesOverride, KeepsItsLineWhenItPassesOtherTextToTheBaseOperationOrFetchesMore)
{
    class Naming : public kd_lib::DelimitedTable {
    public:
        bool extractContent(const std::string&) override { return true; }
        bool extractFieldNames(const std::string& line) override
        {
            Changed = changedBy(line, [&] {
                fetchRecord();
                goRecord(2);
                extractContent(line + "|third");
                DelimitedTable::extractFieldNames(line + "|a third name, longer than the others");
            });
            return DelimitedTable::extractFieldNames(line);
        }
        bool Changed = false;
    };
    Opened<Naming> file("a first name|a second name\nr1c1|r1c2, which has more text than the names\n");
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_FALSE(file.table.Changed);
    EXPECT_EQ(5U, file.table.Fields.size());
    EXPECT_EQ("a first name", file.table.Fields.get(3UL)->Name);
}

TEST(IsOpenOverride, OpenChecksTheStreamFirstAndCallsTheOverrideAfterwards)
{
    class Claiming : public kd_lib::FileTable {
    public:
        bool is_open() override { return Claim; }
        bool Claim = true;
    };
    const kd_test::ScopedDirectory directory;
    directory.write("sample.txt", "one\n");
    Claiming claiming;
    EXPECT_TRUE(kd_test::openQuietly(claiming, directory));
    EXPECT_TRUE(claiming.File.is_open());
    EXPECT_EQ("sample", claiming.Name);
    Claiming denying;
    denying.Claim = false;
    EXPECT_FALSE(kd_test::openQuietly(denying, directory));
    EXPECT_TRUE(denying.File.is_open());
    EXPECT_EQ("", denying.Name);
    EXPECT_TRUE(kd_test::openQuietly(denying, directory));
}

TEST(IsOpenOverride, CloseCallsTheOverride)
{
    class Claiming : public kd_lib::FileTable {
    public:
        bool is_open() override { return Claim; }
        bool Claim = true;
    };
    Opened<Claiming> file("one\n");
    file.table.Claim = false;
    EXPECT_TRUE(file.table.close());
    EXPECT_TRUE(file.table.File.is_open());
    file.table.Claim = true;
    EXPECT_TRUE(file.table.close());
    EXPECT_FALSE(file.table.File.is_open());
    EXPECT_TRUE(file.table.File.good());
    EXPECT_TRUE(file.table.close());
    EXPECT_TRUE(file.table.File.fail());
}

TEST(ClientNames, AreNotHiddenByTheMembersOfTheLibrarysClasses)
{
    class Log : public kd_lib::xBaseTable {
    public:
        Record First;
        Line Second;
        Deleted Third;
        FileBuffer Fourth;
        int sum() const { return First.number + Second.number + Third.number + Fourth.number; }
    };
    class Shop : public kd_lib::SQLite3 {
    public:
        Row First;
        Running Second;
        Replaced Third;
        Superseded Fourth;
        int sum() const { return static_cast<int>(First.size()) + Second.number + Third.number + Fourth.number; }
    };
    EXPECT_EQ(4, Log().sum());
    EXPECT_EQ(3, Shop().sum());
}
