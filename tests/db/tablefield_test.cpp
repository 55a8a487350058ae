#include <kd_lib/tablefield.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

using kd_lib::FIELD_TYPE;
using kd_lib::getFieldTypeName;
using kd_lib::TableField;

static_assert(std::is_same_v<std::underlying_type_t<FIELD_TYPE>, std::int32_t>);
static_assert(std::is_convertible_v<FIELD_TYPE, int>, "a plain enumeration");
static_assert(!std::is_polymorphic_v<TableField>);
static_assert(std::is_copy_constructible_v<TableField> && std::is_copy_assignable_v<TableField>);

namespace {

struct TypeRow {
    int value;
    FIELD_TYPE type;
    const char* name;
};

void PrintTo(const TypeRow& row, std::ostream* out)
{
    *out << row.value << ' ' << row.name;
}

class FieldTypeName : public testing::TestWithParam<TypeRow> {};

}  // namespace

TEST_P(FieldTypeName, IsTheLowerCaseWordOfTheFixedValue)
{
    EXPECT_EQ(GetParam().value, static_cast<int>(GetParam().type));
    EXPECT_EQ(GetParam().name, getFieldTypeName(GetParam().type));
}

INSTANTIATE_TEST_SUITE_P(
    AllTypes, FieldTypeName,
    testing::Values(TypeRow{0, kd_lib::UNKNOWN_TYPE, "unknown"}, TypeRow{1, kd_lib::BOOLEAN_TYPE, "boolean"},
                    TypeRow{2, kd_lib::DECIMAL_TYPE, "decimal"}, TypeRow{3, kd_lib::FLOAT_TYPE, "float"},
                    TypeRow{4, kd_lib::SMALLINT_TYPE, "smallint"}, TypeRow{5, kd_lib::INTEGER_TYPE, "integer"},
                    TypeRow{6, kd_lib::BIGINT_TYPE, "bigint"}, TypeRow{7, kd_lib::DATE_TYPE, "date"},
                    TypeRow{8, kd_lib::TIME_TYPE, "time"}, TypeRow{9, kd_lib::TIMESTAMP_TYPE, "timestamp"},
                    TypeRow{10, kd_lib::CHAR_TYPE, "char"}, TypeRow{11, kd_lib::VARCHAR_TYPE, "varchar"},
                    TypeRow{12, kd_lib::TEXT_TYPE, "text"}, TypeRow{13, kd_lib::MEMO_TYPE, "memo"},
                    TypeRow{14, kd_lib::BLOB_TYPE, "blob"}),
    [](const testing::TestParamInfo<TypeRow>& row) { return std::string(row.param.name); });

TEST(FieldTypeNames, OutsideOneToFourteenIsUnknown)
{
    for (const int value :
         {0, 15, -1, 16, 100, -14, 256, 270, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_EQ("unknown", getFieldTypeName(static_cast<FIELD_TYPE>(value))) << value;
    }
}

TEST(TableField, BuiltFromANameAloneIsUnknownWithNumbersZero)
{
    const TableField field("r1c1");
    EXPECT_EQ("r1c1", field.Name);
    EXPECT_EQ(0, static_cast<int>(field.Type));
    EXPECT_EQ(0, field.Offset);
    EXPECT_EQ(0, field.Length);
    EXPECT_EQ(0, field.getLength());
    EXPECT_EQ(0, field.Decimals);
    EXPECT_FALSE(field.Indexed);
    EXPECT_EQ("", field.Value);
}

TEST(TableField, TakesTheOffsetBeforeTheLength)
{
    const TableField field("price", kd_lib::DECIMAL_TYPE, 12, 10, 2, false);
    EXPECT_EQ("price", field.Name);
    EXPECT_EQ(kd_lib::DECIMAL_TYPE, field.Type);
    EXPECT_EQ(12, field.Offset);
    EXPECT_EQ(10, field.Length);
    EXPECT_EQ(10, field.getLength());
    EXPECT_EQ(2, field.Decimals);
    EXPECT_FALSE(field.Indexed);
    EXPECT_EQ("", field.Value);
}

TEST(TableField, KeepsTheIndexedMark)
{
    EXPECT_TRUE(TableField("key", kd_lib::INTEGER_TYPE, 0, 4, 0, true).Indexed);
}

TEST(TableField, StoresTheNameAsPassed)
{
    EXPECT_EQ("CustName ", TableField("CustName ").Name);
    EXPECT_EQ("CustName ", TableField("CustName ", kd_lib::CHAR_TYPE, 1, 2, 3, true).Name);
    EXPECT_EQ("", TableField("").Name);
}

TEST(TableField, HoldsNegativeNumbers)
{
    const TableField field("odd", kd_lib::CHAR_TYPE, -1, -2, -3, false);
    EXPECT_EQ(-1, field.Offset);
    EXPECT_EQ(-2, field.getLength());
    EXPECT_EQ(-3, field.Decimals);
}

TEST(TableField, GetLengthReturnsTheMember)
{
    TableField field("r1c1");
    field.Length = 17;
    EXPECT_EQ(17, field.getLength());
}

TEST(TableField, CopyIncludesTheValue)
{
    TableField field("price", kd_lib::DECIMAL_TYPE, 12, 10, 2, true);
    field.Value = "3.25";
    TableField copy = field;
    EXPECT_EQ("price", copy.Name);
    EXPECT_EQ(kd_lib::DECIMAL_TYPE, copy.Type);
    EXPECT_EQ(12, copy.Offset);
    EXPECT_EQ(10, copy.Length);
    EXPECT_EQ(2, copy.Decimals);
    EXPECT_TRUE(copy.Indexed);
    EXPECT_EQ("3.25", copy.Value);
    copy.Value = "4.75";
    EXPECT_EQ("3.25", field.Value);
}
