#include "setoff.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string>

namespace kd_lib::exchange::detail {

namespace {

struct Hash {
    std::uint64_t High;
    std::uint64_t Low;
};

std::uint64_t mixed(std::uint64_t value)
{
    value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31U);
}

Hash hashOf(std::string_view text)
{
    Hash hash = {0x9E3779B97F4A7C15U ^ text.size(), 0xC2B2AE3D27D4EB4FU};
    while (!text.empty()) {
        std::uint64_t word = 0;
        const std::size_t size = std::min(text.size(), sizeof word);
        std::memcpy(&word, text.data(), size);
        text.remove_prefix(size);
        hash.High = mixed(hash.High ^ word);
        hash.Low = mixed(std::rotl(hash.Low, 23) + word * 0x9E3779B97F4A7C15U);
    }
    return {mixed(hash.High + hash.Low), mixed(hash.Low ^ std::rotl(hash.High, 32))};
}

/// Of the elements with the same hash, the first ones of both sides are paired.
std::string leftQuery(int side)
{
    return "SELECT number FROM (SELECT number, row_number() OVER (PARTITION BY a, b ORDER BY number) AS place, other "
           "FROM element JOIN unequal USING (a, b) WHERE side = " +
           std::to_string(side) + ") WHERE place > other ORDER BY number";
}

}  // namespace

SetOff::SetOff() : Database(SqliteDatabase::temporary("temporary database"))
{
    Database->execute("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; BEGIN;"
                      "CREATE TABLE element(a INTEGER, b INTEGER, side INTEGER, number INTEGER)");
    Insert = Database->prepare("INSERT INTO element VALUES (?,?,?,?)");
}

void SetOff::add(Side side, std::uint64_t number, std::string_view text)
{
    const Hash hash = hashOf(text);
    sqlite3_stmt* const insert = Insert.get();
    sqlite3_bind_int64(insert, 1, static_cast<sqlite3_int64>(hash.High));
    sqlite3_bind_int64(insert, 2, static_cast<sqlite3_int64>(hash.Low));
    sqlite3_bind_int(insert, 3, side == Side::First ? 0 : 1);
    sqlite3_bind_int64(insert, 4, static_cast<sqlite3_int64>(number));
    Database->step(insert);
    sqlite3_reset(insert);
}

void SetOff::settle()
{
    Database->execute("CREATE TABLE unequal AS SELECT a, b, min(first, second) AS other FROM (SELECT a, b, "
                      "sum(side = 0) AS first, sum(side = 1) AS second FROM element GROUP BY a, b) "
                      "WHERE first <> second; CREATE INDEX hash ON unequal(a, b)");
    Left[0] = Database->prepare(leftQuery(0));
    Left[1] = Database->prepare(leftQuery(1));
}

std::optional<std::uint64_t> SetOff::left(Side side)
{
    sqlite3_stmt* const statement = Left[side == Side::First ? 0 : 1].get();
    if (!Database->step(statement)) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(sqlite3_column_int64(statement, 0));
}

}  // namespace kd_lib::exchange::detail
