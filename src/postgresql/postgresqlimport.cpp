#include "postgresqlimport.h"

#include "postgresqlsession.h"

#include <kd_lib/exchange/serverscript.h>
#include <kd_lib/text.h>

#include <cstring>
#include <optional>

namespace kd_lib::exchange::detail {

namespace {

constexpr const char* savepoint = "kd_db_import";

/// The effect of a statement on the transaction.
enum class Step { None, Begin, Commit, Rollback };

Step stepOf(std::string_view statement)
{
    std::string words[2];
    std::size_t at = 0;
    for (std::string& word : words) {
        at = statement.find_first_not_of(" \t\r\n", at);
        const std::size_t end = std::min(statement.find_first_of(" \t\r\n", at), statement.size());
        if (at == std::string_view::npos) {
            break;
        }
        word = stringToUpper(std::string(statement.substr(at, end - at)));
        at = end;
    }
    const bool alone = words[1].empty() || words[1] == "WORK" || words[1] == "TRANSACTION";
    if (words[0] == "BEGIN" || (words[0] == "START" && words[1] == "TRANSACTION")) {
        return Step::Begin;
    }
    if (alone && (words[0] == "COMMIT" || words[0] == "END")) {
        return Step::Commit;
    }
    return alone && (words[0] == "ROLLBACK" || words[0] == "ABORT") ? Step::Rollback : Step::None;
}

class Import {
public:
    Import(const std::string& uri, const ServerOptions& server, const std::string& script, const ImportOptions& options)
        : File(script), Options(options), Session(uri, {options.Stop.stop_possible() ? options.Stop : server.Stop}),
          Script(script, Engine::PostgreSql)
    {
    }

    ImportTally run()
    {
        Session.run("BEGIN");
        while (Script.next(backslashes())) {
            runStatement(std::string(Script.statement()));
            reportProgress();
        }
        if (BeginLine) {
            throw Error(File,
                        "the script ends inside the transaction that began in line " + std::to_string(*BeginLine));
        }
        reportProgress();
        Session.run("COMMIT");
        return {Script.number()};
    }

private:
    bool backslashes() const
    {
        const char* const standard = PQparameterStatus(Session.handle(), "standard_conforming_strings");
        return standard != nullptr && std::strcmp(standard, "off") == 0;
    }

    void reportProgress() const
    {
        Session.checkStop();
        if (Options.OnProgress) {
            Options.OnProgress({Script.number(), Script.position(), Script.size()});
        }
    }

    void runStatement(const std::string& statement)
    {
        switch (stepOf(statement)) {
        case Step::Begin:
            if (!BeginLine) {  // as on the server, it has no effect inside a transaction
                BeginLine = Script.line();
                execute(std::string("SAVEPOINT ") + savepoint);
            }
            return;
        case Step::Commit:
        case Step::Rollback:
            if (BeginLine) {
                if (stepOf(statement) == Step::Rollback) {
                    execute(std::string("ROLLBACK TO ") + savepoint);
                }
                execute(std::string("RELEASE ") + savepoint);
                BeginLine.reset();
            }
            return;
        case Step::None:
            execute(statement);
        }
    }

    /// Sends a statement and ignores its rows.
    void execute(const std::string& statement)
    {
        if (PQsendQuery(Session.handle(), statement.c_str()) == 0) {
            fail(nullptr);
        }
        PQsetSingleRowMode(Session.handle());
        while (const Result result{PQgetResult(Session.handle())}) {
            switch (PQresultStatus(result.get())) {
            case PGRES_COPY_IN:
                copyIn();
                break;
            case PGRES_COPY_OUT:
                copyOut();
                break;
            case PGRES_COMMAND_OK:
            case PGRES_TUPLES_OK:
            case PGRES_SINGLE_TUPLE:
            case PGRES_EMPTY_QUERY:
                break;
            default:
                fail(result.get());
            }
        }
    }

    void copyIn()
    {
        for (std::string_view rows = Script.copyRows(); !rows.empty(); rows = Script.copyRows()) {
            if (PQputCopyData(Session.handle(), rows.data(), static_cast<int>(rows.size())) != 1) {
                fail(nullptr);
            }
            reportProgress();
        }
        if (PQputCopyEnd(Session.handle(), nullptr) != 1) {
            fail(nullptr);
        }
    }

    void copyOut() const
    {
        char* row = nullptr;
        while (PQgetCopyData(Session.handle(), &row, 0) > 0) {
            PQfreemem(row);
        }
    }

    [[noreturn]] void fail(const PGresult* result) const
    {
        Session.checkStop();
        if (PQstatus(Session.handle()) != CONNECTION_OK) {
            Session.fail(result);
        }
        std::string reason = kd_lib::detail::postgresqlReason(result, Session.handle());
        const char* const context = PQresultErrorField(result, PG_DIAG_CONTEXT);
        if (context != nullptr && std::strncmp(context, "COPY ", 5) == 0) {
            reason += "; " + kd_lib::detail::postgresqlReason(context);
        }
        throw Error(File, "statement " + std::to_string(Script.number()) + ", line " + std::to_string(Script.line()) +
                              ": " + reason);
    }

    std::string File;
    const ImportOptions& Options;
    PostgresqlSession Session;
    ServerScript Script;
    std::optional<std::uint64_t> BeginLine;
};

}  // namespace

ImportTally importIntoPostgresql(const std::string& uri, const ServerOptions& server, const std::string& script,
                                 const ImportOptions& options)
{
    return Import(uri, server, script, options).run();
}

}  // namespace kd_lib::exchange::detail
