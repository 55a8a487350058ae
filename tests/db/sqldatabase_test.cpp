#include "support/console_capture.h"
#include "support/scoped_directory.h"
#include "support/sql_fake.h"
#include "support/sql_rights.h"
#include "support/sql_slot.h"

#include <kd_lib/sqldatabase.h>
#include <kd_lib/sqliteconnection.h>
#include <kd_lib/text.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <type_traits>
#include <unistd.h>
#include <vector>

namespace {

using kd_lib::FIELD_TYPE;
using kd_lib::SqlDatabase;
using kd_lib::SQLite3;
using kd_test::captured;
using kd_test::Console;
using kd_test::FakeSqlDatabase;
using kd_test::Paged;
using kd_test::paged;
using kd_test::restartRowCounter;
using kd_test::ScopedDirectory;
using Texts = std::vector<std::string>;

static_assert(std::is_abstract_v<SqlDatabase>);
static_assert(!std::is_copy_constructible_v<SqlDatabase>);
static_assert(std::is_base_of_v<kd_lib::Database<kd_lib::DatabaseTable>, SqlDatabase>);

// Settings and members

TEST(SqlDatabase, NewObjectHasTheInitialValues)
{
    const FakeSqlDatabase database;
    EXPECT_EQ(0U, database.rowsFetched);
    EXPECT_EQ(0U, database.resultRows);
    EXPECT_TRUE(database.databaseList.empty());
    EXPECT_EQ(0U, database.queryColumns.size());
    EXPECT_FALSE(database.queryColumns.CaseSensitive);
    EXPECT_EQ("", database.errorText);
    EXPECT_EQ(25U, database.pageRows);
    EXPECT_FALSE(database.inTransaction);
    EXPECT_EQ("", database.engine);
    EXPECT_EQ("localhost", database.host);
    EXPECT_EQ("anonymous", database.user);
    EXPECT_EQ("", database.password);
    EXPECT_EQ("", database.database);
    EXPECT_TRUE(database.tableList.empty());
}

TEST(SqlDatabase, MembersHaveTheirTypes)
{
    EXPECT_TRUE((std::is_same_v<decltype(SqlDatabase::rowsFetched), std::uint64_t>));
    EXPECT_TRUE((std::is_same_v<decltype(SqlDatabase::resultRows), std::uint64_t>));
    EXPECT_TRUE((std::is_same_v<decltype(SqlDatabase::columnCount), std::int32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(SqlDatabase::pageRows), std::uint64_t>));
}

TEST(SqlDatabase, VirtualOperationsStandInTheirSlots)
{
    kd_test::expectSqlSlots<SqlDatabase>();
}

TEST(SqlDatabase, FrameOperationsThatAreNotOverriddenStayThoseOfTheFrame)
{
    FakeSqlDatabase database;
    database.engine = "e";
    EXPECT_TRUE(database.isConnected());
    EXPECT_TRUE(database.isDisconnected());
    EXPECT_TRUE(database.connect());
    EXPECT_TRUE(database.connect("h", "u", "p", "d"));
    EXPECT_EQ("d", database.database);
    database.linkTable("t");
    EXPECT_TRUE(database.disconnect());
    EXPECT_EQ("localhost", database.host);
    EXPECT_EQ("", database.engine);
    EXPECT_TRUE(database.tableList.empty());
    EXPECT_TRUE(database.Executed.empty());
}

TEST(SqlDatabase, UseDatabaseExecutesUseWithTheNameInBackquotes)
{
    FakeSqlDatabase database;
    EXPECT_TRUE(database.useDatabase("shop"));
    EXPECT_EQ(Texts{"USE `shop`"}, database.Executed);
    EXPECT_EQ("", database.database) << "the frame's assignment is replaced";
}

TEST(SqlDatabase, CreateDatabaseExecutesCreateDatabaseWithTheNameInBackquotes)
{
    FakeSqlDatabase database;
    EXPECT_TRUE(database.createDatabase("shop"));
    EXPECT_EQ(Texts{"CREATE DATABASE `shop`"}, database.Executed);
    EXPECT_EQ("", database.database);
}

TEST(SqlDatabase, UseDatabaseAndCreateDatabaseAnswerWhatTheStatementAnswers)
{
    FakeSqlDatabase database;
    database.Failing = {"USE `x`", "CREATE DATABASE `y`"};
    EXPECT_FALSE(database.useDatabase("x"));
    EXPECT_FALSE(database.createDatabase("y"));
}

TEST(SqlDatabase, DeliberatelyDatabaseNamesAreNotEscaped)
{
    FakeSqlDatabase database;
    database.useDatabase("a`b");
    database.createDatabase("c`; d");
    EXPECT_EQ((Texts{"USE `a`b`", "CREATE DATABASE `c`; d`"}), database.Executed);
}

// Transactions

TEST(SqlDatabaseTransaction, StatementsAreSentUnderOneFlag)
{
    FakeSqlDatabase database;
    database.beginTransaction();
    EXPECT_TRUE(database.inTransaction);
    database.endTransaction();
    EXPECT_FALSE(database.inTransaction);
    database.beginTransaction();
    EXPECT_TRUE(database.inTransaction);
    database.rollback();
    EXPECT_FALSE(database.inTransaction);
    EXPECT_EQ((Texts{"BEGIN TRANSACTION", "END TRANSACTION", "BEGIN TRANSACTION", "ROLLBACK TRANSACTION"}),
              database.Executed);
}

TEST(SqlDatabaseTransaction, SecondBeginSendsNothing)
{
    FakeSqlDatabase database;
    database.beginTransaction();
    database.beginTransaction();
    EXPECT_EQ(Texts{"BEGIN TRANSACTION"}, database.Executed);
    EXPECT_TRUE(database.inTransaction);
}

TEST(SqlDatabaseTransaction, EndAndRollbackWithoutABeginSendNothing)
{
    FakeSqlDatabase database;
    database.endTransaction();
    database.rollback();
    EXPECT_TRUE(database.Executed.empty());
    EXPECT_FALSE(database.inTransaction);
}

TEST(SqlDatabaseTransaction, DeliberatelyAFailedBeginSetsTheFlag)
{
    FakeSqlDatabase database;
    database.Failing = {"BEGIN TRANSACTION"};
    database.beginTransaction();
    EXPECT_TRUE(database.inTransaction);
}

TEST(SqlDatabaseTransaction, FailedEndClearsTheFlag)
{
    FakeSqlDatabase database;
    database.Failing = {"END TRANSACTION"};
    database.beginTransaction();
    database.endTransaction();
    EXPECT_FALSE(database.inTransaction);
}

TEST(SqlDatabaseTransaction, FlagIsChangedAfterBeginAndEndAreSent)
{
    FakeSqlDatabase database;
    database.beginTransaction();
    EXPECT_FALSE(database.FlagWhileExecuting);
    database.endTransaction();
    EXPECT_TRUE(database.FlagWhileExecuting) << "so a back end whose END fails can roll back";
}

TEST(SqlDatabaseTransaction, FailedRollbackEndsWithTheFlagFalseAndNeverCallsItself)
{
    FakeSqlDatabase database;
    database.Failing = {"ROLLBACK TRANSACTION"};
    database.RollsBackOnFailure = true;
    database.beginTransaction();
    database.rollback();
    EXPECT_FALSE(database.inTransaction);
    EXPECT_EQ((Texts{"BEGIN TRANSACTION", "ROLLBACK TRANSACTION"}), database.Executed);
}

// Schemas

TEST(SqlDatabase, AddDatabaseAppends)
{
    FakeSqlDatabase database;
    database.addDatabase("one");
    database.addDatabase("two");
    database.addDatabase("one");
    EXPECT_EQ((Texts{"one", "two", "one"}), database.databaseList);
}

TEST(SqlDatabase, IsAttachedListsTheSchemasAnewAndLooksForTheWholeName)
{
    FakeSqlDatabase database;
    database.addDatabase("old");
    database.Schemas = {"main", "archive"};
    EXPECT_TRUE(database.isAttached("main"));
    EXPECT_TRUE(database.isAttached("archive"));
    EXPECT_FALSE(database.isAttached("old"));
    EXPECT_FALSE(database.isAttached("arch"));
    EXPECT_FALSE(database.isAttached("MAIN"));
    EXPECT_FALSE(database.isAttached(""));
    EXPECT_EQ((Texts{"main", "archive"}), database.databaseList);
}

TEST(SqlDatabase, IsAttachedIsFalseWhenTheListFails)
{
    FakeSqlDatabase database;
    database.Schemas = {"main"};
    database.ListsDatabases = false;
    EXPECT_FALSE(database.isAttached("main"));
}

// Type texts

struct TypeText {
    const char* Text;
    int Code;
    const char* Name;
};

void PrintTo(const TypeText& type, std::ostream* out)
{
    *out << '"' << type.Text << '"';
}

class SqlDatabaseTypeText : public testing::TestWithParam<TypeText> {};

TEST_P(SqlDatabaseTypeText, IsMappedByTheFirstRuleThatHolds)
{
    FakeSqlDatabase database;
    const FIELD_TYPE type = database.convertSql2FieldType(GetParam().Text);
    EXPECT_EQ(GetParam().Code, static_cast<int>(type));
    EXPECT_EQ(GetParam().Name, kd_lib::getFieldTypeName(type));
}

INSTANTIATE_TEST_SUITE_P(Steps, SqlDatabaseTypeText,
                         testing::Values(TypeText{"SMALLINT", 4, "smallint"}, TypeText{"INT", 5, "integer"},
                                         TypeText{"INTEGER", 5, "integer"}, TypeText{"DEC", 2, "decimal"},
                                         TypeText{"xDECx", 2, "decimal"}, TypeText{"NUM", 2, "decimal"},
                                         TypeText{"xNUMx", 2, "decimal"}, TypeText{"FLOAT", 3, "float"},
                                         TypeText{"xFLOATx", 3, "float"}, TypeText{"CHARACTER(", 10, "char"},
                                         TypeText{"xCHARACTER(12)", 10, "char"},
                                         TypeText{"CHARACTER VARYING", 11, "varchar"}, TypeText{"BLOB", 14, "blob"},
                                         TypeText{"DATE", 7, "date"}, TypeText{"TIME", 8, "time"},
                                         TypeText{"TIMESTAMP", 9, "timestamp"}, TypeText{"BOOLEAN", 1, "boolean"}));

INSTANTIATE_TEST_SUITE_P(Order, SqlDatabaseTypeText,
                         testing::Values(TypeText{"DEC NUM FLOAT CHARACTER(", 2, "decimal"},
                                         TypeText{"FLOAT NUM", 2, "decimal"}, TypeText{"CHARACTER( FLOAT", 3, "float"},
                                         TypeText{"CHARACTER(DEC)", 2, "decimal"},
                                         TypeText{"SMALLINT NUM", 2, "decimal"}));

INSTANTIATE_TEST_SUITE_P(Consequences, SqlDatabaseTypeText,
                         testing::Values(TypeText{"DECIMAL(10,2)", 2, "decimal"}, TypeText{"NUMERIC", 2, "decimal"},
                                         TypeText{"NUMERIC(5)", 2, "decimal"}, TypeText{"CHARACTER(12)", 10, "char"},
                                         TypeText{"CHARACTER VARYING(20)", 0, "unknown"},
                                         TypeText{"CHARACTER VARYING(12)", 0, "unknown"},
                                         TypeText{"INT(11)", 0, "unknown"}, TypeText{"BIGINT", 0, "unknown"},
                                         TypeText{"VARCHAR(20)", 0, "unknown"}, TypeText{"TEXT", 0, "unknown"},
                                         TypeText{"BIGINT DEC", 2, "decimal"}, TypeText{"TEXT FLOAT", 3, "float"}));

INSTANTIATE_TEST_SUITE_P(Unknown, SqlDatabaseTypeText,
                         testing::Values(TypeText{"", 0, "unknown"}, TypeText{"integer", 0, "unknown"},
                                         TypeText{"Integer", 0, "unknown"}, TypeText{"decimal", 0, "unknown"},
                                         TypeText{"numeric", 0, "unknown"}, TypeText{"float", 0, "unknown"},
                                         TypeText{"character(3)", 0, "unknown"}, TypeText{" INT", 0, "unknown"},
                                         TypeText{"INT ", 0, "unknown"}, TypeText{"INTEGER(4)", 0, "unknown"},
                                         TypeText{"SMALLINT(2)", 0, "unknown"}, TypeText{"CHARACTER", 0, "unknown"},
                                         TypeText{"CHAR(3)", 0, "unknown"}, TypeText{"CHARACTER (3)", 0, "unknown"},
                                         TypeText{"BLOBS", 0, "unknown"}, TypeText{"DATES", 0, "unknown"},
                                         TypeText{"DATETIME", 0, "unknown"}, TypeText{"TIMES", 0, "unknown"},
                                         TypeText{"TIMESTAMPS", 0, "unknown"}, TypeText{"BOOL", 0, "unknown"}));

// Result

TEST(SqlDatabase, ClearResultsEmptiesTheResultAndAnswersTrue)
{
    FakeSqlDatabase database;
    database.setResult({"a", "b"}, {});
    database.rowsFetched = 7;
    EXPECT_TRUE(database.clearResults());
    EXPECT_EQ(0U, database.queryColumns.size());
    EXPECT_EQ(0U, database.resultRows);
    EXPECT_EQ(7U, database.rowsFetched);
}

TEST(SqlDatabase, ShowQueryColumnsShowsTheFieldList)
{
    FakeSqlDatabase database;
    database.setResult({"Id", "Name"}, {});
    const Console console = captured([&] { database.showQueryColumns(); });
    EXPECT_EQ("Fields:\n0\tid\tunknown\t0\t0\t0\t0\n1\tname\tunknown\t0\t0\t0\t0\n", console.out);
    EXPECT_EQ("", console.err);
}

TEST(SqlDatabaseCount, QueriesTheCountAndFetchesOneRow)
{
    FakeSqlDatabase database;
    database.Columns = {"count"};
    database.Result = {{"4711"}, {"1"}};
    EXPECT_EQ(4711, database.getRecords("Article"));
    EXPECT_EQ(Texts{"SELECT COUNT(*) AS count FROM Article"}, database.Queried);
    EXPECT_EQ(1U, database.Fetched);
    EXPECT_TRUE(database.Executed.empty());
}

TEST(SqlDatabaseCount, TakesTheColumnNamedCount)
{
    FakeSqlDatabase database;
    database.Columns = {"other", "COUNT"};
    database.Result = {{"5", "6"}};
    EXPECT_EQ(6, database.getRecords("t"));
}

TEST(SqlDatabaseCount, HasSixtyFourSignedBits)
{
    FakeSqlDatabase database;
    database.Columns = {"count"};
    database.Result = {{"9223372036854775807"}};
    EXPECT_EQ(std::numeric_limits<std::int64_t>::max(), database.getRecords("t"));
    database.Result = {{"-12"}};
    EXPECT_EQ(-12, database.getRecords("t"));
}

TEST(SqlDatabaseCount, IsZeroWhereNoCountCouldBeFetched)
{
    FakeSqlDatabase database;
    database.Columns = {"count"};
    database.Failing = {"SELECT COUNT(*) AS count FROM failing"};
    database.Result = {{"3"}};
    EXPECT_EQ(0, database.getRecords("failing"));
    EXPECT_EQ(0U, database.Fetched);
    database.Result = {};
    EXPECT_EQ(0, database.getRecords("without a row"));
    database.Result = {{""}};
    EXPECT_EQ(0, database.getRecords("with NULL"));
    database.Columns = {"number"};
    database.Result = {{"3"}};
    EXPECT_EQ(0, database.getRecords("without the column"));
}

TEST(SqlDatabaseCount, TakesTheValueWhateverTheFetchAnswers)
{
    class Silent : public FakeSqlDatabase {
    public:
        bool fetchRow() override
        {
            FakeSqlDatabase::fetchRow();
            return false;
        }
    };
    Silent database;
    database.Columns = {"count"};
    database.Result = {{"7"}};
    EXPECT_EQ(7, database.getRecords("t"));
}

TEST(SqlDatabaseCount, PassesTheStandardExceptionOfATextThatIsNoNumber)
{
    FakeSqlDatabase database;
    database.Columns = {"count"};
    database.Result = {{"many"}};
    EXPECT_THROW(database.getRecords("t"), std::invalid_argument);
    database.Result = {{"9223372036854775808"}};
    EXPECT_THROW(database.getRecords("t"), std::out_of_range);
}

// Printing

/// A result with columns of these lengths.
void setLengths(FakeSqlDatabase& database, const std::vector<int>& lengths)
{
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        database.queryColumns.get(i)->Length = lengths[i];
    }
}

