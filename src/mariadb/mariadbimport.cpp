#include "mariadbimport.h"

#include "mariadbsession.h"

#include <kd_lib/exchange/serverscript.h>

namespace kd_lib::exchange::detail {

namespace {

class Import {
public:
    Import(const std::string& uri, const ServerOptions& server, const std::string& script, const ImportOptions& options)
        : File(script), Options(options), Session(uri, {options.Stop.stop_possible() ? options.Stop : server.Stop}),
          Script(script, Engine::MySql)
    {
    }

    ImportTally run()
    {
        Session.run("SET SESSION autocommit = 0");  // also after a statement that commits
        while (Script.next((Session.handle()->server_status & SERVER_STATUS_NO_BACKSLASH_ESCAPES) == 0)) {
            runStatement();
            reportProgress();
        }
        reportProgress();
        Session.run("COMMIT");
        return {Script.number()};
    }

private:
    void reportProgress() const
    {
        Session.checkStop();
        if (Options.OnProgress) {
            Options.OnProgress({Script.number(), Script.position(), Script.size()});
        }
    }

    void runStatement()
    {
        const std::string_view text = Script.statement();
        bool taken = mysql_real_query(Session.handle(), text.data(), text.size()) == 0;
        for (int more = 0; taken && more == 0;) {
            if (MYSQL_RES* const rows = mysql_use_result(Session.handle()); rows != nullptr) {
                mysql_free_result(rows);
            }
            more = mysql_errno(Session.handle()) == 0 ? mysql_next_result(Session.handle()) : 1;
            taken = more <= 0;
        }
        if (!taken) {
            fail();
        }
    }

    [[noreturn]] void fail() const
    {
        Session.checkStop();
        if (Session.lost()) {
            Session.fail();
        }
        throw Error(File, "statement " + std::to_string(Script.number()) + ", line " + std::to_string(Script.line()) +
                              ": " + Session.reason());
    }

    std::string File;
    const ImportOptions& Options;
    MariadbSession Session;
    ServerScript Script;
};

}  // namespace

ImportTally importIntoMariadb(const std::string& uri, const ServerOptions& server, const std::string& script,
                              const ImportOptions& options)
{
    return Import(uri, server, script, options).run();
}

}  // namespace kd_lib::exchange::detail
