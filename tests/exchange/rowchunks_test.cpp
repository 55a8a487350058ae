#include <kd_lib/exchange/rowchunks.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using kd_lib::exchange::RowChunks;

/// The sent chunks.
struct Sent {
    std::vector<std::string> Texts;
    std::vector<std::vector<std::size_t>> Ends;
    std::vector<std::vector<std::uint64_t>> Records;

    void operator()(const RowChunks::Chunk& chunk)
    {
        Texts.push_back(chunk.Text);
        Ends.push_back(chunk.Ends);
        Records.push_back(chunk.Records);
    }
};

void add(RowChunks& chunks, const std::string& row, std::uint64_t record)
{
    chunks.text() += row;
    chunks.endRow(record);
}

TEST(RowChunksTest, SendsAllRowsAtTheEnd)
{
    Sent sent;
    RowChunks chunks(std::ref(sent));
    add(chunks, "one\n", 1);
    add(chunks, "", 2);
    add(chunks, "three\n", 5);
    EXPECT_TRUE(sent.Texts.empty());
    chunks.finish();
    EXPECT_EQ(sent.Texts, (std::vector<std::string>{"one\nthree\n"}));
    EXPECT_EQ(sent.Ends, (std::vector<std::vector<std::size_t>>{{4, 4, 10}}));
    EXPECT_EQ(sent.Records, (std::vector<std::vector<std::uint64_t>>{{1, 2, 5}}));
    chunks.finish();
    EXPECT_EQ(sent.Texts.size(), 1U) << "nothing is left";
}

TEST(RowChunksTest, AChunkIsFullAtTwoMebibytes)
{
    Sent sent;
    RowChunks chunks(std::ref(sent));
    const std::string half(1 << 20, 'a');
    add(chunks, half, 1);
    add(chunks, half.substr(1), 2);
    add(chunks, "b", 3);
    add(chunks, "c", 4);
    chunks.finish();
    ASSERT_EQ(sent.Texts.size(), 2U);
    EXPECT_EQ(sent.Texts[0].size(), std::size_t{2} << 20);
    EXPECT_EQ(sent.Records[0], (std::vector<std::uint64_t>{1, 2, 3}));
    EXPECT_EQ(sent.Texts[1], "c");
    EXPECT_EQ(sent.Ends[1], (std::vector<std::size_t>{1}));
    EXPECT_EQ(sent.Records[1], (std::vector<std::uint64_t>{4}));
}

TEST(RowChunksTest, AChunkHasAtMost65536Rows)
{
    Sent sent;
    RowChunks chunks(std::ref(sent));
    for (std::uint64_t record = 1; record <= 65537; ++record) {
        add(chunks, "", record);
    }
    chunks.finish();
    ASSERT_EQ(sent.Ends.size(), 2U);
    EXPECT_EQ(sent.Ends[0].size(), 65536U);
    EXPECT_EQ(sent.Ends[1].size(), 1U);
}

TEST(RowChunksTest, ALongRowDoesNotKeepItsMemory)
{
    RowChunks chunks([](const RowChunks::Chunk&) {});
    add(chunks, std::string(5 << 20, 'a'), 1);
    add(chunks, std::string(3 << 20, 'a'), 2);
    EXPECT_LE(chunks.text().capacity(), std::size_t{4} << 20);
    add(chunks, std::string(3 << 20, 'a'), 3);
    EXPECT_GE(chunks.text().capacity(), std::size_t{3} << 20) << "the memory of a usual chunk is used again";
}

TEST(RowChunksTest, AFailureOfSendingIsThrown)
{
    RowChunks chunks([](const RowChunks::Chunk&) { throw std::runtime_error("refused"); });
    add(chunks, "a", 1);
    EXPECT_THROW(chunks.finish(), std::runtime_error);
}

TEST(RowChunksTest, NothingIsSentAfterAFailure)
{
    std::atomic<int> calls = 0;
    RowChunks chunks([&](const RowChunks::Chunk&) {
        ++calls;
        throw std::runtime_error("refused");
    });
    const std::string full(2 << 20, 'a');
    add(chunks, full, 1);
    chunks.text() += full;
    EXPECT_THROW(chunks.endRow(2), std::runtime_error);
    chunks.discard();
    EXPECT_EQ(calls, 1);
}

TEST(RowChunksTest, DiscardForgetsTheRest)
{
    Sent sent;
    RowChunks chunks(std::ref(sent));
    add(chunks, "a", 1);
    chunks.discard();
    EXPECT_EQ(chunks.text(), "");
    chunks.finish();
    EXPECT_TRUE(sent.Texts.empty());
}

TEST(RowChunksTest, TheFirstRowsOfAChunk)
{
    RowChunks::Chunk chunk;
    chunk.Text = "onetwothree";
    chunk.Ends = {3, 6, 11};
    EXPECT_EQ(chunk.first(0), "");
    EXPECT_EQ(chunk.first(1), "one");
    EXPECT_EQ(chunk.first(3), "onetwothree");
}

TEST(RowChunksTest, FindsTheRefusedRow)
{
    for (const std::size_t rows : {1U, 2U, 3U, 7U, 1000U, 65536U}) {
        RowChunks::Chunk chunk;
        chunk.Ends.resize(rows);
        for (const std::size_t refused : {std::size_t{0}, std::size_t{1}, rows / 2, rows - 1}) {
            if (refused >= rows) {
                continue;
            }
            int calls = 0;
            const std::size_t taken = RowChunks::rowsTaken(chunk, [&](std::size_t count) {
                ++calls;
                EXPECT_GT(count, 0U);
                EXPECT_LT(count, rows);
                return count <= refused;
            });
            ASSERT_EQ(taken, refused) << "of " << rows;
            ASSERT_LE(calls, 17);
        }
    }
}

TEST(RowChunksTest, AnEmptyChunkHasNoRefusedRow)
{
    EXPECT_EQ(RowChunks::rowsTaken({}, [](std::size_t) { return true; }), 0U);
}

}  // namespace
