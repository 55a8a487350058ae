/// \file
/// What is left of two lists when equal elements are set off against each other.
#pragma once

#include "sqlitedatabase.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace kd_lib::exchange::detail {

/// Two lists of texts, whose elements have numbers. A text is kept as a hash of 128 bits; the hashes are kept in a
/// temporary database of SQLite, which goes to a file when it becomes large.
class SetOff {
public:
    enum class Side { First, Second };

    SetOff();

    void add(Side side, std::uint64_t number, std::string_view text);

    /// Sets off; nothing may be added afterwards.
    void settle();

    /// The numbers of what is left on a side, in ascending order, one each call; nothing at the end.
    std::optional<std::uint64_t> left(Side side);

private:
    std::unique_ptr<SqliteDatabase> Database;
    StatementHandle Insert;
    StatementHandle Left[2];
};

}  // namespace kd_lib::exchange::detail
