// The extension as other programs load it.
#include "support/dbf_builder.h"
#include "support/scoped_directory.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>

namespace {

class Shell {
public:
    Shell()
    {
        sqlite3_open(":memory:", &Handle);
        sqlite3_db_config(Handle, SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 1, nullptr);
    }
    ~Shell() { EXPECT_EQ(sqlite3_close(Handle), SQLITE_OK); }
    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;

    std::string load()
    {
        char* reason = nullptr;
        // Without ".so", as users type it.
        const std::string file = KD_TABLES_FILE;
        const int code = sqlite3_load_extension(Handle, file.substr(0, file.rfind('.')).c_str(), nullptr, &reason);
        const std::string told = reason != nullptr ? reason : "";
        sqlite3_free(reason);
        return code == SQLITE_OK ? "loaded" : told;
    }

    /// The last cell of the last row, or the reason of a failure.
    std::string run(const std::string& sql)
    {
        std::string found;
        char* reason = nullptr;
        const auto take = [](void* to, int count, char** cells, char**) {
            *static_cast<std::string*>(to) = cells[count - 1] != nullptr ? cells[count - 1] : "NULL";
            return 0;
        };
        if (sqlite3_exec(Handle, sql.c_str(), take, &found, &reason) != SQLITE_OK) {
            found = reason;
        }
        sqlite3_free(reason);
        return found;
    }

private:
    sqlite3* Handle = nullptr;
};

TEST(KdTables, LoadedExtensionReadsFiles)
{
    const kd_test::ScopedDirectory folder;
    const std::string file = folder.write(
        "t.dbf", kd_test::DbfBuilder({{"A", 'N', 5}, {"B", 'C', 5}}).record({"1", "r1"}).record({"x", "r2"}).bytes());
    Shell shell;
    ASSERT_EQ(shell.load(), "loaded");
    EXPECT_EQ(shell.run("CREATE VIRTUAL TABLE t USING kd('" + file + "')"), "");
    EXPECT_EQ(shell.run("SELECT count(*) || count(a) || max(b) FROM t"), "21r2");
    EXPECT_EQ(shell.run("SELECT b FROM t WHERE rowid = 2"), "r2");
    EXPECT_EQ(shell.run("CREATE VIRTUAL TABLE u USING kd('" + file + "', colour=blue)"),
              "unknown argument colour=blue");
}

TEST(KdTables, WithoutItTheModuleIsUnknown)
{
    Shell shell;
    EXPECT_EQ(shell.run("CREATE VIRTUAL TABLE t USING kd('t.dbf')"), "no such module: kd");
}

TEST(KdTables, RejectsGoToTheLog)
{
    static std::string logged;
    sqlite3_shutdown();
    ASSERT_EQ(sqlite3_config(
                  SQLITE_CONFIG_LOG, +[](void*, int, const char* line) { logged += line; }, nullptr),
              SQLITE_OK);
    const kd_test::ScopedDirectory folder;
    const std::string file =
        folder.write("t.dbf", kd_test::DbfBuilder({{"A", 'N', 5}}).record({"x"}).deletedRecord({"1"}).bytes());
    {
        Shell shell;
        ASSERT_EQ(shell.load(), "loaded");
        shell.run("CREATE VIRTUAL TABLE t USING kd('" + file + "')");
        EXPECT_EQ(shell.run("SELECT a FROM t"), "NULL");
    }
    EXPECT_NE(logged.find(file + ": record 1, column A, byte 66: "), std::string::npos) << logged;
    EXPECT_NE(logged.find("; taken as null"), std::string::npos) << logged;
    EXPECT_NE(logged.find(file + ": 1 deleted record left out"), std::string::npos) << logged;
    sqlite3_shutdown();
    sqlite3_config(SQLITE_CONFIG_LOG, nullptr, nullptr);
}

}  // namespace
