/// \file
/// The SQL dialects of SQLite, PostgreSQL and MySQL/MariaDB.
#pragma once

#include <kd_lib/export.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kd_lib::exchange {

enum class Engine : std::uint8_t {
    Sqlite,
    PostgreSql,
    MySql  ///< MariaDB too
};

/// The type names of a dialect. `TableLayout` chooses those of numbers and of texts of a known width.
struct TypeWords {
    const char* Text;     ///< of any length
    const char* Varchar;  ///< written before "(n)", a number of characters; empty if there is none
    const char* Integer;  ///< 32 bits
    const char* BigInteger;
    const char* Currency;  ///< empty: no type, see `TableLayout`
    const char* Float;
    const char* Boolean;
    const char* Date;
    const char* Time;
    const char* Timestamp;
    const char* Bytes;
    const char* Key;  ///< of a column that the database fills with 1, 2, ...
};

/// The facts of one dialect: a constant, which `dialectOf` returns.
struct KD_LIB_EXPORT Dialect {
    Engine Is;
    const char* Name;  ///< "sqlite", "postgresql", "mysql"; as in `--to`

    char NameQuote;              ///< around names, doubled inside
    std::size_t NameBytes;       ///< the longest name in bytes; 0: no limit
    std::size_t NameCharacters;  ///< the longest name in characters; 0: no limit
    bool BasicPlaneOnly;         ///< names hold no characters above U+FFFF
    bool BlanksAtEnd;            ///< names may end with blanks and line ends
    std::size_t FileNameBytes;   ///< the longest table name in the form that MySQL gives it as a file name; 0: no limit
    const char* OwnTables;       ///< names of tables that begin with this are reserved
    std::span<const std::string_view> OwnColumns;  ///< column names that are reserved, in lower case

    std::size_t Columns;            ///< the most columns of a table
    std::size_t VarcharCharacters;  ///< the longest varchar; 0: every text is `Types.Text`
    TypeWords Types;
    const char* AfterTable;  ///< the text after the ")" of CREATE TABLE

    /// The statements, without ";", after which a session reads scripts correctly, whatever its settings were.
    std::span<const std::string_view> Session;

    /// `name` as it is written in a statement: order -> "order", a"b -> "a""b"; MySQL: `order`.
    std::string quoteName(std::string_view name) const;

    /// `name` followed by `suffix` (ASCII letters, digits and underscores), cut so that the database accepts it as the
    /// name of a table: for temporary names.
    std::string nameWithSuffix(std::string_view name, std::string_view suffix) const;

    /// `name`, cut between two characters so that the database accepts it with `room` more bytes.
    std::string_view cutName(std::string_view name, std::size_t room = 0) const;

    /// The same for the name of a table, which may have one more limit.
    std::string_view cutTableName(std::string_view name, std::size_t room = 0) const;
};

/// The dialect of an engine.
KD_LIB_EXPORT const Dialect& dialectOf(Engine engine);

/// The dialect of this name; null if there is none.
KD_LIB_EXPORT const Dialect* dialectNamed(std::string_view name);

}  // namespace kd_lib::exchange
