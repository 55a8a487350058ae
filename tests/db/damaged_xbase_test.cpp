// One valid table with one kind of damage per test. The only outcomes are a result, the documented assertion and
// exceptions of the standard library.
#include "support/dbf_builder.h"
#include "support/special_file_builder.h"
#include "support/table_builder.h"

#include <kd_lib/xbase2sql.h>
#include <kd_lib/xbasetable.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <limits>
#include <stdexcept>
#include <string>

using kd_lib::xBase2Sql;
using kd_lib::xBaseTable;
using kd_test::captured;
using kd_test::Console;
using kd_test::DbfBuilder;
using kd_test::namesOf;
using kd_test::Opened;
using kd_test::placesOf;
using kd_test::Row;
using kd_test::rowOf;
using kd_test::Rows;
using kd_test::rowsOf;
using kd_test::ScopedDirectory;
using kd_test::withByte;

namespace {

constexpr std::size_t headerSize = 129;
constexpr std::size_t recordSize = 20;

/// Three columns, header length 129, records of 20 bytes.
DbfBuilder valid()
{
    DbfBuilder builder({{"NAME", 'C', 4}, {"PRICE", 'N', 7, 2}, {"BORN", 'D', 8}});
    builder.record({"r1c1", "   1.01", "19990102"});
    builder.record({"r2c1", "  22.02", "20241225"});
    builder.record({"r3c1", " 333.03", "20240305"});
    return builder;
}

const Rows validRows = {
    {"r1c1", "   1.01", "19990102"}, {"r2c1", "  22.02", "20241225"}, {"r3c1", " 333.03", "20240305"}};
const Row validPlaces = {"1+4", "5+7", "12+8"};

std::string withHeaderLength(unsigned int length)
{
    DbfBuilder builder = valid();
    builder.headerLength = static_cast<std::uint16_t>(length);
    return builder.bytes();
}

std::string withRecordLength(unsigned int length)
{
    DbfBuilder builder = valid();
    builder.recordLength = static_cast<std::uint16_t>(length);
    return builder.bytes();
}

std::string withCount(std::uint32_t count)
{
    DbfBuilder builder = valid();
    builder.recordCount = count;
    return builder.bytes();
}

/// Every row from the first record on, after the header has been read, which must succeed.
Rows rowsFrom(xBaseTable& table)
{
    EXPECT_TRUE(table.getFieldList());
    EXPECT_TRUE(table.firstRecord());
    return rowsOf(table);
}

Rows rowsFrom(const std::string& bytes)
{
    Opened<xBaseTable> file(bytes);
    return rowsFrom(file.table);
}

/// The script of a file of these bytes.
std::string scriptOf(const std::string& bytes)
{
    Opened<xBase2Sql> file(bytes);
    return kd_test::readFile(file.table.convert());
}

const std::string validDefinition = "DROP TABLE IF EXISTS sample;\n"
                                    "CREATE TABLE IF NOT EXISTS sample (\n"
                                    "name char(4),\n"
                                    "price integer,\n"
                                    "born date\n"
                                    ");\n";

std::string validInsert(std::size_t i)
{
    static const char* const values[] = {"('r1c1',1.01,'1999-01-02')", "('r2c1',22.02,'2024-12-25')",
                                         "('r3c1',333.03,'2024-03-05')"};
    return std::string("INSERT INTO sample(name,price,born) \n VALUES ").append(values[i]).append(";\n");
}

std::string validScript(std::size_t records = 3)
{
    std::string script = validDefinition;
    for (std::size_t i = 0; i < records; ++i) {
        script += validInsert(i);
    }
    return script;
}

const char* const assertion = "^src/db/filetable: extractContent: Assertion `tmp_str\\.size\\(\\) == "
                              "Fields\\.get\\(f\\)->getLength\\(\\)' failed\\.\n$";

}  // namespace

TEST(DamagedXBase, UndamagedTableIsReadWhole)
{
    EXPECT_EQ(headerSize + 3 * recordSize + 1, valid().bytes().size());
    EXPECT_EQ(validRows, rowsFrom(valid().bytes()));
    EXPECT_EQ(validScript(), scriptOf(valid().bytes()));
}

// Cut files

