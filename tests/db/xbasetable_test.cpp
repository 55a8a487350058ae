#include "support/dbf_builder.h"
#include "support/table_builder.h"
#include "support/xbase_sample.h"

#include <kd_lib/xbasetable.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

using kd_lib::xBaseTable;
using kd_test::captured;
using kd_test::Console;
using kd_test::DbfBuilder;
using kd_test::namesOf;
using kd_test::Opened;
using kd_test::Row;
using kd_test::rowOf;
using kd_test::Rows;
using kd_test::rowsOf;
using namespace kd_test;

// Construction

TEST(xBaseTable, DefaultsOfTheConstructorWithoutAName)
{
    const xBaseTable table;
    EXPECT_EQ("", table.Name);
    EXPECT_EQ("dbf", table.Extension);
    EXPECT_TRUE(table.Binary);
    EXPECT_EQ(0U, table.RecordCount);
    EXPECT_EQ(0U, table.RecordLength);
    EXPECT_EQ(0U, table.HeaderLength);
    EXPECT_EQ(0, table.RecordEnd);
    EXPECT_TRUE(table.Trim);
    EXPECT_FALSE(table.ReadDeleted);
    EXPECT_EQ("", table.LastUpdate);
    EXPECT_EQ(0, table.Version);
    EXPECT_FALSE(table.isDeleted());
}

TEST(xBaseTable, NameConstructorSetsTheNameAndTheSameDefaults)
{
    const xBaseTable table("stock");
    EXPECT_EQ("stock", table.Name);
    EXPECT_EQ("dbf", table.Extension);
    EXPECT_TRUE(table.Binary);
    EXPECT_EQ(0U, table.RecordCount);
    EXPECT_EQ(0U, table.RecordLength);
    EXPECT_EQ(0U, table.HeaderLength);
    EXPECT_EQ(0, table.RecordEnd);
    EXPECT_TRUE(table.Trim);
    EXPECT_FALSE(table.ReadDeleted);
    EXPECT_EQ("", table.LastUpdate);
    EXPECT_EQ(0, table.Version);
}

TEST(xBaseTable, VirtualOperationsAreInTheirSlotOrder)
{
    EXPECT_EQ(7U, kd_test::slotOf(&xBaseTable::skipHeader));
    EXPECT_EQ(9U, kd_test::slotOf(&xBaseTable::showHeader));
    EXPECT_EQ(10U, kd_test::slotOf(&xBaseTable::fetchRecord));
    EXPECT_EQ(11U, kd_test::slotOf(&xBaseTable::readHeader));
    EXPECT_EQ(0U, kd_test::slotOf(&xBaseTable::convertXbaseFieldType));
    EXPECT_EQ(0U, kd_test::slotOf(&xBaseTable::convertBoolean));
    static_assert(std::is_base_of_v<kd_lib::FileTable, xBaseTable>);
    static_assert(!std::is_copy_constructible_v<xBaseTable>);
}

TEST(xBaseTable, OpenReadsNoHeader)
{
    Opened<xBaseTable> file(threeRecords());
    EXPECT_EQ(0U, file.table.Fields.size());
    EXPECT_EQ(0U, file.table.RecordLength);
    EXPECT_EQ(0, position(file.table));
}

// The header

TEST(xBaseHeader, HeaderLength129YieldsThreeFieldsOneAfterTheOther)
{
    ASSERT_EQ(129, threeColumns().headerLength);
    Opened<xBaseTable> file(threeRecords());
    EXPECT_TRUE(file.table.readHeader());
    EXPECT_EQ((Row{"1+4", "5+7", "12+8"}), kd_test::placesOf(file.table));
    EXPECT_EQ((Row{"name", "price", "born"}), namesOf(file.table));
}

TEST(xBaseHeader, EveryNumberIsAtItsOffset)
{
    std::string bytes = threeRecords();
    bytes[0] = '\xF5';
    bytes[1] = 99;
    bytes[2] = 11;
    bytes[3] = 30;
    bytes.replace(4, 4, "\x04\x03\x02\x81");
    bytes.replace(12, 20, std::string(20, '\xFF'));
    Opened<xBaseTable> file(bytes);
    EXPECT_TRUE(file.table.readHeader());
    EXPECT_EQ(0xF5, file.table.Version);
    EXPECT_EQ("19991130", file.table.LastUpdate);
    EXPECT_EQ(0x81020304U, file.table.RecordCount);
    EXPECT_EQ(129U, file.table.HeaderLength);
    EXPECT_EQ(20U, file.table.RecordLength);
    EXPECT_EQ(threeRows, rowsOf(file.table));
}

