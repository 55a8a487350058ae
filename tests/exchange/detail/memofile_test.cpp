#include "detail/memofile.h"

#include "exchange/support/xbase_file.h"
#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

using namespace kd_lib::exchange::detail;
using kd_lib::formats::MemoKind;

class DetailMemoFileTest : public testing::Test {
protected:
    /// The value of a block in a file of these bytes; "!" and the reason if it cannot be read.
    std::string value(const std::string& name, const std::string& bytes, MemoKind kind, std::uint64_t block) const
    {
        MemoFile file(Folder.write(name, bytes), kind);
        std::string text = "left over";
        const char* const reason = file.read(block, text);
        return reason != nullptr ? "!" + std::string(reason) : text;
    }

    static DbfLayout layoutOf(std::uint8_t version)
    {
        DbfLayout layout;
        layout.Known = kd_lib::formats::dbfVersionOf(version);
        return layout;
    }

    kd_test::ScopedDirectory Folder;
};

TEST_F(DetailMemoFileTest, ATextOfDBase3EndsWithTwoMarks)
{
    const std::string bytes = kd_test::memo3({"one", "t\x1Awo", std::string(600, 'x'), "last"});
    EXPECT_EQ(value("m.dbt", bytes, MemoKind::Dbt3, 1), "one");
    EXPECT_EQ(value("m.dbt", bytes, MemoKind::Dbt3, 2), "t\x1Awo");
    EXPECT_EQ(value("m.dbt", bytes, MemoKind::Dbt3, 3), std::string(600, 'x'));
    EXPECT_EQ(value("m.dbt", bytes, MemoKind::Dbt3, 5), "last");
    EXPECT_EQ(value("m.dbt", bytes, MemoKind::Dbt3, 0), "!the memo pointer is within the memo file's header");
    EXPECT_EQ(value("m.dbt", bytes, MemoKind::Dbt3, 6), "!the memo pointer is outside the memo file");
}

TEST_F(DetailMemoFileTest, OneMarkEndsATextBeforeUnusedRoom)
{
    const std::string header(512, '\0');
    const auto read = [&](const std::string& block) { return value("m.dbt", header + block, MemoKind::Dbt3, 1); };
    EXPECT_EQ(read("a\x1A"), "a");
    EXPECT_EQ(read("a\x1A" + std::string(510, '\0')), "a");
    EXPECT_EQ(read("a\x1A" + std::string(510, ' ')), "a");
    EXPECT_EQ(read("a\x1A" + std::string(510, ' ') + "next"), "a");
    EXPECT_EQ(read("a\x1A" + std::string(509, '\0') + "b"), "a\x1A" + std::string(509, '\0') + "b");
    EXPECT_EQ(read("a\x1A  " + std::string(508, '\0')), "a\x1A  " + std::string(508, '\0')) << "two fillers";
    EXPECT_EQ(read(std::string(511, 'a') + "\x1A" + "bc"), std::string(511, 'a'))
        << "the mark is the block's last byte";
    EXPECT_EQ(read("no mark"), "no mark");
    EXPECT_EQ(read("\x1A\x1A"), "");
}

TEST_F(DetailMemoFileTest, ATextLongerThanAReadIsWhole)
{
    const std::string text = std::string(65530, 'a') + "\x1A" + std::string(70000, 'b');
    EXPECT_EQ(value("m.dbt", kd_test::memo3({text}), MemoKind::Dbt3, 1), text);
    EXPECT_EQ(value("m.dbt", kd_test::memo4({text}), MemoKind::Dbt4, 1), text);
    EXPECT_EQ(value("m.fpt", kd_test::memoFox({text}), MemoKind::Fpt, 8), text);
}

