/// \file
/// The arguments of a virtual table.
#pragma once

#include <kd_lib/exchange/opensource.h>
#include <kd_lib/exchange/target.h>

#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange::detail {

/// A file, and how it is read as a table.
struct TableArguments {
    std::string File;
    SourceOptions Options;
    NameCase Names = NameCase::Lower;
};

/// Reads arguments such as `'people.dbf'`, `encoding=cp852`, `columns='name:1-8,town:9-24'`. Throws an `OptionError`
/// that names the invalid argument.
TableArguments parseTableArguments(const std::vector<std::string_view>& arguments);

}  // namespace kd_lib::exchange::detail