TEST(xBaseHeader, LengthsOfTwoBytesAreLittleEndian)
{
    std::vector<kd_test::DbfColumn> columns(9, {"C", 'C', 100});
    Opened<xBaseTable> file(DbfBuilder(columns).bytes());
    EXPECT_TRUE(file.table.readHeader());
    EXPECT_EQ(0x141U, file.table.HeaderLength);
    EXPECT_EQ(0x385U, file.table.RecordLength);
    EXPECT_EQ(9U, file.table.Fields.size());
}

TEST(xBaseHeader, LastUpdateHasNoPadding)
{
    const struct {
        unsigned char year, month, day;
        const char* text;
    } dates[] = {
        {124, 3, 5, "202435"}, {124, 12, 25, "20241225"},     {99, 1, 2, "199912"},
        {0, 0, 0, "190000"},   {255, 255, 255, "2155255255"},
    };
    for (const auto& date : dates) {
        Opened<xBaseTable> file(threeColumns().date(date.year, date.month, date.day).bytes());
        EXPECT_TRUE(file.table.readHeader());
        EXPECT_EQ(date.text, file.table.LastUpdate);
    }
}

TEST(xBaseHeader, DescriptorsGiveTypeLengthDecimalsAndFlag)
{
    Opened<xBaseTable> file(DbfBuilder({{"A", 'N', 10, 2, 1}, {"B", 'C', 200, 255, 0}, {"C", 'F', 20, 5, 2}}).bytes());
    EXPECT_TRUE(file.table.readHeader());
    const Console console = captured([&] { file.table.Fields.show(); });
    EXPECT_EQ("Fields:\n"
              "0\ta\tinteger\t1\t10\t2\t1\n"
              "1\tb\tchar\t11\t200\t255\t0\n"
              "2\tc\tfloat\t211\t20\t5\t0\n",
              console.out);
}

TEST(xBaseHeader, FieldIsIndexedOnlyIfTheFlagByteIsOne)
{
    Opened<xBaseTable> file("");
    for (unsigned int flag = 0; flag < 256; ++flag) {
        file.reopen(DbfBuilder({{"A", 'C', 1, 0, static_cast<unsigned char>(flag)}}).bytes());
        EXPECT_TRUE(file.table.readHeader());
        EXPECT_EQ(flag == 1, file.table.Fields.get(0UL)->Indexed) << flag;
    }
}

TEST(xBaseHeader, NumberWithDecimalsIsAnIntegerFieldThatKeepsThem)
{
    Opened<xBaseTable> file(DbfBuilder({{"A", 'N', 10, 2}}).bytes());
    EXPECT_TRUE(file.table.readHeader());
    const kd_lib::TableField* field = file.table.Fields.get(0UL);
    EXPECT_EQ(kd_lib::INTEGER_TYPE, field->Type);
    EXPECT_EQ(10, field->Length);
    EXPECT_EQ(2, field->Decimals);
}

TEST(xBaseHeader, NamesAreFoldedUnlessTheListIsCaseSensitive)
{
    Opened<xBaseTable> folded(DbfBuilder({{"MixedName", 'C', 1}}).bytes());
    EXPECT_TRUE(folded.table.readHeader());
    EXPECT_EQ((Row{"mixedname"}), namesOf(folded.table));
    Opened<xBaseTable> kept(DbfBuilder({{"MixedName", 'C', 1}}).bytes());
    kept.table.Fields.CaseSensitive = true;
    EXPECT_TRUE(kept.table.readHeader());
    EXPECT_EQ((Row{"MixedName"}), namesOf(kept.table));
}

TEST(xBaseHeader, NameEndsAtItsFirstZeroByteAndIsNotTrimmed)
{
    const std::string name(" AB \0CD", 7);
    Opened<xBaseTable> file(DbfBuilder({{name, 'C', 1}}).bytes());
    EXPECT_TRUE(file.table.readHeader());
    EXPECT_EQ((Row{" ab "}), namesOf(file.table));
}