/// Rows of distinct values: r1c1, r1c2 and so on.
FakeSqlDatabase::Rows distinctRows(std::size_t rows, std::size_t columns)
{
    FakeSqlDatabase::Rows result(rows);
    for (std::size_t row = 1; row <= rows; ++row) {
        for (std::size_t column = 1; column <= columns; ++column) {
            std::string& value = result[row - 1].emplace_back("r");
            value.append(std::to_string(row)).append("c").append(std::to_string(column));
        }
    }
    return result;
}

/// The first `count` rows as they are printed.
std::string printed(const FakeSqlDatabase::Rows& rows, std::size_t count)
{
    std::string text;
    for (std::size_t row = 0; row < count; ++row) {
        for (std::size_t column = 0; column < rows[row].size(); ++column) {
            text += (column > 0 ? " " : "") + rows[row][column];
        }
        text += '\n';
    }
    return text;
}

class SqlDatabasePrinting : public testing::Test {
protected:
    void SetUp() override { restartRowCounter(); }

    FakeSqlDatabase Database;
};

TEST_F(SqlDatabasePrinting, HeaderPadsTheNamesAndRulesBelowAnEmptyLine)
{
    Database.setResult({"a", "b"}, {});
    setLengths(Database, {5, 3});
    bool answer = false;
    const Console console = captured([&] { answer = Database.printHeader(); });
    EXPECT_EQ("    a   b\n\n----------", console.out);
    EXPECT_EQ("", console.err);
    EXPECT_TRUE(answer);
}

