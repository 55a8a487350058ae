/// \file
/// The names of code pages.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// A code page by name: one that iconv knows, or one of the library's own tables.
struct CodePageName {
    std::string Name;                                         ///< for messages; iconv's name without an own table
    const std::array<char16_t, 128>* OwnUpperHalf = nullptr;  ///< the characters of the bytes from 80 on
};

/// The page of a name, in any of the spellings that `CodePage` accepts; nothing for an unknown one.
std::optional<CodePageName> findCodePage(std::string_view name);

}  // namespace kd_lib::exchange::detail
