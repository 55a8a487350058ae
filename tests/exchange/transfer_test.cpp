#include "support/memory_source.h"

#include <kd_lib/exchange/transfer.h>

#include <gtest/gtest.h>

namespace {

using namespace kd_lib::exchange;
using kd_test::MemorySource;

/// Keeps its calls, as text.
class MemoryTarget : public Target {
public:
    void begin(const std::string& file, const std::vector<Column>& columns) override
    {
        Calls.push_back("begin " + file + " " + std::to_string(columns.size()));
    }

    void fit(Record& record) override
    {
        for (std::size_t i = 0; i < record.Cells.size(); ++i) {
            if (record.Cells[i].Kind == CellKind::Text && record.Cells[i].Text == "unfit") {
                record.reject(i, "does not fit");
            }
        }
    }

    void write(const Record& record) override
    {
        if (record.Number == FailsAt) {
            throw Error("memory.db", "disk full");
        }
        std::string line = "write " + std::to_string(record.Number);
        for (const Cell& cell : record.Cells) {
            line += cell.Kind == CellKind::Null ? " NULL" : " " + std::string(cell.Text);
        }
        Calls.push_back(line);
    }

    void finish() override { Calls.emplace_back("finish"); }
    void abandon() noexcept override { Calls.emplace_back("abandon"); }

    void addNote(const Note& note) { Notes.push_back(note); }

    std::vector<std::string> Calls;
    std::uint64_t FailsAt = 0;
};

const std::vector<Column> idAndTown{{"ID", ColumnType::Text, 0, 0, 0, 0}, {"TOWN", ColumnType::Text, 0, 0, 0, 0}};

MemorySource::Row row(std::string_view id, std::string_view town)
{
    return {{Cell::text(id), Cell::text(town)}, {}, false};
}

MemorySource::Row unreadableRow(std::string_view id)
{
    return {{Cell::text(id), Cell::unreadable()}, {{1, FlawKind::Unreadable, "not a text"}}, false};
}

struct Carried {
    explicit Carried(MemorySource& source, TransferOptions options = {})
    {
        options.OnReject = [this](const Reject& reject) { Rejects.push_back(reject); };
        try {
            Done = transfer(source, To, options);
        } catch (const Error& error) {
            Failure = error.what();
        }
    }

