/// \file
/// The servers' names for column types.
#pragma once

#include <kd_lib/tablefield.h>

#include <string>

namespace kd_lib::detail {

/// The type for a server's type name in upper case: "VARCHAR(20)", "BIGINT(20) UNSIGNED", "DOUBLE PRECISION". Unknown
/// if neither server has such a name.
FIELD_TYPE serverType(const std::string& type);

/// A column of that name and type, with the length and decimals in round brackets after the first word.
TableField serverColumn(const std::string& name, FIELD_TYPE type, const std::string& words);

}  // namespace kd_lib::detail