TEST_F(SqlDatabasePrinting, HeaderWithoutLengthsHasNoRule)
{
    Database.setResult({"one", "two", "three"}, {});
    EXPECT_EQ("one two three\n", captured([&] { Database.printHeader(); }).out);
}

TEST_F(SqlDatabasePrinting, HeaderLeavesColumnsOfLengthZeroOutOfTheRule)
{
    Database.setResult({"one", "two", "three"}, {});
    setLengths(Database, {0, 4, 0});
    EXPECT_EQ("one  two three\n\n-----", captured([&] { Database.printHeader(); }).out);
}

TEST_F(SqlDatabasePrinting, HeaderTreatsANegativeLengthAsNone)
{
    Database.setResult({"one", "two"}, {});
    setLengths(Database, {-4, 0});
    EXPECT_EQ("one two\n", captured([&] { Database.printHeader(); }).out);
}

TEST_F(SqlDatabasePrinting, HeaderKeepsANameLongerThanItsLength)
{
    Database.setResult({"surname"}, {});
    setLengths(Database, {3});
    EXPECT_EQ("surname\n\n----", captured([&] { Database.printHeader(); }).out);
}

TEST_F(SqlDatabasePrinting, HeaderOfNoColumnsIsNothing)
{
    bool answer = false;
    EXPECT_EQ("", captured([&] { answer = Database.printHeader(); }).out);
    EXPECT_TRUE(answer);
}

