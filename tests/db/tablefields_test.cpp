#include <kd_lib/tablefields.h>

#include "support/console_capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <malloc.h>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using kd_lib::TableField;
using kd_lib::TableFields;

static_assert(!std::is_polymorphic_v<TableFields>);

namespace {

std::string shown(TableFields& fields)
{
    const kd_test::Console console = kd_test::captured([&fields] { fields.show(); });
    EXPECT_EQ("", console.err);
    return console.out;
}

void addDefinition(TableFields& fields, const std::string& name, kd_lib::FIELD_TYPE type, int offset, int length,
                   int decimals, bool indexed)
{
    TableField field(name, type, offset, length, decimals, indexed);
    fields.add(field);
}

/// Two columns with values, "id" and "price".
TableFields valuedFields()
{
    TableFields fields;
    addDefinition(fields, "id", kd_lib::INTEGER_TYPE, 1, 4, 0, true);
    addDefinition(fields, "price", kd_lib::DECIMAL_TYPE, 5, 8, 2, false);
    fields.get(0)->Value = "r1c1";
    fields.get(1)->Value = "r1c2";
    return fields;
}

void expectSame(const TableField& expected, const TableField& field)
{
    EXPECT_EQ(expected.Name, field.Name);
    EXPECT_EQ(expected.Type, field.Type);
    EXPECT_EQ(expected.Offset, field.Offset);
    EXPECT_EQ(expected.Length, field.Length);
    EXPECT_EQ(expected.Decimals, field.Decimals);
    EXPECT_EQ(expected.Indexed, field.Indexed);
    EXPECT_EQ(expected.Value, field.Value);
}

/// Bytes that stay allocated after `work` has been done a hundred times. (With another allocator than that of
/// the C library, as under the address sanitizer, it is 0, and the sanitizer looks for leaks.)
std::size_t bytesKeptBy(const std::function<void()>& work)
{
    const std::size_t before = ::mallinfo2().uordblks;
    for (int round = 0; round < 100; ++round) {
        work();
    }
    const std::size_t after = ::mallinfo2().uordblks;
    return after > before ? after - before : 0;
}

/// A hundred lists of this size would keep far more than this.
constexpr std::size_t nothingKept = 20000;

TableFields largeFields()
{
    TableFields fields;
    fields.add("first");
    fields.add("second");
    fields.get(0)->Value.assign(1000, 'x');
    return fields;
}

}  // namespace

// Start, add, clearList

TEST(TableFields, StartsEmptyAndNotCaseSensitive)
{
    TableFields fields;
    EXPECT_EQ(0U, fields.size());
    EXPECT_TRUE(fields.List.empty());
    EXPECT_FALSE(fields.CaseSensitive);
}

TEST(TableFields, AddOfANameAppendsAnUnknownColumn)
{
    TableFields fields;
    fields.add("first");
    fields.add("second");
    ASSERT_EQ(2U, fields.size());
    expectSame(TableField("first"), *fields.List[0]);
    expectSame(TableField("second"), *fields.List[1]);
}

TEST(TableFields, AddOfAFieldCopiesItsDefinition)
{
    TableFields fields;
    TableField price("Price", kd_lib::DECIMAL_TYPE, 12, 10, 2, true);
    fields.add(price);
    price.Name = "changed";
    price.Length = 99;
    ASSERT_EQ(1U, fields.size());
    EXPECT_NE(&price, fields.get(0));
    expectSame(TableField("price", kd_lib::DECIMAL_TYPE, 12, 10, 2, true), *fields.get(0));
}

TEST(TableFields, AddOfAFieldLeavesTheValueEmpty)
{
    TableFields fields;
    TableField field("city");
    field.Value = "r1c1";
    fields.add(field);
    EXPECT_EQ("", fields.get(0)->Value);
    EXPECT_EQ("r1c1", field.Value);
}

TEST(TableFields, AddOfAFieldLeavesItsName)
{
    TableFields fields;
    TableField field("CustName");
    fields.add(field);
    EXPECT_EQ("CustName", field.Name);
}

TEST(TableFields, ClearListDeletesEveryColumn)
{
    TableFields fields = valuedFields();
    fields.clearList();
    EXPECT_EQ(0U, fields.size());
    EXPECT_EQ(nullptr, fields.get("id"));
    EXPECT_EQ(nullptr, fields.get(0));
    fields.clearList();
    fields.add("again");
    EXPECT_EQ(1U, fields.size());
}

TEST(TableFields, PointersStayValidWhileColumnsAreAdded)
{
    TableFields fields;
    fields.add("first");
    TableField* first = fields.get(0);
    for (int i = 0; i < 1000; ++i) {
        fields.add("more");
    }
    first->Value = "r1c1";
    EXPECT_EQ(first, fields.get(0));
    EXPECT_EQ("r1c1", fields.getData("first"));
}

