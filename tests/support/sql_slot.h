#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>

namespace kd_test {

/// The place of a virtual operation in the order of its class, from 1; the destructor is the first.
/// It reads the table offset that the ABI of GCC and Clang keeps in a pointer to a virtual member.
template <class Operation>
std::size_t virtualSlot(Operation operation)
{
    std::size_t offset = 0;
    static_assert(sizeof operation == 2 * sizeof offset, "a pointer to a member of the Itanium C++ ABI");
    std::memcpy(&offset, &operation, sizeof offset);
    // The destructor takes two entries of the table; the lowest bit may mark the pointer as virtual.
    return (offset & ~std::size_t{1}) / sizeof(void*);
}

/// Expects the operations of `Database` in the first slots of `Class`.
template <class Class>
void expectFrameSlots()
{
    using Text = const std::string&;
    EXPECT_TRUE(std::has_virtual_destructor_v<Class>);
    EXPECT_EQ(2U, virtualSlot(static_cast<bool (Class::*)()>(&Class::connect)));
    EXPECT_EQ(3U, virtualSlot(static_cast<bool (Class::*)(Text, Text, Text, Text)>(&Class::connect)));
    EXPECT_EQ(4U, virtualSlot(&Class::isConnected));
    EXPECT_EQ(5U, virtualSlot(&Class::isDisconnected));
    EXPECT_EQ(6U, virtualSlot(&Class::disconnect));
    EXPECT_EQ(7U, virtualSlot(&Class::useDatabase));
    EXPECT_EQ(8U, virtualSlot(&Class::createDatabase));
}

/// Expects these, followed by the operations of `SqlDatabase`.
template <class Class>
void expectSqlSlots()
{
    using Text = const std::string&;
    expectFrameSlots<Class>();
    EXPECT_EQ(9U, virtualSlot(&Class::setError));
    EXPECT_EQ(10U, virtualSlot(&Class::beginTransaction));
    EXPECT_EQ(11U, virtualSlot(&Class::endTransaction));
    EXPECT_EQ(12U, virtualSlot(&Class::rollback));
    EXPECT_EQ(13U, virtualSlot(&Class::getDatabaseList));
    EXPECT_EQ(14U, virtualSlot(&Class::getTableList));
    EXPECT_EQ(15U, virtualSlot(&Class::convertSql2FieldType));
    EXPECT_EQ(16U, virtualSlot(&Class::getColumnList));
    EXPECT_EQ(17U, virtualSlot(&Class::prepare));
    EXPECT_EQ(18U, virtualSlot(&Class::prepareInsert));
    EXPECT_EQ(19U, virtualSlot(&Class::preparedRecord));
    EXPECT_EQ(20U, virtualSlot(static_cast<bool (Class::*)()>(&Class::execute)));
    EXPECT_EQ(21U, virtualSlot(static_cast<bool (Class::*)(Text)>(&Class::execute)));
    EXPECT_EQ(22U, virtualSlot(static_cast<bool (Class::*)()>(&Class::query)));
    EXPECT_EQ(23U, virtualSlot(static_cast<bool (Class::*)(Text)>(&Class::query)));
    EXPECT_EQ(24U, virtualSlot(&Class::getRecords));
    EXPECT_EQ(25U, virtualSlot(&Class::fetchRow));
    EXPECT_EQ(26U, virtualSlot(&Class::printHeader));
    EXPECT_EQ(27U, virtualSlot(&Class::processRow));
    EXPECT_EQ(28U, virtualSlot(&Class::clearResults));
}

}  // namespace kd_test