TEST(xBaseHeader, AddressAndReservedBytesOfADescriptorAreNotRead)
{
    std::string bytes = DbfBuilder({{"A", 'C', 2}}).record({"r1"}).bytes();
    bytes.replace(32 + 12, 4, "\xFF\xFF\xFF\xFF");
    bytes.replace(32 + 18, 13, std::string(13, '\x01'));
    Opened<xBaseTable> file(bytes);
    withHeader(file);
    EXPECT_EQ((Row{"1+2"}), kd_test::placesOf(file.table));
    EXPECT_FALSE(file.table.Fields.get(0UL)->Indexed);
    EXPECT_EQ((Rows{{"r1"}}), rowsOf(file.table));
}

TEST(xBaseHeader, DescriptorCountIsTheQuotientLessOneForEveryTerminator)
{
    const struct {
        std::uint16_t headerLength;
        std::size_t fields;
    } cases[] = {{32, 0}, {33, 0}, {63, 0}, {64, 1}, {65, 1}, {95, 1}, {96, 2}, {128, 3}, {129, 3}};
    for (const auto& row : cases) {
        DbfBuilder builder = threeColumns();
        builder.headerLength = row.headerLength;
        Opened<xBaseTable> file(builder.bytes());
        EXPECT_TRUE(file.table.readHeader());
        EXPECT_EQ(row.fields, file.table.Fields.size()) << row.headerLength;
    }
}

TEST(xBaseHeader, PositionAfterTheHeaderIsTheFirstRecordOfAnOrdinaryFile)
{
    Opened<xBaseTable> file(threeRecords());
    EXPECT_TRUE(file.table.readHeader());
    EXPECT_EQ(129, position(file.table));
    EXPECT_EQ(threeRows, rowsOf(file.table));
}

TEST(xBaseHeader, TerminatorIsReadAndNotExamined)
{
    for (const unsigned int terminator : {0x0DU, 0x00U, 0x41U, 0xFFU}) {
        Opened<xBaseTable> file(kd_test::withByte(threeRecords(), 128, terminator));
        EXPECT_TRUE(file.table.readHeader());
        EXPECT_EQ(129, position(file.table));
        EXPECT_EQ(threeRows, rowsOf(file.table)) << terminator;
    }
}

TEST(xBaseHeader, SecondReadRebuildsTheFieldListFromScratch)
{
    Opened<xBaseTable> file(threeRecords());
    EXPECT_TRUE(file.table.readHeader());
    rowsOf(file.table);
    EXPECT_TRUE(file.table.readHeader());
    EXPECT_EQ(3U, file.table.Fields.size());
    EXPECT_EQ((Row{"", "", ""}), rowOf(file.table));
    EXPECT_EQ(threeRows, rowsOf(file.table));
}

TEST(xBaseHeader, ClosedTableReturnsFalseSilentlyAndKeepsItsFields)
{
    Opened<xBaseTable> file(threeRecords());
    withHeader(file).table.close();
    bool read = true;
    const Console console = captured([&] { read = file.table.readHeader(); });
    EXPECT_FALSE(read);
    EXPECT_EQ("", console.out + console.err);
    EXPECT_EQ(3U, file.table.Fields.size());
    EXPECT_FALSE(file.table.getFieldList());
}

TEST(xBaseHeader, EmptyFileReturnsFalseAndLeavesTheFieldListCleared)
{
    Opened<xBaseTable> file(threeRecords());
    withHeader(file);
    file.reopen("");
    EXPECT_FALSE(file.table.readHeader());
    EXPECT_EQ(0U, file.table.Fields.size());
}

TEST(xBaseHeader, ThrowFromTheReservationComesBeforeCountAndHeaderLengthAreSet)
{
    DbfBuilder builder = threeColumns();
    builder.headerLength = 31;
    builder.version = 0x83;
    builder.recordLength = 77;
    Opened<xBaseTable> file(builder.record({"r1c1", "1", "2"}).bytes());
    EXPECT_THROW(file.table.readHeader(), std::length_error);
    EXPECT_EQ(0x83, file.table.Version);
    EXPECT_EQ(77U, file.table.RecordLength);
    EXPECT_EQ("202435", file.table.LastUpdate);
    EXPECT_EQ(0U, file.table.RecordCount);
    EXPECT_EQ(0U, file.table.HeaderLength);
    EXPECT_EQ(0U, file.table.Fields.size());
}