TEST_F(SqlDatabasePrinting, RowPadsTheValuesOfColumnsWithALength)
{
    Database.setResult({"a", "b", "c"}, {});
    setLengths(Database, {5, 3, 0});
    Database.queryColumns.get(0UL)->Value = "x1";
    Database.queryColumns.get(1UL)->Value = "longer";
    Database.queryColumns.get(2UL)->Value = "plain";
    bool answer = false;
    const Console console = captured([&] { answer = Database.processRow(); });
    EXPECT_EQ("   x1 longer plain\n", console.out);
    EXPECT_EQ("", console.err);
    EXPECT_TRUE(answer);
}

TEST_F(SqlDatabasePrinting, RowOfEmptyValuesKeepsItsSeparators)
{
    Database.setResult({"a", "b", "c"}, {});
    EXPECT_EQ("  \n", captured([&] { Database.processRow(); }).out);
}

TEST_F(SqlDatabasePrinting, RowPadsAnEmptyValueOfLengthOneWithOneBlank)
{
    Database.setResult({"a", "b"}, {});
    setLengths(Database, {1, 0});
    EXPECT_EQ("  \n", captured([&] { Database.processRow(); }).out);
}

TEST_F(SqlDatabasePrinting, RowOfNoColumnsIsNothing)
{
    bool answer = false;
    EXPECT_EQ("", captured([&] { answer = Database.processRow(); }).out);
    EXPECT_TRUE(answer);
}

TEST_F(SqlDatabasePrinting, RowPassesControlAndZeroBytesAsTheyAre)
{
    Database.setResult({"a"}, {});
    const std::string bytes("\x01\x1b[0m\0\xff", 7);
    Database.queryColumns.get(0UL)->Value = bytes;
    EXPECT_EQ(bytes + "\n", captured([&] { Database.processRow(); }).out);
}

TEST_F(SqlDatabasePrinting, DeliberatelyPagingCountsValuesNotRows)
{
    struct Case {
        std::size_t Columns;
        std::size_t RowsBeforeTheQuestion;
    };
    for (const Case& shape : {Case{1, 26}, Case{2, 13}, Case{3, 9}, Case{5, 6}, Case{25, 2}, Case{26, 1}}) {
        SCOPED_TRACE(shape.Columns);
        restartRowCounter();
        const auto rows = distinctRows(30, shape.Columns);
        Database.setResult(Texts(shape.Columns, "c"), rows);
        std::size_t printedRows = 0;
        const Paged result = paged({"q"}, [&] {
            while (Database.fetchRow()) {
                ++printedRows;
                if (!Database.processRow()) {
                    break;
                }
            }
        });
        EXPECT_EQ(shape.RowsBeforeTheQuestion, printedRows);
        EXPECT_EQ(printed(rows, printedRows), result.out);
        EXPECT_EQ(1U, result.asked);
    }
}

TEST_F(SqlDatabasePrinting, MoreIsFirstAskedAfterTheNinthRowOfThreeColumns)
{
    const auto rows = distinctRows(20, 3);
    Database.setResult({"a", "b", "c"}, rows);
    bool answer = false;
    const Paged result = paged({"q", "unread"}, [&] { answer = Database.queryResults(); });
    EXPECT_EQ("a b c\n" + printed(rows, 9), result.out);
    EXPECT_EQ(1U, result.asked);
    EXPECT_TRUE(answer) << "also when stopped";
}

