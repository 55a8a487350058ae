/// \file
/// Files that lie beside a table: its memo file, its code page.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// The file in the folder of `table` that has its stem and one of these extensions (without the point, small letters),
/// the first of them that is there. Stem and extension are compared without regard to the case of ASCII letters; of
/// several files one whose stem is equal comes first, then one whose extension has the case of the table's.
/// Nothing where there is none, and for standard input.
std::optional<std::string> findCompanion(const std::string& table, std::initializer_list<std::string_view> extensions);

}  // namespace kd_lib::exchange::detail
