#include "support/conversion.h"
#include "support/dbf_builder.h"
#include "support/table_builder.h"

#include <kd_lib/xbase2sql.h>

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

using kd_lib::xBase2Sql;
using kd_test::captured;
using kd_test::Console;
using kd_test::DbfBuilder;
using kd_test::Opened;
using kd_test::ScopedDirectory;
using namespace kd_test;

// Construction

TEST(xBase2Sql, DefaultsOfTheConstructorWithoutAName)
{
    const xBase2Sql table;
    EXPECT_EQ("", table.Name);
    EXPECT_EQ("dbf", table.Extension);
    EXPECT_TRUE(table.Binary);
    EXPECT_EQ(0, table.RecordEnd);
    EXPECT_EQ(0U, table.RecordCount);
    EXPECT_EQ(0U, table.RecordLength);
    EXPECT_EQ(0U, table.HeaderLength);
    EXPECT_FALSE(table.ReadDeleted);
    EXPECT_EQ("", table.KeyColumn);
    EXPECT_TRUE(table.InsertRecords);
    EXPECT_TRUE(table.NamesMayChange);
}

TEST(xBase2Sql, NameConstructorSetsTheNameAndTheSameDefaults)
{
    const xBase2Sql table("stock");
    EXPECT_EQ("stock", table.Name);
    EXPECT_EQ("dbf", table.Extension);
    EXPECT_TRUE(table.Binary);
    EXPECT_EQ(0, table.RecordEnd);
    EXPECT_FALSE(table.ReadDeleted);
    EXPECT_EQ("", table.KeyColumn);
    EXPECT_TRUE(table.InsertRecords);
}

TEST(xBase2Sql, DerivesFromTheReaderAndItsOwnOperationsAreNotVirtual)
{
    static_assert(std::is_base_of_v<kd_lib::xBaseTable, xBase2Sql>);
    static_assert(!std::is_copy_constructible_v<xBase2Sql>);
    EXPECT_EQ(0U, kd_test::slotOf(&xBase2Sql::createTable));
    EXPECT_EQ(0U, kd_test::slotOf(&xBase2Sql::prepareInsert));
    EXPECT_EQ(0U, kd_test::slotOf(&xBase2Sql::insert));
    EXPECT_EQ(0U, kd_test::slotOf(&xBase2Sql::convert));
}

// The table's definition

TEST(xBase2SqlCreateTable, HasFiveLinesWithDropFirst)
{
    Conversion conversion("Customers", twoRecords());
    conversion.Table.Fields.CaseSensitive = true;
    std::string sql;
    captured([&] { sql = conversion.Table.createTable(true); });
    EXPECT_EQ("DROP TABLE IF EXISTS customers;\n"
              "CREATE TABLE IF NOT EXISTS customers (\n"
              "NAME char(30),\n"
              "BORN date\n"
              ");\n",
              sql);
}

TEST(xBase2SqlCreateTable, WithoutDropFirstBeginsWithCreate)
{
    Opened<xBase2Sql> file(twoRecords());
    EXPECT_EQ("CREATE TABLE IF NOT EXISTS sample (\n"
              "name char(30),\n"
              "born date\n"
              ");\n",
              file.table.createTable(false));
}

TEST(xBase2SqlCreateTable, OneFieldHasNoComma)
{
    Opened<xBase2Sql> file(DbfBuilder({{"ONLY", 'N', 5}}).bytes());
    EXPECT_EQ("CREATE TABLE IF NOT EXISTS sample (\n"
              "only integer\n"
              ");\n",
              file.table.createTable(false));
}

TEST(xBase2SqlCreateTable, KeyColumnComesFirstWithTwoBlanksBeforePrimary)
{
    Opened<xBase2Sql> file(twoRecords());
    file.table.KeyColumn = "ID";
    EXPECT_EQ("CREATE TABLE IF NOT EXISTS sample (\n"
              "ID INTEGER  PRIMARY KEY AUTOINCREMENT,\n"
              "name char(30),\n"
              "born date\n"
              ");\n",
              file.table.createTable(false));
}

