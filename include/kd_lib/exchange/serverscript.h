/// \file
/// Splits a script for a server into its statements.
#pragma once

#include <kd_lib/exchange/dialect.h>
#include <kd_lib/export.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kd_lib::exchange {

/// Reads a script as the server's client (psql or mariadb) does:
/// - A ";" ends a statement, unless it is inside quotes, comments, $tag$ quotes, round brackets or the BEGIN ATOMIC ...
///   END of a routine (PostgreSQL). DELIMITER sets another end mark (MySQL).
/// - COPY ... FROM stdin is followed by rows, up to a line `\.`.
/// - Comments and blanks before a statement are left out, except MySQL's `/*! ... */`.
/// - Commands of psql (`\connect`) are an `Error`. Those without effect here are left out: `\restrict` and
///   `\unrestrict`, which pg_dump writes, and `\set ON_ERROR_STOP`.
///
///     ServerScript script("people.sql", Engine::PostgreSql);
///     while (script.next(false)) run(script.statement());
///
/// Memory: the current statement.
class KD_LIB_EXPORT ServerScript {
public:
    /// The longest statement that is read, unless the constructor sets another.
    static constexpr std::size_t longestStatement = 1'000'000'000;

    /// Opens a file; "-" is standard input. Throws an `Error` if it cannot be read. A statement of more than `longest`
    /// bytes is an error.
    ServerScript(const std::string& file, Engine engine, std::size_t longest = longestStatement);
    ~ServerScript();
    ServerScript(const ServerScript&) = delete;
    ServerScript& operator=(const ServerScript&) = delete;

    /// Reads the next statement; false at the end. `backslashes`: in the current session, a backslash inside plain
    /// quotes escapes the next byte.
    bool next(bool backslashes);

    /// Without its ";"; valid until the next call of `next` or `copyRows`.
    std::string_view statement() const;

    std::uint64_t number() const;  ///< of the statement, from 1
    std::uint64_t line() const;    ///< of the statement's first character, from 1

    /// After a COPY ... FROM stdin: its rows in pieces of whole, unchanged lines; empty after the last.
    std::string_view copyRows();

    std::uint64_t position() const;             ///< bytes read
    std::optional<std::uint64_t> size() const;  ///< of the script, if known

private:
    class KD_LIB_LOCAL Reader;

    std::unique_ptr<Reader> Of;
};

}  // namespace kd_lib::exchange
