#include "detail/typeinference.h"

#include <gtest/gtest.h>

#include <initializer_list>

using kd_lib::exchange::Column;
using kd_lib::exchange::ColumnType;
using namespace kd_lib::exchange::detail;

namespace {

TypeInference inferenceOf(std::initializer_list<std::string_view> values)
{
    TypeInference inference;
    std::uint64_t record = 0;
    for (const std::string_view value : values) {
        inference.add(value, ++record);
    }
    return inference;
}

std::string evidenceOf(std::initializer_list<std::string_view> values)
{
    return inferenceOf(values).evidence();
}

TEST(TypeInference, Types)
{
    EXPECT_EQ(evidenceOf({"0", "1"}), "integer");
    EXPECT_EQ(evidenceOf({"-9223372036854775808"}), "integer");
    EXPECT_EQ(evidenceOf({"9223372036854775808"}), "number with 0 decimals");
    EXPECT_EQ(evidenceOf({"1", "2.5", "-0.125"}), "number with 3 decimals");
    EXPECT_EQ(evidenceOf({"1.0"}), "number with 1 decimal");
    EXPECT_EQ(evidenceOf({"2024-02-29", "0001-01-01"}), "date");
    EXPECT_EQ(evidenceOf({}), "text without a value");
    EXPECT_EQ(evidenceOf({"1", "2", "x", "y"}), "text because of record 3");
    EXPECT_EQ(evidenceOf({"1", "2024-02-29"}), "text because of record 2");
    EXPECT_EQ(evidenceOf({"2024-02-29", "1"}), "text because of record 2");
}

TEST(TypeInference, WidthsOfNumbers)
{
    Column column;
    column = inferenceOf({"-100", "1.25", "7"}).applyTo(column);
    EXPECT_EQ(column.Type, ColumnType::Number);
    EXPECT_EQ(column.Width, 7U);
    EXPECT_EQ(column.Decimals, 2U);
    EXPECT_EQ(inferenceOf({"12345678901234567890"}).applyTo({}).Width, 20U);
    EXPECT_EQ(inferenceOf({"1"}).applyTo({}).Width, 0U);
}

TEST(TypeInference, ANumberTooLongToBeOneIsText)
{
    EXPECT_EQ(evidenceOf({std::string(1000, '1')}), "number with 0 decimals");
    EXPECT_EQ(evidenceOf({std::string(1001, '1')}), "text because of record 1");
}

}  // namespace