TEST(DamagedXBase, CutToNothingHasNoHeader)
{
    Opened<xBaseTable> file("");
    EXPECT_FALSE(file.table.getFieldList());
    EXPECT_FALSE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.firstRecord());
    EXPECT_FALSE(file.table.fetchRecord());
    EXPECT_TRUE(file.table.lastRecord());
    EXPECT_FALSE(file.table.fetchRecord());
}

TEST(DamagedXBase, FileOfOneByteThrowsLengthError)
{
    Opened<xBaseTable> file("\x03");
    EXPECT_THROW(file.table.getFieldList(), std::length_error);
    EXPECT_EQ(3, file.table.Version);
}

TEST(DamagedXBase, CutBeforeTheHeaderLengthThrowsLengthError)
{
    Opened<xBaseTable> file("");
    for (std::size_t size = 1; size <= 8; ++size) {
        file.reopen(valid().bytes().substr(0, size));
        EXPECT_THROW(file.table.getFieldList(), std::length_error) << size;
        EXPECT_EQ(0U, file.table.Fields.size());
        EXPECT_EQ(0U, file.table.RecordLength);
        EXPECT_FALSE(file.table.fetchRecord()) << size;
    }
}

TEST(DamagedXBase, CutInsideTheHeaderCountsMissingBytesAsZero)
{
    Opened<xBaseTable> file("");
    for (std::size_t size = 9; size < 32; ++size) {
        file.reopen(valid().bytes().substr(0, size));
        SCOPED_TRACE(size);
        EXPECT_TRUE(file.table.getFieldList());
        EXPECT_EQ(headerSize, file.table.HeaderLength);
        EXPECT_EQ(size > 10 ? recordSize : 0U, file.table.RecordLength);
        EXPECT_EQ(3U, file.table.RecordCount);
        EXPECT_EQ((Row{"", "", ""}), namesOf(file.table));
        EXPECT_EQ((Row{"1+0", "1+0", "1+0"}), placesOf(file.table));
        EXPECT_TRUE(file.table.File.fail());
        EXPECT_FALSE(file.table.fetchRecord());
        EXPECT_TRUE(file.table.firstRecord());
        EXPECT_FALSE(file.table.fetchRecord());
    }
}

TEST(DamagedXBase, CutInsideADescriptorCountsMissingBytesAsZero)
{
    const std::string bytes = valid().bytes();
    Opened<xBaseTable> file("");
    for (std::size_t size = 32; size < headerSize - 1; ++size) {
        std::string padded = bytes.substr(0, size);
        padded.resize(headerSize, '\0');
        Row names;
        Row places;
        int offset = 1;
        for (std::size_t i = 0; i < 3; ++i) {
            const std::size_t at = 32 + 32 * i;
            names.push_back(kd_lib::stringToLower(padded.substr(at, 11).c_str()));
            const int length = static_cast<unsigned char>(padded[at + 16]);
            places.push_back(std::to_string(offset) + "+" + std::to_string(length));
            offset += length;
        }
        file.reopen(bytes.substr(0, size));
        SCOPED_TRACE(size);
        EXPECT_TRUE(file.table.getFieldList());
        EXPECT_EQ(names, namesOf(file.table));
        EXPECT_EQ(places, placesOf(file.table));
        EXPECT_TRUE(file.table.File.fail());
        EXPECT_TRUE(file.table.firstRecord());
        EXPECT_FALSE(file.table.fetchRecord());
    }
}

TEST(DamagedXBase, CutBeforeTheTerminatorDefinesEveryField)
{
    Opened<xBaseTable> file(valid().bytes().substr(0, headerSize - 1));
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ(validPlaces, placesOf(file.table));
    EXPECT_TRUE(file.table.File.eof());
    EXPECT_FALSE(file.table.fetchRecord());
}

TEST(DamagedXBase, CutInsideARecordGivesTheRecordsBeforeIt)
{
    const std::string bytes = valid().bytes();
    Opened<xBaseTable> file("");
    for (std::size_t size = headerSize; size <= bytes.size(); ++size) {
        file.reopen(bytes.substr(0, size));
        const std::size_t whole = std::min<std::size_t>((size - headerSize) / recordSize, 3);
        SCOPED_TRACE(size);
        EXPECT_EQ(Rows(validRows.begin(), validRows.begin() + static_cast<std::ptrdiff_t>(whole)),
                  rowsFrom(file.table));
        EXPECT_EQ(whole == 0 ? (Row{"", "", ""}) : validRows[whole - 1], rowOf(file.table));
        EXPECT_TRUE(file.table.File.eof());
        EXPECT_TRUE(file.table.File.fail());
    }
}

