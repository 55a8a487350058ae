// A script from a pipe: statements run as they arrive, not only when a block is full or the pipe ends.
#include "support/scoped_directory.h"
#include "support/sql_fake.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

/// Counts the statements that have been executed, for another thread.
class CountingDatabase : public kd_test::FakeSqlDatabase {
public:
    using FakeSqlDatabase::execute;
    bool execute(const std::string& sql) override
    {
        const bool executed = FakeSqlDatabase::execute(sql);
        ++Count;
        return executed;
    }
    std::atomic<std::size_t> Count = 0;
};

bool reaches(const std::atomic<std::size_t>& count, std::size_t wanted)
{
    for (int tries = 0; count < wanted && tries < 300; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return count == wanted;
}

void put(int pipe, const std::string& bytes)
{
    EXPECT_EQ(static_cast<ssize_t>(bytes.size()), ::write(pipe, bytes.data(), bytes.size()));
}

}  // namespace

TEST(SqlDatabasePipe, StatementRunsWhenItIsComplete)
{
    const kd_test::ScopedDirectory scratch;
    const std::string path = scratch.file("script.sql");
    ASSERT_EQ(0, ::mkfifo(path.c_str(), 0600));
    CountingDatabase database;
    std::vector<bool> ran;
    std::thread writer([&] {
        const int pipe = ::open(path.c_str(), O_WRONLY);
        put(pipe, "FIRST;");
        ran.push_back(reaches(database.Count, 1));
        put(pipe, "\nSECOND 'a");
        put(pipe, ";b'; THIRD");
        ran.push_back(reaches(database.Count, 2));
        put(pipe, ";FOURTH;" + std::string(100000, ' ') + "FIFTH;");
        ran.push_back(reaches(database.Count, 5));
        ::close(pipe);
    });
    const kd_test::Console console = kd_test::captured([&] { EXPECT_FALSE(database.importSqlFile(path)); });
    writer.join();
    EXPECT_EQ((std::vector<bool>{true, true, true}), ran);
    EXPECT_EQ((std::vector<std::string>{"FIRST;", "SECOND 'a;b';", "THIRD;", "FOURTH;", "FIFTH;"}), database.Executed);
    EXPECT_EQ("", console.err);
}
