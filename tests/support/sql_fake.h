#pragma once

#include "support/console_capture.h"

#include <kd_lib/sqldatabase.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

namespace kd_test {

/// An SQL back end without a database: it records the statements that it receives and returns the rows that a
/// test puts into it.
class FakeSqlDatabase : public kd_lib::SqlDatabase {
public:
    using Rows = std::vector<std::vector<std::string>>;

    std::vector<std::string> Executed;  ///< the statements given to `execute`
    std::vector<std::string> Queried;   ///< the statements given to `query`
    std::vector<std::string> Failing;   ///< `execute` and `query` return false for these
    bool RollsBackOnFailure = false;    ///< a failing `execute` calls `rollback`, as a real back end may
    bool ListsDatabases = true;         ///< the result of `getDatabaseList`
    std::vector<std::string> Schemas;   ///< the names that it lists
    std::vector<std::string> Columns;   ///< the columns of every query
    Rows Result;                        ///< the rows of every query
    std::size_t Fetched = 0;            ///< the calls of `fetchRow`
    std::size_t Rollbacks = 0;          ///< the calls of `rollback`
    bool FlagWhileExecuting = false;    ///< `inTransaction` during the last `execute`

    /// Makes `rows` the current result, with columns of these names and of length 0.
    void setResult(const std::vector<std::string>& columns, const Rows& rows)
    {
        Columns = columns;
        Result = rows;
        static_cast<void>(FakeSqlDatabase::query());
    }

    void setError() override {}

    void rollback() override
    {
        ++Rollbacks;
        SqlDatabase::rollback();
    }

    bool getDatabaseList() override
    {
        databaseList.clear();
        for (const std::string& schema : Schemas) {
            addDatabase(schema);
        }
        return ListsDatabases;
    }

    bool getTableList() override { return true; }
    bool getColumnList(std::string) override { return true; }
    bool prepare(std::string) override { return true; }
    bool prepareInsert(const std::string&) override { return true; }
    bool preparedRecord(kd_lib::TableFields) override { return true; }
    bool execute() override { return true; }

    bool execute(const std::string& sql) override
    {
        Executed.push_back(sql);
        FlagWhileExecuting = inTransaction;
        if (!fails(sql)) {
            return true;
        }
        if (RollsBackOnFailure) {
            rollback();
        }
        return false;
    }

    bool query() override
    {
        queryColumns.clearList();
        for (const std::string& column : Columns) {
            queryColumns.add(column);
        }
        resultRows = 1;
        Fetched = 0;
        return true;
    }

    bool query(const std::string& sql) override
    {
        Queried.push_back(sql);
        return !fails(sql) && query();
    }

    bool fetchRow() override
    {
        const std::size_t row = Fetched++;
        if (row >= Result.size()) {
            return false;
        }
        for (std::size_t i = 0; i < Result[row].size(); ++i) {
            queryColumns.get(i)->Value = Result[row][i];
        }
        return true;
    }

private:
    bool fails(const std::string& sql) const { return std::find(Failing.begin(), Failing.end(), sql) != Failing.end(); }
};

/// The output of a paged listing, and the number of input lines that it read.
struct Paged {
    std::string out;
    std::size_t asked = 0;
};

/// Runs `work` with each reply as a line of standard input, and counts the lines that it read.
inline Paged paged(const std::vector<std::string>& replies, const std::function<void()>& work)
{
    std::string input;
    for (const std::string& reply : replies) {
        input += reply + '\n';
    }
    std::size_t left = 0;
    const Console console = capturedWithInput(input, [&] {
        work();
        for (std::string line; std::getline(std::cin, line);) {
            ++left;
        }
    });
    return {console.out, replies.size() - left};
}

/// Sets the count of printed values, which all objects of the process share, back to 0: prints until
/// there is a prompt, and continues.
inline void restartRowCounter()
{
    FakeSqlDatabase database;
    database.pageRows = 0;
    database.setResult({"a"}, {});
    paged({"go on"}, [&] { database.processRow(); });
}

}  // namespace kd_test