TEST(DamagedXBase, ConverterOfAFileCutAtAnyByteWritesWholeRecordsOnly)
{
    const std::string bytes = valid().bytes();
    Opened<xBase2Sql> file("");
    const std::string path = file.directory() + "/sample.sql";
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        file.table.Fields.clearList();
        file.reopen(bytes.substr(0, size));
        SCOPED_TRACE(size);
        if (size >= 1 && size <= 8) {
            EXPECT_THROW(file.table.convert(), std::length_error);
            EXPECT_TRUE(file.table.is_open());
            continue;
        }
        EXPECT_EQ(path, file.table.convert());
        EXPECT_FALSE(file.table.is_open());
        const std::string script = kd_test::readFile(path);
        if (size >= headerSize - 1) {
            const std::size_t whole =
                size < headerSize ? 0 : std::min<std::size_t>((size - headerSize) / recordSize, 3);
            EXPECT_EQ(validScript(whole), script);
        } else {
            EXPECT_EQ(std::string::npos, script.find("INSERT"));
            EXPECT_EQ(0U, script.find("DROP TABLE IF EXISTS sample;\nCREATE TABLE IF NOT EXISTS sample (\n"));
            EXPECT_EQ(");\n", script.substr(script.size() - 3));
        }
        std::filesystem::remove(path);
    }
}

// Header length

TEST(DamagedXBase, HeaderLengthBelow32ThrowsLengthError)
{
    for (const unsigned int length : {0U, 1U, 31U}) {
        Opened<xBaseTable> file(withHeaderLength(length));
        EXPECT_THROW(file.table.getFieldList(), std::length_error) << length;
        EXPECT_EQ(0U, file.table.Fields.size());
        Opened<xBase2Sql> converter(withHeaderLength(length));
        EXPECT_THROW(converter.table.convert(), std::length_error) << length;
        EXPECT_FALSE(std::filesystem::exists(converter.directory() + "/sample.sql"));
    }
}

TEST(DamagedXBase, HeaderLengthOver32767IsNegativeAndThrowsLengthError)
{
    for (const unsigned int length : {32768U, 33025U, 35233U, 65535U}) {
        Opened<xBaseTable> file(withHeaderLength(length));
        EXPECT_THROW(file.table.getFieldList(), std::length_error) << length;
        EXPECT_EQ(0U, file.table.Fields.size());
    }
}

TEST(DamagedXBase, HeaderLength32Or33HasNoFields)
{
    for (const unsigned int length : {32U, 33U}) {
        Opened<xBaseTable> file(withHeaderLength(length));
        EXPECT_TRUE(file.table.getFieldList());
        EXPECT_EQ(0U, file.table.Fields.size());
        EXPECT_TRUE(file.table.firstRecord());
        EXPECT_EQ((valid().bytes().size() - length) / recordSize, rowsOf(file.table).size()) << length;
    }
}

TEST(DamagedXBase, ConverterOfATableWithoutFieldsWritesEmptyLists)
{
    DbfBuilder builder = valid();
    builder.headerLength = 33;
    const std::string bytes = builder.bytes().substr(0, 33 + 2 * recordSize);
    EXPECT_EQ("DROP TABLE IF EXISTS sample;\nCREATE TABLE IF NOT EXISTS sample (\n);\n"
              "INSERT INTO sample() \n VALUES ();\nINSERT INTO sample() \n VALUES ();\n",
              scriptOf(bytes));
}

TEST(DamagedXBase, HeaderLengthTooSmallReadsDescriptorsAsRecords)
{
    Opened<xBaseTable> file(withHeaderLength(97));
    const Rows rows = rowsFrom(file.table);
    EXPECT_EQ((Row{"1+4", "5+7"}), placesOf(file.table));
    EXPECT_EQ((valid().bytes().size() - 97) / recordSize, rows.size());
    EXPECT_EQ((Row{"RN", "     D"}), rows[0]);
}

