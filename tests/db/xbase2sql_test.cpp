#include "support/dbf_builder.h"
#include "support/table_builder.h"

#include <kd_lib/xbase2sql.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using kd_lib::xBase2Sql;
using kd_test::captured;
using kd_test::Console;
using kd_test::DbfBuilder;
using kd_test::Opened;
using kd_test::readFile;
using kd_test::Row;
using kd_test::ScopedDirectory;

namespace {

DbfBuilder twoColumns()
{
    return DbfBuilder({{"NAME", 'C', 30}, {"BORN", 'D', 8}});
}

std::string twoRecords()
{
    return twoColumns().record({"r1c1", "19990102"}).record({"r2c1", "20241225"}).bytes();
}

/// One field of every type that a table can have.
DbfBuilder allTypes()
{
    return DbfBuilder({{"C", 'C', 12},
                       {"D", 'D', 8},
                       {"F", 'F', 8, 2},
                       {"L", 'L', 1},
                       {"M", 'M', 10},
                       {"N", 'N', 6, 1},
                       {"P", 'P', 4},
                       {"X", 'X', 5}});
}

/// A table without fields of its own file, as `prepareInsert` and `insert` need none.
void addTextColumns(xBase2Sql& table, const std::vector<std::string>& names)
{
    table.Fields.CaseSensitive = true;
    for (const std::string& name : names) {
        kd_lib::TableField field(name, kd_lib::CHAR_TYPE, 0, 5, 0, false);
        table.Fields.add(field);
    }
}

/// A directory with one table of these bytes and a converter for it.
class Conversion {
public:
    Conversion(const std::string& name, const std::string& bytes) : Table(name)
    {
        Directory.write(name + ".dbf", bytes);
        Table.Path = Directory.path();
    }

    /// The script; the path that `convert` answers must be the one beside the table.
    std::string script()
    {
        std::string path;
        Printed = captured([&] { path = Table.convert(); });
        EXPECT_EQ(Directory.file(Table.Name + ".sql"), path);
        return readFile(path);
    }

    ScopedDirectory Directory;
    xBase2Sql Table;
    Console Printed;
};

}  // namespace

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

TEST(xBase2SqlCreateTable, GivesFiveLinesWithDropFirst)
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

// The script

TEST(xBase2SqlConvert, WritesTheDefinitionAndEveryRecord)
{
    Conversion conversion("stock", twoRecords());
    EXPECT_EQ("DROP TABLE IF EXISTS stock;\n"
              "CREATE TABLE IF NOT EXISTS stock (\n"
              "name char(30),\n"
              "born date\n"
              ");\n"
              "INSERT INTO stock(name,born) \n VALUES ('r1c1','1999-01-02');\n"
              "INSERT INTO stock(name,born) \n VALUES ('r2c1','2024-12-25');\n",
              conversion.script());
    EXPECT_EQ("Table: " + conversion.Directory.path() + "/stock.dbf\n", conversion.Printed.out);
    EXPECT_EQ("", conversion.Printed.err);
    EXPECT_FALSE(conversion.Table.is_open());
    EXPECT_EQ(2U, conversion.Table.Fields.size());
}

TEST(xBase2SqlConvert, WithoutInsertRecordsWritesTheDefinitionOnly)
{
    Conversion conversion("stock", twoRecords());
    conversion.Table.InsertRecords = false;
    EXPECT_EQ("DROP TABLE IF EXISTS stock;\n"
              "CREATE TABLE IF NOT EXISTS stock (\n"
              "name char(30),\n"
              "born date\n"
              ");\n",
              conversion.script());
    EXPECT_FALSE(conversion.Table.is_open());
}

TEST(xBase2SqlConvert, KeyColumnStandsInTheDefinitionOnly)
{
    Conversion conversion("stock", twoColumns().record({"r1c1", ""}).bytes());
    conversion.Table.KeyColumn = "ID";
    EXPECT_EQ("DROP TABLE IF EXISTS stock;\n"
              "CREATE TABLE IF NOT EXISTS stock (\n"
              "ID INTEGER  PRIMARY KEY AUTOINCREMENT,\n"
              "name char(30),\n"
              "born date\n"
              ");\n"
              "INSERT INTO stock(name,born) \n VALUES ('r1c1',NULL);\n",
              conversion.script());
}