    MemoryTarget To;
    Tally Done;
    std::vector<Reject> Rejects;
    std::string Failure;
};

TEST(TransferTest, CarriesRecordsAndCountsThem)
{
    MemorySource source(idAndTown, {row("1", "Rome"), {{}, {}, true}, row("3", "Oslo")});
    const Carried run(source);
    EXPECT_EQ(run.To.Calls,
              (std::vector<std::string>{"begin memory.dbf 2", "write 1 1 Rome", "write 3 3 Oslo", "finish"}));
    EXPECT_EQ(run.Done.Read, 3U);
    EXPECT_EQ(run.Done.LeftOut, 1U);
    EXPECT_EQ(run.Done.Stored, 2U);
    EXPECT_EQ(run.Done.Rejects, 0U);
    EXPECT_FALSE(run.Done.Loss);
}

TEST(TransferTest, AnUnreadableCellIsStoredAsNullAndReported)
{
    MemorySource source(idAndTown, {unreadableRow("1"), row("2", "unfit")});
    const Carried run(source);
    EXPECT_EQ(run.To.Calls,
              (std::vector<std::string>{"begin memory.dbf 2", "write 1 1 NULL", "write 2 2 NULL", "finish"}));
    ASSERT_EQ(run.Rejects.size(), 2U);
    EXPECT_EQ(run.Rejects[0].Where.File, "memory.dbf");
    EXPECT_EQ(run.Rejects[0].Where.Record, 1U);
    EXPECT_EQ(run.Rejects[0].Where.Column, "TOWN");
    EXPECT_EQ(run.Rejects[0].Where.Offset, 101U);
    EXPECT_EQ(run.Rejects[0].Bytes, "raw");
    EXPECT_EQ(run.Rejects[0].Reason, "not a text");
    EXPECT_EQ(run.Rejects[0].Action, RejectAction::Null);
    EXPECT_EQ(run.Rejects[1].Reason, "does not fit");
    EXPECT_TRUE(run.Done.Loss);
    EXPECT_EQ(run.Done.Stored, 2U);
}

TEST(TransferTest, SkipLeavesTheRecordOut)
{
    MemorySource source(idAndTown, {unreadableRow("1"), row("2", "Rome")});
    const Carried run(source, {.Policy = OnError::Skip});
    EXPECT_EQ(run.To.Calls, (std::vector<std::string>{"begin memory.dbf 2", "write 2 2 Rome", "finish"}));
    EXPECT_EQ(run.Done.Read, 2U);
    EXPECT_EQ(run.Done.LeftOut, 1U);
    EXPECT_EQ(run.Done.Stored, 1U);
    EXPECT_EQ(run.Rejects[0].Action, RejectAction::Skip);
}

TEST(TransferTest, StopFailsWithThePlaceAndAbandons)
{
    MemorySource source(idAndTown, {row("1", "Rome"), unreadableRow("2"), row("3", "Oslo")});
    const Carried run(source, {.Policy = OnError::Stop});
    EXPECT_EQ(run.To.Calls, (std::vector<std::string>{"begin memory.dbf 2", "write 1 1 Rome", "abandon"}));
    EXPECT_EQ(run.Failure, "memory.dbf: record 2, column TOWN, byte 201: not a text");
    EXPECT_EQ(run.Rejects[0].Action, RejectAction::Stop);
}

TEST(TransferTest, ReplacedBytesAreASeparateActionUnderEveryPolicy)
{
    for (const OnError policy : {OnError::Null, OnError::Stop, OnError::Skip}) {
        MemorySource source(idAndTown, {row("1", "Rome"), row("2", "x")});
        source.Rows[0].Flaws = {{1, FlawKind::Replaced, "byte 81"}};
        source.Rows[1].Flaws = {{1, FlawKind::Escaped, "byte 81"}};
        const Carried run(source, {.Policy = policy});
        EXPECT_EQ(run.To.Calls,
                  (std::vector<std::string>{"begin memory.dbf 2", "write 1 1 Rome", "write 2 2 x", "finish"}));
        ASSERT_EQ(run.Rejects.size(), 2U);
        EXPECT_EQ(run.Rejects[0].Action, RejectAction::Replace);
        EXPECT_EQ(run.Rejects[1].Action, RejectAction::Escape);
        EXPECT_TRUE(run.Done.Loss);
    }
}

TEST(TransferTest, RaggedRowsFollowThePolicy)
{
    MemorySource source(idAndTown, {row("1", "Rome"), row("2", "Oslo")});
    source.Rows[0].Flaws = {{0, FlawKind::RowTooShort, "1 cell for 2 columns"}};
    source.Rows[1].Flaws = {{0, FlawKind::RowTooLong, "3 cells for 2 columns"}};
    const Carried kept(source);
    EXPECT_EQ(kept.Done.Stored, 2U);
    ASSERT_EQ(kept.Rejects.size(), 2U);
    EXPECT_EQ(kept.Rejects[0].Action, RejectAction::Null);
    EXPECT_EQ(kept.Rejects[0].Where.Column, "");
    EXPECT_EQ(kept.Rejects[0].Where.Offset, 100U);
    EXPECT_EQ(kept.Rejects[1].Action, RejectAction::Cut);

    source.seek(1);
    const Carried skipped(source, {.Policy = OnError::Skip});
    EXPECT_EQ(skipped.Done.Stored, 0U);
    EXPECT_EQ(skipped.Rejects[1].Action, RejectAction::Skip);
}

TEST(TransferTest, AFailureOfEitherSideAbandons)
{
    MemorySource source(idAndTown, {row("1", "Rome"), row("2", "Oslo")});
    source.FailsAt = 2;
    const Carried reading(source);
    EXPECT_EQ(reading.To.Calls.back(), "abandon");
    EXPECT_EQ(reading.Failure, "memory.dbf: record 2: Input/output error");

    MemorySource good(idAndTown, {row("1", "Rome"), row("2", "Oslo")});
    MemoryTarget target;
    target.FailsAt = 2;
    EXPECT_THROW(transfer(good, target), Error);
    EXPECT_EQ(target.Calls.back(), "abandon");
}

TEST(TransferTest, StopsOnRequest)
{
    MemorySource source(idAndTown, std::vector<MemorySource::Row>(1000, row("1", "Rome")));
    std::stop_source stop;
    stop.request_stop();
    const Carried run(source, {.Stop = stop.get_token()});
    EXPECT_EQ(run.Failure, "memory.dbf: stopped");
    EXPECT_EQ(run.To.Calls.back(), "abandon");
    EXPECT_LT(run.To.Calls.size(), 300U);
}

TEST(TransferTest, ReportsItsProgress)
{
    MemorySource source(idAndTown, std::vector<MemorySource::Row>(1000, row("1", "Rome")));
    std::vector<Progress> seen;
    MemoryTarget target;
    transfer(source, target, {.OnProgress = [&](const Progress& progress) { seen.push_back(progress); }});
    ASSERT_GE(seen.size(), 3U);
    EXPECT_GT(seen[1].Records, seen[0].Records);
    EXPECT_EQ(seen.back().Records, 1000U);
    EXPECT_EQ(seen.back().Bytes, 100000U);
    EXPECT_EQ(seen.back().Size, 100000U);
}

TEST(TransferTest, ANoteOfALossCounts)
{
    MemorySource source(idAndTown, {row("1", "Rome")});
    source.note("2 records deleted");
    EXPECT_FALSE(Carried(source).Done.Loss);
    source.seek(1);
    source.note("the last record is cut short", true);
    EXPECT_TRUE(Carried(source).Done.Loss);

    MemorySource sound(idAndTown, {row("1", "Rome")});
    MemoryTarget target;
    target.addNote({"a column is missing", true});
    EXPECT_TRUE(transfer(sound, target).Loss);
}

}  // namespace
