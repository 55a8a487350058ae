#include <kd_lib/exchange/serverrows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace kd_lib::exchange;

/// A statement whose rows are the numbers from 1 on.
class CountedRows : public ServerRows {
public:
    explicit CountedRows(std::uint64_t rows) : ServerRows("mysql://host/db"), Rows(rows) { run("SELECT n FROM t"); }

    std::string Calls;

private:
    bool start() override
    {
        Calls += "start ";
        Columns = std::vector<Column>(1);
        Taken = 0;
        return take();
    }

    bool take() override { return Taken < Rows && ++Taken > 0; }

    void fill() override
    {
        Text = std::to_string(Taken);
        Current.Cells[0] = Cell::number(Text);
    }

    void forbidChanges() override { Calls += "forbid "; }

    std::uint64_t Rows;
    std::uint64_t Taken = 0;
    std::string Text;
};

/// The rest of the rows: "1=1 2=2", each record's number and its row's.
std::string restOf(CountedRows& rows)
{
    std::string all;
    while (rows.next()) {
        all += (all.empty() ? "" : " ") + std::to_string(rows.record().Number) + '=' +
               std::string(rows.record().Cells[0].Text);
    }
    return all;
}

TEST(ServerRows, RecordsAreNumberedFromOne)
{
    CountedRows rows(3);
    EXPECT_EQ(restOf(rows), "1=1 2=2 3=3");
    EXPECT_EQ(rows.recordsRead(), 3U);
    EXPECT_FALSE(rows.next());
    CountedRows none(0);
    EXPECT_EQ(restOf(none), "");
}

TEST(ServerRows, SeeksForwardTakeTheRowsBetween)
{
    CountedRows rows(5);
    rows.seek(3);
    EXPECT_EQ(restOf(rows), "3=3 4=4 5=5");
    CountedRows next(3);
    ASSERT_TRUE(next.next());
    next.seek(2);
    EXPECT_EQ(restOf(next), "2=2 3=3");
    CountedRows end(3);
    end.seek(4);
    EXPECT_EQ(restOf(end), "");
    EXPECT_EQ(rows.Calls + next.Calls + end.Calls, "start start start ");
}

TEST(ServerRows, GoingBackRunsTheStatementAgainWithoutChanges)
{
    CountedRows rows(4);
    rows.seek(3);
    ASSERT_TRUE(rows.next());
    rows.seek(2);
    EXPECT_EQ(restOf(rows), "2=2 3=3 4=4");
    rows.seek(4);
    EXPECT_EQ(restOf(rows), "4=4");
    EXPECT_EQ(rows.Calls, "start forbid start forbid start ");
}

}  // namespace