// Names and case

TEST(TableFields, FoldsTheNameWhenItIsStoredAndWhenGetLooksItUp)
{
    TableFields fields;
    fields.add("CustName");
    EXPECT_EQ("custname", fields.get(0)->Name);
    EXPECT_EQ(fields.get(0), fields.get("CUSTNAME"));
    EXPECT_EQ(fields.get(0), fields.get("custname"));
}

TEST(TableFields, FoldsTheNameOfAnAddedField)
{
    TableFields fields;
    addDefinition(fields, "CustName", kd_lib::CHAR_TYPE, 0, 5, 0, false);
    EXPECT_EQ("custname", fields.get(0)->Name);
}

TEST(TableFields, CaseSensitiveStoresAndMatchesTheNameAsPassed)
{
    TableFields fields;
    fields.CaseSensitive = true;
    fields.add("CustName");
    addDefinition(fields, "ZipCode", kd_lib::CHAR_TYPE, 0, 5, 0, false);
    EXPECT_EQ("CustName", fields.get(0)->Name);
    EXPECT_EQ("ZipCode", fields.get(1)->Name);
    EXPECT_EQ(nullptr, fields.get("custname"));
    EXPECT_EQ(fields.get(0), fields.get("CustName"));
    EXPECT_EQ(fields.get(1), fields.get("ZipCode"));
}

TEST(TableFields, ALaterCaseSettingLeavesStoredNames)
{
    TableFields fields;
    fields.add("CustName");
    fields.CaseSensitive = true;
    EXPECT_EQ("custname", fields.get(0)->Name);
    EXPECT_EQ(nullptr, fields.get("CustName"));
    fields.add("ZipCode");
    fields.CaseSensitive = false;
    EXPECT_EQ("ZipCode", fields.get(1)->Name);
    EXPECT_EQ(nullptr, fields.get("ZipCode"));
}

TEST(TableFields, NamesAreEqualByteForByte)
{
    TableFields fields;
    fields.add("name");
    EXPECT_EQ(nullptr, fields.get("nam"));
    EXPECT_EQ(nullptr, fields.get("name "));
    EXPECT_EQ(nullptr, fields.get(std::string("name\0", 5)));
    EXPECT_EQ(-1, fields.findNumber("nam"));
    EXPECT_EQ(-1, fields.findNumber("names"));
}

TEST(TableFields, TheFirstOfTwoColumnsOfOneNameIsFound)
{
    TableFields fields;
    fields.add("other");
    fields.add("twin");
    fields.add("Twin");
    ASSERT_EQ(3U, fields.size());
    fields.get(1)->Value = "r1c2";
    fields.get(2)->Value = "r1c3";
    EXPECT_EQ(fields.get(1), fields.get("twin"));
    EXPECT_EQ(1, fields.findNumber("twin"));
    EXPECT_EQ("r1c2", fields.getData("twin"));
}

// get by index

TEST(TableFields, GetByIndexIsNullAtAndPastTheEnd)
{
    TableFields fields = valuedFields();
    EXPECT_EQ("id", fields.get(0)->Name);
    EXPECT_EQ("price", fields.get(1)->Name);
    EXPECT_EQ(nullptr, fields.get(2));
    EXPECT_EQ(nullptr, fields.get(static_cast<unsigned long>(-1)));
}

TEST(TableFields, EmptyListFindsNothing)
{
    TableFields fields;
    EXPECT_EQ(nullptr, fields.get("id"));
    EXPECT_EQ(nullptr, fields.get(0));
    EXPECT_EQ(-1, fields.findNumber("id"));
    EXPECT_EQ("no field id", fields.getData("id"));
    EXPECT_EQ("no field #0", fields.getData(0));
}

// findNumber

TEST(TableFields, FindNumberFindsTheIndex)
{
    TableFields fields = valuedFields();
    EXPECT_EQ(0, fields.findNumber("id"));
    EXPECT_EQ(1, fields.findNumber("price"));
    EXPECT_EQ(-1, fields.findNumber("zip"));
}

TEST(TableFields, FindNumberDeliberatelyDoesNotFoldItsKeyByDefault)
{
    TableFields fields;
    fields.add("CustName");
    EXPECT_EQ(-1, fields.findNumber("CustName"));
    EXPECT_EQ(0, fields.findNumber("custname"));
}

TEST(TableFields, FindNumberDeliberatelyFoldsItsKeyWhenCaseSensitive)
{
    TableFields fields;
    fields.CaseSensitive = true;
    fields.add("CustName");
    fields.add("zip");
    EXPECT_EQ(-1, fields.findNumber("CustName"));
    EXPECT_EQ(-1, fields.findNumber("custname"));
    EXPECT_EQ(1, fields.findNumber("ZIP"));
}