TEST(xBase2SqlConvert, FileKeepsTheCaseOfTheNameWhileStatementsAreLowered)
{
    Conversion conversion("Orders", DbfBuilder({{"A", 'C', 4}}).record({"r1c1"}).bytes());
    EXPECT_EQ("DROP TABLE IF EXISTS orders;\n"
              "CREATE TABLE IF NOT EXISTS orders (\n"
              "a char(4)\n"
              ");\n"
              "INSERT INTO orders(a) \n VALUES ('r1c1');\n",
              conversion.script());
    EXPECT_TRUE(std::filesystem::exists(conversion.Directory.file("Orders.sql")));
}

TEST(xBase2SqlConvert, RelativePathGetsItsSlashAndKeepsItsValue)
{
    const ScopedDirectory directory;
    std::filesystem::create_directory(directory.file("data"));
    directory.write("data/Orders.dbf", twoRecords());
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(directory.path());
    xBase2Sql table("Orders");
    table.Path = "data";
    std::string path;
    captured([&] { path = table.convert(); });
    std::filesystem::current_path(before);
    EXPECT_EQ("data/Orders.sql", path);
    EXPECT_EQ("data", table.Path);
    EXPECT_TRUE(std::filesystem::exists(directory.file("data/Orders.sql")));
}

TEST(xBase2SqlConvert, TildeStandsForTheHomeDirectory)
{
    Conversion conversion("stock", twoRecords());
    const char* home = std::getenv("HOME");
    const std::string before = home != nullptr ? home : "";
    ::setenv("HOME", conversion.Directory.path().c_str(), 1);
    conversion.Table.Path = "~/";
    conversion.script();
    ::setenv("HOME", before.c_str(), 1);
    EXPECT_EQ("~/", conversion.Table.Path);
}

TEST(xBase2SqlConvert, DeletedRecordRepeatsThePreviousInsert)
{
    Conversion conversion("t", DbfBuilder({{"A", 'C', 4}})
                                   .record({"r1c1"})
                                   .deletedRecord({"r2c1"})
                                   .deletedRecord({"r3c1"})
                                   .record({"r4c1"})
                                   .bytes());
    EXPECT_EQ("DROP TABLE IF EXISTS t;\n"
              "CREATE TABLE IF NOT EXISTS t (\n"
              "a char(4)\n"
              ");\n"
              "INSERT INTO t(a) \n VALUES ('r1c1');\n"
              "INSERT INTO t(a) \n VALUES ('r1c1');\n"
              "INSERT INTO t(a) \n VALUES ('r1c1');\n"
              "INSERT INTO t(a) \n VALUES ('r4c1');\n",
              conversion.script());
}

TEST(xBase2SqlConvert, DeletedFirstRecordIsAnInsertOfEmptyValues)
{
    Conversion conversion("t", DbfBuilder({{"A", 'C', 4}}).deletedRecord({"r1c1"}).record({"r2c1"}).bytes());
    EXPECT_EQ("DROP TABLE IF EXISTS t;\n"
              "CREATE TABLE IF NOT EXISTS t (\n"
              "a char(4)\n"
              ");\n"
              "INSERT INTO t(a) \n VALUES (NULL);\n"
              "INSERT INTO t(a) \n VALUES ('r2c1');\n",
              conversion.script());
}

TEST(xBase2SqlConvert, DeletedRecordIsWrittenWithTheSwitchOn)
{
    Conversion conversion("t", DbfBuilder({{"A", 'C', 4}}).record({"r1c1"}).deletedRecord({"r2c1"}).bytes());
    conversion.Table.ReadDeleted = true;
    conversion.Table.InsertRecords = true;
    EXPECT_NE(std::string::npos, conversion.script().find("('r1c1');\nINSERT INTO t(a) \n VALUES ('r2c1');\n"));
}

