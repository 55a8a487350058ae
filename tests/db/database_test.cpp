#include "support/sql_slot.h"

#include <kd_lib/database.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

namespace {

using kd_lib::DatabaseTable;
using Frame = kd_lib::Database<DatabaseTable>;
using Log = std::vector<std::string>;

static_assert(!std::is_copy_constructible_v<Frame>, "a frame owns its tables");
static_assert(!std::is_copy_assignable_v<Frame>, "a frame owns its tables");

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
class FailingBackEnd : public Frame {
public:
    std::string Met;

    using Frame::connect;

    bool connect() override
    {
        Met = host + "," + user + "," + password + "," + database;
        return false;
    }
};

void expectDefaults(const Frame& frame)
{
    EXPECT_EQ("", frame.engine);
    EXPECT_EQ("localhost", frame.host);
    EXPECT_EQ("anonymous", frame.user);
    EXPECT_EQ("", frame.password);
    EXPECT_EQ("", frame.database);
}

TEST(Database, NewObjectHasTheDefaultSettingsAndNoTables)
{
    const Frame frame;
    expectDefaults(frame);
    EXPECT_TRUE(frame.tableList.empty());
}

TEST(Database, DeliberatelyANewObjectIsConnectedAndDisconnectedAtTheSameTime)
{
    const Frame frame;
    EXPECT_TRUE(frame.isConnected());
    EXPECT_TRUE(frame.isDisconnected());
}

TEST(Database, ConnectWithoutArgumentsReturnsTrueAndChangesNothing)
{
    Frame frame;
    EXPECT_TRUE(frame.connect());
    expectDefaults(frame);
}

TEST(Database, ConnectWithArgumentsAssignsTheFourSettings)
{
    Frame frame;
    frame.engine = "e";
    EXPECT_TRUE(frame.connect("h", "u", "p", "d"));
    EXPECT_EQ("h", frame.host);
    EXPECT_EQ("u", frame.user);
    EXPECT_EQ("p", frame.password);
    EXPECT_EQ("d", frame.database);
    EXPECT_EQ("e", frame.engine);
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
    Frame frame;
    frame.engine = "e";
    frame.connect("h", "u", "p", "d");
    frame.linkTable("t");
    EXPECT_TRUE(frame.disconnect());
    expectDefaults(frame);
    EXPECT_TRUE(frame.tableList.empty());
}

TEST(Database, DefaultSetLeavesTheLinkedTables)
{
    Frame frame;
    frame.engine = "e";
    frame.connect("h", "u", "p", "d");
    const DatabaseTable* table = frame.linkTable("t");
    frame.defaultSet();
    expectDefaults(frame);
    ASSERT_EQ(1U, frame.tableList.size());
    EXPECT_EQ(table, frame.tableList[0]);
    EXPECT_EQ("d", table->Path);
}

TEST(Database, UseDatabaseAndCreateDatabaseOnlyAssignTheName)
{
    Frame frame;
    EXPECT_TRUE(frame.useDatabase("used"));
    EXPECT_EQ("used", frame.database);
    EXPECT_TRUE(frame.createDatabase("created"));
    EXPECT_EQ("created", frame.database);
    EXPECT_EQ("localhost", frame.host);
    EXPECT_EQ("anonymous", frame.user);
}

TEST(Database, LinkTableCreatesATableWithItsNameAndTheDatabaseAsPath)
{
    Frame frame;
    frame.database = "first";
    const DatabaseTable* one = frame.linkTable("One");
    frame.database = "second";
    const DatabaseTable* two = frame.linkTable("Two");
    ASSERT_EQ(2U, frame.tableList.size());
    EXPECT_EQ(one, frame.tableList[0]);
    EXPECT_EQ(two, frame.tableList[1]);
    EXPECT_EQ("One", one->Name);
    EXPECT_EQ("first", one->Path) << "the path is a copy";
    EXPECT_EQ("Two", two->Name);
    EXPECT_EQ("second", two->Path);
    EXPECT_EQ(0U, one->Fields.size());
}

TEST(Database, LinkingANameTwiceCreatesTwoTables)
{
    Frame frame;
    const DatabaseTable* first = frame.linkTable("same");
    const DatabaseTable* second = frame.linkTable("same");
    EXPECT_NE(first, second);
    EXPECT_EQ(2U, frame.tableList.size());
}

TEST(Database, ClearTableListClosesOnlyOpenTablesButDeletesEveryTable)
{
    Log log;
    Frame frame;
    frame.tableList.push_back(new LoggingTable("a", true, log));
    frame.tableList.push_back(new LoggingTable("b", false, log));
    frame.tableList.push_back(new LoggingTable("c", true, log));
    EXPECT_TRUE(frame.clearTableList());
    EXPECT_EQ((Log{"close a", "delete a", "delete b", "close c", "delete c"}), log);
    EXPECT_TRUE(frame.tableList.empty());
}

TEST(Database, ClearTableListIgnoresNullPointers)
{
    Log log;
    Frame frame;
    frame.tableList.push_back(nullptr);
    frame.tableList.push_back(new LoggingTable("a", false, log));
    EXPECT_TRUE(frame.clearTableList());
    EXPECT_EQ(Log{"delete a"}, log);
    EXPECT_TRUE(frame.tableList.empty());
}

TEST(Database, ClearTableListOfAnEmptyListReturnsTrue)
{
    Frame frame;
    EXPECT_TRUE(frame.clearTableList());
}

TEST(Database, ClearTableListLeavesTheSettings)
{
    Frame frame;
    frame.engine = "e";
    frame.connect("h", "u", "p", "d");
    frame.clearTableList();
    EXPECT_EQ("e", frame.engine);
    EXPECT_EQ("h", frame.host);
    EXPECT_EQ("d", frame.database);
}

TEST(Database, DisconnectClosesTheOpenTables)
{
    Log log;
    Frame frame;
    frame.tableList.push_back(new LoggingTable("a", true, log));
    frame.disconnect();
    EXPECT_EQ((Log{"close a", "delete a"}), log);
}

TEST(Database, DestructionThroughTheBaseClosesAndDeletesTheTables)
{
    Log log;
    Frame* frame = new FailingBackEnd;
    frame->tableList.push_back(new LoggingTable("a", true, log));
    frame->tableList.push_back(new LoggingTable("b", false, log));
    delete frame;
    EXPECT_EQ((Log{"close a", "delete a", "delete b"}), log);
}

TEST(Database, VirtualOperationsAreInTheirSlots)
{
    kd_test::expectFrameSlots<Frame>();
}

}  // namespace