TEST_F(DetailMemoFileTest, ABlockOfDBase4StatesItsLength)
{
    const std::string bytes = kd_test::memo4({"one", ""}, 64);
    EXPECT_EQ(value("m.dbt", bytes, MemoKind::Dbt4, 1), "one");
    EXPECT_EQ(value("m.dbt", bytes, MemoKind::Dbt4, 2), "");
    EXPECT_EQ(value("m.dbt", bytes, MemoKind::Dbt4, 3), "!the memo pointer is outside the memo file");
    EXPECT_EQ(value("m.dbt", bytes + "\xFF\xFF\x08", MemoKind::Dbt4, 3), "!the memo pointer is outside the memo file");
    EXPECT_EQ(value("m.dbt", kd_test::memo4({"far"}, 512, 0), MemoKind::Dbt4, 1), "far") << "512 by default";
}

TEST_F(DetailMemoFileTest, ADamagedBlockOfDBase4IsRefused)
{
    const std::string bytes = kd_test::memo4({"one"}, 64);
    const auto bent = [&](std::size_t at, char byte) {
        std::string copy = bytes;
        copy[at] = byte;
        return value("m.dbt", copy, MemoKind::Dbt4, 1);
    };
    EXPECT_EQ(bent(64, 0), "!the memo block is not in use");
    EXPECT_EQ(bent(68, 7), "!the memo's length is less than that of its header");
    EXPECT_EQ(bent(68, 8), "");
    EXPECT_EQ(bent(68, 64), "one" + std::string(53, '\0')) << "up to the end of the file";
    EXPECT_EQ(bent(68, 65), "!the memo's length goes beyond the end of the memo file");
}

TEST_F(DetailMemoFileTest, ABlockOfFoxProStatesItsTypeAndLength)
{
    for (const unsigned type : {0U, 1U, 2U}) {
        EXPECT_EQ(value("m.fpt", kd_test::memoFox({"one", "two"}, 64, type), MemoKind::Fpt, 9), "two");
    }
    EXPECT_EQ(value("m.fpt", kd_test::memoFox({"one"}, 64, 3), MemoKind::Fpt, 8),
              "!the memo block is of an unknown type");
    const std::string bytes = kd_test::memoFox({"one"}, 64);
    EXPECT_EQ(value("m.fpt", bytes, MemoKind::Fpt, 7), "!the memo pointer is within the memo file's header");
    EXPECT_EQ(value("m.fpt", bytes.substr(0, 519), MemoKind::Fpt, 8), "!the memo pointer is outside the memo file");
    EXPECT_EQ(value("m.fpt", bytes.substr(0, 522), MemoKind::Fpt, 8),
              "!the memo's length goes beyond the end of the memo file");
    EXPECT_EQ(value("m.fpt", std::string(600, '\0'), MemoKind::Fpt, 8),
              "!the memo file's header gives a block size of 0");
}

TEST_F(DetailMemoFileTest, AFlexFileHasALongerHeader)
{
    std::string bytes = kd_test::memoFox({std::string(600, 'x'), "two"}, 64);
    MemoFile plain(Folder.write("p.fpt", bytes), MemoKind::Fpt);
    EXPECT_EQ(plain.headerSize(), 512U);
    bytes.replace(512, 9, "FlexFile3");
    MemoFile flex(Folder.write("f.fpt", bytes), MemoKind::Fpt);
    EXPECT_EQ(flex.headerSize(), 1024U);
    std::string text;
    EXPECT_STREQ(flex.read(15, text), "the memo pointer is within the memo file's header");
}

TEST_F(DetailMemoFileTest, AFileWithoutAHeaderHasNoValues)
{
    for (const MemoKind kind : {MemoKind::Dbt3, MemoKind::Dbt4, MemoKind::Fpt}) {
        EXPECT_EQ(value("m.dbt", "", kind, 1), "!the memo file ends within its header");
        EXPECT_EQ(value("m.dbt", std::string(23, '\0'), kind, 1), "!the memo file ends within its header");
    }
    EXPECT_EQ(value("m.dbt", std::string(24, '\0'), MemoKind::Dbt3, 1), "!the memo pointer is outside the memo file");
    EXPECT_EQ(value("m.smt", "", MemoKind::Smt, 1), "!memo files of the SIx driver cannot be read");
}

