#include "detail/slicing.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using kd_lib::detail::sliceRecord;

namespace {

void addText(kd_lib::TableFields& fields, const char* name, int offset, int length)
{
    kd_lib::TableField field(name, kd_lib::CHAR_TYPE, offset, length, 0, false);
    fields.add(field);
}

class SlicingTest : public testing::Test {
protected:
    void SetUp() override
    {
        addText(Fields, "first", 0, 4);
        addText(Fields, "second", 4, 3);
    }

    std::string value(std::size_t i) const { return Fields.List[i]->Value; }

    kd_lib::TableFields Fields;
};

}  // namespace

TEST_F(SlicingTest, EachColumnGetsItsBytes)
{
    sliceRecord(Fields, "ab  cd rest", false, "unit");
    EXPECT_EQ(value(0), "ab  ");
    EXPECT_EQ(value(1), "cd ");
}

TEST_F(SlicingTest, TrimRemovesTheBlanksAtTheEnd)
{
    sliceRecord(Fields, " b  cd ", true, "unit");
    EXPECT_EQ(value(0), " b");
    EXPECT_EQ(value(1), "cd");
}

TEST_F(SlicingTest, AColumnAfterTheRecordsEndThrows)
{
    Fields.List[1]->Offset = 5;
    EXPECT_THROW(sliceRecord(Fields, "abcd", false, "unit"), std::out_of_range);
}

TEST_F(SlicingTest, ANegativeOffsetThrows)
{
    Fields.List[0]->Offset = -1;
    EXPECT_THROW(sliceRecord(Fields, "abcdefg", false, "unit"), std::out_of_range);
}

TEST(SlicingDeathTest, AColumnThatTheRecordFillsOnlyInPartStopsTheProcess)
{
    kd_lib::TableFields fields;
    addText(fields, "only", 0, 4);
    EXPECT_DEATH(sliceRecord(fields, "abc", false, "some/unit"),
                 "^some/unit: extractContent: Assertion `tmp_str\\.size\\(\\) == "
                 "Fields\\.get\\(f\\)->getLength\\(\\)' failed\\.\n$");
}
