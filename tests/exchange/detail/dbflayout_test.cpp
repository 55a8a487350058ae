#include "detail/dbflayout.h"

#include "detail/inputfile.h"
#include "exchange/support/xbase_file.h"
#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace kd_lib::exchange::detail;
using kd_lib::formats::DbfFamily;
using kd_test::little;
using kd_test::XbaseFile;

XbaseFile file(int version, std::vector<XbaseFile::Field> fields = {{"A", 'C', 5}, {"B", 'N', 7, 2}})
{
    return {version, std::move(fields)};
}

std::string faultOf(const std::string& bytes)
{
    const DbfLayout layout = parseDbfHeader(bytes);
    return layout.Fault ? std::to_string(layout.FaultAt) + ": " + *layout.Fault : "sound";
}

std::string bent(std::string bytes, std::size_t at, const std::string& with)
{
    return bytes.replace(at, with.size(), with);
}

TEST(DbfLayoutTest, NumbersOfTheHeader)
{
    XbaseFile table = file(0x8B);
    table.record({"a", "1"}).record({"b", "2"});
    table.Date = "\x7C\x02\x1D";
    table.Language = 0x57;
    table.TableFlags = 1;
    const DbfLayout layout = parseDbfHeader(bent(bent(table.header(), 14, "\1"), 6, "\3"));
    EXPECT_EQ(layout.Version, 0x8B);
    EXPECT_EQ(layout.Family, DbfFamily::DBase4);
    EXPECT_EQ(layout.RecordCount, 2U + (3U << 16U));
    EXPECT_EQ(layout.HeaderLength, 32U + 64U + 1U);
    EXPECT_EQ(layout.RecordLength, 13U);
    EXPECT_EQ(layout.Year * 10000 + layout.Month * 100 + layout.Day, 20240229);
    EXPECT_EQ(layout.LanguageByte, 0x57);
    EXPECT_EQ(layout.Flags, 1);
    EXPECT_TRUE(layout.InTransaction);
    EXPECT_FALSE(layout.Encrypted);
    EXPECT_EQ(layout.FieldsEnd, 96U);
    EXPECT_TRUE(layout.FieldsEndMarked);
    EXPECT_EQ(layout.FieldsLength, 13U);
    EXPECT_EQ(layout.Fault, std::nullopt);
}

TEST(DbfLayoutTest, YearsBelow80AreOfThisCentury)
{
    const auto year = [](unsigned byte) { return parseDbfHeader(bent(file(3).header(), 1, little(byte, 1))).Year; };
    EXPECT_EQ(year(0), 2000);
    EXPECT_EQ(year(79), 2079);
    EXPECT_EQ(year(80), 1980);
    EXPECT_EQ(year(124), 2024);
    EXPECT_EQ(year(255), 2155);
}

TEST(DbfLayoutTest, OnlyDBase4And7HaveMarksOfTransactionAndEncryption)
{
    for (const int version : {0x03, 0xF5, 0x30}) {
        const DbfLayout layout = parseDbfHeader(bent(file(version).header(), 14, "\1\1"));
        EXPECT_FALSE(layout.InTransaction || layout.Encrypted) << version;
    }
    for (const int version : {0x8B, 0x04}) {
        const DbfLayout layout = parseDbfHeader(bent(file(version).header(), 15, "\1"));
        EXPECT_TRUE(layout.Encrypted) << version;
        EXPECT_FALSE(layout.InTransaction) << version;
        EXPECT_FALSE(parseDbfHeader(bent(file(version).header(), 14, "\2\2")).Encrypted) << version;
    }
}