// getData

TEST(TableFields, GetDataReturnsTheCurrentValue)
{
    TableFields fields = valuedFields();
    EXPECT_EQ("r1c1", fields.getData("id"));
    EXPECT_EQ("r1c1", fields.getData("ID"));
    EXPECT_EQ("r1c1", fields.getData(0));
    EXPECT_EQ("r1c2", fields.getData(1));
    fields.get(1)->Value = "r2c2";
    EXPECT_EQ("r2c2", fields.getData("price"));
}

TEST(TableFields, GetDataWithoutTheNameReturnsNoFieldAndTheNameAsPassed)
{
    TableFields fields = valuedFields();
    EXPECT_EQ("no field zip", fields.getData("zip"));
    EXPECT_EQ("no field ZipCode", fields.getData("ZipCode"));
    EXPECT_EQ("no field ", fields.getData(""));
}

TEST(TableFields, GetDataPastTheEndReturnsNoFieldAndTheNumber)
{
    TableFields fields = valuedFields();
    EXPECT_EQ("no field #2", fields.getData(2));
    EXPECT_EQ("no field #3", fields.getData(3));
    EXPECT_EQ("no field #4294967296", fields.getData(4294967296UL));
}

// show

TEST(TableFields, ShowPrintsOneLinePerColumn)
{
    TableFields fields;
    addDefinition(fields, "id", kd_lib::INTEGER_TYPE, 0, 4, 0, false);
    EXPECT_EQ("Fields:\n0\tid\tinteger\t0\t4\t0\t0\n", shown(fields));
}

TEST(TableFields, ShowOfAnEmptyListPrintsTheFirstLineOnly)
{
    TableFields fields;
    EXPECT_EQ("Fields:\n", shown(fields));
}

TEST(TableFields, ShowPrintsEveryMemberInItsPlace)
{
    TableFields fields;
    addDefinition(fields, "price", kd_lib::DECIMAL_TYPE, 12, 10, 2, true);
    addDefinition(fields, "odd", static_cast<kd_lib::FIELD_TYPE>(99), -1, -22, -3, false);
    EXPECT_EQ("Fields:\n0\tprice\tdecimal\t12\t10\t2\t1\n1\todd\tunknown\t-1\t-22\t-3\t0\n", shown(fields));
}

TEST(TableFields, ShowPrintsNoValueAndNoPadding)
{
    TableFields fields;
    fields.add("a");
    fields.get(0)->Value = "r1c1";
    EXPECT_EQ("Fields:\n0\ta\tunknown\t0\t0\t0\t0\n", shown(fields));
}

TEST(TableFields, ShowNumbersMoreThanTenColumns)
{
    TableFields fields;
    std::string expected = "Fields:\n";
    for (int i = 0; i < 12; ++i) {
        fields.add("f");
        expected += std::to_string(i) + "\tf\tunknown\t0\t0\t0\t0\n";
    }
    EXPECT_EQ(expected, shown(fields));
}

// Copying and moving

TEST(TableFields, CopyHasSeparateColumnsWithTheirValues)
{
    TableFields fields = valuedFields();
    TableFields copy = fields;
    ASSERT_EQ(2U, copy.size());
    for (unsigned long i = 0; i < 2; ++i) {
        EXPECT_NE(fields.get(i), copy.get(i));
        expectSame(*fields.get(i), *copy.get(i));
    }
    copy.get(0)->Value = "r2c1";
    fields.clearList();
    EXPECT_EQ("r2c1", copy.getData(0));
    EXPECT_EQ("r1c2", copy.getData(1));
}

TEST(TableFields, CopyKeepsTheCaseSettingAndTheStoredNames)
{
    TableFields fields;
    fields.CaseSensitive = true;
    fields.add("CustName");
    TableFields copy = fields;
    EXPECT_TRUE(copy.CaseSensitive);
    EXPECT_EQ("CustName", copy.get(0)->Name);
    fields.CaseSensitive = false;
    TableFields unfolded = fields;
    EXPECT_EQ("CustName", unfolded.get(0)->Name);
}

TEST(TableFields, AssignmentReplacesTheColumnsByCopies)
{
    TableFields fields = valuedFields();
    TableFields target;
    target.CaseSensitive = true;
    target.add("Old");
    target = fields;
    ASSERT_EQ(2U, target.size());
    EXPECT_FALSE(target.CaseSensitive);
    EXPECT_NE(fields.get(0), target.get(0));
    EXPECT_EQ("r1c1", target.getData("id"));
    EXPECT_EQ("r1c2", target.getData("price"));
    EXPECT_EQ(2U, fields.size());
}

