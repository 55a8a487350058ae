#include "support/shown.h"
#include "support/xbase_file.h"

#include "support/scoped_directory.h"

#include <kd_lib/exchange/inspect.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <stop_token>
#include <vector>

namespace {

using namespace kd_lib::exchange;
using kd_test::big;
using kd_test::little;
using kd_test::memo3;
using kd_test::memo4;
using kd_test::memoFox;
using kd_test::XbaseFile;
using Texts = std::vector<std::string>;

class InspectTest : public testing::Test {
protected:
    /// "OFFSET+LENGTH what: meaning" of each line; the damaged ones begin with "!".
    Texts lines(const std::string& name, const std::string& bytes)
    {
        Lines.clear();
        Sound = inspect(Folder.write(name, bytes), [this](const InspectedBytes& part) {
            EXPECT_LE(part.Bytes.size(), part.Length);
            Lines.push_back((part.Damaged ? "!" : "") + std::to_string(part.Offset) + "+" +
                            std::to_string(part.Length) + " " + std::string(part.What) + ": " +
                            std::string(part.Meaning));
            if (!part.Damaged) {
                Covered.emplace_back(part.Offset, part.Length);
            }
        });
        return Lines;
    }

    Texts damaged() const
    {
        Texts found;
        std::ranges::copy_if(Lines, std::back_inserter(found), [](const std::string& line) { return line[0] == '!'; });
        return found;
    }

    /// Whether the lines explain each byte up to a place.
    bool coversTo(std::uint64_t end)
    {
        std::ranges::sort(Covered);
        std::uint64_t at = 0;
        for (const auto& [offset, length] : Covered) {
            at = offset <= at ? std::max(at, offset + length) : at;
        }
        return at == end;
    }

    static XbaseFile sample()
    {
        XbaseFile file(3, {{"ID", 'N', 4}, {"BORN", 'D', 8}});
        file.record({"   1", "20240229"}).record({"   2", ""}, '*');
        return file;
    }

