// Memo files of every kind: their contents, their places, and every pointer and length wrong.

#include "support/reading.h"
#include "support/xbase_file.h"

#include <gtest/gtest.h>

#include <cctype>

namespace {

using namespace kd_lib::exchange;
using kd_test::big;
using kd_test::little;
using kd_test::memo3;
using kd_test::memo4;
using kd_test::memoFox;
using kd_test::Reading;
using kd_test::XbaseFile;
using Rows = std::vector<std::vector<std::string>>;
using Texts = std::vector<std::string>;

std::string digits(std::uint64_t block)
{
    const std::string number = std::to_string(block);
    return std::string(10 - number.size(), ' ') + number;
}

class DbfMemos : public testing::Test {
protected:
    /// A table with a column N, whose values are these pointers, and its memo file.
    Reading read(int version, const Texts& pointers, const std::string& memo, const std::string& extension = "dbt",
                 char letter = 'M')
    {
        writeTable(version, pointers, letter);
        kd_test::rewrite(Folder, "t." + extension, memo);
        return kd_test::readFileAs(Folder.file("t.dbf"), Options);
    }

    void writeTable(int version, const Texts& pointers, char letter = 'M', unsigned flags = 0)
    {
        XbaseFile file(version, {{"N", letter, static_cast<unsigned>(pointers.front().size()), 0, flags}});
        for (const std::string& pointer : pointers) {
            file.record({pointer});
        }
        kd_test::rewrite(Folder, "t.dbf", file.bytes());
    }

    std::string one(int version, const std::string& pointer, const std::string& memo,
                    const std::string& extension = "dbt", char letter = 'M')
    {
        const Reading reading = read(version, {pointer}, memo, extension, letter);
        return reading.Flaws.empty() ? reading.only() : reading.only() + " " + reading.Flaws.front();
    }

