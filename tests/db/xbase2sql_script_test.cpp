#include "support/conversion.h"
#include "support/dbf_builder.h"
#include "support/table_builder.h"

#include <kd_lib/xbase2sql.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <utility>

using kd_lib::xBase2Sql;
using kd_test::captured;
using kd_test::Console;
using kd_test::DbfBuilder;
using kd_test::Opened;
using kd_test::readFile;
using kd_test::ScopedDirectory;
using namespace kd_test;

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

TEST(xBase2SqlConvert, KeyColumnIsInTheDefinitionOnly)
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

TEST(xBase2SqlConvert, TildeIsTheHomeDirectory)
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

TEST(xBase2SqlConvert, OpenThatReturnsTrueWithoutOpeningLeavesTheTableClosed)
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

TEST(xBase2SqlConvert, RecordsAreReadByTheVirtualFetchRecord)
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

TEST(xBase2SqlConvert, WithoutNamesMayChangeEveryRecordHasTheNamesOfTheFirst)
{
    class Renaming : public xBase2Sql {
    public:
        using xBase2Sql::xBase2Sql;
        bool fetchRecord() override
        {
            Name += 'x';
            Fields.get(0UL)->Name += 'y';
            return xBase2Sql::fetchRecord();
        }
    };
    Opened<Renaming> file(twoColumns().record({"one", "19990102"}).bytes());
    file.table.getFieldList();
    const std::string insert = "INSERT INTO " + file.table.Name + "(" + file.table.Fields.get(0UL)->Name + ",";
    file.table.NamesMayChange = false;
    std::ostringstream out;
    file.table.writeScript(out);
    EXPECT_NE(std::string::npos, out.str().find(insert)) << out.str();
}

TEST(xBase2SqlConvert, EveryRecordIsWrittenWithTheCurrentNames)
{
    class Renaming : public xBase2Sql {
    public:
        using xBase2Sql::xBase2Sql;
        bool fetchRecord() override
        {
            // Each record has been written when the next one is fetched.
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

TEST(xBase2SqlConvert, ShortDateLetsTheStandardExceptionPassAfterTheWholeStatementsBeforeIt)
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

/// A stream that accepts `room` bytes and throws at the next one.
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

TEST(xBase2SqlWriteScript, ExceptionOfAValueTakesPrecedenceOverThatOfTheStream)
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
