/// \file
/// How SQLite converts values because of the declared type of their column.
#pragma once

#include <kd_lib/exchange/cell.h>

#include <cstdint>
#include <string_view>

namespace kd_lib::exchange::detail {

enum class Affinity : std::uint8_t { None, Text, Numeric, Real };

/// The affinity of a declared type; `Numeric` includes that of whole numbers, because both treat values alike.
Affinity affinityOf(std::string_view declaredType);

/// The reason why a column of this affinity would change a value; null if it keeps the value.
const char* reasonAgainst(Affinity affinity, const Cell& cell);

}  // namespace kd_lib::exchange::detail
