// Different objects in different threads. Built with -fsanitize=thread, these tests show that the
// library shares nothing between its objects. (The row printer is left out, because it counts for all
// objects together.)

#include <kd_lib/kd_db.h>

#include "support/console_capture.h"
#include "support/dbf_builder.h"
#include "support/scoped_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <latch>
#include <string>
#include <thread>
#include <vector>

using namespace kd_lib;

namespace {

constexpr int threadCount = 4;
constexpr int rounds = 25;

/// Starts all threads at once. Each calls `work` with its number, again and again. Returns the number of rounds whose
/// result was false.
int failuresInThreads(const std::function<bool(int)>& work)
{
    std::latch start(threadCount);
    std::atomic<int> failures{0};
    std::vector<std::jthread> threads;
    for (int number = 0; number < threadCount; ++number) {
        threads.emplace_back([&start, &failures, &work, number] {
            start.arrive_and_wait();
            for (int round = 0; round < rounds; ++round) {
                failures += work(number) ? 0 : 1;
            }
        });
    }
    threads.clear();
    return failures;
}

/// The same with the console captured, because `open` prints the path.
int quietFailuresInThreads(const std::function<bool(int)>& work)
{
    int failures = -1;
    kd_test::captured([&failures, &work] { failures = failuresInThreads(work); });
    return failures;
}

std::string cell(int thread, int row, int column)
{
    return "t" + std::to_string(thread) + "r" + std::to_string(row) + "c" + std::to_string(column);
}

/// The values of column 0 of every record, each after a bar.
std::string walked(FileTable& table)
{
    std::string values;
    while (table.fetchRecord()) {
        values += '|' + table.Fields.getData(0);
    }
    return values;
}

std::string expectedWalk(int thread)
{
    return '|' + cell(thread, 1, 1) + '|' + cell(thread, 2, 1) + '|' + cell(thread, 3, 1);
}

/// A table of three records with two columns of six bytes, for one thread.
std::string dbfBytes(int thread)
{
    kd_test::DbfBuilder builder({{"FIRST", 'C', 6}, {"SECOND", 'C', 6}});
    for (int row = 1; row <= 3; ++row) {
        builder.record({cell(thread, row, 1), cell(thread, row, 2)});
    }
    return builder.bytes();
}

}  // namespace

TEST(Threads, TextFunctions)
{
    EXPECT_EQ(0, failuresInThreads([](int number) {
                  const std::string name = cell(number, 1, 1);
                  return stringToLower(stringToUpper(name)) == name && allTrim("  " + name + "  ") == name &&
                         removeQuotes(inQuotes(name, '"')) == name && leftPad(name, 8, ' ') == "  " + name &&
                         stringToBool(number % 2 == 0 ? "yes" : "no") == (number % 2 == 0);
              }));
}

TEST(Threads, Tokenizers)
{
    EXPECT_EQ(0, failuresInThreads([](int number) {
                  Tokenizer tokenizer;
                  tokenizer.split(cell(number, 1, 1) + '|' + cell(number, 1, 2), "|:;");
                  return tokenizer.tokens.size() == 2 && tokenizer.getToken(1) == cell(number, 1, 2);
              }));
}

TEST(Threads, FieldLists)
{
    EXPECT_EQ(0, failuresInThreads([](int number) {
                  TableFields fields;
                  fields.add(cell(number, 1, 1));
                  fields.add(cell(number, 1, 2));
                  fields.get(1)->Value = cell(number, 2, 2);
                  TableFields copy = fields;
                  fields.clearList();
                  return copy.getData(cell(number, 1, 2)) == cell(number, 2, 2) &&
                         getFieldTypeName(copy.get(0)->Type) == "unknown";
              }));
}

TEST(Threads, Literals)
{
    EXPECT_EQ(0, failuresInThreads([](int number) {
                  TableField field("CITY", CHAR_TYPE, 0, 10, 0, false);
                  field.Value = "O'" + cell(number, 1, 1);
                  return convertValue2Sql(field) == "'O`" + cell(number, 1, 1) + "'" &&
                         convertField2Sql(field) == "CITY char(10)";
              }));
}

TEST(Threads, QueryBuilders)
{
    EXPECT_EQ(0, failuresInThreads([](int number) {
                  SqlQuery query;
                  query.setFields(cell(number, 1, 1));
                  query.setTables("t");
                  query.setFilter("a " + query.setInClause({cell(number, 1, 2), "x"}), "");
                  return query.selectQuery() == "SELECT " + cell(number, 1, 1) + "\n  FROM  t\n WHERE  a IN ('" +
                                                    cell(number, 1, 2) + "', 'x')\n\n";
              }));
}

TEST(Threads, OneQueryReadByAll)
{
    SqlQuery query;
    query.setFields("f");
    query.setTables("t");
    EXPECT_EQ(0, failuresInThreads([&query](int) {
                  return query.selectQuery() == "SELECT f\n  FROM  t\n" &&
                         query.countQuery() == "SELECT  COUNT(*) AS count  FROM t\n";
              }));
}

