/// \file
/// The version of the library, as data that programs and what-string scanners can find in its file.
#pragma once

#include <kd_lib/export.h>

/// "@(#)PROGRAM:kd_db.1  PROJECT:kd_lib-1.1" and a line feed, terminated by a zero byte.
extern "C" KD_LIB_EXPORT const unsigned char kd_db_1VersionString[];

/// The version as a number.
extern "C" KD_LIB_EXPORT const double kd_db_1VersionNumber;
