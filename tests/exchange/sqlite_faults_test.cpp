// Each file operation of SQLite fails in turn. The work then either succeeds or fails with an error that names the
// database, and the database has all of the work or none.
#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/importscript.h>
#include <kd_lib/exchange/sqlitesource.h>
#include <kd_lib/exchange/sqlitetarget.h>
#include <kd_lib/exchange/transfer.h>

#include "support/faulty_files.h"
#include "support/memory_source.h"
#include "support/opened_database.h"
#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace {

using namespace kd_lib::exchange;
using kd_test::FaultyFiles;
using kd_test::MemorySource;
using kd_test::Opened;

using Values = std::vector<std::string>;

/// Enough records that SQLite's cache spills into the file before the end.
constexpr int records = 25000;

class SqliteFaults : public testing::TestWithParam<FaultyFiles::Kind> {
protected:
    void load(TableMode mode)
    {
        Column column;
        column.Name = "N";
        column.Width = 100;
        MemorySource source({column}, Rows, "t.dbf");
        TableOptions table;
        table.Mode = mode;
        SqliteTarget target(Database, table);
        transfer(source, target);
    }

    void importLines() { importScript(Script, Database); }

    /// Restores the old state: a database with a table, or no database.
    void makeOld(bool exists)
    {
        std::filesystem::remove(Database);
        std::filesystem::remove(Database + "-journal");
        if (exists) {
            Opened(Database).run("CREATE TABLE kept(a); INSERT INTO kept VALUES ('r1'), ('r2');"
                                 "CREATE TABLE t(n TEXT); INSERT INTO t VALUES ('old')");
        }
    }

    /// Runs the work with each operation failing, until one run needs fewer operations. `done`: the contents of table t
    /// after success.
    void failAtEach(bool exists, const std::function<void()>& work, const std::string& done)
    {
        const std::string count = "SELECT count(*) FROM t";
        int failures = 0;
        FaultyFiles files;
        for (std::uint64_t operation = 1;; operation += 1 + operation / 4) {
            makeOld(exists);
            files.failAt(operation, GetParam());
            bool success = true;
            try {
                work();
            } catch (const Error& error) {
                success = false;
                EXPECT_EQ(std::string(error.what()).substr(0, Database.size() + 2), Database + ": ") << error.what();
            }
            files.stop();
            SCOPED_TRACE("operation " + std::to_string(operation));
            EXPECT_TRUE(GetParam() == FaultyFiles::Kind::FromThenOn || !hasHotJournal());
            check(exists, success ? done : "1");
            if (!files.failed()) {
                EXPECT_TRUE(success);
                break;
            }
            failures += success ? 0 : 1;
            if (HasFailure()) {
                break;
            }
        }
        EXPECT_GT(failures, 10);
    }

    void check(bool exists, const std::string& rows)
    {
        if (exists) {
            Opened stored(Database);
            EXPECT_EQ(stored.values("PRAGMA integrity_check"), Values{"ok"});
            EXPECT_EQ(stored.values("SELECT a FROM kept"), (Values{"r1", "r2"}));
            EXPECT_EQ(stored.values("SELECT count(*) FROM t"), Values{rows});
        } else if (std::filesystem::exists(Database)) {
            Opened stored(Database);
            EXPECT_EQ(stored.values("PRAGMA integrity_check"), Values{"ok"});
            EXPECT_EQ(stored.values("SELECT count(*) FROM t"), Values{std::to_string(records)});
        } else {
            EXPECT_EQ(rows, "1") << "there is no database after success";
        }
        // The journal of an existing database may stay, but not one that must still be rolled back.
        for (const auto& entry : std::filesystem::directory_iterator(Folder.path())) {
            const std::string name = entry.path().filename();
            EXPECT_TRUE(name == "x.db" || name == "s.sql" || (exists && name == "x.db-journal")) << name << " is left";
        }
    }

    /// Whether the next reader of the database must roll something back.
    bool hasHotJournal() const
    {
        const std::string journal = Database + "-journal";
        return std::filesystem::exists(journal) && kd_test::readFile(journal).starts_with("\xD9\xD5\x05\xF9");
    }

    void SetUp() override
    {
        std::string script = "CREATE TABLE IF NOT EXISTS t(n TEXT);\n";
        const std::string row = "('" + Text + "')";
        std::string rows = row;
        for (int i = 1; i < 500; ++i) {
            rows += "," + row;
        }
        for (int i = 0; i < records; i += 500) {
            script += "INSERT INTO t VALUES " + rows + ";\n";
        }
        Script = Folder.write("s.sql", script);
        Rows.assign(records, MemorySource::Row{{Cell::text(Text)}, {}});
    }

    kd_test::ScopedDirectory Folder;
    const std::string Database = Folder.file("x.db");
    const std::string Text = std::string(100, 'x');
    std::string Script;
    std::vector<MemorySource::Row> Rows;
};

TEST_P(SqliteFaults, NewDatabase)
{
    failAtEach(
        false, [this] { load(TableMode::Create); }, std::to_string(records));
}

TEST_P(SqliteFaults, ReplacedTable)
{
    failAtEach(
        true, [this] { load(TableMode::Replace); }, std::to_string(records));
}

TEST_P(SqliteFaults, AppendedRecords)
{
    failAtEach(
        true, [this] { load(TableMode::Append); }, std::to_string(records + 1));
}

TEST_P(SqliteFaults, ImportIntoANewDatabase)
{
    failAtEach(
        false, [this] { importLines(); }, std::to_string(records));
}

TEST_P(SqliteFaults, ImportIntoADatabaseThatExists)
{
    failAtEach(
        true, [this] { importLines(); }, std::to_string(records + 1));
}

TEST_P(SqliteFaults, QueryIsNeverCutShort)
{
    makeOld(false);
    load(TableMode::Create);
    FaultyFiles files;
    int failures = 0;
    for (std::uint64_t operation = 1;; operation += 1 + operation / 4) {
        files.failAt(operation, GetParam());
        std::uint64_t rows = 0;
        bool success = true;
        try {
            SqliteSource source(Database, "SELECT n FROM t");
            while (source.next()) {
                ++rows;
            }
        } catch (const Error&) {
            success = false;
        }
        files.stop();
        EXPECT_TRUE(!success || rows == records) << "operation " << operation;
        failures += success ? 0 : 1;
        if (!files.failed()) {
            EXPECT_TRUE(success);
            break;
        }
    }
    EXPECT_GT(failures, 10);
}

INSTANTIATE_TEST_SUITE_P(Each, SqliteFaults, testing::Values(FaultyFiles::Kind::Once, FaultyFiles::Kind::FromThenOn),
                         [](const auto& kind) {
                             return kind.param == FaultyFiles::Kind::Once ? "Once" : "FromThenOn";
                         });

}  // namespace
