#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/importscript.h>

#include "support/opened_database.h"
#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <stop_token>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using namespace kd_lib::exchange;
using namespace std::chrono_literals;

using kd_test::Opened;
using Values = std::vector<std::string>;

class ImportScript : public testing::Test {
protected:
    void SetUp() override { Opened(Old).run("CREATE TABLE t(n); INSERT INTO t VALUES ('before')"); }

    /// The entries of the folder.
    std::vector<std::string> entries() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(Folder.path())) {
            names.push_back(entry.path().filename());
        }
        std::ranges::sort(names);
        return names;
    }

    std::string script(const std::string& text) const { return Folder.write("s.sql", text); }

    /// The error of an import that must fail.
    std::string failure(const std::string& file, const std::string& database, const ImportOptions& options = {})
    {
        try {
            importScript(file, database, options);
        } catch (const Error& error) {
            return error.what();
        }
        ADD_FAILURE() << "the import succeeded";
        return {};
    }

    kd_test::ScopedDirectory Folder;
    const std::string Old = Folder.file("old.db");
    const std::string New = Folder.file("new.db");
};

TEST_F(ImportScript, CreatesADatabase)
{
    const ImportTally tally =
        importScript(script("CREATE TABLE t(n);\nINSERT INTO t VALUES (1);INSERT INTO t VALUES ('a;b') "), New);
    EXPECT_EQ(tally.Statements, 3U);
    EXPECT_EQ(Opened(New).values("SELECT n FROM t"), (Values{"1", "a;b"}));
    EXPECT_EQ(Opened(New).values("PRAGMA integrity_check"), Values{"ok"});
    EXPECT_EQ(entries(), (Values{"new.db", "old.db", "s.sql"}));
}

TEST_F(ImportScript, ANewDatabaseIsLockedAndNotSyncedByEachStatement)
{
    const std::string ask = "CREATE TABLE s AS SELECT * FROM pragma_locking_mode, pragma_synchronous";
    importScript(script(ask), New);
    EXPECT_EQ(Opened(New).values("SELECT locking_mode || synchronous FROM s"), Values{"exclusive0"});
    importScript(script(ask), Old);
    EXPECT_EQ(Opened(Old).values("SELECT locking_mode || synchronous FROM s"), Values{"normal2"});
}

TEST_F(ImportScript, ChangesAnExistingDatabase)
{
    importScript(script("INSERT INTO t VALUES ('after')"), Old);
    EXPECT_EQ(Opened(Old).values("SELECT n FROM t"), (Values{"before", "after"}));
    EXPECT_EQ(entries(), (Values{"old.db", "s.sql"}));
}