    kd_test::ScopedDirectory Folder;
    SourceOptions Options;
};

TEST_F(DbfMemos, DBase3)
{
    const std::string memo = memo3({"first", std::string(511, 'x') + "y", "third"});
    EXPECT_EQ(read(0x83, {digits(1), digits(2), digits(4), digits(0), std::string(10, ' ')}, memo).column(),
              (Texts{"'first'", "'" + std::string(511, 'x') + "y'", "'third'", "null", "null"}));
    EXPECT_EQ(one(0x83, digits(1), memo3({""})), "''");
    EXPECT_EQ(one(0x83, digits(1), memo3({" a\r\nb \n"})), "' a\r\nb \n'");
}

TEST_F(DbfMemos, DBase3WithoutEndMarkGoesToTheEndOfTheFile)
{
    EXPECT_EQ(one(0x83, digits(1), std::string(512, '\0') + "to the end"), "'to the end'");
    EXPECT_EQ(one(0x83, digits(1), std::string(512, '\0') + "to the end\x1A"), "'to the end'");
    EXPECT_EQ(one(0x83, digits(1), std::string(512, '\0') + std::string(200000, 'z')),
              "'" + std::string(200000, 'z') + "'");
}

TEST_F(DbfMemos, DBase3TextsOfEveryLengthAroundABlock)
{
    for (std::size_t length = 505; length < 520; ++length) {
        const std::string text(length, 'm');
        EXPECT_EQ(one(0x83, digits(1), memo3({text, "next"})), "'" + text + "'");
    }
    for (const std::size_t length : {65020U, 65023U, 65024U, 65025U, 65534U, 65535U, 65536U, 131072U}) {
        const std::string text(length, 'm');
        EXPECT_EQ(one(0x83, digits(1), memo3({text, "next"})), "'" + text + "'") << length;
    }
}

TEST_F(DbfMemos, DBase3OneEndMark)
{
    const auto block = [](std::string text, char filler) {
        text.resize(512, filler);
        return std::string(512, '\0') + text + "next\x1A\x1A";
    };
    EXPECT_EQ(one(0x83, digits(1), block("alone\x1A", '\0')), "'alone'") << "the rest of the block is unused";
    EXPECT_EQ(one(0x83, digits(1), block("alone\x1A", ' ')), "'alone'");
    EXPECT_EQ(one(0x83, digits(1), block(std::string(511, 'x') + "\x1A", ' ')), "'" + std::string(511, 'x') + "'");
    EXPECT_EQ(one(0x83, digits(1),
                  block("a\x1A"
                        "b\x1A\x1A",
                        '\0')),
              "'a\x1A"
              "b'")
        << "a character of the text";
}

TEST_F(DbfMemos, DBase4)
{
    for (const unsigned block : {512U, 1024U, 64U, 32768U}) {
        const std::string memo = memo4({"First", "", std::string(block, 'z')}, block);
        EXPECT_EQ(read(0x8B, {digits(1), digits(2), digits(3)}, memo).column(),
                  (Texts{"'First'", "''", "'" + std::string(block, 'z') + "'"}))
            << block;
    }
    EXPECT_EQ(one(0x8B, digits(1), memo4({"First"}, 512, 0)), "'First'") << "block size 0 is 512";
    EXPECT_EQ(one(0x8C, digits(1), memo4({"First"})), "'First'");
    EXPECT_EQ(one(0xCB, digits(1), memo4({"First"})), "'First'");
    EXPECT_EQ(one(0x7B, digits(1), memo4({"First"})), "'First'");
}

TEST_F(DbfMemos, FoxPro)
{
    for (const unsigned block : {64U, 512U, 33U, 1U}) {
        const std::string memo = memoFox({"fox", "", std::string(1000, 'z')}, block);
        const std::uint64_t first = (512 + block - 1) / block;
        std::string whole(512, '\0');
        whole.replace(6, 2, big(block, 2));
        whole.resize(first * block, '\0');
        whole += big(1, 4) + big(3, 4) + "fox";
        EXPECT_EQ(one(0xF5, digits(first), whole, "fpt"), "'fox'") << block;
    }
    const std::string memo = memoFox({"fox", "", std::string(1000, 'z')}, 64);
    EXPECT_EQ(read(0xF5, {digits(8), digits(9), digits(10)}, memo, "fpt").column(),
              (Texts{"'fox'", "''", "'" + std::string(1000, 'z') + "'"}));
    EXPECT_EQ(read(0x30, {little(8, 4), little(9, 4), little(0, 4)}, memo, "fpt").column(),
              (Texts{"'fox'", "''", "null"}));
}

TEST_F(DbfMemos, FoxProBlock32IsNotBlank)
{
    const std::string memo = memoFox(Texts(25, std::string(40, 'x')), 64);
    EXPECT_EQ(one(0x30, little(32, 4), memo, "fpt"), "'" + std::string(40, 'x') + "'");
    EXPECT_EQ(one(0x30, "    ", memo, "fpt"), "unreadable 1 N: the memo pointer is outside the memo file");
}

TEST_F(DbfMemos, LongTexts)
{
    const std::string text(3000000, 't');
    EXPECT_EQ(one(0x30, little(8, 4), memoFox({text}), "fpt"), "'" + text + "'");
    EXPECT_EQ(one(0x8B, digits(1), memo4({text})), "'" + text + "'");
    EXPECT_EQ(one(0x83, digits(1), memo3({text})), "'" + text + "'");
}

TEST_F(DbfMemos, OtherLettersAreBytes)
{
    const std::string memo = memoFox({std::string("\xFF\0\x1A", 3)}, 64, 2);
    EXPECT_EQ(one(0x30, little(8, 4), memo, "fpt", 'G'), "bytes FF 00 1A");
    EXPECT_EQ(one(0x30, little(8, 4), memo, "fpt", 'P'), "bytes FF 00 1A");
    EXPECT_EQ(one(0x32, little(8, 4), memo, "fpt", 'W'), "bytes FF 00 1A");
    EXPECT_EQ(one(0x8B, digits(1), memo4({"\xFF\x1A"}), "dbt", 'B'), "bytes FF 1A");
    EXPECT_EQ(one(0x8B, digits(1), memo4({""}), "dbt", 'G'), "bytes");
    writeTable(0x30, {little(8, 4)}, 'M', 4);
    EXPECT_EQ(kd_test::readFileAs(Folder.file("t.dbf")).only(), "bytes FF 00 1A") << "flagged binary";
}

TEST_F(DbfMemos, PointersOfDigits)
{
    const std::string memo = memo3({"text"});
    for (const std::string pointer : {"         1", "0000000001", "1         ", "    1     "}) {
        EXPECT_EQ(one(0x83, pointer, memo), "'text'") << pointer;
    }
    EXPECT_EQ(one(0x83, std::string("1\0\0\0\0\0\0\0\0\0", 10), memo), "'text'");
    for (const std::string pointer :
         {"       x1 ", "        -1", "       1 1", "       1.0", "0x00000001", "        +1"}) {
        EXPECT_EQ(one(0x83, pointer, memo), "unreadable 1 N: the memo pointer is not a number") << pointer;
    }
    EXPECT_EQ(one(0x83, "0000000000", memo), "null");
    EXPECT_EQ(one(0x83, std::string(10, '\0'), memo), "null");
    EXPECT_EQ(one(0x83, "99999999999999999999999999", memo), "unreadable 1 N: the memo pointer is not a number");
}

TEST_F(DbfMemos, PointersHaveTenDigitsAtMost)
{
    const std::string memo = memo3({"text"});
    EXPECT_EQ(one(0x83, "00000000001", memo), "'text'");
    EXPECT_EQ(one(0x83, "09999999999", memo), "unreadable 1 N: the memo pointer is outside the memo file");
    EXPECT_EQ(one(0x83, "10000000000", memo), "unreadable 1 N: the memo pointer is not a number");
}

TEST_F(DbfMemos, PointersOutsideTheFile)
{
    const Texts outside{"unreadable", "unreadable"};
    for (const auto& [version, memo] : {std::pair{0x83, memo3({"text"})}, {0x8B, memo4({"text"})}}) {
        const Reading reading = read(version, {digits(2), digits(9999999999)}, memo);
        EXPECT_EQ(reading.column(), outside);
        EXPECT_EQ(reading.Flaws[0], "1 N: the memo pointer is outside the memo file");
        EXPECT_EQ(reading.Flaws[1], "2 N: the memo pointer is outside the memo file");
    }
    const Reading reading = read(0x30, {little(10, 4), little(0xFFFFFFFF, 4)}, memoFox({"text"}), "fpt");
    EXPECT_EQ(reading.column(), outside);
}

TEST_F(DbfMemos, PointersIntoTheHeader)
{
    EXPECT_EQ(read(0x30, {little(1, 4), little(7, 4), little(8, 4)}, memoFox({"text"}), "fpt").column(),
              (Texts{"unreadable", "unreadable", "'text'"}));
    std::string flex = memoFox({"FlexFile3", std::string(500, 'f'), "text"}, 512);
    flex.replace(512, 9, "FlexFile3");
    EXPECT_EQ(read(0xF5, {digits(1), digits(2)}, flex, "fpt").column(),
              (Texts{"unreadable", "'" + std::string(500, 'f') + "'"}))
        << "the header of FlexFile3 has 1024 bytes";
}

TEST_F(DbfMemos, LengthsWrongInBothDirections)
{
    const auto fox = [](std::uint32_t length) {
        std::string memo = memoFox({"12345678"});
        memo.replace(512 + 4, 4, big(length, 4));
        return memo;
    };
    // The file has 56 bytes after the block's header.
    EXPECT_EQ(one(0xF5, digits(8), fox(4), "fpt"), "'1234'");
    EXPECT_EQ(one(0xF5, digits(8), fox(0), "fpt"), "''");
    EXPECT_EQ(one(0xF5, digits(8), fox(57), "fpt"),
              "unreadable 1 N: the memo's length goes beyond the end of the memo file");
    EXPECT_EQ(one(0xF5, digits(8), fox(0xFFFFFFFF), "fpt"),
              "unreadable 1 N: the memo's length goes beyond the end of the memo file");
    const auto four = [](std::uint32_t length) {
        std::string memo = memo4({"12345678"});
        memo.replace(512 + 4, 4, little(length, 4));
        return memo;
    };
    EXPECT_EQ(one(0x8B, digits(1), four(12)), "'1234'");
    EXPECT_EQ(one(0x8B, digits(1), four(8)), "''");
    EXPECT_EQ(one(0x8B, digits(1), four(7)), "unreadable 1 N: the memo's length is less than that of its header");
    EXPECT_EQ(one(0x8B, digits(1), four(0)), "unreadable 1 N: the memo's length is less than that of its header");
    EXPECT_EQ(one(0x8B, digits(1), four(513)),
              "unreadable 1 N: the memo's length goes beyond the end of the memo file");
    EXPECT_EQ(one(0x8B, digits(1), four(0xFFFFFFFF)),
              "unreadable 1 N: the memo's length goes beyond the end of the memo file");
}

TEST_F(DbfMemos, BlocksThatAreNotInUse)
{
    std::string memo = memo4({"12345678"});
    memo.replace(512, 4, little(3, 4));
    EXPECT_EQ(one(0x8B, digits(1), memo), "unreadable 1 N: the memo block is not in use");
    EXPECT_EQ(one(0xF5, digits(8), memoFox({"12345678"}, 64, 0x03E8), "fpt"),
              "unreadable 1 N: the memo block is of an unknown type");
}

TEST_F(DbfMemos, BlockSizesWrong)
{
    const auto withSize = [](unsigned size) {
        std::string memo = memoFox({"12345678"});
        memo.replace(6, 2, big(size, 2));
        return memo;
    };
    EXPECT_EQ(one(0xF5, digits(8), withSize(0), "fpt"),
              "unreadable 1 N: the memo file's header gives a block size of 0");
    EXPECT_EQ(one(0xF5, digits(8), withSize(65535), "fpt"),
              "unreadable 1 N: the memo pointer is outside the memo file");
    EXPECT_EQ(one(0xF5, digits(8), withSize(63), "fpt"),
              "unreadable 1 N: the memo pointer is within the memo file's header");
}

TEST_F(DbfMemos, FilesCutEverywhere)
{
    for (const auto& [version, extension, pointer, memo] : {std::tuple{0x83, "dbt", digits(1), memo3({"text"})},
                                                            {0x8B, "dbt", digits(1), memo4({"text"})},
                                                            {0xF5, "fpt", digits(8), memoFox({"text"})}}) {
        for (std::size_t kept = 0; kept < 540; ++kept) {
            const Reading reading = read(version, {pointer}, memo.substr(0, kept), extension);
            if (reading.only() == "unreadable") {
                ASSERT_EQ(reading.Flaws.size(), 1U);
            } else {
                ASSERT_GT(kept, 512U);
                ASSERT_TRUE(reading.only() == "'text'" || version == 0x83) << kept;
            }
        }
    }
}

TEST_F(DbfMemos, MissingFileIsReportedWhenItIsUsed)
{
    writeTable(0x83, {digits(0), digits(1), std::string(10, ' '), digits(2)});
    const Reading reading = kd_test::readFileAs(Folder.file("t.dbf"));
    EXPECT_EQ(reading.column(), (Texts{"null", "unreadable", "null", "unreadable"}));
    EXPECT_EQ(reading.Flaws, (Texts{"2 N: the memo file is missing", "4 N: the memo file is missing"}));
    EXPECT_EQ(reading.Notes,
              (Texts{"loss: memo file: " + Folder.file("t.dbt") + " is missing; its values cannot be read"}));
    writeTable(0x83, {digits(0), std::string(10, ' ')});
    EXPECT_EQ(kd_test::readFileAs(Folder.file("t.dbf")).Notes, Texts{});
}

TEST_F(DbfMemos, FoundWithoutRegardToCase)
{
    const XbaseFile table = XbaseFile(0x83, {{"N", 'M', 10}}).record({digits(1)});
    for (const auto& [dbf, dbt] : {std::pair{"a.dbf", "a.DBT"}, {"B.DBF", "b.dbt"}, {"Cc.Dbf", "cC.dBt"}}) {
        Folder.write(dbf, table.bytes());
        Folder.write(dbt, memo3({dbt}));
        EXPECT_EQ(kd_test::readFileAs(Folder.file(dbf)).only(), std::string("'") + dbt + "'");
    }
}

TEST_F(DbfMemos, ExactCaseComesFirst)
{
    const XbaseFile table = XbaseFile(0x83, {{"N", 'M', 10}}).record({digits(1)});
    for (const char* name : {"people.DBT", "PEOPLE.dbt", "people.dbt", "PEOPLE.DBT", "People.dbt"}) {
        Folder.write(name, memo3({name}));
    }
    Folder.write("people.dbf", table.bytes());
    Folder.write("PEOPLE.DBF", table.bytes());
    Folder.write("People.dbf", table.bytes());
    Folder.write("pEOPLE.dbf", table.bytes());
    EXPECT_EQ(kd_test::readFileAs(Folder.file("people.dbf")).only(), "'people.dbt'");
    EXPECT_EQ(kd_test::readFileAs(Folder.file("PEOPLE.DBF")).only(), "'PEOPLE.DBT'");
    EXPECT_EQ(kd_test::readFileAs(Folder.file("People.dbf")).only(), "'People.dbt'");
    EXPECT_EQ(kd_test::readFileAs(Folder.file("pEOPLE.dbf")).only(), "'PEOPLE.dbt'");
}

TEST_F(DbfMemos, OfTheTableAloneInItsFolder)
{
    Folder.write("other.dbt", memo3({"other"}));
    Folder.write("t.dbt.bak", memo3({"bak"}));
    Folder.write("t.fpt", memoFox({"fox"}));
    writeTable(0x83, {digits(1)});
    EXPECT_EQ(kd_test::readFileAs(Folder.file("t.dbf")).only(), "unreadable") << "not the file of another program";
}

TEST_F(DbfMemos, ByTheKindOfFileIfTheTableDoesNotDecide)
{
    EXPECT_EQ(one(3, digits(1), memo3({"three"})), "'three'");
    EXPECT_EQ(one(3, digits(1), memo4({"four"})), "'four'");
    EXPECT_EQ(one(0xFB, digits(1), memo3({"three"})), "'three'");
    std::filesystem::remove(Folder.file("t.dbt"));
    EXPECT_EQ(one(0xFB, digits(8), memoFox({"fox"}), "fpt"), "'fox'");
}

TEST_F(DbfMemos, NamedFile)
{
    writeTable(0x83, {digits(1)});
    Folder.write("t.dbt", memo3({"beside"}));
    Options.MemoFile = Folder.write("elsewhere", memo3({"named"}));
    EXPECT_EQ(kd_test::readFileAs(Folder.file("t.dbf"), Options).only(), "'named'");
    Options.MemoFile = Folder.write("fox.fpt", memoFox({std::string(8, 'f')}, 512));
    EXPECT_EQ(kd_test::readFileAs(Folder.file("t.dbf"), Options).only(), "'ffffffff'");
    Options.MemoFile = Folder.file("none.dbt");
    EXPECT_EQ(kd_test::failureOf(Folder.file("t.dbf"), Options), "No such file or directory");
    Options.MemoFile = Folder.path();
    EXPECT_NE(kd_test::failureOf(Folder.file("t.dbf"), Options), "");
}

TEST_F(DbfMemos, LeftOutWithoutANote)
{
    XbaseFile file(0x83, {{"ID", 'N', 2}, {"NOTE", 'M', 10}, {"PIC", 'G', 10}, {"RAW", 'B', 10}});
    file.record({"1", digits(1), digits(2), digits(3)});
    Folder.write("t.dbf", file.bytes());
    Options.NoMemo = true;
    const Reading reading = kd_test::readFileAs(Folder.file("t.dbf"), Options);
    EXPECT_EQ(reading.Names, (Texts{"ID"}));
    EXPECT_EQ(reading.Rows, (Rows{{"1"}}));
    EXPECT_EQ(reading.Notes, Texts{});
    Options.Select = {"NOTE"};
    EXPECT_THROW(kd_test::readFileAs(Folder.file("t.dbf"), Options), OptionError);
}

TEST_F(DbfMemos, NotOpenedUnlessAColumnIsCarried)
{
    XbaseFile file(0x83, {{"ID", 'N', 2}, {"NOTE", 'M', 10}});
    file.record({"1", digits(1)});
    Folder.write("t.dbf", file.bytes());
    Options.Select = {"ID"};
    const Reading reading = kd_test::readFileAs(Folder.file("t.dbf"), Options);
    EXPECT_EQ(reading.Flaws, Texts{});
    EXPECT_EQ(reading.Notes, Texts{});
}

TEST_F(DbfMemos, SeveralColumnsOfARecord)
{
    XbaseFile file(0x30, {{"A", 'M', 4}, {"B", 'M', 4}, {"C", 'W', 4}});
    file.Language = 3;
    file.record({little(8, 4), little(9, 4), little(8, 4)}).record({little(9, 4), little(8, 4), little(0, 4)});
    Folder.write("t.dbf", file.bytes());
    Folder.write("t.fpt", memoFox({"\xE9t\xE9", "plain"}));
    EXPECT_EQ(kd_test::readFileAs(Folder.file("t.dbf")).Rows,
              (Rows{{"'\xC3\xA9t\xC3\xA9'", "'plain'", "bytes E9 74 E9"}, {"'plain'", "'\xC3\xA9t\xC3\xA9'", "null"}}));
}

TEST_F(DbfMemos, DriverWhoseMemosCannotBeRead)
{
    EXPECT_EQ(one(0xE5, digits(1), "SixMemo", "smt"), "unreadable 1 N: memo files of the SIx driver cannot be read");
}

TEST_F(DbfMemos, TypesThatTheOptionsGiveToMemos)
{
    Options.Types = {{"N", "bytes"}};
    EXPECT_EQ(one(0x83, digits(1), memo3({"ab"})), "bytes 61 62");
    Options.Types = {{"N", "integer"}};
    EXPECT_EQ(one(0x83, digits(1), memo3({" 42\r\n"})), "unreadable 1 N: not a number");
    EXPECT_EQ(one(0x83, digits(1), memo3({" 42 "})), "42");
    Options.Types = {{"N", "text"}};
    EXPECT_EQ(one(0x83, digits(1), memo3({"ab"}), "dbt", 'G'), "'ab'");
}

}  // namespace
