#include <kd_lib/sqlkeyword.h>

#include <kd_lib/console.h>
#include <kd_lib/tablefields.h>

#include "support/console_capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

using namespace std::string_literals;
using kd_lib::SqlKeyword;
using kd_lib::TableField;
using kd_lib::TableFields;
using kd_lib::vector_key;

static_assert(!std::is_polymorphic_v<SqlKeyword>);

namespace {

/// The words of one initial letter, in byte order.
struct Group {
    char initial;
    std::size_t count;
    const char* words;
};

const std::vector<Group> groups = {
    {'A', 30,
     "ABORT ABS ABSOLUTE ACCESIBLE ACTION ADD ADMIN AFTER AGGREGATE ALIAS ALL ALLOCATE ALTER ANALYSE "
     "ANALYZE AND ANY ARE ARRAY AS ASC ASENSITIVE ASSERTION ASYMMETRIC AT ATOMIC ATTACH AUTHORIZATION "
     "AUTOINCREMENT AVG"},
    {'B', 14,
     "BEFORE BEGIN BEGIN_FRAME BEGIN_PARTITION BETWEEN BIGINT BINARY BIT BIT_LENGTH BLOB BOOLEAN BOTH "
     "BREADTH BY"},
    {'C', 57,
     "CALL CALLED CARDINALITY CASCADE CASCADED CASE CAST CATALOG CEIL CEILING CHANGE CHAR CHARACTER "
     "CHARACTER_LENGTH CHAR_LENGTH CHECK CLOSE COALESCE COLLATE COLLATION COLLECT COLUMN COMMIT COMPLETION "
     "CONCURRENTLY CONDITION CONFLICT CONNECT CONNECTION CONSTRAINT CONSTRAINTS CONSTRUCTOR CONTAINS "
     "CONTINUE CONVERT CORR CORRESPONDING COUNT COVAR_POP CREATE CROSS CUBE CUME_DIST CURRENT "
     "CURRENT_CATALOG CURRENT_DATE CURRENT_DEFAULT_TRANSFORM_GROUP CURRENT_PATH CURRENT_ROLE CURRENT_ROW "
     "CURRENT_SCHEMA CURRENT_TIME CURRENT_TIMESTAMP CURRENT_TRANSFORM_GROUP_FOR_TYPE CURRENT_USER CURSOR "
     "CYCLE"},
    {'D', 39,
     "DATABASE DATABASES DATALINK DATE DAY DAY_HOUR DAY_MICROSECOND DAY_MINUTE DAY_SECOND DEALLOCATE DEC "
     "DECIMAL DECLARE DEFAULT DEFERRABLE DEFERRED DELAYED DELETE DENSE_RANK DEPTH DEREF DESC DESCRIBE "
     "DESCRIPTOR DESTROY DESTRUCTOR DETACH DETERMINISTIC DIAGNOSTICS DICTIONARY DISTINCT DISTINCTROW DIV "
     "DO DOMAIN DOUBLE DROP DUAL DYNAMIC"},
    {'E', 22,
     "EACH ELEMENT ELSE ELSEIF ENCLOSED END END-EXEC EQUALS ESCAPE ESCAPED EVERY EXCEPT EXCEPTION "
     "EXCLUSIVE EXEC EXECUTE EXISTS EXIT EXP EXPLAIN EXTERNAL EXTRACT"},
    {'F', 20,
     "FAIL FALSE FETCH FILTER FLOAT FLOAT4 FLOAT8 FLOOR FOR FORCE FOREIGN FOUND FRAMEROW FREE FREEZE FROM "
     "FULL FULLTEXT FUNCTION FUSION"},
    {'G', 9, "GENERAL GET GLOB GLOBAL GO GOTO GRANT GROUP GROUPING"},
    {'H', 8, "HAVING HIGH_PRIORITY HOLD HOST HOUR HOUR_MICROSECOND HOUR_MINUTE HOUR_SECOND"},
    {'I', 32,
     "IDENTITY IF IGNORE ILIKE IMMEDIATE IN INDEX INDEXED INDICATOR INFILE INITIALIZE INITIALLY INNER "
     "INOUT INPUT INSENSITIVE INSERT INT INT1 INT2 INT3 INT4 INT8 INTEGER INTERSECT INTERSECTION INTERVAL "
     "INTO IS ISNULL ISOLATION ITERATE"},
    {'J', 1, "JOIN"},
    {'K', 3, "KEY KEYS KILL"},
    {'L', 25,
     "LANGUAGE LARGE LAST LATERAL LEADING LEAVE LEFT LESS LIKE LIMIT LINEAR LINES LN LOAD LOCAL LOCALTIME "
     "LOCALTIMESTAMP LOCATOR LOCK LONG LONGBLOB LONGTEXT LOOP LOWER LOW_PRIORITY"},
    {'M', 22,
     "MAP MASTER_SSL_VERIFY_SERVER_CERT MATCH MAX MAXVALUE MEDIUMBLOB MEDIUMINT MEDIUMTEXT MEMBER MERGE "
     "METHOD MIDDLEINT MIN MINUTE MINUTE_MICROSECOND MINUTE_SECOND MOD MODIFIES MODIFY MODULE MONTH "
     "MULTISET"},
    {'N', 16,
     "NAMES NATIONAL NATURAL NCHAR NCLOB NEW NEXT NO NONE NORMALIZE NOT NOTNULL NO_WRITE_TO_BINLOG NULL "
     "NULLIF NUMERIC"},
    {'O', 22,
     "OBJECT OF OFF OFFSET OLD ON ONLY OPEN OPERATION OPTIMIZE OPTION OPTIONALLY OR ORDER ORDINALITY OUT "
     "OUTER OUTFILE OUTPUT OVER OVERLAPS OVERLAY"},
    {'P', 26,
     "PAD PARAMETER PARAMETERS PARTIAL PARTITION PATH PERCENTILE_CONT PERCENTILE_DISC PERCENT_RANK PLACING "
     "PLAN POSITION POSTFIX POWER PRAGMA PRECISION PREFIX PREORDER PREPARE PRESERVE PRIMARY PRIOR "
     "PRIVILEGES PROCEDURE PUBLIC PURGE"},
    {'Q', 1, "QUERY"},
    {'R', 42,
     "RAID0 RAISE RANGE RANK READ READS REAL RECURSIVE REF REFERENCES REFERENCING REGEXP REGR_AVGX "
     "REGR_AVGY REGR_COUNT REGR_INTERCEPT REGR_R2 REGR_SLOPE REGR_SXX REGR_SYY REINDEX RELEASE RENAME "
     "REPEAT REPLACE REQUIRE RESIGNAL RESTRICT RESULT RETURN RETURNING RETURNS REVOKE RIGHT RLIKE ROLE "
     "ROLLBACK ROLLUP ROUTINE ROW ROWS ROW_NUMBER"},
    {'S', 55,
     "SAVEPOINT SAVE_POINT SCHEMA SCHEMAS SCOPE SCROLL SEARCH SECOND SECOND_MICROSECOND SECTION SELECT "
     "SENSITIVE SEPARATOR SEQUENCE SESSION SESSION_USER SET SETS SHOW SIGNAL SIMILAR SIZE SMALLINT SOME "
     "SONAME SPACE SPATIAL SPECIFIC SPECIFICTYPE SQL SQLCODE SQLERROR SQLEXCEPTION SQLSTATE SQLWARNING "
     "SQL_BIG_RESULT SQL_CALC_FOUND_ROWS SQL_SMALL_RESULT SQRT SSL START STARTING STATE STATEMENT STATIC "
     "STDEV_POP STDEV_SAMP STRAIGHT_JOIN STRUCTURE SUBMULTISET SUBSTRING SUM SYMMETRIC SYSTEM SYSTEM_USER"},
    {'T', 25,
     "TABLE TABLES TABLESAMPLE TEMP TEMPORARY TERMINATE TERMINATED THAN THEN TIME TIMESTAMP TIMEZONE_HOUR "
     "TIMEZONE_MINUTE TINYBLOB TINYINT TINYTEXT TO TRAILING TRANSACTION TRANSLATE TRANSLATION TREAT "
     "TRIGGER TRIM TRUE"},
    {'U', 19,
     "UESCAPE UNDER UNDO UNION UNIQUE UNKNOWN UNLOCK UNNEST UNSIGNED UPDATE UPGRADE UPPER USAGE USE USER "
     "USING UTC_DATE UTC_TIME UTC_TIMESTAMP"},
    {'V', 14,
     "VACUUM VALUE VALUES VARBINARY VARCHAR VARCHARACTER VARIABLE VARIADIC VARYING VAR_POP VAR_SAMP "
     "VERBOSE VIEW VIRTUAL"},
    {'W', 10, "WHEN WHENEVER WHERE WHILE WIDTH_BUCKET WINDOW WITH WITHIN WITHOUT WRITE"},
    {'X', 2, "X509 XOR"},
    {'Y', 2, "YEAR YEAR_MONTH"},
    {'Z', 2, "ZEROFILL ZONE"}};

std::vector<std::string> wordsOf(const Group& group)
{
    std::istringstream text(group.words);
    std::vector<std::string> words;
    for (std::string word; text >> word;) {
        words.push_back(word);
    }
    return words;
}

std::vector<std::string> allWords()
{
    std::vector<std::string> words;
    for (const Group& group : groups) {
        for (const std::string& word : wordsOf(group)) {
            words.push_back(word);
        }
    }
    return words;
}

/// Switches verbosity while it exists.
class ScopedVerbosity {
public:
    explicit ScopedVerbosity(bool on) { kd_lib::setVerbose(on); }
    ~ScopedVerbosity() { kd_lib::setVerbose(false); }
    ScopedVerbosity(const ScopedVerbosity&) = delete;
    ScopedVerbosity& operator=(const ScopedVerbosity&) = delete;
};

TableFields fieldsNamed(const std::vector<std::string>& names)
{
    TableFields fields;
    fields.CaseSensitive = true;
    for (const std::string& name : names) {
        fields.add(name);
    }
    return fields;
}

std::vector<std::string> namesOf(const TableFields& fields)
{
    std::vector<std::string> names;
    for (const TableField& field : fields) {
        names.push_back(field.Name);
    }
    return names;
}

std::vector<std::string> checkedNames(const SqlKeyword& keyword, const std::vector<std::string>& names)
{
    TableFields fields = fieldsNamed(names);
    keyword.checkReserved(fields.List);
    return namesOf(fields);
}

std::vector<std::string> checkedNames(const std::vector<std::string>& names)
{
    return checkedNames(SqlKeyword(), names);
}

/// The output of a check of these names with verbosity on.
std::string notesOn(const std::vector<std::string>& names)
{
    const ScopedVerbosity verbose(true);
    const kd_test::Console console = kd_test::captured([&names] { checkedNames(names); });
    EXPECT_EQ("", console.err);
    return console.out;
}

}  // namespace

