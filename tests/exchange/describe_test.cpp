#include "support/reading.h"
#include "support/xbase_file.h"

#include <kd_lib/exchange/describe.h>

#include <gtest/gtest.h>

namespace {

using namespace kd_lib::exchange;
using kd_test::XbaseFile;
using Texts = std::vector<std::string>;

class DescribeTest : public testing::Test {
protected:
    Description of(const XbaseFile& file) { return describe(kd_test::rewrite(Folder, "t.dbf", file.bytes())); }

    static std::string fact(const Description& description, const std::string& label)
    {
        for (const Fact& fact : description.Facts) {
            if (fact.Label == label) {
                return fact.Value;
            }
        }
        return "none";
    }

    static Texts notes(const Description& description)
    {
        Texts texts;
        for (const Note& note : description.Notes) {
            texts.push_back((note.Loss ? "loss: " : "") + note.Text);
        }
        return texts;
    }

    kd_test::ScopedDirectory Folder;
};

TEST_F(DescribeTest, KindCountsAndColumnsComeFirst)
{
    XbaseFile file(3, {{"NAME", 'C', 6}, {"QTY", 'N', 4, 1}});
    file.record({"a", "1"}).record({"b", "2"}, '*').record({"c", "3"});
    const Description description = of(file);
    EXPECT_EQ(description.File, Folder.file("t.dbf"));
    ASSERT_GE(description.Facts.size(), 3U);
    EXPECT_EQ(description.Facts[0].Label, "kind");
    EXPECT_EQ(description.Facts[1].Label, "records");
    EXPECT_EQ(description.Facts[1].Value, "3");
    EXPECT_EQ(description.Facts[2].Label, "deleted");
    EXPECT_EQ(description.Facts[2].Value, "1");
    ASSERT_EQ(description.Columns.size(), 2U);
    EXPECT_EQ(description.Columns[1].Letter, 'N');
    EXPECT_EQ(description.Columns[1].Decimals, 1U);
}

TEST_F(DescribeTest, DeletedRecordsThatAreKeptCountToo)
{
    XbaseFile file(3, {{"NAME", 'C', 6}});
    file.record({"a"}).record({"b"}, '*');
    SourceOptions options;
    options.Deleted = DeletedRecords::Keep;
    const Description description = describe(Folder.write("k.dbf", file.bytes()), options);
    EXPECT_EQ(fact(description, "deleted"), "1");
}

TEST_F(DescribeTest, DaysOfTheLastChange)
{
    const auto day = [this](const std::string& bytes, int version = 3) {
        XbaseFile file(version, {{"A", 'C', 1}});
        file.Date = bytes;
        return fact(of(file), "last change");
    };
    EXPECT_EQ(day("\x7C\x02\x1D"), "2024-02-29");
    EXPECT_EQ(day("\x5F\x07\x1A"), "1995-07-26");
    EXPECT_EQ(day("\x0C\x01\x1D"), "2012-01-29") << "year modulo 100";
    EXPECT_EQ(day(std::string(3, '\0')), "not stated");
    EXPECT_EQ(day("\x7B\x02\x1D"), "not a day of the calendar: year 2023, 2, 29");
    EXPECT_EQ(day("\x54\x02\x1D", 2), "1984-02-29");
}

TEST_F(DescribeTest, StateOfATable)
{
    const auto stateOf = [this](int version, unsigned flags, char transaction) {
        XbaseFile file(version, {{"A", 'C', 1}});
        file.TableFlags = flags;
        std::string bytes = file.bytes();
        bytes[14] = transaction;
        return fact(describe(kd_test::rewrite(Folder, "t.dbf", bytes)), "state");
    };
    EXPECT_EQ(stateOf(0x30, 0, 0), "none");
    EXPECT_EQ(stateOf(0x30, 4, 0), "a database container");
    EXPECT_EQ(stateOf(0x30, 5, 0), "with an index file, a database container");
    EXPECT_EQ(stateOf(4, 5, 1), "a transaction is unfinished, with an index file");
    EXPECT_EQ(stateOf(3, 5, 0), "with an index file") << "the flag has no meaning here";
}

TEST_F(DescribeTest, ValuesThatWouldNotBeCarried)
{
    XbaseFile file(3, {{"BORN", 'D', 8}, {"NAME", 'C', 3}, {"X", '7', 1}});
    file.Language = 3;
    file.record({"20230229", "a\x81", ""})
        .record({"20230230", "b\x81", ""})
        .record({"x", "c", ""})
        .record({"20230229", "", ""}, '*');
    file.Count = 9;
    EXPECT_EQ(notes(of(file)),
              (Texts{"column X: type 7 of 1 byte is not known; carried as bytes",
                     "loss: the header counts 9 records, the file holds 4", "1 deleted record left out",
                     "loss: column BORN: 3 cells unreadable, the first in record 1: not a date",
                     "loss: column NAME: 2 cells with bytes replaced, the first in record 1: byte 0x81 is not in code "
                     "page CP1252"}));
}

TEST_F(DescribeTest, MoreThan200ReasonsAreCountedTogether)
{
    const auto notesOf = [this](int columns) {
        std::vector<XbaseFile::Field> fields;
        std::vector<std::string> values;
        for (int i = 1; i <= columns; ++i) {
            fields.push_back({"N" + std::to_string(i), 'N', 1});
            values.emplace_back("x");
        }
        XbaseFile file(3, fields);
        return notes(of(file.record(values)));
    };
    EXPECT_EQ(notesOf(200).back(), "loss: column N200: 1 cell unreadable in record 1: not a number");
    EXPECT_EQ(notesOf(201).back(), "loss: 1 more cell or records with other reasons");
    EXPECT_EQ(notesOf(201).size(), notesOf(200).size() + 1);
}

TEST_F(DescribeTest, CutRecord)
{
    XbaseFile file(3, {{"A", 'C', 8}});
    file.record({"a"}).record({"b"});
    const std::string bytes = file.bytes();
    EXPECT_EQ(notes(describe(Folder.write("c.dbf", bytes.substr(0, bytes.size() - 4)))),
              (Texts{"loss: 1 record not whole in record 2: the file ends within the record, after 6 of 9 bytes"}));
}

TEST_F(DescribeTest, MemoFile)
{
    XbaseFile file(0x83, {{"N", 'M', 10}});
    file.record({"         1"});
    EXPECT_EQ(fact(of(file), "memo file"), Folder.file("t.dbt") + " is missing");
    Folder.write("t.dbt", kd_test::memo3({"x"}));
    EXPECT_EQ(fact(of(file), "memo file"), Folder.file("t.dbt") + " (dBase III, blocks of 512 bytes)");
}

TEST_F(DescribeTest, FilesThatCannotBeRead)
{
    EXPECT_THROW(describe(Folder.file("none.dbf")), Error);
    EXPECT_THROW(describe(Folder.write("e.dbf", "")), Error);
}

}  // namespace
