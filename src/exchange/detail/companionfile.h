/// \file
/// Files in the folder of a table that belong to it: its memo file, its code page.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// The file in the folder of `table` that has its stem and the first of these extensions (without the point, in lower
/// case) that exists. Stem and extension are compared without regard to the case of ASCII letters. Of several files,
/// one whose stem is equal is preferred, then one whose extension has the case of the table's. Nothing if there is no
/// such file, and for standard input.
std::optional<std::string> findCompanion(const std::string& table, std::initializer_list<std::string_view> extensions);

}  // namespace kd_lib::exchange::detail
