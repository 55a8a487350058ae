/// \file
/// Pairs the equal elements of two lists and returns the rest.
#pragma once

#include "sqlitedatabase.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace kd_lib::exchange::detail {

/// Two lists of texts, whose elements have numbers. A text is kept as a hash of 128 bits; the hashes are kept in a
/// temporary database of SQLite, which is moved to a file when it becomes large.
class SetOff {
public:
    enum class Side { First, Second };

    SetOff();

    void add(Side side, std::uint64_t number, std::string_view text);

    /// Pairs the elements; nothing may be added afterwards.
    void settle();

    /// Returns the numbers of the remaining elements of a side in ascending order, one per call; nothing at the end.
    std::optional<std::uint64_t> left(Side side);

private:
    std::unique_ptr<SqliteDatabase> Database;
    StatementHandle Insert;
    StatementHandle Left[2];
};

}  // namespace kd_lib::exchange::detail
