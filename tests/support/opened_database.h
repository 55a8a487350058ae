#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <vector>

namespace kd_test {

/// A database opened with SQLite alone.
class Opened {
public:
    explicit Opened(const std::string& path) { sqlite3_open(path.c_str(), &Handle); }
    ~Opened() { sqlite3_close(Handle); }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

    void run(const std::string& sql)
    {
        ASSERT_EQ(sqlite3_exec(Handle, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(Handle);
    }

    /// The first column of all rows.
    std::vector<std::string> values(const std::string& sql)
    {
        std::vector<std::string> found;
        const auto take = [](void* to, int, char** row, char**) {
            static_cast<std::vector<std::string>*>(to)->emplace_back(row[0] != nullptr ? row[0] : "NULL");
            return 0;
        };
        char* reason = nullptr;
        EXPECT_EQ(sqlite3_exec(Handle, sql.c_str(), take, &found, &reason), SQLITE_OK) << reason;
        sqlite3_free(reason);
        return found;
    }

private:
    sqlite3* Handle = nullptr;
};

}  // namespace kd_test
