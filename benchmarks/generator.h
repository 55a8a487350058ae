/// \file
/// Tables to measure with: records that look like those of real tables, the same bytes for the same seed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kd_bench {

/// The kind of a table.
enum class Profile {
    Short,  ///< people: 12 short columns of all types
    Wide,   ///< 60 columns
    Quoted  ///< people whose texts contain quotes; a .csv file puts every value in quotes
};

/// The profile of this name ("short", "wide", "quoted"); throws std::invalid_argument for any other.
Profile profileNamed(std::string_view name);

/// The origin of a column's values.
enum class Filling { Serial, Surname, Name, Address, Town, Country, Digits, Date, Flag, Number };

struct Column {
    std::string Name;
    char Type;  ///< the type letter of a .dbf file
    std::size_t Width;
    int Decimals;
    Filling Values;
};

/// The columns of a profile.
std::vector<Column> columnsOf(Profile profile);

/// The records of a table, in order. Record i depends only on the seed, the profile and i.
class RecordGenerator {
public:
    RecordGenerator(Profile profile, std::uint64_t seed);

    const std::vector<Column>& columns() const { return Columns; }

    /// Makes the next record.
    void next();

    /// Whether the record has the deletion mark, as one in a hundred has.
    bool deleted() const { return Deleted; }

    /// The value of each column without padding; empty if there is none.
    const std::vector<std::string>& values() const { return Values; }

private:
    std::uint64_t draw();
    std::uint64_t below(std::uint64_t limit) { return draw() % limit; }
    std::string valueOf(const Column& column);
    std::string textOf(const Column& column);
    std::string date();
    std::string numberOf(const Column& column);
    std::string withQuotes(std::string text);

    bool Quotes;
    std::vector<Column> Columns;
    std::uint64_t Seed;
    std::uint64_t Serial = 0;
    std::uint64_t State = 0;
    bool Deleted = false;
    std::vector<std::string> Values;
};

/// Writes a table of `count` records to `path`, whose extension chooses the kind:
/// - dbf: all records;
/// - csv: a line of names, then the records that are not deleted;
/// - txt: the records that are not deleted, in columns of fixed width;
/// - sql: a script that creates the table, named after the file, and inserts the same records in one transaction.
///
/// Throws std::runtime_error if the file cannot be written, std::invalid_argument for another kind.
void writeTable(const std::string& path, Profile profile, std::uint64_t count, std::uint64_t seed);

}  // namespace kd_bench
