// Records of any given length: the length is an upper bound, and memory is allocated as bytes are read.
#include "support/table_builder.h"

#include <kd_lib/asciitable.h>
#include <kd_lib/filetable.h>
#include <kd_lib/xbasetable.h>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>

using kd_lib::FileTable;
using kd_test::lettersOf;
using kd_test::Opened;
using kd_test::Rows;
using kd_test::rowsOf;

namespace {

constexpr std::uint64_t thousandMillion = 1000000000;

/// The growth of this process's peak memory during `work`, in KiB.
long growthBy(const std::function<void()>& work)
{
    struct rusage before = {};
    struct rusage after = {};
    ::getrusage(RUSAGE_SELF, &before);
    work();
    ::getrusage(RUSAGE_SELF, &after);
    return after.ru_maxrss - before.ru_maxrss;
}

/// Much less than the length; an address sanitizer needs an eighth of the length in addition.
constexpr long littleGrowth = 300 * 1024;

/// The state of a stream that reads one line with `limit` bytes of room.
struct Expected {
    std::string text;
    std::ios::iostate state = std::ios::goodbit;
    std::streamoff position = 0;
    std::streamsize count = 0;
};

Expected readAtOnce(const std::string& path, std::uint64_t limit)
{
    std::ifstream file(path);
    std::string buffer(limit, '\0');
    file.getline(buffer.data(), static_cast<std::streamsize>(limit));
    Expected expected{buffer.c_str(), file.rdstate(), 0, file.gcount()};
    file.clear();
    expected.position = file.tellg();
    return expected;
}

class WholeRecord : public FileTable {
public:
    bool extractContent(const std::string& record) override
    {
        Text = record;
        return true;
    }
    std::string Text;
};

}  // namespace

TEST(RecordReader, LengthOfABillionTakesNoMemoryForThreeLines)
{
    EXPECT_GT(littleGrowth, growthBy([] {
                  Opened<FileTable> file("one\ntwo\nsix\n");
                  file.table.RecordLength = thousandMillion;
                  kd_test::addColumn(file.table, "word", 0, 3);
                  EXPECT_EQ((Rows{{"one"}, {"two"}, {"six"}}), rowsOf(file.table));
                  EXPECT_TRUE(file.table.goRecord(3));
                  EXPECT_EQ((Rows{{"six"}}), rowsOf(file.table));
              }));
}

TEST(RecordReader, LengthOfABillionTakesNoMemoryForAHeaderLine)
{
    EXPECT_GT(littleGrowth, growthBy([] {
                  Opened<kd_lib::DelimitedTable> file("a|b\n1|2\n");
                  file.table.RecordLength = thousandMillion;
                  EXPECT_TRUE(file.table.getFieldList());
                  EXPECT_EQ((Rows{{"1", "2"}}), rowsOf(file.table));
              }));
}

TEST(RecordReader, LengthOfABillionTakesNoMemoryForFixedRecords)
{
    EXPECT_GT(littleGrowth, growthBy([] {
                  Opened<FileTable> file("one\ntwo\nsix\n");
                  file.table.RecordEnd = 0;
                  file.table.RecordLength = thousandMillion;
                  EXPECT_FALSE(file.table.fetchRecord());
                  EXPECT_EQ(std::ios::failbit | std::ios::eofbit, file.table.File.rdstate());
                  Opened<kd_lib::xBaseTable> xbase("one\ntwo\nsix\n");
                  xbase.table.RecordLength = thousandMillion;
                  EXPECT_FALSE(xbase.table.fetchRecord());
                  EXPECT_FALSE(xbase.table.isDeleted());
              }));
}

TEST(RecordReader, LengthThatNoTextCanHaveThrowsLengthError)
{
    Opened<FileTable> file("one\ntwo\n");
    file.table.RecordLength = std::numeric_limits<std::uint64_t>::max();
    for (const int end : {10, 0}) {
        file.table.RecordEnd = end;
        EXPECT_THROW(file.table.fetchRecord(), std::length_error);
    }
}

TEST(RecordReader, LinesOfAllLengthsAreReadAsByOneReadOfTheStream)
{
    for (const std::uint64_t limit : {65535U, 65536U, 65537U, 70000U, 131071U, 131072U, 131073U, 200000U, 262145U}) {
        for (const std::size_t length : {0U, 65533U, 65534U, 65535U, 65536U, 65537U, 131069U, 131070U, 131071U, 131072U,
                                         131073U, 262143U, 262144U, 262145U}) {
            for (const char* const end : {"", "\n", "\nnext", "\n\n"}) {
                Opened<WholeRecord> file(lettersOf(length) + end);
                file.table.RecordLength = limit;
                const Expected expected = readAtOnce(file.directory() + "/sample.txt", limit);
                const bool fetched = file.table.fetchRecord();
                EXPECT_EQ((expected.state & std::ios::failbit) == 0, fetched) << limit << ' ' << length << end;
                EXPECT_EQ(expected.state, file.table.File.rdstate()) << limit << ' ' << length << end;
                EXPECT_EQ(expected.count, file.table.File.gcount()) << limit << ' ' << length << end;
                file.table.File.clear();
                EXPECT_EQ(expected.position, file.table.File.tellg()) << limit << ' ' << length << end;
                EXPECT_TRUE(file.table.Text == (fetched ? expected.text : "")) << limit << ' ' << length << end;
            }
        }
    }
}

TEST(RecordReader, LongLineDoesNotMakeAThrowingStreamThrow)
{
    Opened<WholeRecord> file(lettersOf(150000) + "\nshort\n");
    file.table.RecordLength = 200000;
    file.table.File.exceptions(std::ios::failbit);
    EXPECT_TRUE(file.table.fetchRecord());
    EXPECT_EQ(lettersOf(150000), file.table.Text);
    EXPECT_TRUE(file.table.fetchRecord());
    EXPECT_EQ("short", file.table.Text);
    EXPECT_EQ(std::ios::failbit, file.table.File.exceptions());
    EXPECT_THROW(file.table.fetchRecord(), std::ios::failure);
    file.table.File.exceptions(std::ios::goodbit);
}

TEST(RecordReader, StreamThatHasFailedStaysFailed)
{
    Opened<WholeRecord> file("one\ntwo\n");
    for (const std::uint64_t limit : {255U, 200000U}) {
        file.table.RecordLength = limit;
        file.table.File.setstate(std::ios::failbit);
        EXPECT_FALSE(file.table.fetchRecord()) << limit;
        EXPECT_EQ(std::ios::failbit, file.table.File.rdstate()) << limit;
    }
}

TEST(RecordReader, LongFixedRecordsAreReadWhole)
{
    for (const std::size_t length : {65535U, 65536U, 65537U, 131072U, 131073U, 200001U}) {
        Opened<WholeRecord> file(lettersOf(length) + lettersOf(length, 7) + "rest");
        file.table.RecordEnd = 0;
        file.table.RecordLength = length;
        EXPECT_TRUE(file.table.fetchRecord());
        EXPECT_EQ(lettersOf(length), file.table.Text);
        EXPECT_TRUE(file.table.fetchRecord());
        EXPECT_EQ(lettersOf(length, 7), file.table.Text);
        EXPECT_FALSE(file.table.fetchRecord());
    }
}
