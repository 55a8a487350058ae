// Opening, reading, closing, preparing, querying and disconnecting, 10,000 times over: no descriptor is left open and
// no byte allocated. With the address sanitizer, its leak check runs at the end.

#include <kd_lib/asciitable.h>
#include <kd_lib/sqliteconnection.h>
#include <kd_lib/xbase2sql.h>
#include <kd_lib/xbasememory.h>

#include "allocation_count.h"
#include "support/console_capture.h"
#include "support/dbf_builder.h"
#include "support/mem_builder.h"
#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <sqlite3.h>
#include <string>

namespace {

/// KD_FLAT_ROUNDS sets another number, for slow tools.
int rounds()
{
    const char* asked = std::getenv("KD_FLAT_ROUNDS");
    return asked != nullptr ? std::atoi(asked) : 10000;
}

std::ptrdiff_t openDescriptors()
{
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return std::distance(begin(entries), end(entries));
}

/// Runs `round` some times, so that every permanent buffer exists, then all the rounds, and compares open descriptors
/// and allocated bytes.
void expectNothingLeft(const std::function<void()>& round)
{
    std::ptrdiff_t descriptorsLeft = 0;
    long allocationsLeft = 0;
    std::int64_t sqliteBytesLeft = 0;
    kd_test::captured([&] {
        for (int i = 0; i < 100; ++i) {
            round();
        }
        const std::ptrdiff_t descriptors = openDescriptors();
        const long allocations = kd_test::liveAllocations();
        const std::int64_t sqliteBytes = sqlite3_memory_used();
        for (int i = 0; i < rounds(); ++i) {
            round();
        }
        sqliteBytesLeft = sqlite3_memory_used() - sqliteBytes;
        allocationsLeft = kd_test::liveAllocations() - allocations;
        descriptorsLeft = openDescriptors() - descriptors;
    });
    EXPECT_EQ(descriptorsLeft, 0);
    EXPECT_EQ(sqliteBytesLeft, 0);
    EXPECT_EQ(allocationsLeft, 0);
}

std::string stockTable()
{
    kd_test::DbfBuilder builder({{"NAME", 'C', 40}, {"PRICE", 'N', 8, 2}});
    builder.record({"bolt of a length that no short string holds", "1.25"});
    builder.deletedRecord({"nut", "0.30"});
    return builder.bytes();
}

template <class Table>
void walk(const std::string& folder)
{
    Table table;
    table.Path = folder;
    ASSERT_TRUE(table.open("stock"));
    ASSERT_TRUE(table.getFieldList());
    while (table.fetchRecord()) {
    }
    table.close();
    ASSERT_TRUE(table.open("stock"));  // left open: the destructor closes it
}

TEST(FlatTest, XbaseTablesLeaveNothing)
{
    const kd_test::ScopedDirectory folder;
    folder.write("stock.dbf", stockTable());
    expectNothingLeft([&] { walk<kd_lib::xBaseTable>(folder.path()); });
}

TEST(FlatTest, ScriptsLeaveNothing)
{
    const kd_test::ScopedDirectory folder;
    folder.write("stock.dbf", stockTable());
    expectNothingLeft([&] {
        kd_lib::xBase2Sql table("stock");
        table.Path = folder.path();
        ASSERT_EQ(table.convert(), folder.file("stock.sql"));
    });
}

TEST(FlatTest, TextTablesLeaveNothing)
{
    const kd_test::ScopedDirectory folder;
    folder.write("stock.csv", "name|price\nbolt of a length that no short string holds|1.25\n");
    expectNothingLeft([&] { walk<kd_lib::DelimitedTable>(folder.path()); });
}

TEST(FlatTest, MemoryFilesLeaveNothing)
{
    const kd_test::ScopedDirectory folder;
    folder.write("stock.mem", kd_test::memEntry("TITLE", 'C', 6, 0, std::string("Hello\0", 6)));
    expectNothingLeft([&] {
        kd_lib::xBaseMemory memory("stock");
        memory.Path = folder.path();
        ASSERT_TRUE(memory.open());
        ASSERT_TRUE(memory.read());
    });
}

void useDatabase(const kd_test::ScopedDirectory& folder)
{
    kd_lib::SQLite3 database;
    database.host = folder.path();
    ASSERT_TRUE(database.useDatabase("stock.db"));
    ASSERT_TRUE(database.attach(folder.file("other.db"), "other"));
    ASSERT_TRUE(database.prepare("SELECT * FROM stock WHERE name <> ?"));
    ASSERT_TRUE(database.bind(1, std::string("nothing")));
    ASSERT_TRUE(database.query());
    ASSERT_TRUE(database.fetchRow());  // half read when the next statement replaces it
    ASSERT_TRUE(database.query("SELECT name FROM stock"));
    ASSERT_TRUE(database.queryResults());
    ASSERT_FALSE(database.execute("SELECT nothing FROM nowhere"));
    database.beginTransaction();
    database.rollback();
    ASSERT_TRUE(database.useDatabase("stock.db"));  // replaces the open connection
    ASSERT_TRUE(database.getTableList());
    ASSERT_TRUE(database.query("SELECT name FROM stock"));
    ASSERT_TRUE(database.fetchRow());
    ASSERT_TRUE(database.disconnect());
    ASSERT_TRUE(database.openDatabase(":memory:", true, ""));  // left open: the destructor closes it
    ASSERT_TRUE(database.execute("CREATE TABLE t (a)"));
}

TEST(FlatTest, DatabasesLeaveNothing)
{
    const kd_test::ScopedDirectory folder;
    kd_test::captured([&] {
        for (const char* name : {"stock.db", "other.db"}) {
            kd_lib::SQLite3 database;
            database.host = folder.path();
            ASSERT_TRUE(database.createDatabase(name));
            ASSERT_TRUE(database.execute("CREATE TABLE stock (name, price)"));
            ASSERT_TRUE(database.execute("INSERT INTO stock VALUES ('bolt', 1.25), ('nut', 0.3)"));
        }
    });
    expectNothingLeft([&] { useDatabase(folder); });
}

}  // namespace
