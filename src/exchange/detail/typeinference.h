/// \file
/// Finds the types of the columns of a text from its values.
#pragma once

#include <kd_lib/exchange/column.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kd_lib::exchange::detail {

/// Examines all values of one column. A type other than text is chosen only if every value would be printed in the same
/// form: 007, +1, 1. and -0 are texts, and so is a number with an exponent.
class TypeInference {
public:
    /// Examines a value that is not NULL.
    void add(std::string_view text, std::uint64_t record);

    /// The type: whole numbers of 64 bits, numbers, days of the calendar ("2024-02-29"), otherwise text; text if there
    /// was no value. Numbers have the width and the decimals that they need.
    Column applyTo(Column column) const;

    /// "integer", "number with 2 decimals", "text because of record 7", "text without a value".
    std::string evidence() const;

private:
    ColumnType type() const;
    void addNumber(std::string_view text);

    bool Whole = true;
    bool Exact = true;
    bool Days = true;
    std::uint64_t Values = 0;
    std::uint64_t TextRecord = 0;  // the first record that made the column text
    std::uint32_t WholeWidth = 0;  // characters before the point, with the sign
    std::uint32_t Decimals = 0;
    std::string Scratch;
};

/// One line for all columns.
std::string evidenceOf(const std::vector<Column>& columns, const std::vector<TypeInference>& types,
                       std::uint64_t records);

}  // namespace kd_lib::exchange::detail
