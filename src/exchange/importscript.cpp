#include <kd_lib/exchange/importscript.h>

#include "detail/databasefile.h"
#include "detail/inputfile.h"
#include "detail/sqlitedatabase.h"

#include <kd_lib/exchange/error.h>
#include <kd_lib/exchange/statementreader.h>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace kd_lib::exchange {

namespace {

using detail::SqliteDatabase;

/// The savepoint that replaces a BEGIN of the script.
constexpr const char* transactionName = "kd_db import";

/// The kind of a statement, as SQLite's compiler reports it.
enum class Step { Ordinary, Begin, Commit, Rollback, Savepoint, Release, RollbackTo };

/// A BEGIN or SAVEPOINT of the script that has not ended.
struct Level {
    std::string Name;  // of the savepoint
    std::uint64_t Line;
    bool Transaction;  // BEGIN
};

/// The transactions of a script, as savepoints of the surrounding one.
class ScriptTransactions {
public:
    explicit ScriptTransactions(SqliteDatabase& database) : Database(database)
    {
        sqlite3_set_authorizer(Database.handle(), note, this);
    }

    /// Must be called before a statement is compiled.
    void expect() { Found = Step::Ordinary; }

    Step found() const { return Found; }

    /// Carries out BEGIN, COMMIT or ROLLBACK. Returns the reason why that is impossible, or nothing.
    const char* run(std::uint64_t line)
    {
        if (Found == Step::Begin) {
            if (!Levels.empty()) {
                return "cannot start a transaction within a transaction";
            }
            Database.execute("SAVEPOINT " + detail::quotedName(transactionName));
            Levels.push_back({transactionName, line, true});
            return nullptr;
        }
        if (Levels.empty()) {
            return Found == Step::Commit ? "cannot commit - no transaction is active"
                                         : "cannot rollback - no transaction is active";
        }
        end(Found == Step::Rollback);
        return nullptr;
    }

    /// Follows SAVEPOINT, RELEASE and ROLLBACK TO, which SQLite has run.
    void follow(std::uint64_t line)
    {
        if (Found == Step::Savepoint) {
            Levels.push_back({Name, line, false});
            return;
        }
        const auto same = [this](const Level& level) { return sqlite3_stricmp(level.Name.c_str(), Name.c_str()) == 0; };
        const auto found = std::find_if(Levels.rbegin(), Levels.rend(), same);
        const auto keep = Levels.rend() - found - (Found == Step::Release && found != Levels.rend() ? 1 : 0);
        Levels.erase(Levels.begin() + keep, Levels.end());
    }

    /// The innermost level that the script left open; null: none.
    const Level* open() const { return Levels.empty() ? nullptr : &Levels.back(); }

private:
    void end(bool back)
    {
        for (; Levels.size() > 1; Levels.pop_back()) {
            Database.execute("RELEASE " + detail::quotedName(Levels.back().Name));
        }
        const std::string name = detail::quotedName(Levels.back().Name);
        if (back) {
            Database.execute("ROLLBACK TO " + name);
        }
        Database.execute("RELEASE " + name);
        Levels.clear();
    }

    /// Called by SQLite's compiler.
    static int note(void* self, int action, const char* operation, const char* name, const char*, const char*)
    {
        if (action == SQLITE_TRANSACTION || action == SQLITE_SAVEPOINT) {
            static_cast<ScriptTransactions*>(self)->note(action == SQLITE_SAVEPOINT, operation, name);
        }
        return SQLITE_OK;
    }

    void note(bool savepoint, std::string_view operation, const char* name)
    {
        if (savepoint) {
            Name = name;
            Found = operation == "BEGIN" ? Step::Savepoint : operation == "RELEASE" ? Step::Release : Step::RollbackTo;
        } else {
            Found = operation == "BEGIN" ? Step::Begin : operation == "COMMIT" ? Step::Commit : Step::Rollback;
        }
    }

    SqliteDatabase& Database;
    std::vector<Level> Levels;
    Step Found = Step::Ordinary;
    std::string Name;  // of the savepoint found
};

/// Failures of the database itself, whatever the statement was.
bool isOfDatabase(int code)
{
    switch (code) {
    case SQLITE_BUSY:
    case SQLITE_CANTOPEN:
    case SQLITE_CORRUPT:
    case SQLITE_FULL:
    case SQLITE_IOERR:
    case SQLITE_NOTADB:
    case SQLITE_PROTOCOL:
    case SQLITE_READONLY:
        return true;
    default:
        return false;
    }
}

class ScriptRun {
public:
    ScriptRun(const std::string& script, SqliteDatabase& database, const ImportOptions& options)
        : Input(script, options.Stop), Database(database), Options(options), Statements(script, longest(database)),
          Transactions(database)
    {
    }

    ImportTally run()
    {
        std::vector<char> buffer(detail::InputFile::usualRead);
        while (const std::size_t size = Input.readSome(buffer.data(), buffer.size())) {
            checkEncoding({buffer.data(), size});
            std::string_view block(buffer.data(), size);
            while (Statements.next(block)) {
                runStatement();
            }
            reportProgress();
        }
        if (Statements.finish()) {
            runStatement();
        }
        reportProgress();
        checkEnd();
        return {Statements.number()};
    }

private:
    static std::size_t longest(const SqliteDatabase& database)
    {
        return static_cast<std::size_t>(sqlite3_limit(database.handle(), SQLITE_LIMIT_SQL_LENGTH, -1));
    }

