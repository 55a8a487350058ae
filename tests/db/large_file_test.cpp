// Positions after 4 GiB, in sparse files that take no room on the disk.
#include "support/dbf_builder.h"
#include "support/position.h"
#include "support/table_builder.h"

#include <kd_lib/filetable.h>
#include <kd_lib/xbasetable.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

using kd_lib::FileTable;
using kd_lib::xBaseTable;
using kd_test::position;
using kd_test::Row;
using kd_test::rowOf;
using kd_test::Rows;
using kd_test::rowsOf;
using kd_test::ScopedDirectory;

namespace {

constexpr std::uint64_t fourGiB = std::uint64_t{1} << 32;

void writeAt(const std::string& path, std::uint64_t position, const std::string& bytes)
{
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(static_cast<std::streamoff>(position));
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    ASSERT_TRUE(file.good());
}

/// Records of 20 bytes after a header of 33, so that none begins at a round position.
class LargeFixed : public testing::Test {
protected:
    void SetUp() override
    {
        const std::string path = Directory.write("sample.txt", "");
        std::filesystem::resize_file(path, fileSize);
        writeAt(path, at(recordBehind), lettersBehind);
        writeAt(path, at(lastRecord), lettersLast + "\x1A");
        ASSERT_TRUE(kd_test::openQuietly(Table, Directory));
        Table.RecordEnd = 0;
        Table.RecordLength = 20;
        Table.HeaderLength = 33;
        kd_test::addColumn(Table, "all", 0, 20);
    }

    static std::uint64_t at(std::uint64_t record) { return 33 + (record - 1) * 20; }

    static constexpr std::uint64_t recordBehind = fourGiB / 20 + 1000;
    static constexpr std::uint64_t lastRecord = fourGiB / 20 + 50000000;
    static constexpr std::uint64_t fileSize = 33 + lastRecord * 20 + 1;
    const std::string lettersBehind = kd_test::lettersOf(20);
    const std::string lettersLast = kd_test::lettersOf(20, 7);
    ScopedDirectory Directory;
    FileTable Table;
};

}  // namespace

TEST_F(LargeFixed, GoRecordReachesARecordAfterFourGiB)
{
    ASSERT_GT(at(recordBehind), fourGiB);
    EXPECT_TRUE(Table.goRecord(recordBehind));
    EXPECT_EQ(at(recordBehind), position(Table));
    ASSERT_TRUE(Table.fetchRecord());
    EXPECT_EQ((Row{lettersBehind}), rowOf(Table));
    EXPECT_EQ(at(recordBehind + 1), position(Table));
}

TEST_F(LargeFixed, LastRecordIsTheOneBeforeTheEndMark)
{
    EXPECT_TRUE(Table.lastRecord());
    EXPECT_EQ(at(lastRecord), position(Table));
    EXPECT_EQ((Rows{{lettersLast}}), rowsOf(Table));
    EXPECT_TRUE(Table.File.eof());
}

TEST_F(LargeFixed, NextRecordCrossesFourGiB)
{
    const std::uint64_t before = (fourGiB - 33) / 20 + 1;
    ASSERT_LE(at(before), fourGiB);
    ASSERT_GT(at(before + 1), fourGiB);
    EXPECT_TRUE(Table.goRecord(before));
    EXPECT_TRUE(Table.nextRecord());
    EXPECT_EQ(at(before + 1), position(Table));
}

TEST_F(LargeFixed, GoRecordAfterTheEndReturnsTrueAndTheFetchFalse)
{
    EXPECT_TRUE(Table.goRecord(lastRecord + 1));
    EXPECT_EQ(at(lastRecord + 1), position(Table));
    EXPECT_FALSE(Table.fetchRecord());
    EXPECT_TRUE(Table.firstRecord());
    EXPECT_EQ(33U, position(Table));
}

TEST_F(LargeFixed, FirstRecordMayBeginAfterFourGiB)
{
    Table.HeaderLength = at(recordBehind);
    EXPECT_TRUE(Table.firstRecord());
    ASSERT_TRUE(Table.fetchRecord());
    EXPECT_EQ((Row{lettersBehind}), rowOf(Table));
}

TEST(LargeLines, LinesAfterFourGiBAreSkippedAndFetched)
{
    const ScopedDirectory directory;
    const std::string path = directory.write("sample.txt", "");
    std::filesystem::resize_file(path, fourGiB + 5);
    writeAt(path, fourGiB + 5, "r1c1\nr2c1\nr3c1\n");
    FileTable table;
    ASSERT_TRUE(kd_test::openQuietly(table, directory));
    table.HeaderLength = fourGiB + 5;
    kd_test::addColumn(table, "word", 0, 4);
    EXPECT_TRUE(table.goRecord(3));
    EXPECT_EQ(fourGiB + 15, position(table));
    EXPECT_EQ((Rows{{"r3c1"}}), rowsOf(table));
    EXPECT_TRUE(table.goRecord(1));
    EXPECT_EQ((Rows{{"r1c1"}, {"r2c1"}, {"r3c1"}}), rowsOf(table));
}

TEST(LargeXBase, RecordsAfterFourGiBAreReachedByNumberAndAsTheLast)
{
    constexpr std::uint16_t recordLength = 1 + 200 + 55;
    constexpr std::uint64_t count = fourGiB / recordLength + 3000000;
    const kd_test::DbfBuilder builder({{"A", 'C', 200}, {"B", 'C', 55}});
    const ScopedDirectory directory;
    const std::string path = directory.write("sample.dbf", builder.header() + builder.descriptors());
    const std::uint64_t headerLength = std::filesystem::file_size(path);
    std::filesystem::resize_file(path, headerLength + count * recordLength);
    const auto recordOf = [](const std::string& a, const std::string& b) {
        kd_test::DbfBuilder one({{"A", 'C', 200}, {"B", 'C', 55}});
        return one.record({a, b}).records();
    };
    const std::uint64_t behind = fourGiB / recordLength + 17;
    writeAt(path, headerLength + (behind - 1) * recordLength, recordOf("r17c1", "r17c2"));
    writeAt(path, headerLength + (count - 1) * recordLength, recordOf("lastc1", "lastc2") + "\x1A");

    xBaseTable table;
    ASSERT_TRUE(kd_test::openQuietly(table, directory));
    ASSERT_TRUE(table.getFieldList());
    ASSERT_EQ(recordLength, table.RecordLength);
    EXPECT_TRUE(table.goRecord(behind));
    ASSERT_TRUE(table.fetchRecord());
    EXPECT_EQ((Row{"r17c1", "r17c2"}), rowOf(table));
    EXPECT_EQ(headerLength + behind * recordLength, position(table));
    ASSERT_TRUE(table.fetchRecord());
    EXPECT_EQ((Row{"", ""}), rowOf(table));
    EXPECT_TRUE(table.lastRecord());
    EXPECT_EQ(headerLength + (count - 1) * recordLength, position(table));
    EXPECT_EQ((Rows{{"lastc1", "lastc2"}}), rowsOf(table));
    EXPECT_TRUE(table.goRecord(count + 1));
    EXPECT_FALSE(table.fetchRecord());
}
