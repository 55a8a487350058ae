#include "support/console_capture.h"
#include "support/sql_fake.h"
#include "support/sql_slot.h"

#include <kd_lib/sqldatabase.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

using kd_lib::FIELD_TYPE;
using kd_lib::SqlDatabase;
using kd_test::captured;
using kd_test::Console;
using kd_test::FakeSqlDatabase;
using Texts = std::vector<std::string>;

namespace {

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

TEST(SqlDatabase, VirtualOperationsAreInTheirSlots)
{
    kd_test::expectSqlSlots<SqlDatabase>();
}

TEST(SqlDatabase, OperationsThatAreNotOverriddenAreThoseOfTheBase)
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
    EXPECT_EQ("", database.database) << "the assignment of the base class is replaced";
}

TEST(SqlDatabase, CreateDatabaseExecutesCreateDatabaseWithTheNameInBackquotes)
{
    FakeSqlDatabase database;
    EXPECT_TRUE(database.createDatabase("shop"));
    EXPECT_EQ(Texts{"CREATE DATABASE `shop`"}, database.Executed);
    EXPECT_EQ("", database.database);
}

TEST(SqlDatabase, UseDatabaseAndCreateDatabaseReturnTheResultOfTheStatement)
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

TEST(SqlDatabase, IsAttachedListsTheSchemasAgainAndLooksForTheWholeName)
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

TEST(SqlDatabase, IsAttachedReturnsFalseIfTheListFails)
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

TEST_P(SqlDatabaseTypeText, IsMappedByTheFirstRuleThatApplies)
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

TEST(SqlDatabase, ClearResultsEmptiesTheResultAndReturnsTrue)
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

TEST(SqlDatabaseCount, IsZeroIfNoCountCouldBeFetched)
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

TEST(SqlDatabaseCount, TakesTheValueEvenIfTheFetchFails)
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

TEST(SqlDatabaseCount, PassesTheStandardExceptionOfATextThatIsNotANumber)
{
    FakeSqlDatabase database;
    database.Columns = {"count"};
    database.Result = {{"many"}};
    EXPECT_THROW(database.getRecords("t"), std::invalid_argument);
    database.Result = {{"9223372036854775808"}};
    EXPECT_THROW(database.getRecords("t"), std::out_of_range);
}

}  // namespace