    void reportProgress() const
    {
        // The signal that stops this import may also stop the other end of a pipe, which then ends.
        if (Options.Stop.stop_requested()) {
            throw Stopped(Input.path(), "stopped");
        }
        if (Options.OnProgress) {
            Options.OnProgress({Statements.number(), Input.position(), Input.size()});
        }
    }

    void checkEncoding(std::string_view block) const
    {
        const bool first = Input.position() == block.size();
        if (first && (block.starts_with("\xFF\xFE") || block.starts_with("\xFE\xFF"))) {
            throw Error(Input.path(), "the script is UTF-16; it must be UTF-8");
        }
    }

    void checkEnd() const
    {
        const Level* level = Transactions.open();
        if (level != nullptr) {
            throw Error(Input.path(), "the script ends inside the " +
                                          (level->Transaction ? "transaction" : "savepoint " + level->Name) +
                                          " that began in line " + std::to_string(level->Line));
        }
    }

    void runStatement()
    {
        const std::string& text = Statements.statement();
        if (text.find('\0') != std::string::npos) {
            failAt(Statements.line(), "the statement holds a zero byte");
        }
        // SQLite splits at the same places. If it ever did not, the rest would still run.
        const char* rest = text.c_str();
        while (*rest != '\0') {
            rest = runFirst(rest, text.c_str() + text.size());
        }
    }

    /// Runs the first statement of a text that ends with a zero byte at `end`; returns the rest.
    const char* runFirst(const char* text, const char* end)
    {
        Transactions.expect();
        sqlite3_stmt* compiled = nullptr;
        const char* rest = end;
        // If the length includes the zero byte, SQLite makes no copy.
        const int code =
            sqlite3_prepare_v2(Database.handle(), text, static_cast<int>(end - text) + 1, &compiled, &rest);
        const detail::StatementHandle statement(compiled);
        if (code != SQLITE_OK) {
            fail(text);
        }
        const Step step = sqlite3_stmt_isexplain(compiled) == 0 ? Transactions.found() : Step::Ordinary;
        if (step == Step::Begin || step == Step::Commit || step == Step::Rollback) {
            if (const char* reason = Transactions.run(Statements.line()); reason != nullptr) {
                failAt(Statements.line(), reason);
            }
        } else if (compiled != nullptr) {
            runCompiled(compiled, text);
            if (step != Step::Ordinary) {
                Transactions.follow(Statements.line());
            }
        }
        return rest;
    }

    void runCompiled(sqlite3_stmt* statement, const char* text)
    {
        int code = SQLITE_ROW;
        while (code == SQLITE_ROW) {
            code = sqlite3_step(statement);
        }
        if (code != SQLITE_DONE) {
            fail(text);
        }
    }

    [[noreturn]] void fail(const char* text) const
    {
        const int code = sqlite3_errcode(Database.handle());
        if (Options.Stop.stop_requested()) {
            throw Stopped(Input.path(), "stopped");
        }
        if (isOfDatabase(code)) {
            Database.fail();
        }
        std::uint64_t line = Statements.line();
        if (const int offset = sqlite3_error_offset(Database.handle()); offset > 0) {
            const char* const start = Statements.statement().c_str();
            line += static_cast<std::uint64_t>(std::count(start, text + offset, '\n'));
        }
        failAt(line, sqlite3_errmsg(Database.handle()));
    }

    [[noreturn]] void failAt(std::uint64_t line, const std::string& reason) const
    {
        throw Error(Input.path(), "statement " + std::to_string(Statements.number()) + ", line " +
                                      std::to_string(line) + ": " + reason);
    }

    detail::InputFile Input;
    SqliteDatabase& Database;
    const ImportOptions& Options;
    StatementReader Statements;
    ScriptTransactions Transactions;
};

ImportTally runIn(const std::string& path, bool isNew, const std::string& script, const std::string& name,
                  const ImportOptions& options)
{
    SqliteDatabase database(path, name);
    database.heed(options.Stop, options.Patience);
    if (isNew) {
        // No other program knows the file, and it is written to the disk before it is published.
        database.execute("PRAGMA locking_mode=EXCLUSIVE; PRAGMA synchronous=OFF");
    }
    database.execute("BEGIN IMMEDIATE");
    const ImportTally tally = ScriptRun(script, database, options).run();
    sqlite3_set_authorizer(database.handle(), nullptr, nullptr);
    database.execute("COMMIT");
    return tally;
}

}  // namespace

ImportTally importScript(const std::string& script, const std::string& database, const ImportOptions& options)
{
    detail::DatabaseFile file(database);
    const ImportTally tally = runIn(file.path(), file.isNew(), script, database, options);
    if (file.isNew() && !file.publish()) {
        throw Error(database, "another program has created this database meanwhile; nothing was stored");
    }
    return tally;
}

}  // namespace kd_lib::exchange
