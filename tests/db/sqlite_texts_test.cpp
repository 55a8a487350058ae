// The statements that the SQLite back end sends by itself, byte for byte.

#include "support/console_capture.h"
#include "support/sql_calls.h"

#include <kd_lib/sqliteconnection.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

/// The statements that `work` makes SQLite prepare on an open database in memory. SQLite itself reads the schema
/// through the same function, by a SELECT without blanks.
std::vector<std::string> prepared(const std::function<void(kd_lib::SQLite3&)>& work)
{
    std::vector<std::string> texts;
    kd_test::captured([&] {
        kd_lib::SQLite3 database;
        database.openDatabase(":memory:", true, "");
        kd_test::sqliteCalls.reset();
        work(database);
        texts = kd_test::sqliteCalls.Prepared;
        std::erase_if(texts, [](const std::string& text) { return text.starts_with("SELECT*FROM"); });
    });
    return texts;
}

using Texts = std::vector<std::string>;

TEST(SqliteTexts, ListsQueryWithTheseStatements)
{
    EXPECT_EQ(Texts{"PRAGMA database_list;"}, prepared([](kd_lib::SQLite3& d) { d.getDatabaseList(); }));
    EXPECT_EQ(Texts{"SELECT name FROM sqlite_master WHERE type == 'table';"},
              prepared([](kd_lib::SQLite3& d) { d.getTableList(); }));
    EXPECT_EQ(Texts{"PRAGMA table_info(stock);"}, prepared([](kd_lib::SQLite3& d) { d.getColumnList("stock"); }));
    EXPECT_EQ(Texts{"SELECT COUNT(*) AS count FROM stock"},
              prepared([](kd_lib::SQLite3& d) { d.getRecords("stock"); }));
}

TEST(SqliteTexts, SchemasAreAttachedAndDetachedWithTheseStatements)
{
    EXPECT_EQ(Texts{"ATTACH DATABASE ':memory:' AS other;"},
              prepared([](kd_lib::SQLite3& d) { d.attach(":memory:", "other"); }));
    EXPECT_EQ(Texts{"DETACH DATABASE other;"}, prepared([](kd_lib::SQLite3& d) { d.detach("other"); }));
}

TEST(SqliteTexts, AnEncodingIsSetWithThisStatement)
{
    EXPECT_EQ(Texts{"PRAGMA encoding = \"UTF-16\";"},
              prepared([](kd_lib::SQLite3& d) { d.openDatabase(":memory:", true, "\"UTF-16\""); }));
}

TEST(SqliteTexts, DatabasesAreOpenedWithoutAStatement)
{
    EXPECT_EQ(Texts{}, prepared([](kd_lib::SQLite3& d) { d.useDatabase(":memory:"); }));
    EXPECT_EQ(Texts{}, prepared([](kd_lib::SQLite3& d) { d.createDatabase(":memory:"); }));
}

TEST(SqliteTexts, TransactionsAreTheseStatements)
{
    EXPECT_EQ((Texts{"BEGIN TRANSACTION", "END TRANSACTION", "BEGIN TRANSACTION", "ROLLBACK TRANSACTION"}),
              prepared([](kd_lib::SQLite3& d) {
                  d.beginTransaction();
                  d.endTransaction();
                  d.beginTransaction();
                  d.rollback();
              }));
}

}  // namespace