TEST_F(SqlDatabasePrinting, GoingOnRestartsTheCount)
{
    const auto rows = distinctRows(30, 3);
    Database.setResult({"a", "b", "c"}, rows);
    const Paged result = paged({"", "y", "no", "unread"}, [&] { EXPECT_TRUE(Database.queryResults()); });
    EXPECT_EQ("a b c\n" + printed(rows, 27), result.out);
    EXPECT_EQ(3U, result.asked);
}

TEST_F(SqlDatabasePrinting, EndOfInputGoesOn)
{
    const auto rows = distinctRows(30, 3);
    Database.setResult({"a", "b", "c"}, rows);
    const Paged result = paged({}, [&] { EXPECT_TRUE(Database.queryResults()); });
    EXPECT_EQ("a b c\n" + printed(rows, 30), result.out);
}

TEST_F(SqlDatabasePrinting, StoppingKeepsTheCountSoThatTheNextRowAsksAgain)
{
    Database.setResult(Texts(26, "c"), distinctRows(3, 26));
    const Paged result = paged({"q", "q", "go on"}, [&] {
        EXPECT_FALSE(Database.processRow());
        Database.setResult({"a"}, {});
        EXPECT_FALSE(Database.processRow());
        EXPECT_TRUE(Database.processRow());
        EXPECT_TRUE(Database.processRow());
    });
    EXPECT_EQ(3U, result.asked);
}

TEST_F(SqlDatabasePrinting, DeliberatelyAllObjectsShareTheCount)
{
    FakeSqlDatabase other;
    other.setResult({"a", "b", "c"}, distinctRows(5, 3));
    Database.setResult({"d", "e", "f"}, distinctRows(5, 3));
    const Paged result = paged({"q"}, [&] {
        EXPECT_TRUE(other.queryResults());
        EXPECT_TRUE(Database.queryResults());
    });
    EXPECT_EQ("a b c\n" + printed(distinctRows(5, 3), 5) + "d e f\n" + printed(distinctRows(5, 3), 4), result.out);
    EXPECT_EQ(1U, result.asked);
}

TEST_F(SqlDatabasePrinting, CountRunsOnFromOneResultToTheNext)
{
    Database.setResult(Texts(25, "c"), distinctRows(1, 25));
    EXPECT_EQ(0U, paged({"q"}, [&] { EXPECT_TRUE(Database.queryResults()); }).asked);
    Database.setResult({"a"}, {{"x"}, {"y"}});
    const Paged result = paged({"q"}, [&] { EXPECT_TRUE(Database.queryResults()); });
    EXPECT_EQ("a\nx\n", result.out);
    EXPECT_EQ(1U, result.asked);
}

TEST_F(SqlDatabasePrinting, PageRowsIsTheThresholdOfTheObject)
{
    Database.pageRows = 4;
    Database.setResult({"a", "b"}, distinctRows(9, 2));
    const Paged result = paged({"q"}, [&] { EXPECT_TRUE(Database.queryResults()); });
    EXPECT_EQ("a b\n" + printed(distinctRows(9, 2), 3), result.out);
}

TEST_F(SqlDatabasePrinting, QueryResultsWithoutAResultPrintsNothingAndAnswersFalse)
{
    Database.setResult({"a"}, {{"x"}});
    Database.resultRows = 0;
    bool answer = true;
    EXPECT_EQ("", captured([&] { answer = Database.queryResults(); }).out);
    EXPECT_FALSE(answer);
    EXPECT_EQ(0U, Database.Fetched);
}

TEST_F(SqlDatabasePrinting, QueryResultsOfNoRowsPrintsTheHeaderAndAnswersTrue)
{
    Database.setResult({"a", "b"}, {});
    bool answer = false;
    EXPECT_EQ("a b\n", captured([&] { answer = Database.queryResults(); }).out);
    EXPECT_TRUE(answer);
}

// Script import

/// Sets HOME as long as it lives.
class ScopedHome {
public:
    explicit ScopedHome(const std::string& path)
    {
        const char* home = std::getenv("HOME");
        Known = home != nullptr;
        Saved = Known ? home : "";
        ::setenv("HOME", path.c_str(), 1);
    }
    ~ScopedHome() { Known ? ::setenv("HOME", Saved.c_str(), 1) : ::unsetenv("HOME"); }
    ScopedHome(const ScopedHome&) = delete;
    ScopedHome& operator=(const ScopedHome&) = delete;

private:
    std::string Saved;
    bool Known = false;
};

struct Import {
    bool Answer = false;
    Console Printed;
};

/// Runs a script of these bytes.
Import importScript(SqlDatabase& database, const std::string& script)
{
    const ScopedDirectory scratch;
    const std::string path = scratch.write("script.sql", script);
    Import import;
    import.Printed = captured([&] { import.Answer = database.importSqlFile(path);
});
const std::string progress = "Executing SQL file " + path + "\n";
EXPECT_EQ(progress, import.Printed.out.substr(0, progress.size()));
import.Printed.out.erase(0, progress.size());
return import;
}  // namespace

/// The statements that a script is split into.
Texts statementsOf(const std::string& script)
{
    FakeSqlDatabase database;
    const Import import = importScript(database, script);
    EXPECT_FALSE(import.Answer) << "it ran to its end";
    EXPECT_EQ("", import.Printed.out);
    EXPECT_EQ("", import.Printed.err);
    EXPECT_TRUE(database.Queried.empty());
    return database.Executed;
}

struct Script {
    const char* Name;
    std::string Text;
    Texts Statements;
};

void PrintTo(const Script& script, std::ostream* out)
{
    *out << script.Name;
}

class SqlDatabaseScript : public testing::TestWithParam<Script> {};

TEST_P(SqlDatabaseScript, IsSplitIntoItsStatements)
{
    EXPECT_EQ(GetParam().Statements, statementsOf(GetParam().Text));
}