TEST(xBase2SqlConvert, WritesAllRecordsAfterAWholeWalk)
{
    Conversion conversion("t", twoRecords());
    const std::string expected = conversion.script();
    captured([&] { conversion.Table.open(); });
    kd_test::rowsOf(conversion.Table);
    EXPECT_EQ(expected, conversion.script());
}

TEST(xBase2SqlConvert, OpenThatAnswersTrueWithoutOpeningIsATableThatIsNotOpen)
{
    struct NeverOpen : kd_lib::xBase2Sql {
        using xBase2Sql::open;
        bool open() override { return true; }
    } table;
    EXPECT_EQ("Table is not open\n", captured([&] { EXPECT_EQ("", table.convert()); }).err);
}

TEST(xBase2SqlConvert, TableThatIsOpenIsNotOpenedAgain)
{
    Conversion conversion("t", twoRecords());
    captured([&] { conversion.Table.open(); });
    conversion.script();
    EXPECT_EQ("", conversion.Printed.out);
}

TEST(xBase2SqlConvert, ExistingScriptIsReplaced)
{
    Conversion conversion("t", DbfBuilder({{"A", 'C', 1}}).bytes());
    conversion.Directory.write("t.sql", std::string(10000, 'x'));
    EXPECT_EQ("DROP TABLE IF EXISTS t;\nCREATE TABLE IF NOT EXISTS t (\na char(1)\n);\n", conversion.script());
}

TEST(xBase2SqlConvert, TableThatCannotBeOpenedIsReportedAndGivesNoPath)
{
    const ScopedDirectory directory;
    xBase2Sql table("absent");
    table.Path = directory.path();
    std::string path = "unset";
    const Console console = captured([&] { path = table.convert(); });
    EXPECT_EQ("", path);
    EXPECT_EQ("Table: " + directory.path() + "/absent.dbf\n", console.out);
    EXPECT_EQ("File does not exist\nTable is not open\n", console.err);
    EXPECT_FALSE(std::filesystem::exists(directory.file("absent.sql")));
}

TEST(xBase2SqlConvert, TableWithoutANameIsReportedTwice)
{
    xBase2Sql table;
    std::string path = "unset";
    const Console console = captured([&] { path = table.convert(); });
    EXPECT_EQ("", path);
    EXPECT_EQ("", console.out);
    EXPECT_EQ("No file name provided for table file\nTable is not open\n", console.err);
}

TEST(xBase2SqlConvert, ScriptThatCannotBeCreatedGivesNoPathSilentlyAndTheTableStaysOpen)
{
    Conversion conversion("t", twoRecords());
    std::filesystem::create_directory(conversion.Directory.file("t.sql"));
    std::string path = "unset";
    const Console console = captured([&] { path = conversion.Table.convert(); });
    EXPECT_EQ("", path);
    EXPECT_EQ("Table: " + conversion.Directory.path() + "/t.dbf\n", console.out);
    EXPECT_EQ("", console.err);
    EXPECT_TRUE(conversion.Table.is_open());
    EXPECT_EQ(2U, conversion.Table.Fields.size());
}

TEST(xBase2SqlConvert, FullDiskIsNotReportedAndThePathIsReturned)
{
    Conversion conversion("t", twoRecords());
    std::filesystem::create_symlink("/dev/full", conversion.Directory.file("t.sql"));
    std::string path;
    const Console console = captured([&] { path = conversion.Table.convert(); });
    EXPECT_EQ(conversion.Directory.file("t.sql"), path);
    EXPECT_EQ("", console.err);
    EXPECT_FALSE(conversion.Table.is_open());
}

TEST(xBase2SqlConvert, ClosesThroughTheVirtualClose)
{
    class Counter : public xBase2Sql {
    public:
        using xBase2Sql::xBase2Sql;
        bool close() override
        {
            ++Closes;
            return xBase2Sql::close();
        }
        int Closes = 0;
    };
    const ScopedDirectory directory;
    directory.write("t.dbf", twoRecords());
    Counter table("t");
    table.Path = directory.path();
    captured([&] { table.convert(); });
    EXPECT_EQ(1, table.Closes);
}