TEST(xBase2SqlCreateTable, EveryTypeHasItsWord)
{
    Opened<xBase2Sql> file(allTypes().bytes());
    EXPECT_EQ("CREATE TABLE IF NOT EXISTS sample (\n"
              "c char(12),\n"
              "d date,\n"
              "f float,\n"
              "l boolean,\n"
              "m memo,\n"
              "n integer,\n"
              "p blob,\n"
              "x unknown\n"
              ");\n",
              file.table.createTable(false));
}

TEST(xBase2SqlCreateTable, TableWithoutFieldsHasNoColumnLine)
{
    DbfBuilder builder({});
    Opened<xBase2Sql> file(builder.bytes());
    EXPECT_EQ("CREATE TABLE IF NOT EXISTS sample (\n);\n", file.table.createTable(false));
}

TEST(xBase2SqlCreateTable, OpensTheTableAndReadsItsHeader)
{
    Conversion conversion("stock", twoRecords());
    const Console console = captured([&] { conversion.Table.createTable(false); });
    EXPECT_TRUE(conversion.Table.is_open());
    EXPECT_EQ(2U, conversion.Table.Fields.size());
    EXPECT_EQ("Table: " + conversion.Directory.path() + "/stock.dbf\n", console.out);
    EXPECT_EQ("", console.err);
}

TEST(xBase2SqlCreateTable, FieldsAlreadyDefinedAreKept)
{
    Opened<xBase2Sql> file(twoRecords());
    addTextColumns(file.table, {"Mine"});
    EXPECT_EQ("CREATE TABLE IF NOT EXISTS sample (\nMine char(5)\n);\n", file.table.createTable(false));
}

TEST(xBase2SqlCreateTable, TableThatCannotBeOpenedIsReportedAndTheMessageIsTheResult)
{
    const ScopedDirectory directory;
    xBase2Sql table("absent");
    table.Path = directory.path();
    std::string sql;
    const Console console = captured([&] { sql = table.createTable(true); });
    EXPECT_EQ("Error: table is not open", sql);
    EXPECT_EQ("Table: " + directory.path() + "/absent.dbf\n", console.out);
    EXPECT_EQ("File does not exist\nTable is not open\n", console.err);
}

// INSERT with placeholders

namespace {

struct Dialect {
    const char* name;
    const char* dialect;
    const char* sql;
};

const std::vector<Dialect> dialects = {
    {"SqliteColonsStandBeforeTheNames", "sqlite", "INSERT INTO stock (:A,:B,:C)\n VALUES (?,?,?);\n"},
    {"Mysql", "mysql", "INSERT INTO stock (A,B,C)\n VALUES (?,?,?);\n"},
    {"PostgresqlNumbersStartAtZero", "postgresql", "INSERT INTO stock (A,B,C)\n VALUES ($0,$1,$2);\n"},
    {"OtherCaseIsNoKnownDialect", "SQLite", "INSERT INTO stock (A,B,C)\n VALUES (?,?,?);\n"},
    {"OtherCaseOfPostgresqlIsNoKnownDialect", "PostgreSQL", "INSERT INTO stock (A,B,C)\n VALUES (?,?,?);\n"},
    {"UnknownDialect", "oracle", "INSERT INTO stock (A,B,C)\n VALUES (?,?,?);\n"},
    {"EmptyDialect", "", "INSERT INTO stock (A,B,C)\n VALUES (?,?,?);\n"},
};

void PrintTo(const Dialect& row, std::ostream* out)
{
    *out << row.name;
}

class PrepareInsert : public testing::TestWithParam<Dialect> {};

}  // namespace

TEST_P(PrepareInsert, HasTheDialectsForm)
{
    xBase2Sql table("Stock");
    addTextColumns(table, {"A", "B", "C"});
    table.KeyColumn = "ID";
    EXPECT_EQ(GetParam().sql, table.prepareInsert(GetParam().dialect));
    EXPECT_FALSE(table.is_open());
}

INSTANTIATE_TEST_SUITE_P(xBase2Sql, PrepareInsert, testing::ValuesIn(dialects), kd_test::caseName<Dialect>);

