/// \file
/// The reasons why a column cannot hold a value.
#pragma once

namespace kd_lib::exchange::detail::misfit {

constexpr const char* tooLong = "longer than the column";
constexpr const char* zeroByte = "a zero byte in a text";
constexpr const char* notWhole = "a column of whole numbers does not hold decimals";
constexpr const char* tooLarge = "outside the range of the column";
constexpr const char* tooManyDigits = "more digits than the column holds";
constexpr const char* noNan = "the target has no NaN";
constexpr const char* noInfinity = "the target has no infinity";

}  // namespace kd_lib::exchange::detail::misfit