TEST(xBase2SqlConvert, RecordsComeThroughTheVirtualFetchRecord)
{
    class TwoInvented : public xBase2Sql {
    public:
        using xBase2Sql::xBase2Sql;
        bool fetchRecord() override
        {
            Fields.get(0UL)->Value = "invented" + std::to_string(++Fetched);
            return Fetched <= 2;
        }
        int Fetched = 0;
    };
    const ScopedDirectory directory;
    directory.write("t.dbf", DbfBuilder({{"A", 'C', 9}}).bytes());
    TwoInvented table("t");
    table.Path = directory.path();
    captured([&] { table.convert(); });
    EXPECT_EQ("DROP TABLE IF EXISTS t;\nCREATE TABLE IF NOT EXISTS t (\na char(9)\n);\n"
              "INSERT INTO t(a) \n VALUES ('invented1');\nINSERT INTO t(a) \n VALUES ('invented2');\n",
              readFile(directory.file("t.sql")));
}

TEST(xBase2SqlConvert, EveryRecordIsWrittenWithTheNamesOfItsMoment)
{
    class Renaming : public xBase2Sql {
    public:
        using xBase2Sql::xBase2Sql;
        bool fetchRecord() override
        {
            // Each record was written when the next one is asked for.
            Inserts += Fetched > 0 ? insert() : "";
            if (!xBase2Sql::fetchRecord()) {
                return false;
            }
            rename(++Fetched);
            return true;
        }
        void rename(int record)
        {
            std::string& first = Fields.get(0UL)->Name;
            std::string& second = Fields.get(1UL)->Name;
            switch (record % 8) {
            case 1:
                first.back() = 'X';
                break;
            case 2:
                second = "a longer name of a column, " + std::to_string(record);
                break;
            case 3:
                second[26] = '#';
                break;
            case 4:
                Name = "Other" + std::to_string(record);
                break;
            case 5:
                Fields.add("third");
                break;
            case 6:
                std::swap(first, second);
                break;
            default:
                break;
            }
        }
        int Fetched = 0;
        std::string Inserts;
    };
    DbfBuilder builder = twoColumns();
    for (int i = 0; i < 40; ++i) {
        builder.record({"r" + std::to_string(i), "19990102"});
    }
    Opened<Renaming> file(builder.bytes());
    file.table.getFieldList();
    const std::string definition = file.table.createTable(true);
    std::ostringstream out;
    file.table.writeScript(out);
    EXPECT_EQ(40, file.table.Fetched);
    EXPECT_EQ(definition + file.table.Inserts, out.str());
}

TEST(xBase2SqlConvert, ShortDateLetsTheStandardExceptionPassBehindTheWholeStatementsBeforeIt)
{
    Conversion conversion("t", DbfBuilder({{"D", 'D', 8}}).record({"20240305"}).record({"1999"}).bytes());
    captured([&] { EXPECT_THROW(conversion.Table.convert(), std::out_of_range); });
    EXPECT_EQ("DROP TABLE IF EXISTS t;\nCREATE TABLE IF NOT EXISTS t (\nd date\n);\n"
              "INSERT INTO t(d) \n VALUES ('2024-03-05');\n",
              readFile(conversion.Directory.file("t.sql")));
}

TEST(xBase2SqlConvert, ManyRecordsAreWrittenWholeInBlocks)
{
    DbfBuilder builder({{"A", 'C', 6}});
    std::string inserts;
    for (int i = 100000; i < 105000; ++i) {
        builder.record({std::to_string(i)});
        inserts += "INSERT INTO t(a) \n VALUES ('" + std::to_string(i) + "');\n";
    }
    Conversion conversion("t", builder.bytes());
    EXPECT_EQ("DROP TABLE IF EXISTS t;\nCREATE TABLE IF NOT EXISTS t (\na char(6)\n);\n" + inserts,
              conversion.script());
}

