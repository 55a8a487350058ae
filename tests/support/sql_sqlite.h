#pragma once

#include "support/console_capture.h"
#include "support/scoped_directory.h"

#include <kd_lib/sqliteconnection.h>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace kd_test {

/// A failure as the library words it: SQLite's text, its code in brackets, a line end.
inline std::string failureLine(int code, const std::string& text)
{
    return text + " [#" + std::to_string(code) + "]\n";
}

/// The output of `work`; nothing may go to standard error.
inline std::string printedBy(const std::function<void()>& work)
{
    const Console console = captured(work);
    EXPECT_EQ("", console.err);
    return console.out;
}

/// The values of the rows of a query on the bare connection, one row a line, joined by commas.
inline std::string bareQuery(sqlite3* handle, const std::string& sql)
{
    std::string rows;
    const auto append = [](void* text, int columns, char** values, char**) {
        auto& all = *static_cast<std::string*>(text);
        for (int i = 0; i < columns; ++i) {
            all += values[i] != nullptr ? values[i] : "NULL";
            all += i + 1 < columns ? ',' : '\n';
        }
        return 0;
    };
    const int code = sqlite3_exec(handle, sql.c_str(), append, &rows, nullptr);
    EXPECT_EQ(SQLITE_OK, code) << sqlite3_errmsg(handle);
    return rows;
}

/// The statements that are open on a connection.
inline std::size_t openStatements(sqlite3* handle)
{
    std::size_t count = 0;
    for (sqlite3_stmt* open = sqlite3_next_stmt(handle, nullptr); open != nullptr;) {
        ++count;
        open = sqlite3_next_stmt(handle, open);
    }
    return count;
}

/// Makes a database file by running statements on a bare connection.
inline void makeDatabase(const std::string& path, const std::string& sql)
{
    sqlite3* handle = nullptr;
    EXPECT_EQ(SQLITE_OK, sqlite3_open(path.c_str(), &handle));
    bareQuery(handle, sql);
    EXPECT_EQ(SQLITE_OK, sqlite3_close(handle));
}

/// The file descriptors that this process has open.
inline std::size_t openDescriptors()
{
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        count += entry.is_symlink() ? 1U : 0U;
    }
    return count;
}

}  // namespace kd_test
