#include "detail/recordblocks.h"

#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using namespace kd_lib::exchange::detail;

class RecordBlocksTest : public testing::Test {
protected:
    std::string Content = [] {
        std::mt19937 random(3);
        std::string text;
        for (int i = 0; i < 700000; ++i) {
            text += static_cast<char>(random());
        }
        return text;
    }();
    kd_test::ScopedDirectory Folder;
    InputFile File{Folder.write("f", Content)};
};

TEST_F(RecordBlocksTest, GivesEachByteInOrder)
{
    RecordBlocks blocks(File);
    std::mt19937 random(5);
    std::size_t at = 0;
    while (at < Content.size()) {
        const std::size_t count = 1 + random() % 40000;
        const std::string_view bytes = blocks.ahead(count);
        ASSERT_GE(bytes.size(), std::min(count, Content.size() - at));
        ASSERT_EQ(bytes, std::string_view(Content).substr(at, bytes.size()));
        const std::size_t step = std::min(count, bytes.size());
        blocks.skip(step);
        at += step;
        ASSERT_EQ(blocks.offset(), at);
    }
    EXPECT_TRUE(blocks.ahead(1).empty());
}

TEST_F(RecordBlocksTest, GoesAnywhere)
{
    RecordBlocks blocks(File);
    std::mt19937 random(6);
    for (int i = 0; i < 3000; ++i) {
        const std::size_t at = random() % Content.size();
        blocks.seek(at);
        ASSERT_EQ(blocks.offset(), at);
        const std::string_view bytes = blocks.ahead(100);
        ASSERT_EQ(bytes.substr(0, 100), std::string_view(Content).substr(at, 100));
    }
    blocks.seek(Content.size() + 1000);
    EXPECT_TRUE(blocks.ahead(1).empty());
}

TEST_F(RecordBlocksTest, AfterASeekARequestMayBeALittleLargerThanTheBuffer)
{
    RecordBlocks blocks(File);
    EXPECT_EQ(blocks.ahead(9000), Content.substr(0, 9000));
    blocks.seek(50000);
    EXPECT_EQ(blocks.ahead(9127), Content.substr(50000, 9127)) << "nothing is written past the end of the buffer";
}

TEST_F(RecordBlocksTest, LargerThanABlock)
{
    RecordBlocks blocks(File);
    EXPECT_EQ(blocks.ahead(500000).substr(0, 500000), Content.substr(0, 500000));
    blocks.skip(400000);
    EXPECT_EQ(blocks.ahead(600000), Content.substr(400000)) << "all that the file has";
}

}  // namespace
