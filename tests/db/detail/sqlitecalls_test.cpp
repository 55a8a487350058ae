#include "detail/sqlitecalls.h"

#include <gtest/gtest.h>

using kd_lib::detail::retriedWhileBusy;

namespace {

/// Calls a function that returns "busy" `times` times and then "done"; returns the result and the number of calls.
std::pair<int, int> callsWhenBusy(int times)
{
    int calls = 0;
    const int result = retriedWhileBusy([&] { return calls++ < times ? SQLITE_BUSY : SQLITE_DONE; });
    return {result, calls};
}

}  // namespace

TEST(SqliteCalls, AFreeDatabaseIsCalledOnce)
{
    EXPECT_EQ(callsWhenBusy(0), std::pair(SQLITE_DONE, 1));
}

TEST(SqliteCalls, ABusyDatabaseIsCalledSixTimesInAll)
{
    EXPECT_EQ(callsWhenBusy(5), std::pair(SQLITE_DONE, 6));
    EXPECT_EQ(callsWhenBusy(6), std::pair(SQLITE_BUSY, 6));
}

TEST(SqliteCalls, AnotherErrorIsNotRetried)
{
    int calls = 0;
    const auto locked = [&] {
        ++calls;
        return SQLITE_LOCKED;
    };
    EXPECT_EQ(retriedWhileBusy(locked), SQLITE_LOCKED);
    EXPECT_EQ(calls, 1);
}