TEST(DamagedXBaseDeathTest, HeaderLengthTooLargeReadsARecordAsADescriptor)
{
    // The fourth descriptor's length is a digit's code from the first record: wider than a record.
    DbfBuilder builder = valid();
    builder.headerLength = 161;
    Opened<xBaseTable> file(builder.bytes());
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Row{"1+4", "5+7", "12+8", "20+57"}), placesOf(file.table));
    EXPECT_EQ("\r r1c1   1.", file.table.Fields.get(3UL)->Name);
    EXPECT_TRUE(file.table.firstRecord());
    EXPECT_EXIT(file.table.fetchRecord(), testing::KilledBySignal(SIGABRT), assertion);
}

TEST(DamagedXBase, HeaderLengthAfterTheFileHasNoRecords)
{
    Opened<xBaseTable> file(withHeaderLength(32767));
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ(1022U, file.table.Fields.size());
    EXPECT_TRUE(file.table.firstRecord());
    EXPECT_FALSE(file.table.fetchRecord());
}

TEST(DamagedXBase, GapAfterTheTerminatorIsSkippedByFirstRecordOnly)
{
    // Some programs end the header with two bytes.
    DbfBuilder builder = valid();
    builder.headerLength = 130;
    const std::string bytes = builder.header() + builder.descriptors() + std::string(1, '\0') + builder.records();
    Opened<xBaseTable> file(bytes);
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ(validPlaces, placesOf(file.table));
    EXPECT_EQ(129, static_cast<int>(file.table.File.tellg()));
    EXPECT_TRUE(file.table.firstRecord());
    EXPECT_EQ(validRows, rowsOf(file.table));
}

// Record length

TEST(DamagedXBase, RecordLengthZeroFetchesNothing)
{
    EXPECT_EQ(Rows{}, rowsFrom(withRecordLength(0)));
    EXPECT_EQ(validDefinition, scriptOf(withRecordLength(0)));
}

TEST(DamagedXBaseDeathTest, RecordLengthSmallerThanTheFieldsStopsTheProcess)
{
    for (const unsigned int length : {1U, 2U, 11U, 19U}) {
        Opened<xBaseTable> file(withRecordLength(length));
        EXPECT_TRUE(file.table.getFieldList());
        EXPECT_EXIT(file.table.fetchRecord(), testing::KilledBySignal(SIGABRT), assertion) << length;
    }
    Opened<xBase2Sql> converter(withRecordLength(19));
    EXPECT_EXIT(converter.table.convert(), testing::KilledBySignal(SIGABRT), assertion);
}

TEST(DamagedXBase, RecordLengthOneOfATableWithoutFieldsIsARecordPerByte)
{
    DbfBuilder builder = valid();
    builder.headerLength = 33;
    builder.recordLength = 1;
    EXPECT_EQ(valid().bytes().size() - 33, rowsFrom(builder.bytes()).size());
}

TEST(DamagedXBase, RecordLengthLargerThanTheFieldsLeavesItsRestUnread)
{
    EXPECT_EQ((Rows{{"r1c1", "   1.01", "19990102"}, {"2c1", " 22.022", "0241225"}}), rowsFrom(withRecordLength(21)));
}

TEST(DamagedXBase, RecordLengthAfterTheFileFetchesNothing)
{
    EXPECT_EQ(Rows{}, rowsFrom(withRecordLength(32767)));
}

TEST(DamagedXBase, RecordLengthOver32767IsNegativeAndTheFetchThrowsLengthError)
{
    for (const unsigned int length : {32768U, 33021U, 65535U}) {
        Opened<xBaseTable> file(withRecordLength(length));
        EXPECT_TRUE(file.table.getFieldList());
        EXPECT_EQ(validPlaces, placesOf(file.table));
        EXPECT_EQ(static_cast<std::uint64_t>(static_cast<std::int64_t>(length) - 65536), file.table.RecordLength);
        EXPECT_TRUE(file.table.firstRecord());
        EXPECT_THROW(file.table.fetchRecord(), std::length_error) << length;
        EXPECT_TRUE(file.table.goRecord(2));
        EXPECT_TRUE(file.table.nextRecord());
        EXPECT_TRUE(file.table.lastRecord());
    }
}

