/// \file
/// Fixtures of the tests of SQLite connections.
#pragma once

#include "support/scoped_directory.h"
#include "support/sql_calls.h"

#include <kd_lib/sqliteconnection.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace kd_test {

using kd_lib::SQLite3;
using Texts = std::vector<std::string>;

/// While it exists, a scratch directory is the working directory and the home directory.
class InScratchDirectory : public testing::Test {
protected:
    void SetUp() override
    {
        const char* home = std::getenv("HOME");
        SavedHome = home != nullptr ? home : "";
        SavedDirectory = std::filesystem::current_path();
        std::filesystem::current_path(Scratch.path());
        ::setenv("HOME", Scratch.path().c_str(), 1);
        sqliteCalls.reset();
    }

    void TearDown() override
    {
        sqliteCalls.reset();
        std::filesystem::current_path(SavedDirectory);
        ::setenv("HOME", SavedHome.c_str(), 1);
    }

    ScopedDirectory Scratch;

private:
    std::string SavedHome;
    std::filesystem::path SavedDirectory;
};

/// An object whose `host` is empty, so that paths are used unchanged.
class SqliteConnection : public InScratchDirectory {
protected:
    SqliteConnection() { Database.host = ""; }

    Texts linkedTables() const
    {
        Texts tables;
        for (const kd_lib::DatabaseTable* table : Database.tableList) {
            tables.push_back(table->Path + ":" + table->Name);
        }
        return tables;
    }

    SQLite3 Database;
};

}  // namespace kd_test