TEST(DbfLayoutTest, FieldsOfTheThreeSizesOfHeader)
{
    for (const auto& [version, first, size] :
         std::vector<std::tuple<int, std::size_t, std::size_t>>{{0x02, 8, 16}, {0x03, 32, 32}, {0x04, 68, 48}}) {
        const DbfLayout layout = parseDbfHeader(file(version).header());
        ASSERT_EQ(layout.Fields.size(), 2U) << version;
        const DbfField& field = layout.Fields[1];
        EXPECT_EQ(layout.Fields[0].Name + field.Name, "AB");
        EXPECT_EQ(field.Letter, 'N');
        EXPECT_EQ(field.Length, 7U);
        EXPECT_EQ(field.Decimals, 2);
        EXPECT_EQ(layout.Fields[0].Offset, 1U);
        EXPECT_EQ(field.Offset, 6U);
        EXPECT_EQ(field.DescriptorAt, first + size);
        EXPECT_EQ(layout.FieldsEnd, first + 2 * size);
        EXPECT_EQ(layout.Fault, std::nullopt) << version;
    }
}

TEST(DbfLayoutTest, AHeaderOfDBase2)
{
    XbaseFile table = file(2);
    table.Count = 0x0102;
    const DbfLayout layout = parseDbfHeader(table.header());
    EXPECT_EQ(layout.RecordCount, 0x0102U);
    EXPECT_EQ(layout.HeaderLength, 521U);
    EXPECT_EQ(layout.RecordLength, 13U);
    EXPECT_EQ(layout.Year * 10000 + layout.Month * 100 + layout.Day, 20240229);
    EXPECT_TRUE(layout.FieldsEndMarked);
}

TEST(DbfLayoutTest, DBase2HasRoomFor32Fields)
{
    const DbfLayout layout = parseDbfHeader(file(2, {32, {"A", 'C', 1}}).header());
    EXPECT_EQ(layout.Fields.size(), 32U);
    EXPECT_TRUE(layout.FieldsEndMarked);
    EXPECT_EQ(layout.FieldsEnd, 520U);
    EXPECT_EQ(layout.Fault, std::nullopt);
}

TEST(DbfLayoutTest, TheDriverOfDBase7)
{
    XbaseFile table = file(4);
    table.Driver = "DBWINUS0";
    EXPECT_EQ(parseDbfHeader(table.header()).Driver, "DBWINUS0");
    table.Driver = std::string(32, 'x');
    EXPECT_EQ(parseDbfHeader(table.header()).Driver, std::string(32, 'x'));
    EXPECT_EQ(parseDbfHeader(table.header().substr(0, 32)).Driver, "");
    EXPECT_EQ(parseDbfHeader(file(3).header()).Driver, "");
}

TEST(DbfLayoutTest, FieldsEndAtTheMarkAtUnusedRoomOrWithTheHeader)
{
    XbaseFile table = file(3);
    table.Mark = "";
    table.HeaderLength = 96;
    DbfLayout layout = parseDbfHeader(table.header());
    EXPECT_EQ(layout.Fields.size(), 2U);
    EXPECT_FALSE(layout.FieldsEndMarked);
    EXPECT_TRUE(parseDbfHeader(table.header() + "\r").FieldsEndMarked) << "the mark is the first byte after the header";

    table.HeaderLength = 96 + 40;
    layout = parseDbfHeader(table.header() + std::string(40, '\0'));
    EXPECT_EQ(layout.Fields.size(), 2U) << "unused room";
    EXPECT_FALSE(layout.FieldsEndMarked);

    layout = parseDbfHeader(table.header() + std::string(31, '\0') + "x" + std::string(8, '\0'));
    EXPECT_EQ(layout.Fields.size(), 3U) << "one byte that is used";

    table.HeaderLength = 96 + 31;
    layout = parseDbfHeader(table.header() + std::string(31, 'x'));
    EXPECT_EQ(layout.Fields.size(), 2U) << "less than a descriptor";
    EXPECT_EQ(layout.FieldsEnd, 96U);
}

