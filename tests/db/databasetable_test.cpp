#include <kd_lib/databasetable.h>

#include "support/console_capture.h"
#include "support/sql_slot.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

using namespace std::string_literals;
using kd_lib::DatabaseTable;

static_assert(std::has_virtual_destructor_v<DatabaseTable>);

namespace {

std::string shownHeader(DatabaseTable& table)
{
    const kd_test::Console console = kd_test::captured([&table] { table.showHeader(); });
    EXPECT_EQ("", console.err);
    return console.out;
}

/// Notes the name that it is opened with; forgets its own name first.
class NotingTable : public DatabaseTable {
public:
    using DatabaseTable::DatabaseTable;
    using DatabaseTable::open;

    bool open(const std::string& name) override
    {
        Name = "forgotten";
        Opened.push_back(name);
        return Result;
    }

    std::vector<std::string> Opened;
    bool Result = true;
};

/// Notes its destruction.
class EndingTable : public DatabaseTable {
public:
    explicit EndingTable(bool& ended) : Ended(ended) {}
    ~EndingTable() override { Ended = true; }
    EndingTable(const EndingTable&) = delete;
    EndingTable& operator=(const EndingTable&) = delete;

private:
    bool& Ended;
};

}  // namespace

// Construction

TEST(DatabaseTable, DefaultTableHasNoNameAndNoColumns)
{
    const DatabaseTable table;
    EXPECT_EQ("", table.Name);
    EXPECT_EQ("", table.Path);
    EXPECT_EQ(0U, table.Fields.size());
    EXPECT_FALSE(table.Fields.CaseSensitive);
    EXPECT_TRUE(table.Trim);
    EXPECT_EQ(0U, table.RecordCount);
}

TEST(DatabaseTable, NamedTableHasItsName)
{
    const DatabaseTable table("Parts");
    EXPECT_EQ("Parts", table.Name);
    EXPECT_EQ("", table.Path);
    EXPECT_EQ(0U, table.Fields.size());
    EXPECT_FALSE(table.Fields.CaseSensitive);
    EXPECT_TRUE(table.Trim);
    EXPECT_EQ(0U, table.RecordCount);
}

// The base's operations

TEST(DatabaseTable, IsOpenAndFetchesWithoutDoingAnything)
{
    DatabaseTable table;
    table.Fields.add("r1c1");
    table.Fields.get(0)->Value = "kept";
    EXPECT_TRUE(table.is_open());
    EXPECT_TRUE(table.fetchRecord());
    EXPECT_EQ("kept", table.Fields.getData(0));
}

TEST(DatabaseTable, GetFieldListAndSkipHeaderReturnTrueAndDoNothing)
{
    DatabaseTable table("parts");
    table.Fields.add("r1c1");
    const kd_test::Console console = kd_test::captured([&table] {
        EXPECT_TRUE(table.getFieldList());
        EXPECT_TRUE(table.skipHeader());
    });
    EXPECT_EQ(1U, table.Fields.size());
    EXPECT_EQ("", console.out + console.err);
}

TEST(DatabaseTable, CloseEmptiesTheColumnsAndReturnsTrue)
{
    DatabaseTable table("parts");
    table.Fields.add("r1c1");
    EXPECT_TRUE(table.close());
    EXPECT_EQ(0U, table.Fields.size());
    EXPECT_EQ("parts", table.Name);
    EXPECT_TRUE(table.close());
}

TEST(DatabaseTable, DefineFieldsEmptiesTheColumns)
{
    DatabaseTable table;
    table.Fields.add("r1c1");
    table.defineFields();
    EXPECT_EQ(0U, table.Fields.size());
}

TEST(DatabaseTable, OpenOfTheBaseReturnsFalse)
{
    DatabaseTable table("parts");
    EXPECT_FALSE(table.open());
    EXPECT_FALSE(table.open("other"));
    EXPECT_EQ("parts", table.Name);
}

TEST(DatabaseTable, OpenPassesACopyOfTheNameToTheVirtualOpen)
{
    NotingTable table("parts");
    DatabaseTable& base = table;
    EXPECT_TRUE(base.open());
    EXPECT_EQ(std::vector<std::string>{"parts"}, table.Opened);
    table.Result = false;
    EXPECT_FALSE(base.open());
    EXPECT_EQ((std::vector<std::string>{"parts", "forgotten"}), table.Opened);
}

TEST(DatabaseTable, DeletionThroughTheBaseDestroysTheWholeTable)
{
    bool ended = false;
    std::unique_ptr<DatabaseTable> table = std::make_unique<EndingTable>(ended);
    table->Fields.add("r1c1");
    table.reset();
    EXPECT_TRUE(ended);
}

// showHeader

TEST(DatabaseTable, ShowHeaderPrintsNameColumnsAndCount)
{
    DatabaseTable table("parts");
    table.RecordCount = 65;
    EXPECT_EQ("Header information for table : parts\nFields:\nNumber of records: A\n", shownHeader(table));
}

TEST(DatabaseTable, ShowHeaderListsTheColumns)
{
    DatabaseTable table("Parts");
    kd_lib::TableField id("Id", kd_lib::INTEGER_TYPE, 1, 4, 0, true);
    table.Fields.add(id);
    table.Fields.add("note");
    table.RecordCount = 66;
    EXPECT_EQ("Header information for table : Parts\n"
              "Fields:\n"
              "0\tid\tinteger\t1\t4\t0\t1\n"
              "1\tnote\tunknown\t0\t0\t0\t0\n"
              "Number of records: B\n",
              shownHeader(table));
}

TEST(DatabaseTable, ShowHeaderDeliberatelyPrintsTheCountAsOneCharacterOfItsLowEightBits)
{
    DatabaseTable table;
    const std::string before = "Header information for table : \nFields:\nNumber of records: ";
    table.RecordCount = 0;
    EXPECT_EQ(before + "\0\n"s, shownHeader(table));
    table.RecordCount = 10;
    EXPECT_EQ(before + "\n\n", shownHeader(table));
    table.RecordCount = 255;
    EXPECT_EQ(before + "\xFF\n", shownHeader(table));
    table.RecordCount = 256 + 67;
    EXPECT_EQ(before + "C\n", shownHeader(table));
    table.RecordCount = 0xFFFFFFFFFFFFFF44U;
    EXPECT_EQ(before + "D\n", shownHeader(table));
}

// The order of the virtual operations

TEST(DatabaseTable, VirtualOperationsAreInTheirOrder)
{
    EXPECT_EQ(2U, kd_test::virtualSlot(static_cast<bool (DatabaseTable::*)()>(&DatabaseTable::open)));
    EXPECT_EQ(3U, kd_test::virtualSlot(static_cast<bool (DatabaseTable::*)(const std::string&)>(&DatabaseTable::open)));
    EXPECT_EQ(4U, kd_test::virtualSlot(&DatabaseTable::is_open));
    EXPECT_EQ(5U, kd_test::virtualSlot(&DatabaseTable::close));
    EXPECT_EQ(6U, kd_test::virtualSlot(&DatabaseTable::getFieldList));
    EXPECT_EQ(7U, kd_test::virtualSlot(&DatabaseTable::skipHeader));
    EXPECT_EQ(8U, kd_test::virtualSlot(&DatabaseTable::defineFields));
    EXPECT_EQ(9U, kd_test::virtualSlot(&DatabaseTable::showHeader));
    EXPECT_EQ(10U, kd_test::virtualSlot(&DatabaseTable::fetchRecord));
}
