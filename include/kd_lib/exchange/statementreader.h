/// \file
/// Splits a script into SQL statements.
#pragma once

#include <kd_lib/export.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kd_lib::exchange {

/// Takes a script in SQLite's SQL in blocks of any size, and returns its statements.
///
/// - A ";" ends a statement and belongs to it. It does not count inside texts ('...'), quoted names ("...", `...`,
///   [...]) and comments. The last statement of a script may lack it.
/// - Comments are `--` up to the end of the line and `/* ... */`, as in SQL, and `#` up to the end of the line, as in
///   the scripts that `SqlDatabase::importSqlFile` reads (SQLite has no other use for that character).
/// - The statement that creates a trigger ends with the ";" after the END that follows a ";": the END of its body, not
///   that of a CASE.
/// - Blanks and comments between statements, empty statements and a byte order mark at the beginning are left out.
///   Comments inside a statement stay, except those with `#`.
///
/// Statements are not examined further; the database reports their faults.
///
///     StatementReader statements("people.sql");
///     while (readBlock(block)) {
///         while (statements.next(block)) run(statements.statement());
///     }
///     if (statements.finish()) run(statements.statement());
///
/// Memory: the current statement. Threads: one thread per object.
class KD_LIB_EXPORT StatementReader {
public:
    /// The longest statement that SQLite accepts.
    static constexpr std::size_t longestStatement = 1'000'000'000;

    /// Errors name `file`. A statement of more than `longest` bytes is an error.
    explicit StatementReader(std::string file, std::size_t longest = longestStatement);

    /// Reads `block` up to the end of the next statement, and removes the part that it read. True when a statement is
    /// complete: it is then `statement()` until the next call. False: `block` is empty now. Throws an `Error` if the
    /// statement becomes too long.
    bool next(std::string_view& block);

    /// After the last block: true if a last statement without ";" remains; it is now `statement()`.
    bool finish();

    /// The statement, with its ";" if it has one.
    const std::string& statement() const { return Text; }

    std::uint64_t number() const { return Number; }   ///< of the statement, from 1
    std::uint64_t line() const { return FirstLine; }  ///< of the statement's first character, from 1

private:
    enum class Inside : std::uint8_t { Code, Quotes, LineComment, BlockComment, HashComment };

    /// State of the words that show whether a trigger is created, and where its body ends.
    enum class Phase : std::uint8_t { Start, Explain, Create, Plain, Trigger, TriggerSemicolon, TriggerEnd };

    KD_LIB_LOCAL void startStatement();
    KD_LIB_LOCAL void skipByteOrderMark(std::string_view& block);
    KD_LIB_LOCAL bool readCode(std::string_view& block);
    KD_LIB_LOCAL bool takeCharacter(char c);
    KD_LIB_LOCAL bool opensComment(char c);
    KD_LIB_LOCAL void takePending();
    KD_LIB_LOCAL void readQuotes(std::string_view& block);
    KD_LIB_LOCAL void readComment(std::string_view& block);
    KD_LIB_LOCAL void readBlockComment(std::string_view& block);
    KD_LIB_LOCAL bool endsAtSemicolon();
    KD_LIB_LOCAL void endWord();
    KD_LIB_LOCAL void otherToken();
    KD_LIB_LOCAL void append(std::string_view text);
    KD_LIB_LOCAL void consume(std::string_view& block, std::size_t count);

    std::string File;
    std::size_t Longest;
    std::string Text;
    std::uint64_t Number = 0;
    std::uint64_t FirstLine = 1;
    std::uint64_t Line = 1;
    std::size_t MarkBytes = 0;  // bytes of a byte order mark read at the beginning
    Inside In = Inside::Code;
    Phase Words = Phase::Start;
    char Quote = 0;     // the character that ends the quotes
    char Pending = 0;   // "-" or "/": the next character decides whether it opens a comment
    bool Star = false;  // the last character of a block comment was "*"
    bool Complete = false;
    std::array<char, 10> Word = {};  // the current word, in capitals
    std::size_t WordSize = 0;        // more than fits: not a keyword
};

}  // namespace kd_lib::exchange
