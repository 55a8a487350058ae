/// \file
/// Values that servers send as text, as cells.
#pragma once

#include <kd_lib/exchange/cell.h>
#include <kd_lib/exchange/column.h>
#include <kd_lib/export.h>

#include <string>
#include <string_view>

namespace kd_lib::exchange {

/// The value that `text` represents in a column of this type: a number's digits, "2024-02-29", "23:59:58.123" and so
/// on, as PostgreSQL and MariaDB print them. A value that no cell of the type can hold (a year beyond 9999,
/// microseconds) becomes a text, as does every value of another type. The cell views `text`. Booleans: "t", "true", "1"
/// are true.
KD_LIB_EXPORT Cell serverValue(ColumnType type, std::string_view text);

/// Decodes bytes that PostgreSQL prints in hexadecimal form, "\x00ff", into `bytes`.
KD_LIB_EXPORT Cell hexadecimalBytes(std::string_view text, std::string& bytes);

}  // namespace kd_lib::exchange
