#pragma once

namespace kd_test {

/// The number of C++ allocations of this process that have not been freed, those of the libraries too.
/// A program that links this replaces the global operators new and delete.
long liveAllocations();

}  // namespace kd_test
