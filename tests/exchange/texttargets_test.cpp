// CSV and JSON lines, from a source to the file.
#include <kd_lib/exchange/csvtarget.h>
#include <kd_lib/exchange/jsonlinestarget.h>
#include <kd_lib/exchange/transfer.h>

#include "support/console_capture.h"
#include "support/memory_source.h"
#include "support/output_text.h"
#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace kd_lib::exchange;
using kd_test::columnOf;
using kd_test::MemorySource;
using kd_test::readFile;

const std::vector<Column> textColumns = {columnOf("ID", ColumnType::Integer), columnOf("Na,me", ColumnType::Text, 10),
                                         columnOf("id", ColumnType::Float)};

const std::vector<MemorySource::Row> textRows = {{{Cell::number("1"), Cell::text("a\"b"), Cell::real(0.5)}},
                                                 {{Cell::null(), Cell::text(""), Cell::null()}}};

template <class TargetType>
class TextTargetTest : public testing::Test {
protected:
    std::string carried(NameCase names = NameCase::Lower)
    {
        MemorySource source(textColumns, textRows);
        TargetType target(path(), names);
        Result = transfer(source, target);
        Notes = target.notes();
        EXPECT_EQ(target.destination(), "");
        return readFile(path());
    }

    std::string path() const { return Folder.file("out"); }

    kd_test::ScopedDirectory Folder;
    Tally Result;
    std::vector<Note> Notes;
};

using CsvTargetTest = TextTargetTest<CsvTarget>;
using JsonLinesTargetTest = TextTargetTest<JsonLinesTarget>;

TEST_F(CsvTargetTest, WritesAHeaderAndRows)
{
    EXPECT_EQ(carried(), "id,\"na,me\",id_2\n1,\"a\"\"b\",0.5\n,\"\",\n");
    EXPECT_EQ(Result.Stored, 2U);
    ASSERT_EQ(Notes.size(), 1U);
    EXPECT_EQ(Notes[0].Text, "column id becomes id_2: the name comes twice");
}

TEST_F(CsvTargetTest, KeepsTheCaseOfNames)
{
    EXPECT_EQ(carried(NameCase::Keep), "ID,\"Na,me\",id_2\n1,\"a\"\"b\",0.5\n,\"\",\n");
}

TEST_F(JsonLinesTargetTest, WritesOneObjectPerLine)
{
    EXPECT_EQ(carried(), "{\"id\":1,\"na,me\":\"a\\\"b\",\"id_2\":0.5}\n{\"id\":null,\"na,me\":\"\",\"id_2\":null}\n");
}

template <class TargetType>
class EveryTextTargetTest : public TextTargetTest<TargetType> {
};

using TextTargets = testing::Types<CsvTarget, JsonLinesTarget>;
TYPED_TEST_SUITE(EveryTextTargetTest, TextTargets);

TYPED_TEST(EveryTextTargetTest, HoldsNoFloatsWithoutDigits)
{
    MemorySource source({columnOf("a", ColumnType::Float)}, {{{Cell::real(std::numeric_limits<double>::quiet_NaN())}},
                                                             {{Cell::real(-std::numeric_limits<double>::infinity())}},
                                                             {{Cell::real(1.5)}}});
    TypeParam target(this->path());
    std::vector<std::string> reasons;
    TransferOptions options;
    options.OnReject = [&](const Reject& reject) { reasons.push_back(reject.Reason); };
    transfer(source, target, options);
    EXPECT_EQ(reasons, (std::vector<std::string>{"the target has no NaN", "the target has no infinity"}));
    EXPECT_NE(readFile(this->path()).find("1.5"), std::string::npos);
}

TYPED_TEST(EveryTextTargetTest, AFailedTransferLeavesTheOldFile)
{
    this->Folder.write("out", "old");
    MemorySource source(textColumns, textRows);
    source.FailsAt = 2;
    TypeParam target(this->path());
    EXPECT_THROW(transfer(source, target), Error);
    EXPECT_EQ(readFile(this->path()), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(this->Folder.path()), {}), 1);
}

TYPED_TEST(EveryTextTargetTest, ATableWithoutColumnsIsRefused)
{
    MemorySource source({});
    TypeParam target(this->path());
    try {
        transfer(source, target);
        FAIL();
    } catch (const Error& error) {
        EXPECT_STREQ(error.what(), "memory.dbf: there are no columns to carry");
    }
    EXPECT_FALSE(std::filesystem::exists(this->path()));
}

TYPED_TEST(EveryTextTargetTest, GoesToStandardOutput)
{
    const auto console = kd_test::captured([] {
        MemorySource source({columnOf("a", ColumnType::Text)}, {{{Cell::text("x")}}});
        TypeParam target("-");
        transfer(source, target);
    });
    EXPECT_NE(console.out.find("x"), std::string::npos);
}

TYPED_TEST(EveryTextTargetTest, AbandonsBeforeItBegins)
{
    TypeParam target(this->path());
    target.abandon();
    EXPECT_FALSE(std::filesystem::exists(this->path()));
}

}  // namespace
