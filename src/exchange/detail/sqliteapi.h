/// \file
/// SQLite's functions: those of the library, or, in a loadable extension, those of the program that loads it.
#pragma once

#ifdef KD_LOADABLE_EXTENSION
#include <sqlite3ext.h>
SQLITE_EXTENSION_INIT3
#else
#include <sqlite3.h>
#endif
