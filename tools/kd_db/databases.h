/// \file
/// The databases that DATABASE may name: SQLite files, and servers where their libraries were built.
#pragma once

#include "options.h"

#include <kd_lib/exchange/source.h>
#include <kd_lib/exchange/target.h>

#include <memory>
#include <string>
#include <vector>

namespace kd_tool {

/// The target of `load`: a table of --into.
std::unique_ptr<exchange::Target> databaseTarget(const Options& options);

/// How many files are loaded at a time where `asked` may be: one into SQLite, which locks the whole database.
unsigned jobsAtATime(const std::string& database, unsigned asked);

}  // namespace kd_tool
