/// \file
/// The commands. Each returns an exit status, and throws an `exchange::Error` if all of its work fails.
#pragma once

#include "../console.h"
#include "../options.h"

namespace kd_tool {

int show(const Options& options, Console& console);
int list(const Options& options, Console& console);
int convert(const Options& options, Console& console);
int load(const Options& options, Console& console);
int query(const Options& options, Console& console);
int verify(const Options& options, Console& console);
int inspect(const Options& options, Console& console);
int import(const Options& options, Console& console);
int memory(const Options& options, Console& console);
int script(const Options& options, Console& console);

}  // namespace kd_tool
