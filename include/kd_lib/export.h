/// \file
/// Marks the names that the shared libraries export; everything else stays hidden.
#pragma once

#if defined(__GNUC__)
#define KD_LIB_EXPORT __attribute__((visibility("default")))
/// For private members of an exported class: they are not part of the binary interface.
#define KD_LIB_LOCAL __attribute__((visibility("hidden")))
#else
#define KD_LIB_EXPORT
#define KD_LIB_LOCAL
#endif