const Script scripts[] = {
    {"CommentWithSemicolonAndQuotedSemicolon",
     "CREATE TABLE t (a TEXT);\n# a comment; with a semicolon\nINSERT INTO t VALUES ('x;y');\n",
     {"CREATE TABLE t (a TEXT);", "INSERT INTO t VALUES ('x;y');"}},
    {"LastStatementWithoutSemicolonIsDropped", "A;\nB;\nC", {"A;", "B;"}},
    {"OnlyStatementWithoutSemicolonIsDropped", "A", {}},
    {"EmptyFile", "", {}},
    {"BlanksOnly", " \t\r\n\v\f", {}},
    {"CommentOnly", "# nothing; here", {}},
    {"SeveralStatementsOnOneLine", "A; B;C;", {"A;", "B;", "C;"}},
    {"EmptyStatementsAreRun", ";;\n;", {";", ";", ";"}},
    {"BlanksAroundAreTrimmed", " \t\r\n\v\f A b \t ; \n B ;", {"A b \t ;", "B ;"}},
    {"LineEndsInsideStay", "A\nB\r\nC;\r\nD;", {"A\nB\r\nC;", "D;"}},
    {"CommentBehindAStatement", "A; # B;\nC;", {"A;", "C;"}},
    {"CommentInsideAStatementGoesWithItsLineEnd", "A 1#comment\nB;", {"A 1B;"}},
    {"HashInsideAComment", "# one # two\nA;", {"A;"}},
    {"QuoteInsideACommentDoesNotCount", "# it's one\nA;B;", {"A;", "B;"}},
    {"HashInsideQuotesIsText", "A '#x';B;", {"A '#x';", "B;"}},
    {"LineEndInsideQuotesIsText", "A '1\n#2;\n3';", {"A '1\n#2;\n3';"}},
    {"DoubledQuoteStaysInQuotes", "A 'it''s; x';B;", {"A 'it''s; x';", "B;"}},
    {"DoubleQuotesProtectNothing", "A \"x;y\";", {"A \"x;", "y\";"}},
    {"BackquotesProtectNothing", "A `x;y`;", {"A `x;", "y`;"}},
    {"DashesStartNoComment", "-- x; y\nA;", {"-- x;", "y\nA;"}},
    {"SlashStarStartsNoComment", "/* x; */A;", {"/* x;", "*/A;"}},
    {"BackslashEscapesNothing", "A '\\';B;", {"A '\\';", "B;"}},
    {"OpenQuoteAtTheEndIsDropped", "A;B 'x;", {"A;"}},
    {"CarriageReturnEndsNoComment", "# x\rA;\nB;", {"B;"}},
    {"ZeroAndHighBytesAreText", std::string("A \0\xff\x01;", 6), {std::string("A \0\xff\x01;", 6)}},
    {"SelectIsExecutedNotQueried", "SELECT 1;select 2;xSELECT 3;", {"SELECT 1;", "select 2;", "xSELECT 3;"}},
};

INSTANTIATE_TEST_SUITE_P(Table, SqlDatabaseScript, testing::ValuesIn(scripts),
                         [](const auto& script) { return std::string(script.param.Name); });

TEST(SqlDatabaseImport, StatementsQuotesAndCommentsMayStraddleEveryBlockBoundary)
{
    constexpr std::size_t block = 65536;
    for (std::size_t lead = block - 14; lead <= block + 2; ++lead) {
        SCOPED_TRACE(lead);
        const std::string start(lead, 'x');
        EXPECT_EQ((Texts{start + "';#'''y;", "z;"}), statementsOf(start + "';#'''y;#c;'\nz;"));
        const std::string blanks(lead, ' ');
        EXPECT_EQ((Texts{"A;", "B;"}), statementsOf(blanks + "A;" + blanks + "\n#;\n" + blanks + "B;" + blanks));
    }
}

/// The rules of a script, one character at a time.
Texts splitOneByOne(const std::string& script)
{
    Texts statements;
    std::string statement;
    bool inComment = false;
    bool inQuote = false;
    for (const char c : script) {
        inComment = inComment || (c == '#' && !inQuote);
        if (inComment) {
            inComment = c != '\n';
            continue;
        }
        statement += c;
        inQuote = inQuote != (c == '\'');
        if (c == ';' && !inQuote) {
            statements.push_back(kd_lib::allTrim(statement));
            statement.clear();
        }
    }
    return statements;
}

TEST(SqlDatabaseImport, RandomScriptsAreSplitAsOneCharacterAtATime)
{
    std::mt19937 random(20240117);
    const std::string characters("';;##\n\n \t\rAb\"`\0\xff", 17);
    for (std::size_t round = 0; round < 300; ++round) {
        // Every third script begins with a quoted text, with blanks or with a word that fills a block.
        const std::string first = round % 3 == 0 ? std::string("'\nx", 3).substr(round / 3 % 3, 1) : "";
        std::string script = first + std::string(first.empty() ? 0 : 65430, round % 2 == 0 ? ' ' : 'y');
        for (int i = 0; i < 200; ++i) {
            script += characters[random() % characters.size()];
        }
        SCOPED_TRACE(testing::PrintToString(script.substr(script.size() - 200)));
        ASSERT_EQ(splitOneByOne(script), statementsOf(script));
    }
}

TEST(SqlDatabaseImport, FileOfExactlyOneBlockIsReadOnce)
{
    const std::string script = std::string(65535, 'x') + ";";
    EXPECT_EQ(Texts{script}, statementsOf(script));
}

TEST(SqlDatabaseImport, DeliberatelyAScriptThatRunsToItsEndAnswersFalse)
{
    FakeSqlDatabase database;
    EXPECT_FALSE(importScript(database, "A;").Answer);
    EXPECT_EQ(Texts{"A;"}, database.Executed);
}