TEST(xBaseHeader, TypeLettersMapToFieldTypes)
{
    const struct {
        unsigned char letter;
        kd_lib::FIELD_TYPE type;
        const char* word;
    } letters[] = {
        {'C', kd_lib::CHAR_TYPE, "char"},   {'D', kd_lib::DATE_TYPE, "date"},
        {'F', kd_lib::FLOAT_TYPE, "float"}, {'L', kd_lib::BOOLEAN_TYPE, "boolean"},
        {'M', kd_lib::MEMO_TYPE, "memo"},   {'N', kd_lib::INTEGER_TYPE, "integer"},
        {'P', kd_lib::BLOB_TYPE, "blob"},
    };
    xBaseTable table;
    for (const auto& row : letters) {
        EXPECT_EQ(row.type, table.convertXbaseFieldType(row.letter));
        EXPECT_EQ(row.word, kd_lib::getFieldTypeName(table.convertXbaseFieldType(row.letter)));
    }
}

TEST(xBaseHeader, EveryOtherByteIsAnUnknownType)
{
    xBaseTable table;
    const std::string known = "CDFLMNP";
    for (unsigned int letter = 0; letter < 256; ++letter) {
        const bool unknown = known.find(static_cast<char>(letter)) == std::string::npos;
        EXPECT_EQ(unknown, table.convertXbaseFieldType(static_cast<unsigned char>(letter)) == kd_lib::UNKNOWN_TYPE)
            << letter;
    }
}

// Positioning

TEST(xBaseSkipHeader, ClosedTableReturnsFalseSilently)
{
    xBaseTable table;
    bool skipped = true;
    const Console console = captured([&] { skipped = table.skipHeader(); });
    EXPECT_FALSE(skipped);
    EXPECT_EQ("", console.out + console.err);
}

TEST(xBaseSkipHeader, GoesToTheHeaderLengthThroughTheSharedPosition)
{
    Opened<xBaseTable> file(threeRecords());
    withHeader(file);
    rowsOf(file.table);
    EXPECT_TRUE(file.table.skipHeader());
    EXPECT_EQ(129, position(file.table));
    EXPECT_TRUE(file.table.File.good());
    EXPECT_EQ(threeRows, rowsOf(file.table));
}

TEST(xBaseSkipHeader, PositionThatNoStreamCanHoldReturnsTrueAndLeavesTheStreamFailed)
{
    Opened<xBaseTable> file(threeRecords());
    file.table.HeaderLength = ~std::uint64_t{0};
    EXPECT_TRUE(file.table.skipHeader());
    EXPECT_TRUE(file.table.File.fail());
}

TEST(xBaseNavigation, RecordsAreReachedBySeeking)
{
    Opened<xBaseTable> file(threeRecords());
    withHeader(file);
    EXPECT_TRUE(file.table.goRecord(3));
    EXPECT_EQ(129 + 2 * 20, position(file.table));
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ(threeRows[2], rowOf(file.table));
    EXPECT_TRUE(file.table.firstRecord());
    EXPECT_TRUE(file.table.nextRecord());
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ(threeRows[1], rowOf(file.table));
}

TEST(xBaseNavigation, LastRecordAssumesAnEndMark)
{
    Opened<xBaseTable> file(threeRecords());
    withHeader(file);
    EXPECT_TRUE(file.table.lastRecord());
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ(threeRows[2], rowOf(file.table));
}

TEST(xBaseNavigation, LastRecordOfAFileWithoutTheEndMarkIsOneByteEarly)
{
    DbfBuilder builder = threeColumns();
    builder.endMark = false;
    Opened<xBaseTable> file(
        builder.record({"r1c1", "1234567", "19990102"}).record({"r2c1", "7654321", "20241225"}).bytes());
    withHeader(file);
    EXPECT_TRUE(file.table.lastRecord());
    EXPECT_EQ(129 + 20 - 1, position(file.table));
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ((Row{" r2c", "1765432", "12024122"}), rowOf(file.table));
}
