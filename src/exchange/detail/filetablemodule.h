/// \file
/// Files as virtual tables of SQLite.
#pragma once

#include <kd_lib/exchange/virtualtables.h>

#include <string>
#include <vector>

struct sqlite3;

namespace kd_lib::exchange::detail {

/// Registers the module `kd`. Returns SQLite's code. Its arguments are those of `registerTables`; a number alone is the
/// index of a table in `prepared`.
int registerModule(sqlite3* connection, VirtualTableEvents events, std::vector<FileTableOptions> prepared);

}  // namespace kd_lib::exchange::detail