TEST(Threads, Keywords)
{
    EXPECT_EQ(0, failuresInThreads([](int number) {
                  SqlKeyword keyword;
                  TableFields fields;
                  fields.add("Order");
                  fields.add(cell(number, 1, 1));
                  keyword.checkReserved(fields.List);
                  return keyword.isReserved("SELECT") && fields.get(0)->Name == "\"order\"" &&
                         fields.get(1)->Name == cell(number, 1, 1);
              }));
}

TEST(Threads, VerbosityIsReadAndSetByAll)
{
    EXPECT_EQ(0, failuresInThreads([](int) {
                  setVerbose(true);
                  return isVerbose();
              }));
    setVerbose(false);
    EXPECT_FALSE(isVerbose());
}

TEST(Threads, PositionalTables)
{
    const kd_test::ScopedDirectory directory;
    for (int number = 0; number < threadCount; ++number) {
        std::string lines;
        for (int row = 1; row <= 3; ++row) {
            lines += "______" + cell(number, row, 1) + cell(number, row, 2) + "\n";
        }
        directory.write("table" + std::to_string(number) + ".txt", lines);
    }
    EXPECT_EQ(0, quietFailuresInThreads([&directory](int number) {
                  FileTable table;
                  table.Path = directory.path();
                  table.setFieldOffsets("6|12");
                  return table.open("table" + std::to_string(number)) && table.firstRecord() &&
                         walked(table) == expectedWalk(number) && table.close();
              }));
}

TEST(Threads, DelimitedTables)
{
    const kd_test::ScopedDirectory directory;
    for (int number = 0; number < threadCount; ++number) {
        std::string lines;
        for (int row = 1; row <= 3; ++row) {
            lines += cell(number, row, 1) + "," + cell(number, row, 2) + "\n";
        }
        directory.write("table" + std::to_string(number) + ".csv", lines);
    }
    EXPECT_EQ(0, quietFailuresInThreads([&directory](int number) {
                  DelimitedTable table;
                  table.setCsvMode();
                  table.Path = directory.path();
                  table.Fields.add("first");
                  table.Fields.add("second");
                  return table.open("table" + std::to_string(number)) && table.firstRecord() &&
                         walked(table) == expectedWalk(number);
              }));
}

TEST(Threads, XBaseTables)
{
    const kd_test::ScopedDirectory directory;
    for (int number = 0; number < threadCount; ++number) {
        directory.write("table" + std::to_string(number) + ".dbf", dbfBytes(number));
    }
    EXPECT_EQ(0, quietFailuresInThreads([&directory](int number) {
                  xBaseTable table;
                  table.Path = directory.path();
                  return table.open("table" + std::to_string(number)) && table.getFieldList() && table.firstRecord() &&
                         walked(table) == expectedWalk(number);
              }));
}

TEST(Threads, OneFileReadByTablesOfAllThreads)
{
    const kd_test::ScopedDirectory directory;
    directory.write("shared.dbf", dbfBytes(7));
    EXPECT_EQ(0, quietFailuresInThreads([&directory](int) {
                  xBaseTable table;
                  table.Path = directory.path();
                  return table.open("shared") && table.getFieldList() && table.firstRecord() &&
                         walked(table) == expectedWalk(7);
              }));
}

TEST(Threads, Converters)
{
    const kd_test::ScopedDirectory directory;
    for (int number = 0; number < threadCount; ++number) {
        directory.write("table" + std::to_string(number) + ".dbf", dbfBytes(number));
    }
    const auto convert = [&directory](int number) {
        xBase2Sql converter;
        converter.Path = directory.path();
        converter.Name = "table" + std::to_string(number);
        converter.convert();
        const std::string script = kd_test::readFile(directory.file("table" + std::to_string(number) + ".sql"));
        return std::count(script.begin(), script.end(), ';') == 5 &&
               script.find("'" + cell(number, 3, 2) + "'") != std::string::npos;
    };
    EXPECT_EQ(0, quietFailuresInThreads(convert));
}

TEST(Threads, SeparateDatabasesInMemory)
{
    EXPECT_EQ(0, failuresInThreads([](int number) {
                  SQLite3 db;
                  const bool filled = db.openDatabase(":memory:", true, "") && db.execute("CREATE TABLE t (v)") &&
                                      db.execute("INSERT INTO t VALUES ('" + cell(number, 1, 1) + "')") &&
                                      db.prepare("INSERT INTO t VALUES (:v)") && db.bind(1, cell(number, 2, 1)) &&
                                      db.execute();
                  const bool fetched =
                      filled && db.getRecords("t") == 2 && db.query("SELECT v FROM t ORDER BY v DESC") && db.fetchRow();
                  const bool same = fetched && db.queryColumns.getData(0) == cell(number, 2, 1);
                  return db.finalize() && db.disconnect() && same;
              }));
}