TEST(DbfLayoutTest, FlagsOfFieldsAreVisualFoxPros)
{
    const std::vector<XbaseFile::Field> fields{{"A", 'C', 5, 0, 2}};
    EXPECT_EQ(parseDbfHeader(file(0x30, fields).header()).Fields[0].Flags, 2);
    EXPECT_TRUE(parseDbfHeader(file(0x30, fields).header()).FoxFlags);
    EXPECT_FALSE(parseDbfHeader(file(0x03, fields).header()).FoxFlags);
    EXPECT_EQ(parseDbfHeader(file(0x04, fields).header()).Fields[0].Flags, 0);
    const DbfLayout nulls = parseDbfHeader(file(0x03, {{"A", 'C', 5}, {"N", '0', 1}}).header());
    EXPECT_TRUE(nulls.FoxFlags);
    EXPECT_EQ(nullFlagsOf(nulls), &nulls.Fields[1]);
    EXPECT_EQ(nullFlagsOf(parseDbfHeader(file(0x03).header())), nullptr);
}

TEST(DbfLayoutTest, TheDatabaseOfATable)
{
    XbaseFile table = file(0x30);
    table.BackLink = "data.dbc";
    EXPECT_EQ(parseDbfHeader(table.header()).Database, "data.dbc");
    EXPECT_EQ(parseDbfHeader(table.header().substr(0, table.header().size() - 1)).Database, "") << "cut";
    XbaseFile other = file(0x03);
    other.BackLink = "data.dbc";
    other.HeaderLength += 263;
    EXPECT_EQ(parseDbfHeader(other.header()).Database, "data.dbc");
    EXPECT_TRUE(parseDbfHeader(other.header()).FoxFlags);
    other.HeaderLength += 1;
    EXPECT_EQ(parseDbfHeader(other.header() + "x").Database, "");
}

/// The lengths of C fields of 10 bytes with these decimals in a record of this length.
std::vector<std::uint32_t> lengthsOf(std::vector<unsigned> decimals, std::uint64_t recordLength, char letter = 'C')
{
    std::vector<XbaseFile::Field> fields;
    for (const unsigned decimal : decimals) {
        fields.push_back({"A", letter, 10, decimal});
    }
    XbaseFile table(3, fields);
    table.RecordLength = recordLength;
    std::vector<std::uint32_t> lengths;
    for (const DbfField& field : parseDbfHeader(table.header()).Fields) {
        lengths.push_back(field.Length);
    }
    return lengths;
}

using Lengths = std::vector<std::uint32_t>;

TEST(DbfLayoutTest, DecimalsOfTextsThatFillTheRecordAreLengths)
{
    EXPECT_EQ(lengthsOf({1}, 11 + 256), (Lengths{266}));
    EXPECT_EQ(lengthsOf({1}, 11 + 256, 'N'), (Lengths{10}));
    EXPECT_EQ(lengthsOf({0, 3}, 21 + 768), (Lengths{10, 778}));
    EXPECT_EQ(lengthsOf({1, 2}, 21 + 512), (Lengths{10, 522})) << "the one that fills it";
    EXPECT_EQ(lengthsOf({2, 1}, 21 + 512), (Lengths{522, 10}));
    EXPECT_EQ(lengthsOf({1, 2, 4}, 31 + 5 * 256), (Lengths{266, 10, 1034}));
    EXPECT_EQ(lengthsOf({255}, 11 + 255 * 256), (Lengths{10 + 255 * 256}));
}

TEST(DbfLayoutTest, DecimalsOfTextsThatDoNotFillTheRecordHaveNoMeaning)
{
    EXPECT_EQ(lengthsOf({1}, 11), (Lengths{10}));
    EXPECT_EQ(lengthsOf({2}, 11 + 256), (Lengths{10}));
    EXPECT_EQ(lengthsOf({1}, 11 + 255), (Lengths{10}));
    EXPECT_EQ(lengthsOf({1, 1}, 21 + 256), (Lengths{10, 10})) << "either could be the one";
    EXPECT_EQ(lengthsOf({1, 2, 3}, 31 + 3 * 256), (Lengths{10, 10, 10}));
}