// Record count

TEST(DamagedXBase, CountTooSmallOrTooLargeBoundsNothing)
{
    for (const std::uint32_t count : {0U, 1U, 2U, 4U, 200U, 65536U, std::numeric_limits<std::uint32_t>::max()}) {
        Opened<xBaseTable> file(withCount(count));
        EXPECT_EQ(validRows, rowsFrom(file.table)) << count;
        EXPECT_EQ(count, file.table.RecordCount);
        EXPECT_EQ(validScript(), scriptOf(withCount(count)));
    }
}

TEST(DamagedXBase, LargestCountIsShownWhole)
{
    Opened<xBaseTable> file(withCount(std::numeric_limits<std::uint32_t>::max()));
    EXPECT_TRUE(file.table.getFieldList());
    const Console console = captured([&] { file.table.showHeader(); });
    EXPECT_NE(std::string::npos, console.out.find("Records       : 4294967295\n"));
}

// End marks

TEST(DamagedXBase, MissingTerminatorTakesTheFirstRecordsMark)
{
    DbfBuilder builder = valid();
    builder.terminator = false;
    builder.headerLength = 128;
    Opened<xBaseTable> file(builder.bytes());
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ(validPlaces, placesOf(file.table));
    EXPECT_EQ(129, static_cast<int>(file.table.File.tellg()));
    EXPECT_TRUE(file.table.firstRecord());
    EXPECT_EQ(validRows, rowsOf(file.table));
    EXPECT_EQ(validScript(), scriptOf(builder.bytes()));
}

TEST(DamagedXBase, MissingEndMarkChangesNoWalk)
{
    DbfBuilder builder = valid();
    builder.endMark = false;
    EXPECT_EQ(validRows, rowsFrom(builder.bytes()));
    EXPECT_EQ(validScript(), scriptOf(builder.bytes()));
}

TEST(DamagedXBase, EndMarkInTheMiddleEndsNothing)
{
    const std::string bytes = withByte(valid().bytes(), headerSize + recordSize, 0x1A);
    EXPECT_EQ(validRows, rowsFrom(bytes));
}

TEST(DamagedXBase, BytesAfterTheEndMarkAreARecordIfTheySuffice)
{
    Opened<xBaseTable> file("");
    for (std::size_t more = 0; more <= recordSize; ++more) {
        file.reopen(valid().bytes() + kd_test::lettersOf(more));
        Rows expected = validRows;
        if (more + 1 >= recordSize) {
            expected.push_back({"abcd", "efghijk", "lmnopqrs"});
        }
        EXPECT_EQ(expected, rowsFrom(file.table)) << more;
    }
}

// Descriptors

TEST(DamagedXBase, NameOfElevenBytesEndsWithItsField)
{
    DbfBuilder builder({{"ABCDEFGHIJK", 'C', 2}, {"LMNOPQRSTUV", 'C', 2}});
    Opened<xBaseTable> file(builder.record({"r1", "v1"}).bytes());
    EXPECT_EQ((Rows{{"r1", "v1"}}), rowsFrom(file.table));
    EXPECT_EQ((Row{"abcdefghijk", "lmnopqrstuv"}), namesOf(file.table));
}

TEST(DamagedXBase, EmptyNamesAreKeptAndFoundByTheirNumber)
{
    Opened<xBaseTable> file(DbfBuilder({{"", 'C', 2}, {"", 'C', 2}}).record({"r1", "v1"}).bytes());
    EXPECT_EQ((Rows{{"r1", "v1"}}), rowsFrom(file.table));
    EXPECT_EQ((Row{"", ""}), namesOf(file.table));
    EXPECT_EQ("v1", file.table.Fields.getData(1UL));
}

TEST(DamagedXBase, EveryByteInANameIsKeptButZeroAndCapitals)
{
    Opened<xBaseTable> file("");
    const std::string bytes = valid().bytes();
    for (unsigned int byte = 0; byte < 256; ++byte) {
        file.reopen(withByte(bytes, 32 + 2, byte));
        const std::string name = std::string("na").append(1, static_cast<char>(byte)).append("e");
        SCOPED_TRACE(byte);
        EXPECT_EQ(validRows, rowsFrom(file.table));
        EXPECT_EQ(byte == 0 ? "na" : kd_lib::stringToLower(name), file.table.Fields.get(0UL)->Name);
    }
}

