/// \file
/// What SQLite makes of values because of the declared type of their column.
#pragma once

#include <kd_lib/exchange/cell.h>

#include <cstdint>
#include <string_view>

namespace kd_lib::exchange::detail {

enum class Affinity : std::uint8_t { None, Text, Numeric, Real };

/// The affinity of a declared type; `Numeric` is also that of whole numbers, for both treat values alike.
Affinity affinityOf(std::string_view declaredType);

/// Why a column of this affinity cannot hold a value without changing it; null: it can.
const char* reasonAgainst(Affinity affinity, const Cell& cell);

}  // namespace kd_lib::exchange::detail
