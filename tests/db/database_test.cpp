#include "support/sql_slot.h"

#include <kd_lib/database.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

namespace {

using kd_lib::DatabaseTable;
using Base = kd_lib::Database<DatabaseTable>;
using Log = std::vector<std::string>;

static_assert(!std::is_copy_constructible_v<Base>, "a database owns its tables");
static_assert(!std::is_copy_assignable_v<Base>, "a database owns its tables");

/// A table that logs its calls.
class LoggingTable : public DatabaseTable {
public:
    LoggingTable(const std::string& name, bool open, Log& log) : DatabaseTable(name), Open(open), Entries(log) {}
    ~LoggingTable() override { Entries.push_back("delete " + Name); }
    LoggingTable(const LoggingTable&) = delete;
    LoggingTable& operator=(const LoggingTable&) = delete;

    bool is_open() override { return Open; }

    bool close() override
    {
        Entries.push_back("close " + Name);
        return DatabaseTable::close();
    }

private:
    bool Open;
    Log& Entries;
};

/// A back end whose `connect` fails and remembers the settings.
class FailingBackEnd : public Base {
public:
    std::string Met;

    using Base::connect;

    bool connect() override
    {
        Met = host + "," + user + "," + password + "," + database;
        return false;
    }
};

void expectDefaults(const Base& base)
{
    EXPECT_EQ("", base.engine);
    EXPECT_EQ("localhost", base.host);
    EXPECT_EQ("anonymous", base.user);
    EXPECT_EQ("", base.password);
    EXPECT_EQ("", base.database);
}

TEST(Database, NewObjectHasTheDefaultSettingsAndNoTables)
{
    const Base base;
    expectDefaults(base);
    EXPECT_TRUE(base.tableList.empty());
}

TEST(Database, DeliberatelyANewObjectIsConnectedAndDisconnectedAtTheSameTime)
{
    const Base base;
    EXPECT_TRUE(base.isConnected());
    EXPECT_TRUE(base.isDisconnected());
}

TEST(Database, ConnectWithoutArgumentsReturnsTrueAndChangesNothing)
{
    Base base;
    EXPECT_TRUE(base.connect());
    expectDefaults(base);
}

TEST(Database, ConnectWithArgumentsAssignsTheFourSettings)
{
    Base base;
    base.engine = "e";
    EXPECT_TRUE(base.connect("h", "u", "p", "d"));
    EXPECT_EQ("h", base.host);
    EXPECT_EQ("u", base.user);
    EXPECT_EQ("p", base.password);
    EXPECT_EQ("d", base.database);
    EXPECT_EQ("e", base.engine);
}

TEST(Database, ConnectWithArgumentsAssignsFirstAndIgnoresTheResultOfTheVirtualConnect)
{
    FailingBackEnd backEnd;
    EXPECT_FALSE(backEnd.connect());
    EXPECT_TRUE(backEnd.connect("h", "u", "p", "d"));
    EXPECT_EQ("h,u,p,d", backEnd.Met);
}

TEST(Database, DisconnectReturnsToTheDefaultsAndForgetsTheEngineAndTheTables)
{
    Base base;
    base.engine = "e";
    base.connect("h", "u", "p", "d");
    base.linkTable("t");
    EXPECT_TRUE(base.disconnect());
    expectDefaults(base);
    EXPECT_TRUE(base.tableList.empty());
}

TEST(Database, DefaultSetLeavesTheLinkedTables)
{
    Base base;
    base.engine = "e";
    base.connect("h", "u", "p", "d");
    const DatabaseTable* table = base.linkTable("t");
    base.defaultSet();
    expectDefaults(base);
    ASSERT_EQ(1U, base.tableList.size());
    EXPECT_EQ(table, base.tableList[0]);
    EXPECT_EQ("d", table->Path);
}

TEST(Database, UseDatabaseAndCreateDatabaseOnlyAssignTheName)
{
    Base base;
    EXPECT_TRUE(base.useDatabase("used"));
    EXPECT_EQ("used", base.database);
    EXPECT_TRUE(base.createDatabase("created"));
    EXPECT_EQ("created", base.database);
    EXPECT_EQ("localhost", base.host);
    EXPECT_EQ("anonymous", base.user);
}

TEST(Database, LinkTableCreatesATableWithItsNameAndTheDatabaseAsPath)
{
    Base base;
    base.database = "first";
    const DatabaseTable* one = base.linkTable("One");
    base.database = "second";
    const DatabaseTable* two = base.linkTable("Two");
    ASSERT_EQ(2U, base.tableList.size());
    EXPECT_EQ(one, base.tableList[0]);
    EXPECT_EQ(two, base.tableList[1]);
    EXPECT_EQ("One", one->Name);
    EXPECT_EQ("first", one->Path) << "the path is a copy";
    EXPECT_EQ("Two", two->Name);
    EXPECT_EQ("second", two->Path);
    EXPECT_EQ(0U, one->Fields.size());
}

TEST(Database, LinkingANameTwiceCreatesTwoTables)
{
    Base base;
    const DatabaseTable* first = base.linkTable("same");
    const DatabaseTable* second = base.linkTable("same");
    EXPECT_NE(first, second);
    EXPECT_EQ(2U, base.tableList.size());
}

TEST(Database, ClearTableListClosesOnlyOpenTablesButDeletesEveryTable)
{
    Log log;
    Base base;
    base.tableList.push_back(new LoggingTable("a", true, log));
    base.tableList.push_back(new LoggingTable("b", false, log));
    base.tableList.push_back(new LoggingTable("c", true, log));
    EXPECT_TRUE(base.clearTableList());
    EXPECT_EQ((Log{"close a", "delete a", "delete b", "close c", "delete c"}), log);
    EXPECT_TRUE(base.tableList.empty());
}

TEST(Database, ClearTableListIgnoresNullPointers)
{
    Log log;
    Base base;
    base.tableList.push_back(nullptr);
    base.tableList.push_back(new LoggingTable("a", false, log));
    EXPECT_TRUE(base.clearTableList());
    EXPECT_EQ(Log{"delete a"}, log);
    EXPECT_TRUE(base.tableList.empty());
}

TEST(Database, ClearTableListOfAnEmptyListReturnsTrue)
{
    Base base;
    EXPECT_TRUE(base.clearTableList());
}

TEST(Database, ClearTableListLeavesTheSettings)
{
    Base base;
    base.engine = "e";
    base.connect("h", "u", "p", "d");
    base.clearTableList();
    EXPECT_EQ("e", base.engine);
    EXPECT_EQ("h", base.host);
    EXPECT_EQ("d", base.database);
}

TEST(Database, DisconnectClosesTheOpenTables)
{
    Log log;
    Base base;
    base.tableList.push_back(new LoggingTable("a", true, log));
    base.disconnect();
    EXPECT_EQ((Log{"close a", "delete a"}), log);
}

TEST(Database, DestructionThroughTheBaseClosesAndDeletesTheTables)
{
    Log log;
    Base* base = new FailingBackEnd;
    base->tableList.push_back(new LoggingTable("a", true, log));
    base->tableList.push_back(new LoggingTable("b", false, log));
    delete base;
    EXPECT_EQ((Log{"close a", "delete a", "delete b"}), log);
}

TEST(Database, VirtualOperationsAreInTheirSlots)
{
    kd_test::expectFrameSlots<Base>();
}

}  // namespace
