/// \file
/// The values of memory variables as texts.
#pragma once

#include "memreader.h"

#include <optional>
#include <string>
#include <string_view>

namespace kd_lib::exchange::detail {

/// The type of a variable by its letter: "text", "number", "date", "boolean".
const char* memTypeName(char type);

/// A value as text, or the reason why it is unreadable.
struct MemText {
    std::optional<std::string_view> Text;  ///< nothing: NULL
    const char* Problem = nullptr;         ///< the reason if the value cannot be read; null otherwise
};

/// The reader's variable, which is not a text, as text: digits, "2024-02-29", "true". It is in `scratch` or views the
/// value.
MemText textOfVariable(const MemReader& reader, std::string& scratch);

}  // namespace kd_lib::exchange::detail
