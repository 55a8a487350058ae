// The loadable extension of SQLite: `.load kd_tables` in its shell, or sqlite3_load_extension.
#include "../detail/filetablemodule.h"
#include "../detail/sqliteapi.h"

#include <kd_lib/exchange/error.h>
#include <kd_lib/export.h>

#include <exception>
#include <string>

SQLITE_EXTENSION_INIT1

namespace {

using namespace kd_lib::exchange;

/// Rejects and notes go to SQLite's log, which its shell shows after `.log on`.
VirtualTableEvents loggedEvents()
{
    VirtualTableEvents events;
    events.OnReject = [](const Reject& reject) {
        const std::string line = Error(reject.Where, reject.Reason).what();
        sqlite3_log(SQLITE_WARNING, "%s; taken as %s", line.c_str(), actionName(reject.Action));
    };
    events.OnNote = [](const std::string& file, const Note& note) {
        sqlite3_log(note.Loss ? SQLITE_WARNING : SQLITE_NOTICE, "%s: %s", file.c_str(), note.Text.c_str());
    };
    return events;
}

}  // namespace

/// SQLite derives this name from that of the file.
extern "C" KD_LIB_EXPORT int sqlite3_kdtables_init(sqlite3* connection, char** message,
                                                   const sqlite3_api_routines* functions)
{
    SQLITE_EXTENSION_INIT2(functions)
    try {
        return detail::registerModule(connection, loggedEvents(), {});
    } catch (const std::exception& failure) {
        *message = sqlite3_mprintf("%s", failure.what());
        return SQLITE_ERROR;
    }
}
