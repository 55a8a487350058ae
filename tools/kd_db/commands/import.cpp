#include "commands.h"

#include "../database.h"
#include "../output.h"
#include "../script_tail.h"
#include "../signals.h"
#include "../sql_words.h"

#include <kd_lib/path.h>

#include <iostream>

namespace kd_tool {

namespace {

constexpr const char* savepoint = "\"kd_db import\"";

/// Runs a script inside one transaction, so that it changes everything or nothing. The transactions of the
/// script itself become savepoints in that one.
class ImportConnection : public Connection {
public:
    using Connection::Connection;
    using Connection::execute;

    bool execute(const std::string& sql) override
    {
        if (!RunningScript) {
            return Connection::execute(sql);
        }
        ++Statements;
        errorText.clear();
        return signalReceived() == 0 && executeScripts(sql);
    }

    void rollback() override
    {
        RunningScript = false;
        Connection::rollback();
    }

    /// Throws a `Failure` that names the script where a statement failed.
    void run(const std::string& script)
    {
        begin();
        // With the database's own descriptors taken: the library does not tell a script that cannot be
        // opened from one that ran to its end.
        requireReadableFile(script);
        RunningScript = true;
        bool stopped = false;
        {
            const Muted quiet(std::cerr);
            stopped = importSqlFile(script);
        }
        RunningScript = false;
        throwIfInterrupted();
        if (stopped) {
            // SQLite has no error for a text that holds no statement.
            const std::string reason = errorText.empty() ? "an empty statement" : errorText;
            throw Failure(script, "statement " + std::to_string(Statements) + ": " + reason);
        }
        if (InScriptTransaction) {
            throw Failure(script, "the script ends inside a transaction");
        }
        commit();
    }

    std::uint64_t statements() const { return Statements; }

private:
    bool executeScripts(const std::string& sql)
    {
        const TransactionWord word = transactionWord(sql);
        if (word == TransactionWord::None || (word == TransactionWord::Begin && InScriptTransaction)) {
            return Connection::execute(sql);
        }
        if (word == TransactionWord::Begin) {
            InScriptTransaction = true;
            return Connection::execute(std::string("SAVEPOINT ") + savepoint);
        }
        if (!InScriptTransaction) {
            errorText = "no transaction is active";
            return false;
        }
        InScriptTransaction = false;
        return (word == TransactionWord::Commit || Connection::execute(std::string("ROLLBACK TO ") + savepoint)) &&
               Connection::execute(std::string("RELEASE ") + savepoint);
    }

    bool RunningScript = false;
    bool InScriptTransaction = false;
    std::uint64_t Statements = 0;
};

}  // namespace

void import(const ImportOptions& options)
{
    finishOnSignal();
    requireReadableFile(options.Script);
    TargetFile file(options.Database);
    std::uint64_t statements = 0;
    {
        ImportConnection database(options.Database);
        database.run(options.Script);
        statements = database.statements();
    }
    file.keep();
    if (endsInsideStatement(options.Script)) {
        note(options.Script + ": the text behind the last \";\" was not run");
    }
    note(options.Script + ": " + counted(statements, "statement") + " run");
}

}  // namespace kd_tool
