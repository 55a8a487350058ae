/// \file
/// SQL literals for output buffers.
#pragma once

#include <kd_lib/tablefield.h>

namespace kd_lib {

/// The most bytes that `writeLiteral` writes for this field.
inline std::size_t literalRoom(const TableField& field)
{
    constexpr std::size_t quotesAndSeparators = 4;
    return field.Value.size() + quotesAndSeparators;
}

/// Writes the field's current value to `to` as the literal that `convertValue2Sql` returns, and
/// returns its end.
char* writeLiteral(char* to, const TableField& field);

}  // namespace kd_lib
