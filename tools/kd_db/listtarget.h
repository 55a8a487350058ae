/// \file
/// Prints records.
#pragma once

#include "console.h"
#include "options.h"

#include <kd_lib/exchange/target.h>

#include <memory>

namespace kd_tool {

/// The target of --format and -o: a table, CSV or JSON lines, to a file or to standard output. On a terminal, more than
/// a screen goes through a pager.
std::unique_ptr<exchange::Target> listTarget(const Options& options, Console& console);

}  // namespace kd_tool