TEST_F(ImportScript, NewFileHasTheRightsThatTheSystemGives)
{
    const mode_t before = ::umask(027);
    importScript(script("CREATE TABLE t(n)"), New);
    ::umask(before);
    struct stat status = {};
    ASSERT_EQ(::stat(New.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
    EXPECT_EQ(status.st_nlink, 1U);
}

TEST_F(ImportScript, RunsStatementsThatOtherReadersLose)
{
    importScript(script("-- it's a comment\nCREATE TABLE c(a, b);\n"
                        "CREATE TRIGGER tr AFTER INSERT ON t BEGIN INSERT INTO c VALUES (new.n, CASE new.n WHEN 1 THEN "
                        "'one' END); INSERT INTO c VALUES (0, ';'); END;\n"
                        "/* don't; */ INSERT INTO t VALUES (1);\n# don't;\nCREATE TABLE \"a;b\"(`c;d`, [e;f]);\n"
                        "SELECT 'rows', 'are passed over' FROM t;\n"
                        "INSERT INTO \"a;b\" VALUES ('last', 'it''s')"),
                 Old);
    Opened database(Old);
    EXPECT_EQ(database.values("SELECT a || coalesce(b, '-') FROM c"), (Values{"1one", "0;"}));
    EXPECT_EQ(database.values("SELECT `c;d` || [e;f] FROM \"a;b\""), Values{"lastit's"});
}

TEST_F(ImportScript, EmptyScriptCreatesAnEmptyDatabase)
{
    EXPECT_EQ(importScript(script("-- nothing\n;;"), New).Statements, 0U);
    EXPECT_EQ(Opened(New).values("SELECT count(*) FROM sqlite_master"), Values{"0"});
}

TEST_F(ImportScript, TransactionsOfTheScriptBecomePartOfTheImport)
{
    const std::vector<std::pair<std::string, Values>> scripts = {
        {"BEGIN; INSERT INTO t VALUES (1); COMMIT;", {"1"}},
        {"begin immediate transaction; INSERT INTO t VALUES (1); end transaction; INSERT INTO t VALUES (2);",
         {"1", "2"}},
        {"INSERT INTO t VALUES (1); BEGIN; INSERT INTO t VALUES (2); ROLLBACK; INSERT INTO t VALUES (3);", {"1", "3"}},
        {"BEGIN; INSERT INTO t VALUES (1); SAVEPOINT s; INSERT INTO t VALUES (2); ROLLBACK TO s; COMMIT;", {"1"}},
        {"SAVEPOINT s; INSERT INTO t VALUES (1); ROLLBACK TRANSACTION TO SAVEPOINT s; RELEASE S;", {}},
        {"SAVEPOINT s; INSERT INTO t VALUES (1); SAVEPOINT s; INSERT INTO t VALUES (2); ROLLBACK TO s; COMMIT;", {"1"}},
        {"SAVEPOINT s; INSERT INTO t VALUES (1); SAVEPOINT s; INSERT INTO t VALUES (2); ROLLBACK;", {}},
        {"SAVEPOINT a; SAVEPOINT b; INSERT INTO t VALUES (1); RELEASE a; BEGIN; COMMIT", {"1"}},
        {"BEGIN; COMMIT; BEGIN; INSERT INTO t VALUES (1); /* x */ COMMIT -- y\n;", {"1"}},
        {"EXPLAIN COMMIT; EXPLAIN BEGIN; INSERT INTO t VALUES (1);", {"1"}},
    };
    for (const auto& [text, values] : scripts) {
        Opened(Old).run("DELETE FROM t");
        importScript(script(text), Old);
        EXPECT_EQ(Opened(Old).values("SELECT n FROM t"), values) << text;
    }
}

TEST_F(ImportScript, FailingStatementIsNamedAndNothingStays)
{
    const std::string file = script("");
    const std::vector<std::pair<std::string, std::string>> scripts = {
        {"INSERT INTO t VALUES (1);\nINSERT INTO nowhere VALUES (2);", "statement 2, line 2: no such table: nowhere"},
        {"INSERT INTO t VALUES (1);\n\nSELECT 1\n,\n2 nonsense here;",
         "statement 2, line 5: near \"here\": syntax error"},
        {"INSERT INTO t VALUES (1); SELECT 'open", "statement 2, line 1: unrecognized token: \"'open\""},
        {"INSERT INTO t VALUES (1); BEGIN; BEGIN;",
         "statement 3, line 1: cannot start a transaction within a transaction"},
        {"SAVEPOINT a; BEGIN;", "statement 2, line 1: cannot start a transaction within a transaction"},
        {"INSERT INTO t VALUES (1);\n-- a\n/* b */ END TRANSACTION;",
         "statement 2, line 3: cannot commit - no transaction is active"},
        {"\xEF\xBB\xBF"
         "COMMIT;",
         "statement 1, line 1: cannot commit - no transaction is active"},
        {"INSERT INTO t VALUES (1); ROLLBACK", "statement 2, line 1: cannot rollback - no transaction is active"},
        {"BEGIN; COMMIT; COMMIT", "statement 3, line 1: cannot commit - no transaction is active"},
        {"BEGIN; COMMIT; RELEASE s", "statement 3, line 1: no such savepoint: s"},
        {"DELETE FROM t; VACUUM", "statement 2, line 1: cannot VACUUM from within a transaction"},
        {"INSERT INTO t VALUES (1);\nBEGIN; INSERT INTO t VALUES (2);",
         "the script ends inside the transaction that began in line 2"},
        {"INSERT INTO t VALUES (1);\n\nSAVEPOINT \"a b\"; INSERT INTO t VALUES (2);",
         "the script ends inside the savepoint a b that began in line 3"},
        {"SAVEPOINT a; SAVEPOINT b; ROLLBACK TO a;", "the script ends inside the savepoint a that began in line 1"},
        {"SAVEPOINT a; SAVEPOINT b; RELEASE b;", "the script ends inside the savepoint a that began in line 1"},
        {"CREATE TABLE u(a UNIQUE); INSERT INTO u VALUES (1); INSERT OR ROLLBACK INTO u VALUES (1); SELECT 1;",
         "statement 3, line 1: UNIQUE constraint failed: u.a"},
        {std::string("DELETE FROM t; INSERT INTO t VALUES ('a\0b')", 43),
         "statement 2, line 1: the statement holds a zero byte"},
        {std::string("\xFF\xFE"
                     "D\0",
                     4),
         "the script is UTF-16; it must be UTF-8"},
    };
    for (const auto& [text, reason] : scripts) {
        const std::string before = kd_test::readFile(Old);
        EXPECT_EQ(failure(script(text), Old), file + ": " + reason);
        EXPECT_EQ(kd_test::readFile(Old), before) << text;
        failure(script(text), New);
        EXPECT_EQ(entries(), (Values{"old.db", "s.sql"})) << text;
    }
}

TEST_F(ImportScript, ReadErrorIsNotTheEnd)
{
    EXPECT_EQ(failure("/proc/self/mem", New), "/proc/self/mem: Input/output error");
    EXPECT_EQ(entries(), Values{"old.db"});
}

TEST_F(ImportScript, SystemsReasonsAreGiven)
{
    std::filesystem::create_symlink("loop.db", Folder.file("loop.db"));
    std::filesystem::create_directory(Folder.file("folder"));
    const std::string good = script("CREATE TABLE u(n)");
    EXPECT_EQ(failure(good, Folder.file("loop.db")), Folder.file("loop.db") + ": Too many levels of symbolic links");
    EXPECT_EQ(failure(Folder.file("loop.db"), New), Folder.file("loop.db") + ": Too many levels of symbolic links");
    EXPECT_EQ(failure(good, Folder.file("folder")), Folder.file("folder") + ": Is a directory");
    EXPECT_EQ(failure(Folder.file("folder"), New), Folder.file("folder") + ": Is a directory");
    EXPECT_EQ(failure(good, Folder.file("no/new.db")), Folder.file("no/new.db") + ": No such file or directory");
    EXPECT_EQ(failure(good, good + "/new.db"), good + "/new.db: Not a directory");
    EXPECT_EQ(failure(good, ""), "No such file or directory");
    EXPECT_EQ(failure(good, "/dev/null"), "/dev/null: not a regular file");
    EXPECT_EQ(failure(Folder.file("none.sql"), New), Folder.file("none.sql") + ": No such file or directory");
    EXPECT_EQ(entries(), (Values{"folder", "loop.db", "old.db", "s.sql"}));
}

TEST_F(ImportScript, RightsAreGivenAsTheReason)
{
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root may do everything";
    }
    const std::string good = script("CREATE TABLE u(n)");
    ::chmod(Old.c_str(), 0);
    EXPECT_EQ(failure(good, Old), Old + ": Permission denied");
    ::chmod(Old.c_str(), 0400);
    EXPECT_EQ(failure(good, Old), Old + ": attempt to write a readonly database");
    ::chmod(Folder.path().c_str(), 0500);
    EXPECT_EQ(failure(good, New), New + ": Permission denied");
    ::chmod(Folder.path().c_str(), 0700);
}

TEST_F(ImportScript, FailureOfTheDatabaseNamesTheDatabase)
{
    const std::string good = script("CREATE TABLE u(n)");
    const std::string text = Folder.write("text.db", std::string(4096, 'x'));
    EXPECT_EQ(failure(good, text), text + ": file is not a database");
    EXPECT_EQ(kd_test::readFile(text), std::string(4096, 'x'));
    Opened other(Old);
    other.run("BEGIN IMMEDIATE");
    ImportOptions options;
    options.Patience = 30ms;
    EXPECT_EQ(failure(good, Old, options), Old + ": database is locked");
    other.run("COMMIT");
}

TEST_F(ImportScript, WaitsForAnotherProgramsLock)
{
    Opened other(Old);
    other.run("BEGIN IMMEDIATE; INSERT INTO t VALUES ('other')");
    const std::jthread later([&other] {
        std::this_thread::sleep_for(100ms);
        other.run("COMMIT");
    });
    importScript(script("INSERT INTO t VALUES ('after')"), Old);
    EXPECT_EQ(Opened(Old).values("SELECT n FROM t"), (Values{"before", "other", "after"}));
}

TEST_F(ImportScript, StopEndsALongStatement)
{
    const std::string file = script("INSERT INTO t VALUES (1); WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 "
                                    "FROM c) INSERT INTO t SELECT count(*) FROM c;");
    std::stop_source stop;
    ImportOptions options;
    options.Stop = stop.get_token();
    const std::jthread later([&stop] {
        std::this_thread::sleep_for(100ms);
        stop.request_stop();
    });
    EXPECT_THROW(importScript(file, Old, options), Stopped);
    EXPECT_EQ(Opened(Old).values("SELECT n FROM t"), Values{"before"});
    EXPECT_EQ(entries(), (Values{"old.db", "s.sql"}));
}

TEST_F(ImportScript, StopAtTheEndOfAPipeStoresNothing)
{
    std::stop_source stop;
    ImportOptions options;
    options.Stop = stop.get_token();
    const std::string pipe = Folder.file("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const std::jthread other([&] {
        std::ofstream out(pipe);
        out << "CREATE TABLE u(n); INSERT INTO u VALUES (1);" << std::flush;
        stop.request_stop();
    });
    EXPECT_THROW(importScript(pipe, New, options), Stopped);
    EXPECT_FALSE(std::filesystem::exists(New));
}