// The list

TEST(SqlKeyword, HoldsThe518WordsInByteOrder)
{
    EXPECT_EQ(518U, SqlKeyword().keywords.size());
    EXPECT_EQ(allWords(), SqlKeyword().keywords);
}

TEST(SqlKeyword, FirstWordIsAbortAndLastIsZone)
{
    EXPECT_EQ("ABORT", SqlKeyword().keywords.front());
    EXPECT_EQ("ZONE", SqlKeyword().keywords.back());
}

TEST(SqlKeyword, EveryInitialHasItsCountOfWords)
{
    const SqlKeyword keyword;
    for (const Group& group : groups) {
        const auto count = std::count_if(keyword.keywords.begin(), keyword.keywords.end(),
                                         [&group](const std::string& word) { return word[0] == group.initial; });
        EXPECT_EQ(group.count, static_cast<std::size_t>(count)) << group.initial;
        EXPECT_EQ(group.count, wordsOf(group).size()) << group.initial;
    }
}

TEST(SqlKeyword, WordsAreDistinctAndInUpperCase)
{
    const SqlKeyword keyword;
    const auto& words = keyword.keywords;
    EXPECT_EQ(words.end(), std::adjacent_find(words.begin(), words.end()));
    for (const std::string& word : words) {
        EXPECT_EQ(std::string::npos, word.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-")) << word;
    }
}

TEST(SqlKeyword, UnderscoreSortsAfterTheLettersAndHyphenBeforeThem)
{
    const SqlKeyword keyword;
    const auto place = [&keyword](const std::string& word) {
        return std::find(keyword.keywords.begin(), keyword.keywords.end(), word) - keyword.keywords.begin();
    };
    EXPECT_LT(place("CHARACTER_LENGTH"), place("CHAR_LENGTH"));
    EXPECT_LT(place("LOWER"), place("LOW_PRIORITY"));
    EXPECT_EQ(place("END") + 1, place("END-EXEC"));
    EXPECT_LT(place("SAVEPOINT"), place("SAVE_POINT"));
}

TEST(SqlKeyword, CreateListAgainDoesNotDoubleTheList)
{
    SqlKeyword keyword;
    keyword.createList();
    EXPECT_EQ(allWords(), keyword.keywords);
    keyword.keywords = {"MINE"};
    keyword.createList();
    EXPECT_EQ(allWords(), keyword.keywords);
}

TEST(SqlKeyword, QuotesWithTheDoubleQuoteByDefault)
{
    EXPECT_EQ(34, SqlKeyword().quoteChar);
}

// isReserved

TEST(IsReserved, EveryWordOfTheListAndNoneInLowerCase)
{
    const SqlKeyword keyword;
    for (const std::string& word : allWords()) {
        EXPECT_TRUE(keyword.isReserved(word)) << word;
        EXPECT_FALSE(keyword.isReserved(kd_lib::stringToLower(word))) << word;
    }
}

TEST(IsReserved, CaseCounts)
{
    EXPECT_TRUE(SqlKeyword().isReserved("SELECT"));
    EXPECT_FALSE(SqlKeyword().isReserved("select"));
    EXPECT_FALSE(SqlKeyword().isReserved("Select"));
}

TEST(IsReserved, DeliberatelyKnowsAccesibleWithOneS)
{
    EXPECT_TRUE(SqlKeyword().isReserved("ACCESIBLE"));
    EXPECT_FALSE(SqlKeyword().isReserved("ACCESSIBLE"));
}

TEST(IsReserved, DeliberatelyKnowsEndExecWithAHyphen)
{
    EXPECT_TRUE(SqlKeyword().isReserved("END-EXEC"));
    EXPECT_FALSE(SqlKeyword().isReserved("END_EXEC"));
}

TEST(IsReserved, DeliberatelyKnowsTheUnusualForms)
{
    const SqlKeyword keyword;
    for (const char* word : {"SAVE_POINT", "SAVEPOINT", "STDEV_POP", "STDEV_SAMP", "FRAMEROW", "MIDDLEINT", "RAID0",
                             "X509", "INT1", "INT2", "INT3", "INT4", "INT8"}) {
        EXPECT_TRUE(keyword.isReserved(word)) << word;
    }
    EXPECT_FALSE(keyword.isReserved("STDDEV_POP"));
    EXPECT_FALSE(keyword.isReserved("STDDEV_SAMP"));
}

TEST(IsReserved, OnlyWholeWordsCount)
{
    const SqlKeyword keyword;
    for (const std::string& word : {""s, "SELEC"s, "SELECTS"s, " SELECT"s, "SELECT "s, "SELECT\0"s}) {
        EXPECT_FALSE(keyword.isReserved(word)) << word;
    }
}

TEST(IsReserved, NothingWithoutWords)
{
    SqlKeyword keyword;
    keyword.keywords.clear();
    EXPECT_FALSE(keyword.isReserved("SELECT"));
    EXPECT_FALSE(keyword.isReserved(""));
}

TEST(IsReserved, SearchesTheCurrentList)
{
    SqlKeyword keyword;
    keyword.keywords = {"ZEBRA", "APPLE"};
    EXPECT_TRUE(keyword.isReserved("APPLE"));
    EXPECT_TRUE(keyword.isReserved("ZEBRA"));
    EXPECT_FALSE(keyword.isReserved("SELECT"));
}

// checkReserved

TEST(CheckReserved, QuotesReservedNamesAndLowersAll)
{
    EXPECT_EQ((std::vector<std::string>{"\"order\"", "price", "\"date\"", "customer_id"}),
              checkedNames({"Order", "Price", "date", "CUSTOMER_ID"}));
}

TEST(CheckReserved, EveryNameBecomesLowerCase)
{
    EXPECT_EQ((std::vector<std::string>{"\"select\"", "r1c1", "", "\"end-exec\""}),
              checkedNames({"SELECT", "R1C1", "", "End-Exec"}));
}

TEST(CheckReserved, NotesTheReservedNamesWhenVerbose)
{
    EXPECT_EQ("\t Field name ORDER is a reserved SQL keyword\n"
              "\t Field name DATE is a reserved SQL keyword\n",
              notesOn({"Order", "Price", "date", "CUSTOMER_ID"}));
}

TEST(CheckReserved, NameInLowerCaseIsNotedInUpperCase)
{
    EXPECT_EQ("\t Field name ORDER is a reserved SQL keyword\n", notesOn({"order"}));
    EXPECT_EQ(std::vector<std::string>{"\"order\""}, checkedNames({"order"}));
}

TEST(CheckReserved, PrintsNothingWithVerbosityOffButStillRenames)
{
    std::vector<std::string> quiet;
    const kd_test::Console console = kd_test::captured([&quiet] { quiet = checkedNames({"Order", "Price", "date"}); });
    EXPECT_EQ("", console.out + console.err);
    std::vector<std::string> noted;
    const ScopedVerbosity verbose(true);
    kd_test::captured([&noted] { noted = checkedNames({"Order", "Price", "date"}); });
    EXPECT_EQ(quiet, noted);
}

TEST(CheckReserved, SecondCheckLeavesTheQuotedName)
{
    const SqlKeyword keyword;
    TableFields fields = fieldsNamed({"order", "Price"});
    keyword.checkReserved(fields.List);
    const std::vector<std::string> once = namesOf(fields);
    const ScopedVerbosity verbose(true);
    const kd_test::Console console = kd_test::captured([&keyword, &fields] { keyword.checkReserved(fields.List); });
    EXPECT_EQ((std::vector<std::string>{"\"order\"", "price"}), once);
    EXPECT_EQ(once, namesOf(fields));
    EXPECT_EQ("", console.out);
}

TEST(CheckReserved, TakesTheQuoteCharacterOfTheObject)
{
    SqlKeyword keyword;
    keyword.quoteChar = '`';
    EXPECT_EQ((std::vector<std::string>{"`order`", "price"}), checkedNames(keyword, {"ORDER", "PRICE"}));
}

TEST(CheckReserved, OfNoFieldsDoesNothing)
{
    std::vector<TableField*> none;
    SqlKeyword().checkReserved(none);
    EXPECT_TRUE(none.empty());
}

TEST(CheckReserved, ReplacesNothingButTheName)
{
    TableField field("Order", kd_lib::DECIMAL_TYPE, 12, 10, 2, true);
    field.Value = "r1c1";
    std::vector<TableField*> fields = {&field};
    SqlKeyword().checkReserved(fields);
    EXPECT_EQ("\"order\"", field.Name);
    EXPECT_EQ(kd_lib::DECIMAL_TYPE, field.Type);
    EXPECT_EQ(12, field.Offset);
    EXPECT_EQ(10, field.Length);
    EXPECT_EQ(2, field.Decimals);
    EXPECT_TRUE(field.Indexed);
    EXPECT_EQ("r1c1", field.Value);
}

TEST(CheckReserved, LeavesTheKeywords)
{
    const SqlKeyword keyword;
    checkedNames(keyword, {"Order", "MINE"});
    EXPECT_EQ(allWords(), keyword.keywords);
}

TEST(CheckReserved, NameWithAZeroByteIsLookedUpByThePartBeforeIt)
{
    EXPECT_EQ((std::vector<std::string>{"\"order\0x\""s, "price\0order"s}),
              checkedNames({"Order\0X"s, "Price\0Order"s}));
}

TEST(CheckReserved, QuoteCharacterInAReservedNameIsDoubled)
{
    SqlKeyword keyword;
    keyword.keywords.push_back("A\"B");
    EXPECT_EQ(std::vector<std::string>{"\"a\"\"b\""}, checkedNames(keyword, {"a\"b"}));
}

// vector_key

TEST(VectorKey, OrdersByTheFirstByteThatDiffers)
{
    const vector_key<std::string> before;
    EXPECT_TRUE(before("ABORT", "ABS"));
    EXPECT_FALSE(before("ABS", "ABORT"));
}

TEST(VectorKey, PutsAShorterTextBeforeALongerOneThatBeginsWithIt)
{
    const vector_key<std::string> before;
    EXPECT_TRUE(before("END", "END-EXEC"));
    EXPECT_FALSE(before("END-EXEC", "END"));
    EXPECT_TRUE(before("", "A"));
}

TEST(VectorKey, NeitherOfTwoEqualTextsSortsFirst)
{
    const vector_key<std::string> before;
    EXPECT_FALSE(before("ABS", "ABS"));
    EXPECT_FALSE(before("", ""));
}

TEST(VectorKey, ComparesBytesAsUnsignedAndDoesNotFoldCase)
{
    const vector_key<std::string> before;
    EXPECT_TRUE(before("Z", "a"));
    EXPECT_FALSE(before("a", "Z"));
    EXPECT_TRUE(before("z", "\xE4"));
    EXPECT_FALSE(before("\xE4", "z"));
    EXPECT_TRUE(before("a\0a"s, "a\0b"s));
}
