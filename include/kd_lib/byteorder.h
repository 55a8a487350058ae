/// \file
/// Conversion of little-endian file values to host order. The host order is fixed at build time.
/// Threads: free of shared state.
#pragma once

#include <kd_lib/export.h>

namespace kd_lib {

/// `v`, two bytes copied raw from a little-endian file, in host order:
/// unchanged on a little-endian host, its bytes exchanged on a big-endian host.
KD_LIB_EXPORT short rotate2b(short v);

/// `v`, four bytes copied raw from a little-endian file, in host order:
/// unchanged on a little-endian host, its bytes reversed on a big-endian host.
KD_LIB_EXPORT unsigned int rotate4b(unsigned int v);

}  // namespace kd_lib