    kd_test::ScopedDirectory Folder;
    Texts Lines;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> Covered;
    bool Sound = false;
};

TEST_F(InspectTest, EveryByteOfATable)
{
    const std::string bytes = sample().bytes();
    EXPECT_EQ(lines("a.dbf", bytes), (Texts{"0+1 version: dBase III (version byte 03)",
                                            "1+3 last change: 2024-02-29",
                                            "4+4 record count: 2",
                                            "8+2 header length: 97",
                                            "10+2 record length: 13",
                                            "12+2 reserved: ",
                                            "14+1 transaction: ",
                                            "15+1 encryption: ",
                                            "16+12 reserved: ",
                                            "28+1 flags: ",
                                            "29+1 language byte: not stated",
                                            "30+2 reserved: ",
                                            "32+32 column 1: ID: type N, 4 bytes at byte 1 of the record, number",
                                            "64+32 column 2: BORN: type D, 8 bytes at byte 5 of the record, date",
                                            "96+1 end of the columns: ",
                                            "0+0 code page: CP1252: the file names none",
                                            "97+1 record 1: ",
                                            "98+4   ID: 1",
                                            "102+8   BORN: 2024-02-29",
                                            "110+1 record 2: deleted",
                                            "111+4   ID: 2",
                                            "115+8   BORN: NULL",
                                            "123+1 end of the records: "}));
    EXPECT_TRUE(Sound);
    EXPECT_TRUE(coversTo(bytes.size()));
}

TEST_F(InspectTest, EveryByteOfOtherKinds)
{
    XbaseFile visual(0x32, {{"V", 'V', 5, 0, 2}, {"N", 'N', 4, 2}, {"_NullFlags", '0', 1, 0, 5}});
    visual.BackLink = "shop.dbc";
    visual.TableFlags = 7;
    visual.record({"ab  \x02", "1.50", "\x01"});
    lines("v.dbf", visual.bytes());
    EXPECT_TRUE(Sound);
    EXPECT_TRUE(coversTo(visual.bytes().size()));
    EXPECT_NE(std::ranges::find(Lines, "129+263 database: shop.dbc"), Lines.end());
    EXPECT_NE(std::ranges::find(Lines, "393+5   V: \"ab\""), Lines.end());
    EXPECT_NE(std::ranges::find(Lines, "28+1 flags: index file, memo file, database container"), Lines.end());
    EXPECT_NE(
        std::ranges::find(Lines, "64+32 column 2: N: type N, 4 bytes at byte 6 of the record, 2 decimals, number"),
        Lines.end());
    for (const int version : {0x02, 0x04}) {
        Covered.clear();
        XbaseFile other(version, {{"A", 'C', 5}});
        other.record({"x"});
        lines("o" + std::to_string(version) + ".dbf", other.bytes());
        EXPECT_TRUE(Sound);
        EXPECT_TRUE(coversTo(other.bytes().size())) << version;
    }
}

TEST_F(InspectTest, EveryByteOfADBase2Table)
{
    XbaseFile file(0x02, {{"A", 'C', 5}});
    file.record({"x"});
    EXPECT_EQ(lines("two.dbf", file.bytes()),
              (Texts{"0+1 version: dBase II (version byte 02)", "1+2 record count: 1", "3+3 last change: 2024-02-29",
                     "6+2 record length: 6", "8+16 column 1: A: type C, 5 bytes at byte 1 of the record, text",
                     "24+1 end of the columns: ", "25+496 after the columns: not read",
                     "0+0 code page: CP1252: the file names none", "521+1 record 1: ", "522+5   A: \"x\"",
                     "527+1 end of the records: "}));
}

TEST_F(InspectTest, BytesThatNothingReadsAreShownAsSuch)
{
    std::string bytes = sample().bytes();
    bytes[12] = 'x';
    bytes[20] = 'y';
    lines("reserved.dbf", bytes);
    EXPECT_EQ(Lines[5], "12+2 reserved: left-overs, not read");
    EXPECT_EQ(Lines[8], "16+12 reserved: left-overs, not read");
    EXPECT_EQ(Lines[11], "30+2 reserved: ");
    EXPECT_TRUE(Sound);

    XbaseFile longer(3, {{"ID", 'N', 4}, {"X", 'C', 3}});
    longer.record({"   1", "zzz"});
    longer.Fields.pop_back();
    longer.HeaderLength -= 32;
    EXPECT_EQ(lines("longer.dbf", longer.bytes())[17], "70+3   rest: not of a column, not read");
    EXPECT_TRUE(Sound);
}

TEST_F(InspectTest, AnUnknownDeletionMarkKeepsItsRecord)
{
    XbaseFile file(3, {{"ID", 'N', 4}});
    file.record({"   1"}, '?');
    lines("mark.dbf", file.bytes());
    EXPECT_NE(std::ranges::find(Lines, "65+1 record 1: an unknown deletion mark, kept"), Lines.end());
    EXPECT_NE(std::ranges::find(Lines, "66+4   ID: 1"), Lines.end());
}

TEST_F(InspectTest, NamesOfColumnsThatThePageLacksAreDamage)
{
    XbaseFile file(3, {{"A\x81", 'N', 4}});
    lines("name.dbf", file.bytes());
    EXPECT_FALSE(Sound);
    EXPECT_EQ(damaged(), (Texts{"!0+0 columns: name of column 1: byte 0x81 is not in code page CP1252; replaced"}));
}

TEST_F(InspectTest, DamagedCells)
{
    XbaseFile file = sample();
    file.record({"x", "20230229"});
    lines("c.dbf", file.bytes());
    EXPECT_FALSE(Sound);
    EXPECT_EQ(damaged(), (Texts{"!124+4   ID: not a number", "!128+8   BORN: not a date"}));
}

TEST_F(InspectTest, DamagedHeadersAreExplainedAsFarAsTheyGo)
{
    const std::string bytes = sample().bytes();
    for (std::size_t kept = 0; kept < 97; ++kept) {
        Covered.clear();
        lines(std::to_string(kept) + ".dbf", bytes.substr(0, kept));
        EXPECT_FALSE(Sound) << kept;
        EXPECT_EQ(damaged().size(), 1U) << kept;
        EXPECT_TRUE(coversTo(kept)) << kept;
    }
    XbaseFile file = sample();
    file.RecordLength = 5;
    lines("r.dbf", file.bytes());
    EXPECT_EQ(damaged(), (Texts{"!10+2 header: the header gives a record length of 5, but the columns need 13 bytes"}));
    EXPECT_EQ(Lines.back(), "97+27 rest of the file: not explained");
    file = sample();
    file.HeaderLength = 7;
    lines("h.dbf", file.bytes());
    EXPECT_EQ(damaged(),
              (Texts{"!8+2 header: the header gives its own length as 7, which leaves no room for columns"}));
}

TEST_F(InspectTest, DamagedRecords)
{
    XbaseFile file = sample();
    file.Count = 9;
    lines("n.dbf", file.bytes());
    EXPECT_EQ(damaged(), (Texts{"!4+4 record count: the header counts 9 records, the file holds 2"}));
    XbaseFile old(2, {{"A", 'C', 5}});
    old.Count = 7;
    lines("o.dbf", old.bytes());
    EXPECT_EQ(damaged(), (Texts{"!1+2 record count: the header counts 7 records, the file holds 0"}));
    const std::string bytes = sample().bytes();
    lines("cut.dbf", bytes.substr(0, bytes.size() - 4));
    EXPECT_EQ(damaged(), (Texts{"!110+10 record 2: the file ends within the record"}));
    EXPECT_EQ(Lines.back(), damaged().back()) << "the cut record is not the rest of the file";
    file = sample();
    file.End = "\x1Ajunk";
    lines("t.dbf", file.bytes());
    EXPECT_TRUE(Sound);
    EXPECT_EQ(Lines.back(), "124+4 rest of the file: not read");
    EXPECT_EQ(Lines[Lines.size() - 2], "123+1 end of the records: ");
}

TEST_F(InspectTest, MemosOfATable)
{
    XbaseFile file(0x83, {{"NOTE", 'M', 10}});
    file.record({"         1"}).record({"         9"});
    Folder.write("m.dbt", memo3({"hello"}));
    lines("m.dbf", file.bytes());
    EXPECT_NE(std::ranges::find(Lines, "66+10   NOTE: block 1: \"hello\""), Lines.end());
    EXPECT_EQ(damaged(), (Texts{"!77+10   NOTE: the memo pointer is outside the memo file"}));
    lines("missing.dbf", file.bytes());
    EXPECT_EQ(damaged().size(), 2U);
}

TEST_F(InspectTest, MemoFiles)
{
    const std::string three = memo3({"first", "", "third"});
    lines("three.dbt", three);
    EXPECT_TRUE(Sound);
    EXPECT_TRUE(coversTo(three.size()));
    EXPECT_NE(std::ranges::find(Lines, "512+5 block 1: 5 bytes: \"first\""), Lines.end());
    EXPECT_NE(std::ranges::find(Lines, "519+505   unused: "), Lines.end());
    EXPECT_NE(std::ranges::find(Lines, "1024+0 block 2: the empty text"), Lines.end());

    Covered.clear();
    const std::string four = memo4({"first", ""}, 64);
    lines("four.dbt", four);
    EXPECT_TRUE(Sound);
    EXPECT_TRUE(coversTo(four.size()));
    EXPECT_NE(std::ranges::find(Lines, "64+8 block 1: text of 5 bytes"), Lines.end());

    Covered.clear();
    std::string freed = memo4({"first", "second", "third"}, 64);
    freed[128] = '\0';
    lines("freed.dbt", freed);
    EXPECT_NE(std::ranges::find(Lines, "128+64 not in use: "), Lines.end());
    EXPECT_NE(std::ranges::find(Lines, "192+8 block 3: text of 5 bytes"), Lines.end());
    EXPECT_TRUE(coversTo(freed.size()));

    Covered.clear();
    const std::string fox = memoFox({"first", "second"});
    lines("fox.fpt", fox);
    EXPECT_NE(std::ranges::find(Lines, "8+504 rest of the header: "), Lines.end());
    EXPECT_TRUE(Sound);
    EXPECT_TRUE(coversTo(fox.size()));
    EXPECT_NE(std::ranges::find(Lines, "584+6   value: 6 bytes: \"second\""), Lines.end());

    lines("objects.fpt", memoFox({"ole"}, 64, 2));
    EXPECT_NE(std::ranges::find(Lines, "512+8 block 8: object of 3 bytes"), Lines.end());
    lines("types.fpt", memoFox({"ole"}, 64, 3));
    EXPECT_NE(std::ranges::find(Lines, "512+8 block 8: of an unknown type, or not in use"), Lines.end());

    std::string unusedBlock = fox;
    unusedBlock.replace(576, 14, 14, '\0');
    lines("unused.fpt", unusedBlock);
    EXPECT_NE(std::ranges::find(Lines, "576+64 not in use: "), Lines.end());
}

TEST_F(InspectTest, MemoryVariables)
{
    const auto header = [](const std::string& name, int type, int low, int high) {
        return name + std::string(11 - name.size(), '\0') + static_cast<char>(type) + std::string(4, '\0') +
               static_cast<char>(low) + static_cast<char>(high) + std::string(14, '\0');
    };
    const std::string number = header("PI", 'N' + 0x80, 10, 2) + kd_test::littleDouble(3.14);
    const std::string text = header("NAME", 'C' + 0x80, 4, 0) + std::string("Ann\0", 4);
    const std::string bytes = number + text + "\x1A";
    EXPECT_EQ(
        lines("a.mem", bytes),
        (Texts{"0+11 variable 1: PI", "11+1   type: number, form of dBase III or Clipper",
               "12+20   lengths: shown with 10 characters, 2 decimals", "32+8   value: 3.14", "40+11 variable 2: NAME",
               "51+1   type: text, form of dBase III or Clipper", "52+20   lengths: 3 bytes of text",
               "72+3   value: \"Ann\"", "75+1   end of the value: ", "76+1 end of the variables: "}));
    EXPECT_TRUE(Sound);
    EXPECT_TRUE(coversTo(bytes.size()));
    lines("cut.mem", bytes.substr(0, 74));
    EXPECT_EQ(damaged(), (Texts{"!40+34 variable 2: the file ends within it"}));
    lines("type.mem", number + header("X", 'Z', 0, 0));
    EXPECT_EQ(damaged(), (Texts{"!51+1 variable 2: an unknown type; nothing can be explained from byte 40 on"}));
    lines("rest.mem", bytes + "junk");
    EXPECT_EQ(Lines.back(), "77+4 rest of the file: not read");
    lines("text.mem", text + number + "\x1A");
    EXPECT_EQ(Lines[4], "35+1   end of the value: ") << "of the first variable";
    EXPECT_EQ(lines("empty.mem", ""), Texts{"!0+0 end of the file: there are neither variables nor an end mark"});
    EXPECT_FALSE(Sound);
}

TEST_F(InspectTest, DamagedMemoFiles)
{
    std::string fox = memoFox({"first", "second"});
    fox.replace(516, 4, big(5000, 4));
    lines("l.fpt", fox);
    EXPECT_EQ(damaged(), (Texts{"!512+8 block 8: a length of 5000, but the file has 120 bytes from here on"}));
    fox = memoFox({"first"});
    fox.replace(6, 2, big(0, 2));
    lines("b.fpt", fox);
    EXPECT_EQ(damaged(), (Texts{"!6+2 block size: 0: no block can be found"}));
    fox = memoFox({"first"});
    lines("n.fpt", fox.substr(0, 512));
    EXPECT_EQ(damaged(), (Texts{"!0+4 next free block: 9, but the file has 8 blocks"}));
    std::string four = memo4({"first"});
    four.replace(516, 4, little(3, 4));
    lines("s.dbt", four);
    EXPECT_EQ(damaged(), (Texts{"!512+8 block 1: a length of 3, but the file has 504 bytes from here on"}));
    for (const char* name : {"e.fpt", "e.dbt"}) {
        lines(name, "");
        EXPECT_FALSE(Sound);
    }
}

TEST_F(InspectTest, ATextThatEndsWithTheMemoFileHasNoEndMark)
{
    lines("e.dbt", memo3({"abc"}).substr(0, 515));
    EXPECT_EQ(Lines[Lines.size() - 2], "512+3 block 1: 3 bytes: \"abc\"");
    EXPECT_EQ(Lines.back(), "515+0   end mark: missing: the text ends with the file");
}

TEST_F(InspectTest, AValueOfOneByteIsShown)
{
    lines("one.dbt", memo4({"x"}, 64));
    EXPECT_NE(std::ranges::find(Lines, "64+8 block 1: text of 1 byte"), Lines.end());
    EXPECT_NE(std::ranges::find(Lines, "72+1   value: 1 byte: \"x\""), Lines.end());
}

TEST_F(InspectTest, AnUnusedByteAfterAValueIsShown)
{
    const std::string memo = memo4({std::string(55, 'x'), "second"}, 64);
    lines("unused.dbt", memo);
    EXPECT_NE(std::ranges::find(Lines, "127+1   unused: "), Lines.end());
    EXPECT_TRUE(coversTo(memo.size()));
}

TEST_F(InspectTest, BlocksLargerThanTheMemoFile)
{
    std::string fox = memoFox({"first"});
    fox.replace(6, 2, big(4608, 2)).replace(0, 4, big(1, 4));
    lines("large.fpt", fox);
    EXPECT_TRUE(coversTo(fox.size()));
    EXPECT_EQ(Lines.back(), "512+64 rest of the header: ");
}

TEST_F(InspectTest, MemoFilesCutEverywhere)
{
    int number = 0;
    for (const std::string& whole :
         {memo3({"first", "second"}), memo4({"first", "second"}), memoFox({"first", "second"})}) {
        const std::string extension = ++number == 3 ? ".fpt" : ".dbt";
        for (std::size_t kept = 0; kept < whole.size(); kept += 3) {
            EXPECT_NO_THROW(
                lines(std::to_string(number) + "_" + std::to_string(kept) + extension, whole.substr(0, kept)));
        }
    }
}

TEST_F(InspectTest, StopsOnRequest)
{
    std::stop_source stop;
    InspectOptions options;
    options.Stop = stop.get_token();
    int count = 0;
    EXPECT_THROW(inspect(
                     Folder.write("a.dbf", sample().bytes()),
                     [&](const InspectedBytes&) {
                         ++count;
                         stop.request_stop();
                     },
                     options),
                 Stopped);
    EXPECT_EQ(count, 1);
}

TEST_F(InspectTest, OtherFilesAreRefused)
{
    const auto nothing = [](const InspectedBytes&) {};
    EXPECT_EQ(kd_test::errorOf([&] { inspect(Folder.write("a.csv", "x"), nothing); }),
              Folder.file("a.csv") + ": not a .dbf, .dbt, .fpt or .mem file by its name");
    EXPECT_THROW(inspect(Folder.file("none.dbf"), nothing), Error);
}

}  // namespace