TEST(DamagedXBase, FieldOfLengthZeroIsEmptyAndTakesNoRoom)
{
    DbfBuilder builder({{"A", 'C', 2}, {"B", 'N', 0}, {"C", 'C', 2}, {"D", 'C', 0}});
    Opened<xBaseTable> file(builder.record({"r1", "", "v1", ""}).bytes());
    EXPECT_EQ((Rows{{"r1", "", "v1", ""}}), rowsFrom(file.table));
    EXPECT_EQ((Row{"1+2", "3+0", "3+2", "5+0"}), placesOf(file.table));
}

TEST(DamagedXBase, FieldsOfLength255AreReadWhole)
{
    const std::string a = kd_test::lettersOf(255);
    const std::string b = kd_test::lettersOf(255, 11);
    Opened<xBaseTable> file(DbfBuilder({{"A", 'C', 255}, {"B", 'C', 255}}).record({a, b}).bytes());
    EXPECT_EQ((Rows{{a, b}}), rowsFrom(file.table));
    EXPECT_EQ((Row{"1+255", "256+255"}), placesOf(file.table));
}

TEST(DamagedXBaseDeathTest, FieldOfLength255InAShortRecordStopsTheProcess)
{
    Opened<xBaseTable> file(withByte(valid().bytes(), 32 + 16, 255));
    EXPECT_TRUE(file.table.getFieldList());
    EXPECT_EQ((Row{"1+255", "256+7", "263+8"}), placesOf(file.table));
    EXPECT_EXIT(file.table.fetchRecord(), testing::KilledBySignal(SIGABRT), assertion);
}

TEST(DamagedXBase, EveryTypeByteIsRead)
{
    Opened<xBaseTable> file("");
    const std::string bytes = valid().bytes();
    for (unsigned int byte = 0; byte < 256; ++byte) {
        file.reopen(withByte(bytes, 32 + 11, byte));
        SCOPED_TRACE(byte);
        EXPECT_EQ(validRows, rowsFrom(file.table));
        EXPECT_EQ(file.table.convertXbaseFieldType(static_cast<unsigned char>(byte)), file.table.Fields.get(0UL)->Type);
        EXPECT_EQ("name", file.table.Fields.get(0UL)->Name);
    }
}

TEST(DamagedXBase, EveryTypeByteIsConverted)
{
    Opened<xBase2Sql> file("");
    const std::string bytes = valid().bytes();
    for (unsigned int byte = 0; byte < 256; ++byte) {
        file.table.Fields.clearList();
        file.reopen(withByte(bytes, 64 + 11, byte));
        if (byte == 'D') {
            // "1.01" is not a date: the standard library's exception passes.
            EXPECT_THROW(file.table.convert(), std::out_of_range);
        } else {
            const std::string script = kd_test::readFile(file.table.convert());
            EXPECT_EQ(3, std::count(script.begin(), script.end(), 'V')) << byte;
        }
        std::filesystem::remove(file.directory() + "/sample.sql");
    }
}

// Records

TEST(DamagedXBase, EveryByteAtEveryPlaceOfARecordIsRead)
{
    Opened<xBaseTable> file("");
    file.table.Trim = false;
    const std::string bytes = valid().bytes();
    for (std::size_t place = 1; place < recordSize; ++place) {
        for (unsigned int byte = 0; byte < 256; byte += place == 1 || place == 19 ? 1 : 17) {
            const bool shown = byte >= 0x20 && byte <= 0x7E;
            file.reopen(withByte(bytes, headerSize + place, byte));
            const Rows rows = rowsFrom(file.table);
            ASSERT_EQ(3U, rows.size());
            const std::string joined = rows[0][0] + rows[0][1] + rows[0][2];
            ASSERT_EQ(shown ? static_cast<char>(byte) : ' ', joined[place - 1]) << place << " " << byte;
            ASSERT_EQ(validRows[1], rows[1]);
        }
    }
}