TEST(DbfLayoutTest, AllTextsAreLongIfThatFitsAndNoSingleChoiceFillsTheRecord)
{
    EXPECT_EQ(lengthsOf({1, 1}, 21 + 512), (Lengths{266, 266}));
    EXPECT_EQ(lengthsOf({1}, 11 + 300), (Lengths{266})) << "44 bytes are not read";
    EXPECT_EQ(lengthsOf({1, 1}, 21 + 600), (Lengths{266, 266}));
}

TEST(DbfLayoutTest, FaultsOfAHeader)
{
    const std::string sound = file(3).header();
    EXPECT_EQ(faultOf(sound), "sound");
    EXPECT_EQ(faultOf(""), "0: the file is empty");
    EXPECT_EQ(parseDbfHeader("").HeaderLength, 0U);
    EXPECT_EQ(faultOf(sound.substr(0, 1)), "1: the file ends within the header, at byte 1");
    EXPECT_EQ(faultOf(sound.substr(0, 31)), "31: the file ends within the header, at byte 31");
    EXPECT_EQ(faultOf(sound.substr(0, 96)), "96: the file ends at byte 96, within the header of 97 bytes");
    EXPECT_EQ(faultOf(bent(sound, 8, little(32, 2))),
              "8: the header gives its own length as 32, which leaves no room for columns");
    EXPECT_EQ(faultOf(bent(sound, 8, little(33, 2))), "32: the header describes no columns");
    EXPECT_EQ(faultOf(bent(sound, 32, "\r")), "32: the header describes no columns");
    EXPECT_EQ(faultOf(bent(sound, 10, little(0, 2))), "10: the header gives a record length of 0");
    EXPECT_EQ(faultOf(bent(sound, 10, little(12, 2))),
              "10: the header gives a record length of 12, but the columns need 13 bytes");
    EXPECT_EQ(faultOf(bent(file(2).header(), 6, little(12, 2))),
              "6: the header gives a record length of 12, but the columns need 13 bytes");
    EXPECT_EQ(faultOf(bent(file(2).header(), 8, "\r")), "8: the header describes no columns");
}

TEST(DbfLayoutTest, NotesOfAnOddTable)
{
    const auto notes = [](const std::string& bytes) {
        std::string all;
        for (const auto& note : layoutNotes(parseDbfHeader(bytes))) {
            all += note.Text + (note.Loss ? " (loss)\n" : "\n");
        }
        return all;
    };
    EXPECT_EQ(notes(file(3).header()), "");
    EXPECT_EQ(notes(file(0x99).header()), "version byte 99 is not known; read as dBase III\n");
    EXPECT_EQ(notes(bent(file(3).header(), 10, little(14, 2))),
              "a record has 14 bytes, its columns 13; the last 1 byte of each are not read\n");
    EXPECT_EQ(notes(bent(file(0x8B).header(), 15, "\1")),
              "the header marks the records as encrypted; they are read as they are\n");
}

TEST(DbfLayoutTest, ReadsTheBytesOfTheHeaderAlone)
{
    const kd_test::ScopedDirectory folder;
    const auto read = [&](const std::string& bytes) {
        InputFile input(folder.write("t.dbf", bytes));
        return readDbfHeader(input);
    };
    for (const int version : {0x02, 0x03, 0x04, 0x30}) {
        const std::string header = file(version).header();
        EXPECT_EQ(read(header + "records"), header) << version;
        EXPECT_EQ(read(header.substr(0, 40)), header.substr(0, 40)) << version;
        EXPECT_EQ(read(header.substr(0, 31)), header.substr(0, 31)) << version;
    }
    EXPECT_EQ(read(""), "");
    const std::string small = bent(file(3).header(), 8, little(20, 2));
    EXPECT_EQ(read(small), small.substr(0, 32));
}

}  // namespace
