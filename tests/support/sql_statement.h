/// \file
/// Fixtures of the tests of SQLite statements.
#pragma once

#include "support/scoped_directory.h"
#include "support/sql_calls.h"
#include "support/sql_other_process.h"
#include "support/sql_sqlite.h"

#include <kd_lib/sqliteconnection.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace kd_test {

using kd_lib::SQLite3;
using kd_lib::TableFields;

inline const std::string rowIsFailure = failureLine(100, "another row available");
inline const std::string outOfRange = failureLine(25, "column index out of range");

/// A query whose first step fails with code 1.
inline const std::string failingQuery = "SELECT abs(-9223372036854775807 - 1)";
inline const std::string overflow = failureLine(1, "integer overflow");

/// An in-memory database with the table t (a UNIQUE, b), which is empty.
class SqliteStatement : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(Database.createDatabase(":memory:"));
        bare("CREATE TABLE t (a UNIQUE, b)");
        sqliteCalls.reset();
    }

    void TearDown() override { sqliteCalls.reset(); }

    std::string bare(const std::string& sql) const { return bareQuery(Database.handle, sql); }

    /// The rows of the table t, as SQL literals.
    std::string rows() const { return bare("SELECT quote(a), quote(b) FROM t ORDER BY rowid"); }

    bool transactionIsOpen() const { return sqlite3_get_autocommit(Database.handle) == 0; }

    SQLite3 Database;
};

/// A database file with two rows that another process has also opened.
class SqliteStatementLock : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(SQLITE_OK, Other.run("CREATE TABLE t (a); INSERT INTO t VALUES (1), (2)"));
        Database.host = Scratch.path();
        ASSERT_TRUE(Database.useDatabase("x.db"));
    }

    ScopedDirectory Scratch;
    OtherProcess Other{Scratch.file("x.db")};
    SQLite3 Database;
};

/// A list of fields with these names and values; names keep their case.
inline TableFields record(const std::vector<std::pair<std::string, std::string>>& values)
{
    TableFields fields;
    fields.CaseSensitive = true;
    for (const auto& [name, value] : values) {
        fields.add(name);
        fields.List.back()->Value = value;
    }
    return fields;
}

inline std::ptrdiff_t timesFinalised(const sqlite3_stmt* statement)
{
    return std::count(sqliteCalls.Finalized.begin(), sqliteCalls.Finalized.end(), statement);
}

}  // namespace kd_test