TEST_F(DetailMemoFileTest, TheContentsShowTheKind)
{
    const auto kind = [this](const std::string& name, const std::string& bytes) {
        return MemoFile(Folder.write(name, bytes), MemoKind::None).kind();
    };
    EXPECT_EQ(kind("a.dbt", kd_test::memo3({"text"})), MemoKind::Dbt3);
    EXPECT_EQ(kind("a.dbt", kd_test::memo4({"text"}, 64)), MemoKind::Dbt4);
    EXPECT_EQ(kind("a.dbt", kd_test::memo4({"text"}, 512, 0)), MemoKind::Dbt4);
    EXPECT_EQ(kind("a.dbt", std::string(23, '\0')), MemoKind::Dbt3);
    EXPECT_EQ(kind("a.dbt", kd_test::memo4({}, 64) + "\xFF\xFF\x08"), MemoKind::Dbt3) << "the first block is cut";
    EXPECT_EQ(kind("a.FPT", kd_test::memo3({"text"})), MemoKind::Fpt);
}

TEST_F(DetailMemoFileTest, AFolderIsNotAMemoFile)
{
    EXPECT_THROW(MemoFile(Folder.path(), MemoKind::Dbt3), kd_lib::exchange::Error);
    EXPECT_THROW(MemoFile("/dev/null", MemoKind::Dbt3), kd_lib::exchange::Error);
}

TEST_F(DetailMemoFileTest, TheTableDeterminesItsMemoFile)
{
    for (const char* const name : {"t.dbt", "t.fpt", "t.smt", "u.fpt"}) {
        Folder.write(name, "");
    }
    const auto found = [this](const DbfLayout& layout, const std::string& table) {
        const auto path = findMemoFile(Folder.file(table), layout);
        return path ? std::filesystem::path(*path).filename().string() : "none";
    };
    EXPECT_EQ(found(layoutOf(0x83), "t.dbf"), "t.dbt");
    EXPECT_EQ(found(layoutOf(0x8B), "u.dbf"), "none");
    EXPECT_EQ(found(layoutOf(0xF5), "t.dbf"), "t.fpt");
    EXPECT_EQ(found(layoutOf(0xE5), "t.dbf"), "t.smt");
    EXPECT_EQ(found(layoutOf(0x03), "t.dbf"), "t.dbt");
    EXPECT_EQ(found(layoutOf(0x03), "u.dbf"), "u.fpt");
    EXPECT_EQ(found(layoutOf(0x99), "u.dbf"), "u.fpt");
    DbfLayout fox = layoutOf(0x03);
    fox.FoxFlags = true;
    EXPECT_EQ(found(fox, "t.dbf"), "t.fpt");
}

TEST_F(DetailMemoFileTest, TheKindOfAMemoFileAndItsLikelyName)
{
    EXPECT_EQ(memoKindOf(layoutOf(0x83), "m.dbt"), MemoKind::Dbt3);
    EXPECT_EQ(memoKindOf(layoutOf(0x83), "m.FPT"), MemoKind::Fpt);
    EXPECT_EQ(memoKindOf(layoutOf(0xF5), "m.dbt"), MemoKind::None);
    EXPECT_EQ(memoKindOf(layoutOf(0xF5), "m.bak"), MemoKind::Fpt);
    EXPECT_EQ(memoKindOf(layoutOf(0x03), "m.DBT"), MemoKind::None);
    EXPECT_EQ(likelyMemoFile("a/t.dbf", layoutOf(0xF5)), "a/t.fpt");
    EXPECT_EQ(likelyMemoFile("a/t.dbf", layoutOf(0xE5)), "a/t.smt");
    EXPECT_EQ(likelyMemoFile("a/t.dbf", layoutOf(0x03)), "a/t.dbt");
}

}  // namespace