TEST(SqlDatabaseImport, DeliberatelyAScriptThatStopsAtAFailingStatementAnswersTrue)
{
    FakeSqlDatabase database;
    database.Failing = {"B;"};
    const Import import = importScript(database, "A;\nB;\nC;\n");
    EXPECT_TRUE(import.Answer);
    EXPECT_EQ("", import.Printed.out);
    EXPECT_EQ("Error executing statement\n", import.Printed.err);
    EXPECT_EQ((Texts{"A;", "B;"}), database.Executed) << "what ran stays run, the rest is not run";
}

TEST(SqlDatabaseImport, FailingLastByteOfTheFileStillAnswersTrue)
{
    FakeSqlDatabase database;
    database.Failing = {"B;"};
    EXPECT_TRUE(importScript(database, "A;B;").Answer);
}

TEST(SqlDatabaseImport, FailingStatementRollsAnOpenTransactionBack)
{
    FakeSqlDatabase database;
    database.Failing = {"B;"};
    database.beginTransaction();
    EXPECT_TRUE(importScript(database, "A;B;").Answer);
    EXPECT_EQ((Texts{"BEGIN TRANSACTION", "A;", "B;", "ROLLBACK TRANSACTION"}), database.Executed);
    EXPECT_FALSE(database.inTransaction);
    EXPECT_EQ(1U, database.Rollbacks);
}

TEST(SqlDatabaseImport, FailingStatementWithoutATransactionCallsRollbackWhichSendsNothing)
{
    FakeSqlDatabase database;
    database.Failing = {"B;"};
    importScript(database, "A;B;");
    EXPECT_EQ(1U, database.Rollbacks);
    EXPECT_EQ((Texts{"A;", "B;"}), database.Executed);
}

TEST(SqlDatabaseImport, DeliberatelyNoStatementOfAScriptIsQueried)
{
    FakeSqlDatabase database;
    database.Failing = {"SELECT 1;"};
    const Import import = importScript(database, "SELECT 1;");
    EXPECT_TRUE(database.Queried.empty());
    EXPECT_EQ("Error executing statement\n", import.Printed.err);
}

TEST(SqlDatabaseImport, MissingFileIsReportedWithThePathAsPassed)
{
    const ScopedDirectory scratch;
    const ScopedHome home(scratch.path());
    FakeSqlDatabase database;
    for (const std::string& path : {scratch.file("none.sql"), std::string("~/none.sql"), std::string()}) {
        bool answer = true;
        const Console console = captured([&] { answer = database.importSqlFile(path); });
        EXPECT_FALSE(answer);
        EXPECT_EQ("SQL file " + path + " does not exist\n", console.err);
        EXPECT_EQ("", console.out);
    }
    EXPECT_TRUE(database.Executed.empty());
}

TEST(SqlDatabaseImport, PathIsExpandedAndTheExpandedPathReported)
{
    const ScopedDirectory scratch;
    const ScopedHome home(scratch.path());
    const std::string path = scratch.write("script.sql", "A;");
    FakeSqlDatabase database;
    const Console console = captured([&] { database.importSqlFile("~/script.sql"); });
    EXPECT_EQ("Executing SQL file " + path + "\n", console.out);
    EXPECT_EQ("", console.err);
    EXPECT_EQ(Texts{"A;"}, database.Executed);
}

TEST(SqlDatabaseImport, FileThatCannotBeOpenedAnswersFalse)
{
    const ScopedDirectory scratch;
    // A socket exists and cannot be opened as a file, not even by root.
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = scratch.file("socket");
    ASSERT_LT(path.size(), sizeof address.sun_path);
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(0, ::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    FakeSqlDatabase database;
    bool answer = true;
    const Console console = captured([&] { answer = database.importSqlFile(path); });
    ::close(listener);
    EXPECT_FALSE(answer);
    EXPECT_EQ("Executing SQL file " + path + "\n", console.out);
    EXPECT_EQ("", console.err);
}

TEST(SqlDatabaseImport, DirectoryAnswersFalse)
{
    const ScopedDirectory scratch;
    FakeSqlDatabase database;
    bool answer = true;
    const Console console = captured([&] { answer = database.importSqlFile(scratch.path()); });
    EXPECT_FALSE(answer);
    EXPECT_EQ("", console.err);
    EXPECT_TRUE(database.Executed.empty());
}

TEST(SqlDatabaseImportDeathTest, ExistingFileThatMayNotBeReadIsNotReportedAsMissing)
{
    const ScopedDirectory scratch;
    const std::string path = scratch.write("script.sql", "A;");
    std::filesystem::permissions(scratch.path(), std::filesystem::perms::all);
    std::filesystem::permissions(path, std::filesystem::perms::none);
    const auto importWithoutRights = [&path] {
        kd_test::giveUpRights();
        FakeSqlDatabase database;
        const bool answer = database.importSqlFile(path);
        ::_exit(answer || !database.Executed.empty() ? 1 : 0);
    };
    EXPECT_EXIT(importWithoutRights(), testing::ExitedWithCode(0), testing::Matcher<const std::string&>(""));
}

TEST(SqlDatabaseImport, OneVeryLongStatementIsRunWhole)
{
    const std::string statement = "A '" + std::string(10'000'000, 'x') + "';";
    const Texts statements = statementsOf("# first\n" + statement + "\nB;");
    ASSERT_EQ(2U, statements.size());
    EXPECT_TRUE(statement == statements[0]);
    EXPECT_EQ("B;", statements[1]);
}

TEST(SqlDatabaseImport, MillionEmptyStatementsAreRunOneByOne)
{
    const Texts statements = statementsOf(std::string(1'000'000, ';'));
    EXPECT_EQ(1'000'000U, statements.size());
    EXPECT_EQ(";", statements.back());
}

// Script import into SQLite

class SqlDatabaseSqliteImport : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(Database.createDatabase(":memory:")); }

    /// The values of the first row of a query, joined by commas.
    std::string row(const std::string& sql)
    {
        EXPECT_TRUE(Database.query(sql));
        EXPECT_TRUE(Database.fetchRow());
        std::string values;
        for (const kd_lib::TableField& field : Database.queryColumns) {
            values += (values.empty() ? "" : ",") + field.Value;
        }
        Database.finalize();
        return values;
    }

    SQLite3 Database;
};

