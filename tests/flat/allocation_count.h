#pragma once

namespace kd_test {

/// The number of C++ allocations of this process, including the libraries, that have not been freed.
/// A program that links this replaces the global operators new and delete.
long liveAllocations();

}  // namespace kd_test