TEST_F(ImportScript, StopEndsTheWaitForALock)
{
    Opened other(Old);
    other.run("BEGIN IMMEDIATE");
    std::stop_source stop;
    ImportOptions options;
    options.Stop = stop.get_token();
    options.Patience = 1h;
    const std::jthread later([&stop] {
        std::this_thread::sleep_for(50ms);
        stop.request_stop();
    });
    EXPECT_THROW(importScript(script("DELETE FROM t"), Old, options), Stopped);
}

TEST_F(ImportScript, ProgressIsReported)
{
    std::string text = "CREATE TABLE u(n);\n";
    for (int i = 0; i < 10000; ++i) {
        text += "INSERT INTO u VALUES (" + std::to_string(i) + ");\n";
    }
    std::vector<ImportProgress> told;
    ImportOptions options;
    options.OnProgress = [&told](const ImportProgress& progress) { told.push_back(progress); };
    importScript(script(text), New, options);
    ASSERT_GE(told.size(), text.size() / 65536);
    EXPECT_EQ(told.front().Bytes, 65536U);
    EXPECT_GT(told.front().Statements, 1000U);
    EXPECT_EQ(told.back().Statements, 10001U);
    EXPECT_EQ(told.back().Bytes, text.size());
    EXPECT_EQ(told.back().Size, text.size());
}

