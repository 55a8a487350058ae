/// \file
/// The type of a column in a dialect, and the limits of that type.
#pragma once

#include "fitcheck.h"

#include <kd_lib/exchange/column.h>
#include <kd_lib/exchange/dialect.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kd_lib::exchange::detail {

struct TargetType {
    std::string Text;
    FitCheck Check;
    std::uint32_t VarcharCharacters = 0;  ///< 0: the type is not a varchar
};

TargetType targetType(const Dialect& dialect, const Column& column);

/// Text of any length.
TargetType longTextType(const Dialect& dialect);

}  // namespace kd_lib::exchange::detail
