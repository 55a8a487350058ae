/// \file
/// Kinds of files, and the options that each accepts.
#pragma once

#include <kd_lib/exchange/opensource.h>

#include <string>

namespace kd_lib::exchange::detail {

/// The kind of a file by its extension, in any case of letters; `Automatic` for any other extension.
SourceKind kindOfName(const std::string& file);

/// Throws an `OptionError` for an option that does not apply to this kind and would change what is read.
void refuseForeignOptions(const std::string& file, SourceKind kind, const SourceOptions& options);

}  // namespace kd_lib::exchange::detail