TEST_F(ImportScript, ExceptionOfTheCallbackRollsBack)
{
    ImportOptions options;
    options.OnProgress = [](const ImportProgress&) { throw std::runtime_error("enough"); };
    EXPECT_THROW(importScript(script("DELETE FROM t"), Old, options), std::runtime_error);
    EXPECT_EQ(Opened(Old).values("SELECT n FROM t"), Values{"before"});
}

TEST_F(ImportScript, DatabaseThatAppearsMeanwhileStays)
{
    ImportOptions options;
    options.OnProgress = [this](const ImportProgress&) {
        Opened(New).run("CREATE TABLE IF NOT EXISTS other(n); INSERT INTO other VALUES ('kept')");
    };
    EXPECT_EQ(failure(script("CREATE TABLE u(n)"), New, options),
              New + ": another program has created this database meanwhile; nothing was stored");
    EXPECT_EQ(Opened(New).values("SELECT DISTINCT n FROM other"), Values{"kept"});
    EXPECT_EQ(entries(), (Values{"new.db", "old.db", "s.sql"}));
}

TEST_F(ImportScript, JournalOfAnEarlierDatabaseIsNotTakenOver)
{
    const std::string good = script("CREATE TABLE u(n)");
    for (const std::string ending : {"-journal", "-wal"}) {
        Folder.write("new.db" + ending, "of an earlier one");
        EXPECT_EQ(failure(good, New),
                  New + ": " + New + ending + " remains from an earlier database of this name; remove it first");
        EXPECT_FALSE(std::filesystem::exists(New));
        std::filesystem::remove(New + ending);
    }
}

TEST_F(ImportScript, SymbolicLinksAreFollowed)
{
    std::filesystem::create_directory(Folder.file("folder"));
    std::filesystem::create_symlink("folder/real.db", Folder.file("first"));
    std::filesystem::create_symlink("first", Folder.file("second"));
    importScript(script("CREATE TABLE u(n); INSERT INTO u VALUES (1)"), Folder.file("second"));
    EXPECT_EQ(Opened(Folder.file("folder/real.db")).values("SELECT n FROM u"), Values{"1"});
    EXPECT_TRUE(std::filesystem::is_symlink(Folder.file("second")));
    importScript(script("INSERT INTO u VALUES (2)"), Folder.file("second"));
    EXPECT_EQ(Opened(Folder.file("second")).values("SELECT n FROM u"), (Values{"1", "2"}));
}

TEST_F(ImportScript, NamesWithASpecialMeaningForSqlite)
{
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(Folder.path());
    const std::string good = script("CREATE TABLE u(n); INSERT INTO u VALUES (1)");
    for (const std::string& name : {std::string(":memory:"), std::string("file:x.db?mode=ro"), std::string(249, 'n')}) {
        importScript(good, name);
        EXPECT_TRUE(std::filesystem::is_regular_file(name)) << name;
    }
    std::filesystem::current_path(before);
}

}  // namespace
