/// \file
/// Values as SQLite keeps them.
#pragma once

#include "moments.h"

#include <kd_lib/exchange/cell.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kd_lib::exchange::detail {

/// Writes a date, time or timestamp as SQLite's functions read it: YYYY-MM-DD, HH:MM:SS.mmm, both with a blank.
/// Returns the characters written: at most `momentSize`.
constexpr std::size_t momentSize = timestampSize;
std::size_t writeMoment(CellKind kind, const Timestamp& moment, char* to);

/// The value of an exact number that is `SqliteForm::Real`.
double realOf(std::string_view digits);

/// The value of an exact number that is `SqliteForm::Integer`.
std::int64_t wholeOf(std::string_view digits);

}  // namespace kd_lib::exchange::detail
