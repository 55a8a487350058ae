// The lines of errors, and the words for actions and types.
#include <kd_lib/exchange/column.h>
#include <kd_lib/exchange/error.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace kd_lib::exchange;

TEST(ErrorTest, TheLineNamesThePlaceAndTheReason)
{
    EXPECT_STREQ(Error(Place{}, "no").what(), "no");
    EXPECT_STREQ(Error("a.dbf", "no").what(), "a.dbf: no");
    EXPECT_STREQ(Error(Place{"a.dbf", 2, "B", 33}, "no").what(), "a.dbf: record 2, column B, byte 33: no");
    EXPECT_STREQ(Error(Place{"a.dbf", 2}, "no").what(), "a.dbf: record 2: no");
    EXPECT_STREQ(Error(Place{"a.dbf", 0, "B"}, "no").what(), "a.dbf: column B: no");
    EXPECT_STREQ(Error(Place{"", 0, "", 0}, "no").what(), "byte 0: no");
}

TEST(ErrorTest, WordsForActions)
{
    EXPECT_STREQ(actionName(RejectAction::Null), "null");
    EXPECT_STREQ(actionName(RejectAction::Replace), "replace");
    EXPECT_STREQ(actionName(RejectAction::Escape), "escape");
    EXPECT_STREQ(actionName(RejectAction::Cut), "cut");
    EXPECT_STREQ(actionName(RejectAction::Skip), "skip");
    EXPECT_STREQ(actionName(RejectAction::Stop), "stop");
}

TEST(ErrorTest, WordsForTypes)
{
    EXPECT_EQ(typeName(ColumnType::Text), "text");
    EXPECT_EQ(typeName(ColumnType::Number), "number");
    EXPECT_EQ(typeName(ColumnType::Currency), "number");
    EXPECT_EQ(typeName(ColumnType::Integer), "integer");
    EXPECT_EQ(typeName(ColumnType::BigInteger), "integer");
    EXPECT_EQ(typeName(ColumnType::Float), "float");
    EXPECT_EQ(typeName(ColumnType::Boolean), "boolean");
    EXPECT_EQ(typeName(ColumnType::Date), "date");
    EXPECT_EQ(typeName(ColumnType::Time), "time");
    EXPECT_EQ(typeName(ColumnType::Timestamp), "timestamp");
    EXPECT_EQ(typeName(ColumnType::Bytes), "bytes");
}

}  // namespace