TEST(xBase2SqlPrepareInsert, OneFieldHasNoComma)
{
    xBase2Sql table("stock");
    addTextColumns(table, {"A"});
    EXPECT_EQ("INSERT INTO stock (:A)\n VALUES (?);\n", table.prepareInsert("sqlite"));
    EXPECT_EQ("INSERT INTO stock (A)\n VALUES ($0);\n", table.prepareInsert("postgresql"));
}

TEST(xBase2SqlPrepareInsert, EleventhPlaceholderOfPostgresqlIsTen)
{
    xBase2Sql table("stock");
    addTextColumns(table, {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k"});
    EXPECT_EQ("INSERT INTO stock (a,b,c,d,e,f,g,h,i,j,k)\n VALUES ($0,$1,$2,$3,$4,$5,$6,$7,$8,$9,$10);\n",
              table.prepareInsert("postgresql"));
}

// INSERT with values

TEST(xBase2SqlInsert, HoldsTheCurrentRecordsLiterals)
{
    Opened<xBase2Sql> file(twoRecords());
    file.table.getFieldList();
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ("INSERT INTO sample(name,born) \n VALUES ('r1c1','1999-01-02');\n", file.table.insert());
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ("INSERT INTO sample(name,born) \n VALUES ('r2c1','2024-12-25');\n", file.table.insert());
}

TEST(xBase2SqlInsert, OneFieldHasNoComma)
{
    Opened<xBase2Sql> file(DbfBuilder({{"ONLY", 'N', 5}}).record({"   42"}).bytes());
    file.table.getFieldList();
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ("INSERT INTO sample(only) \n VALUES (42);\n", file.table.insert());
}

TEST(xBase2SqlInsert, NeedsNoOpenTableAndNeverNamesTheKeyColumn)
{
    xBase2Sql table("Stock");
    table.KeyColumn = "ID";
    addTextColumns(table, {"A", "B"});
    table.Fields.get(0UL)->Value = "  O'Brien  ";
    EXPECT_EQ("INSERT INTO stock(A,B) \n VALUES ('  O`Brien',NULL);\n", table.insert());
}

TEST(xBase2SqlInsert, EveryTypeHasItsLiteral)
{
    Opened<xBase2Sql> file(
        allTypes().record({" it's", "20240305", "   -1.50", "T", "        42", "  12.5", "ab", " x y"}).bytes());
    file.table.getFieldList();
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ("INSERT INTO sample(c,d,f,l,m,n,p,x) \n"
              " VALUES (' it`s','2024-03-05',-1.50,1,        42,12.5,ab, x y);\n",
              file.table.insert());
}

TEST(xBase2SqlInsert, EveryEmptyValueHasItsLiteral)
{
    Opened<xBase2Sql> file(allTypes().record({}).bytes());
    file.table.getFieldList();
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ("INSERT INTO sample(c,d,f,l,m,n,p,x) \n VALUES (NULL,NULL,NULL,0,,NULL,,);\n", file.table.insert());
}

TEST(xBase2SqlInsert, BlankMemoSlotLeavesARunOfBlanksBetweenTwoCommas)
{
    Opened<xBase2Sql> file(DbfBuilder({{"A", 'C', 2}, {"M", 'M', 10}, {"B", 'N', 2}}).record({"r1", "", " 3"}).bytes());
    file.table.Trim = false;
    file.table.getFieldList();
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ("INSERT INTO sample(a,m,b) \n VALUES ('r1',          ,3);\n", file.table.insert());
}

TEST(xBase2SqlInsert, MemoSlotIsTheTextOfItsBlockNumber)
{
    Opened<xBase2Sql> file(DbfBuilder({{"M", 'M', 10}, {"A", 'C', 2}}).record({"         7", "r1"}).bytes());
    file.table.getFieldList();
    ASSERT_TRUE(file.table.fetchRecord());
    EXPECT_EQ("INSERT INTO sample(m,a) \n VALUES (         7,'r1');\n", file.table.insert());
}

TEST(xBase2SqlInsert, NamesAreNeitherLoweredNorQuoted)
{
    xBase2Sql table("Stock");
    addTextColumns(table, {"Mixed Name", "select"});
    EXPECT_EQ("INSERT INTO stock(Mixed Name,select) \n VALUES (NULL,NULL);\n", table.insert());
}