TEST(xBase2SqlConvert, DeliberatelyASecondTableHasTheColumnsOfTheFirstUntilTheFieldsAreEmptied)
{
    Conversion conversion("t", DbfBuilder({{"A", 'C', 3}}).record({"abc"}).bytes());
    conversion.Directory.write("other.dbf", DbfBuilder({{"B", 'C', 2}, {"C", 'C', 1}}).record({"xy", "z"}).bytes());
    conversion.script();
    conversion.Table.Name = "other";
    captured([&] { conversion.Table.convert(); });
    EXPECT_EQ("DROP TABLE IF EXISTS other;\nCREATE TABLE IF NOT EXISTS other (\na char(3)\n);\n",
              readFile(conversion.Directory.file("other.sql")).substr(0, 76));
    conversion.Table.defineFields();
    captured([&] { conversion.Table.convert(); });
    EXPECT_EQ("DROP TABLE IF EXISTS other;\nCREATE TABLE IF NOT EXISTS other (\nb char(2),\nc char(1)\n);\n"
              "INSERT INTO other(b,c) \n VALUES ('xy','z');\n",
              readFile(conversion.Directory.file("other.sql")));
}

TEST(xBase2SqlWriteScript, WritesTheSameTextToAnyStreamAndLeavesTheTableOpen)
{
    Conversion conversion("stock", twoRecords());
    const std::string expected = conversion.script();
    Opened<xBase2Sql> file(twoRecords());
    file.table.Name = "stock";
    std::ostringstream out;
    file.table.writeScript(out);
    EXPECT_EQ(expected, out.str());
    EXPECT_TRUE(file.table.is_open());
}

TEST(xBase2SqlWriteScript, StopsAtAStreamThatFails)
{
    Opened<xBase2Sql> file(twoRecords());
    std::ostringstream out;
    out.setstate(std::ios::badbit);
    file.table.writeScript(out);
    EXPECT_TRUE(out.bad());
    EXPECT_EQ("", out.str());
    EXPECT_EQ(2U, file.table.Fields.size());
}

/// A stream that takes `room` bytes and throws at the next.
class ThrowingStream : private std::streambuf, public std::ostream {
public:
    explicit ThrowingStream(std::streamsize room) : std::ostream(this), Room(room) { exceptions(std::ios::badbit); }

    std::string Text;

private:
    std::streamsize xsputn(const char* text, std::streamsize count) override
    {
        const std::streamsize taken = std::min(count, Room);
        Text.append(text, static_cast<std::size_t>(taken));
        Room -= taken;
        return taken;
    }

    std::streamsize Room;
};

TEST(xBase2SqlWriteScript, ExceptionOfTheStreamPassesAndNothingIsWrittenTwice)
{
    const std::string script = Conversion("stock", twoRecords()).script();
    for (std::size_t room = 0; room < script.size(); ++room) {
        Opened<xBase2Sql> file(twoRecords());
        file.table.Name = "stock";
        ThrowingStream out(static_cast<std::streamsize>(room));
        EXPECT_THROW(file.table.writeScript(out), std::ios_base::failure) << room;
        EXPECT_EQ(script.substr(0, room), out.Text);
    }
    Opened<xBase2Sql> file(twoRecords());
    file.table.Name = "stock";
    ThrowingStream out(static_cast<std::streamsize>(script.size()));
    EXPECT_NO_THROW(file.table.writeScript(out));
    EXPECT_EQ(script, out.Text);
}

TEST(xBase2SqlWriteScript, ExceptionOfAValueGoesBeforeThatOfTheStream)
{
    DbfBuilder builder({{"D", 'D', 8}});
    builder.record({"20240315"}).record({"2024"});
    Opened<xBase2Sql> file(builder.bytes());
    const std::string definition = file.table.createTable(true);
    ThrowingStream out(static_cast<std::streamsize>(definition.size()));
    EXPECT_THROW(file.table.writeScript(out), std::out_of_range);
    EXPECT_EQ(definition, out.Text);
}

TEST(xBase2SqlWriteScript, TableThatCannotBeOpenedLeavesTheErrorTextAsTheScript)
{
    const ScopedDirectory directory;
    xBase2Sql table("absent");
    table.Path = directory.path();
    std::ostringstream out;
    captured([&] { table.writeScript(out); });
    EXPECT_EQ("Error: table is not open", out.str());
}
