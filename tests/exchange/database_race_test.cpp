// Two processes store something in one new database at the same time. Everything that one of them reported as stored
// exists afterwards, whatever the other one did. KD_RACE_PAIRS sets the number of pairs.
#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/importscript.h>
#include <kd_lib/exchange/sqlitetarget.h>

#include "support/opened_database.h"
#include "support/scoped_directory.h"

#include "support/memory_source.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using namespace kd_lib::exchange;
using namespace std::chrono_literals;

constexpr int defaultPairs = 1000;
constexpr int rows = 3;

/// The task of a process.
enum class Work { Load, FailingLoad, Import, FailingImport };

enum Outcome { Stored = 0, Locked = 10, Exists = 11, MadeMeanwhile = 12, FailedAsMeant = 13, Other = 14 };

struct Task {
    Work What;
    std::string Table;
    int Pause;  // microseconds between the first record and the last
};

void load(const std::string& database, const Task& task)
{
    Column column;
    column.Name = "n";
    column.Type = ColumnType::Number;
    column.Width = 5;
    const std::vector<Column> columns = {column};
    TableOptions table;
    table.Table = task.Table;
    SqliteTarget target(database, table);
    target.begin("race.dbf", columns);
    Record record;
    record.Columns = &columns;
    record.Cells = {Cell::number("7")};
    for (int i = 0; i < rows; ++i) {
        target.write(record);
    }
    ::usleep(static_cast<useconds_t>(task.Pause));
    if (task.What == Work::FailingLoad) {
        throw std::runtime_error("as meant");
    }
    target.finish();
}

void import(const std::string& database, const Task& task, const std::string& script)
{
    ImportOptions options;
    options.OnProgress = [&task](const ImportProgress&) {
        ::usleep(static_cast<useconds_t>(task.Pause));
        if (task.What == Work::FailingImport) {
            throw std::runtime_error("as meant");
        }
    };
    importScript(script, database, options);
}

Outcome outcomeOf(const std::string& database, const Task& task, const std::string& script)
{
    try {
        task.What == Work::Load || task.What == Work::FailingLoad ? load(database, task)
                                                                  : import(database, task, script);
        return Stored;
    } catch (const Error& error) {
        const std::string reason = error.what();
        const auto tells = [&reason](const char* words) { return reason.find(words) != std::string::npos; };
        return tells("is locked")                         ? Locked
               : tells("exists")                          ? Exists
               : tells("created this database meanwhile") ? MadeMeanwhile
                                                          : Other;
    } catch (const std::exception&) {
        return FailedAsMeant;
    }
}

/// Starts a process that waits for the end of `gate`.
pid_t start(const std::array<int, 2>& gate, const std::string& database, const Task& task, const std::string& script)
{
    const pid_t process = ::fork();
    if (process == 0) {
        ::close(gate[1]);
        char nothing = 0;
        const bool open = ::read(gate[0], &nothing, 1) == 0;
        ::_exit(open ? outcomeOf(database, task, script) : Other);
    }
    return process;
}

Outcome wait(pid_t process)
{
    int status = 0;
    ::waitpid(process, &status, 0);
    return WIFEXITED(status) ? static_cast<Outcome>(WEXITSTATUS(status)) : Other;
}

class DatabaseRace : public testing::Test {
protected:
    std::string scriptFor(const std::string& table) const
    {
        return Folder.write(table + ".sql",
                            "CREATE TABLE " + table + "(n); INSERT INTO " + table + " VALUES (7), (7), (7);");
    }

    std::pair<Outcome, Outcome> race(const std::string& database, const Task& one, const Task& other) const
    {
        std::array<int, 2> gate = {};
        EXPECT_EQ(::pipe(gate.data()), 0);
        const pid_t first = start(gate, database, one, Folder.file(one.Table + ".sql"));
        const pid_t second = start(gate, database, other, Folder.file(other.Table + ".sql"));
        ::close(gate[0]);
        ::close(gate[1]);
        const Outcome ofFirst = wait(first);
        return {ofFirst, wait(second)};
    }

    kd_test::ScopedDirectory Folder;
};

bool fails(Work work)
{
    return work == Work::FailingLoad || work == Work::FailingImport;
}

/// Whether a task may have this outcome while the other task runs.
bool isAllowed(const Task& task, Outcome outcome, const Task& other)
{
    if (outcome == Exists) {
        return !fails(other.What) && task.Table == other.Table;
    }
    if (fails(task.What)) {
        return outcome == FailedAsMeant || outcome == Locked;
    }
    return outcome == Stored || outcome == Locked || (outcome == MadeMeanwhile && task.What == Work::Import);
}

TEST_F(DatabaseRace, EverythingReportedAsStoredExists)
{
    const char* const wanted = std::getenv("KD_RACE_PAIRS");
    const int pairs = wanted != nullptr ? std::atoi(wanted) : defaultPairs;
    std::mt19937 random(20240229);
    const auto upTo = [&random](unsigned limit) { return static_cast<int>(random() % (limit + 1)); };
    scriptFor("a");
    scriptFor("b");
    int bothStored = 0;
    for (int pair = 0; pair < pairs; ++pair) {
        const std::string database = Folder.file("new.db");
        const Task one = {static_cast<Work>(upTo(3)), "a", upTo(2000)};
        const Task other = {static_cast<Work>(upTo(3)), upTo(3) == 0 ? "a" : "b", upTo(2000)};
        const auto [first, second] = race(database, one, other);
        SCOPED_TRACE("pair " + std::to_string(pair) + ": " + std::to_string(static_cast<int>(one.What)) +
                     " ended with " + std::to_string(first) + ", " + std::to_string(static_cast<int>(other.What)) +
                     " on table " + other.Table + " with " + std::to_string(second));
        EXPECT_TRUE(isAllowed(one, first, other));
        EXPECT_TRUE(isAllowed(other, second, one));
        const bool anyMeant = !fails(one.What) || !fails(other.What);
        EXPECT_TRUE(!anyMeant || first == Stored || second == Stored) << "nothing was stored";
        EXPECT_EQ(std::filesystem::exists(database), first == Stored || second == Stored);
        if (std::filesystem::exists(database)) {
            kd_test::Opened stored(database);
            for (const auto& [task, outcome] : {std::pair(one, first), std::pair(other, second)}) {
                if (outcome == Stored) {
                    EXPECT_EQ(stored.values("SELECT count(*) FROM " + task.Table), std::vector<std::string>{"3"});
                }
            }
            EXPECT_EQ(stored.values("PRAGMA integrity_check"), std::vector<std::string>{"ok"});
        }
        bothStored += first == Stored && second == Stored ? 1 : 0;
        std::filesystem::remove(database);
        const auto left = std::distance(std::filesystem::directory_iterator(Folder.path()), {});
        ASSERT_EQ(left, 2) << "a temporary file is left";
        if (HasFailure()) {
            break;
        }
    }
    RecordProperty("BothStored", bothStored);
    EXPECT_TRUE(pairs < 100 || bothStored > pairs / 20) << bothStored << " pairs both stored";
}

}  // namespace
