#include <kd_lib/exchange/servervalue.h>

#include <gtest/gtest.h>

#include <string>

using namespace kd_lib::exchange;

TEST(ServerValue, NumbersKeepTheirDigits)
{
    for (const char* text : {"0", "-12", "12.50", "123456789012345678901234567890.5"}) {
        const Cell cell = serverValue(ColumnType::Number, text);
        EXPECT_EQ(cell.Kind, CellKind::Number) << text;
        EXPECT_EQ(cell.Text, text);
    }
    for (const ColumnType type : {ColumnType::Integer, ColumnType::BigInteger, ColumnType::Currency}) {
        EXPECT_EQ(serverValue(type, "7").Kind, CellKind::Number);
    }
    EXPECT_EQ(serverValue(ColumnType::Number, "1e3").Kind, CellKind::Float);
    EXPECT_EQ(serverValue(ColumnType::Number, "1e3").Float, 1000);
    for (const char* text : {"", "-", ".5x", "5x", "1.x"}) {
        EXPECT_EQ(serverValue(ColumnType::Number, text).Kind, CellKind::Text) << text;
    }
}

TEST(ServerValue, DoublesAndBooleans)
{
    EXPECT_EQ(serverValue(ColumnType::Float, "-0.5").Float, -0.5);
    EXPECT_EQ(serverValue(ColumnType::Float, "x").Kind, CellKind::Text);
    for (const char* text : {"t", "true", "1"}) {
        EXPECT_TRUE(serverValue(ColumnType::Boolean, text).Boolean) << text;
    }
    for (const char* text : {"f", "false", "0"}) {
        EXPECT_FALSE(serverValue(ColumnType::Boolean, text).Boolean) << text;
        EXPECT_EQ(serverValue(ColumnType::Boolean, text).Kind, CellKind::Boolean);
    }
}

TEST(ServerValue, MomentsThatNoCellHoldsAreTexts)
{
    EXPECT_EQ(serverValue(ColumnType::Date, "2024-02-29").Kind, CellKind::Date);
    EXPECT_EQ(serverValue(ColumnType::Date, "2023-02-29").Kind, CellKind::Text);
    EXPECT_EQ(serverValue(ColumnType::Date, "20000-01-01").Text, "20000-01-01");
    EXPECT_EQ(serverValue(ColumnType::Time, "23:59:58.123").Moment.Milliseconds, 86398123U);
    EXPECT_EQ(serverValue(ColumnType::Timestamp, "2024-02-29 23:59:58").Kind, CellKind::Timestamp);
    EXPECT_EQ(serverValue(ColumnType::Timestamp, "2024-02-29 23:59:58.123456").Kind, CellKind::Text);
}

TEST(ServerValue, BytesOfPostgreSql)
{
    std::string bytes = "old";
    const Cell cell = hexadecimalBytes("\\x00ff1AcF", bytes);
    EXPECT_EQ(cell.Kind, CellKind::Bytes);
    EXPECT_EQ(cell.Text, std::string("\0\xFF\x1A\xCF", 4));
    EXPECT_EQ(hexadecimalBytes("\\x", bytes).Text, "");
    EXPECT_EQ(serverValue(ColumnType::Bytes, "raw").Kind, CellKind::Bytes);
    EXPECT_EQ(serverValue(ColumnType::Text, "2024").Kind, CellKind::Text);
}