TEST_F(SqlDatabaseSqliteImport, ScriptRunsToItsEnd)
{
    const Import import = importScript(Database, "CREATE TABLE t (a TEXT, b INTEGER);\n# one; comment\n"
                                                 "INSERT INTO `t` VALUES ('x;y', 1);\nINSERT INTO t VALUES ('z', 2)");
    EXPECT_FALSE(import.Answer);
    EXPECT_EQ("", import.Printed.out);
    EXPECT_EQ("", import.Printed.err);
    EXPECT_EQ("x;y,1,1", row("SELECT a, b, (SELECT count(*) FROM t) FROM t")) << "the last INSERT has no semicolon";
}

TEST_F(SqlDatabaseSqliteImport, DeliberatelyASelectWithARowFails)
{
    const Import import = importScript(Database, "CREATE TABLE t (a);\nSELECT 1;\nINSERT INTO t VALUES (1);\n");
    EXPECT_TRUE(import.Answer);
    EXPECT_EQ("another row available [#100]\n", import.Printed.out);
    EXPECT_EQ("Error executing statement\n", import.Printed.err);
    EXPECT_EQ(0, Database.getRecords("t"));
}

TEST_F(SqlDatabaseSqliteImport, SelectWithoutARowPasses)
{
    const Import import = importScript(Database, "CREATE TABLE t (a);\nSELECT a FROM t;\nINSERT INTO t VALUES (1);\n");
    EXPECT_FALSE(import.Answer);
    EXPECT_EQ("", import.Printed.err);
    EXPECT_EQ(1, Database.getRecords("t"));
}

TEST_F(SqlDatabaseSqliteImport, FailureOutsideATransactionKeepsWhatRan)
{
    const Import import = importScript(Database, "CREATE TABLE t (a);\nINSERT INTO t VALUES (1);\n"
                                                 "INSERT INTO u VALUES (2);\nINSERT INTO t VALUES (3);");
    EXPECT_TRUE(import.Answer);
    EXPECT_EQ("no such table: u [#1]\n", import.Printed.out);
    EXPECT_EQ("Error executing statement\n", import.Printed.err);
    EXPECT_EQ("no such table: u [#1]", Database.errorText);
    EXPECT_EQ("1,1", row("SELECT count(*), max(a) FROM t"));
}

TEST_F(SqlDatabaseSqliteImport, FailureInsideATransactionRollsBackAndKeepsTheReason)
{
    struct Case {
        const char* Failing;
        const char* Reason;
    };
    Database.execute("CREATE TABLE t (a UNIQUE)");
    for (const Case& script : {Case{"INSERT INTO u VALUES (2);", "no such table: u [#1]"},
                               Case{"INSERT INTO t VALUES (1);", "UNIQUE constraint failed: t.a [#19]"}}) {
        SCOPED_TRACE(script.Failing);
        Database.beginTransaction();
        const Import import = importScript(Database, std::string("INSERT INTO t VALUES (1);\n") + script.Failing);
        EXPECT_TRUE(import.Answer);
        EXPECT_EQ(script.Reason + std::string("\n"), import.Printed.out);
        EXPECT_EQ("Error executing statement\n", import.Printed.err);
        EXPECT_FALSE(Database.inTransaction);
        EXPECT_EQ(script.Reason, Database.errorText);
        EXPECT_EQ(0, Database.getRecords("t"));
    }
}

TEST_F(SqlDatabaseSqliteImport, TransactionThatTheScriptBeganItselfIsNotRolledBack)
{
    importScript(Database, "CREATE TABLE t (a);BEGIN;INSERT INTO t VALUES (1);INSERT INTO u VALUES (2);COMMIT;");
    EXPECT_FALSE(Database.inTransaction);
    EXPECT_EQ(1, Database.getRecords("t")) << "the script's own transaction is still open";
    EXPECT_TRUE(Database.execute("ROLLBACK"));
    EXPECT_EQ(0, Database.getRecords("t"));
}

TEST_F(SqlDatabaseSqliteImport, EmptyStatementStopsTheScriptWithoutAReason)
{
    const Import import = importScript(Database, std::string(1'000'000, ';'));
    EXPECT_TRUE(import.Answer);
    EXPECT_EQ("", import.Printed.out);
    EXPECT_EQ("Error executing statement\n", import.Printed.err);
    EXPECT_EQ("", Database.errorText);
}

TEST_F(SqlDatabaseSqliteImport, OneVeryLongStatementIsStoredWhole)
{
    const Import import = importScript(Database, "CREATE TABLE t (a TEXT);\nINSERT INTO t VALUES ('" +
                                                     std::string(10'000'000, 'x') + ";');\n");
    EXPECT_FALSE(import.Answer);
    EXPECT_EQ("", import.Printed.err);
    EXPECT_EQ("10000001,;", row("SELECT length(a), substr(a, -1) FROM t"));
}

TEST_F(SqlDatabaseSqliteImport, ScriptOfManyStatementsIsOneCurrentStatement)
{
    std::string script = "CREATE TABLE t (a INTEGER);\nBEGIN;\n";
    for (int i = 1; i <= 20'000; ++i) {
        script += "INSERT INTO t VALUES (" + std::to_string(i) + ");\n";
    }
    EXPECT_FALSE(importScript(Database, script + "COMMIT;\n").Answer);
    EXPECT_EQ("20000,200010000", row("SELECT count(*), sum(a) FROM t"));
}

}  // namespace