TEST(DamagedXBase, RecordOfZeroBytesIsARecordOfBlanks)
{
    std::string bytes = valid().bytes();
    bytes.replace(headerSize + recordSize, recordSize, std::string(recordSize, '\0'));
    EXPECT_EQ((Rows{validRows[0], {"", "", ""}, validRows[2]}), rowsFrom(bytes));
    EXPECT_EQ(validDefinition + validInsert(0) + "INSERT INTO sample(name,price,born) \n VALUES (NULL,NULL,NULL);\n" +
                  validInsert(2),
              scriptOf(bytes));
}

// Files that are not tables

TEST(DamagedXBase, DirectoryOpensAndReadsNothing)
{
    const ScopedDirectory directory;
    kd_test::makeDirectory(directory, "sample.dbf");
    xBaseTable table;
    EXPECT_TRUE(kd_test::openQuietly(table, directory));
    EXPECT_FALSE(table.getFieldList());
    EXPECT_EQ(0U, table.Fields.size());
    table.RecordLength = 4;
    EXPECT_TRUE(table.firstRecord());
    EXPECT_FALSE(table.fetchRecord());
    EXPECT_TRUE(table.close());
}

TEST(DamagedXBase, PipeCannotBeRewoundAndHasNoHeader)
{
    const ScopedDirectory directory;
    kd_test::Fifo pipe(directory, "sample.dbf", valid().bytes());
    xBaseTable table;
    ASSERT_TRUE(kd_test::openQuietly(table, directory));
    pipe.end();
    EXPECT_FALSE(table.getFieldList());
    EXPECT_TRUE(table.File.fail());
    EXPECT_EQ(0U, table.Fields.size());
    EXPECT_FALSE(table.fetchRecord());
}

TEST(DamagedXBase, PipeIsReadRecordByRecordWithoutASeek)
{
    const ScopedDirectory directory;
    kd_test::Fifo pipe(directory, "sample.dbf", valid().records() + " cut");
    xBaseTable table;
    ASSERT_TRUE(kd_test::openQuietly(table, directory));
    pipe.end();
    table.RecordLength = recordSize;
    kd_test::addColumn(table, "name", 1, 4);
    EXPECT_EQ((Rows{{"r1c1"}, {"r2c1"}, {"r3c1"}}), rowsOf(table));
}

TEST(DamagedXBase, EndlessZeroBytesThrowLengthError)
{
    const ScopedDirectory directory;
    kd_test::makeEndless(directory, "sample.dbf");
    xBaseTable table;
    ASSERT_TRUE(kd_test::openQuietly(table, directory));
    EXPECT_THROW(table.getFieldList(), std::length_error);
    EXPECT_FALSE(table.fetchRecord());
    table.RecordLength = recordSize;
    table.Fields.clearList();
    kd_test::addColumn(table, "name", 1, 4);
    for (int i = 0; i < 10000; ++i) {
        ASSERT_TRUE(table.fetchRecord());
    }
    EXPECT_EQ("", table.Fields.getData(0UL));
}

TEST(DamagedXBase, ConverterMeetsDirectoriesPipesAndEndlessFiles)
{
    const ScopedDirectory directory;
    kd_test::makeDirectory(directory, "folder.dbf");
    kd_test::makeEndless(directory, "zero.dbf");
    xBase2Sql folder("folder");
    folder.Path = directory.path();
    std::string path;
    captured([&] { path = folder.convert(); });
    EXPECT_EQ("DROP TABLE IF EXISTS folder;\nCREATE TABLE IF NOT EXISTS folder (\n);\n", kd_test::readFile(path));
    xBase2Sql zero("zero");
    zero.Path = directory.path();
    captured([&] { EXPECT_THROW(zero.convert(), std::length_error); });
    EXPECT_FALSE(std::filesystem::exists(directory.file("zero.sql")));

    kd_test::Fifo pipe(directory, "pipe.dbf", valid().bytes());
    xBase2Sql piped("pipe");
    ASSERT_TRUE(kd_test::openQuietly(piped, directory, "pipe"));
    pipe.end();
    EXPECT_EQ("DROP TABLE IF EXISTS pipe;\nCREATE TABLE IF NOT EXISTS pipe (\n);\n",
              kd_test::readFile(piped.convert()));
}
