/// \file
/// Marks the names that the shared libraries export; everything else stays hidden.
#pragma once

#if defined(__GNUC__)
#define KD_LIB_EXPORT __attribute__((visibility("default")))
#else
#define KD_LIB_EXPORT
#endif
