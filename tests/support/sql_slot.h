#pragma once

#include <cstddef>
#include <cstring>

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

}  // namespace kd_test