TEST(TableFields, AssignmentToItselfKeepsTheColumns)
{
    TableFields fields = valuedFields();
    const TableFields& same = fields;
    fields = same;
    ASSERT_EQ(2U, fields.size());
    EXPECT_EQ("r1c1", fields.getData("id"));
}

TEST(TableFields, MoveTransfersTheColumns)
{
    TableFields fields = valuedFields();
    TableField* id = fields.get(0);
    TableFields moved = std::move(fields);
    EXPECT_EQ(id, moved.get(0));
    EXPECT_EQ("r1c2", moved.getData(1));
    TableFields assigned;
    assigned.add("old");
    assigned = std::move(moved);
    EXPECT_EQ(id, assigned.get(0));
    EXPECT_EQ(2U, assigned.size());
}

TEST(TableFields, MovedFromListIsEmptyAndUsable)
{
    TableFields fields = valuedFields();
    const TableFields moved = std::move(fields);
    fields.clearList();
    EXPECT_EQ(0U, fields.size());
    fields.add("again");
    EXPECT_EQ("again", fields.get(0)->Name);
    TableFields source = valuedFields();
    fields = std::move(source);
    source.add("again");
    EXPECT_EQ("again", source.get(0)->Name);
    EXPECT_EQ(1U, source.size());
}

// Memory

TEST(TableFields, DestructionFreesTheColumns)
{
    EXPECT_GT(nothingKept, bytesKeptBy([] { const TableFields fields = largeFields(); }));
}

TEST(TableFields, ClearListFreesTheColumns)
{
    TableFields fields;
    EXPECT_GT(nothingKept, bytesKeptBy([&fields] {
                  fields.add("first");
                  fields.get(0)->Value.assign(1000, 'x');
                  fields.clearList();
              }));
}

TEST(TableFields, AssignmentFreesTheReplacedColumns)
{
    const TableFields source = largeFields();
    TableFields target;
    EXPECT_GT(nothingKept, bytesKeptBy([&target, &source] { target = source; }));
    EXPECT_GT(nothingKept, bytesKeptBy([&target] { target = largeFields(); }));
}

// Walking and constant lists

TEST(TableFieldsWalk, GivesTheColumnsInOrderAndLetsThemBeChanged)
{
    TableFields fields;
    for (const char* name : {"a", "b", "c"}) {
        fields.add(std::string(name));
    }
    for (kd_lib::TableField& field : fields) {
        field.Value = field.Name + "!";
    }
    std::string all;
    for (const kd_lib::TableField& field : std::as_const(fields)) {
        all += field.Value;
    }
    EXPECT_EQ("a!b!c!", all);
    EXPECT_EQ(3, std::distance(fields.begin(), fields.end()));
    static_assert(std::forward_iterator<TableFields::iterator>);
    static_assert(std::forward_iterator<TableFields::const_iterator>);
    static_assert(std::is_same_v<const kd_lib::TableField&, decltype(*std::as_const(fields).begin())>);
}

TEST(TableFieldsWalk, OfAnEmptyListEndsAtOnce)
{
    const TableFields fields;
    EXPECT_TRUE(fields.begin() == fields.end());
}

TEST(TableFieldsWalk, WorksWithTheStandardAlgorithms)
{
    TableFields fields;
    fields.add(std::string("a"));
    fields.add(std::string("b"));
    auto found = std::find_if(fields.begin(), fields.end(), [](const kd_lib::TableField& f) { return f.Name == "b"; });
    ASSERT_TRUE(found != fields.end());
    EXPECT_EQ(fields.get(1UL), &*found);
    EXPECT_EQ("b", found++->Name);
    EXPECT_TRUE(found == fields.end());
}

TEST(TableFieldsConst, ListIsReadLikeAnyOther)
{
    TableFields fields;
    fields.add(std::string("City"));
    fields.get(0UL)->Value = "Rome";
    const TableFields& list = fields;
    EXPECT_EQ(fields.get(0UL), list.get(0UL));
    EXPECT_EQ(fields.get(0UL), list.get("CITY"));
    EXPECT_EQ(nullptr, list.get("none"));
    EXPECT_EQ(nullptr, list.get(1UL));
    EXPECT_EQ(0, list.findNumber("city"));
    EXPECT_EQ("Rome", list.getData("city"));
    EXPECT_EQ("Rome", list.getData(0UL));
    EXPECT_EQ("Fields:\n0\tcity\tunknown\t0\t0\t0\t0\n", kd_test::captured([&] { list.show(); }).out);
    static_assert(std::is_same_v<const kd_lib::TableField*, decltype(list.get(0UL))>);
}
