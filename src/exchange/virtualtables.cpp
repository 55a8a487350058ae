#include <kd_lib/exchange/virtualtables.h>

#include "detail/filetablemodule.h"
#include "detail/lettercase.h"
#include "detail/names.h"
#include "detail/sourcekind.h"
#include "detail/sqlitedatabase.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

namespace kd_lib::exchange {

namespace {

constexpr int instructionsBetweenLooks = 1000;

int stopRequested(void* stop)
{
    return static_cast<const std::stop_token*>(stop)->stop_requested() ? 1 : 0;
}

void say(const VirtualTableEvents& events, const std::string& file, Note note)
{
    if (events.OnNote) {
        events.OnNote(file, note);
    }
}

/// The name of a file's table, different from the previous ones.
std::string tableName(const FileTableOptions& file, std::set<std::string>& taken, const VirtualTableEvents& events)
{
    const Dialect& dialect = dialectOf(Engine::Sqlite);
    TableOptions options;
    options.Table = file.Table;
    std::vector<Note> notes;
    const std::string wanted = detail::tableName(file.File, options, dialect, notes);
    for (const Note& note : notes) {
        say(events, file.File, note);
    }
    std::string name = wanted;
    for (int number = 2; !taken.insert(detail::lowered(name)).second; ++number) {
        name = dialect.nameWithSuffix(wanted, std::string(1, '_').append(std::to_string(number)));
    }
    if (name != wanted) {
        say(events, file.File, {"its table is " + name + ", because another is " + wanted});
    }
    return name;
}

}  // namespace

void registerTables(sqlite3* connection, VirtualTableEvents events)
{
    if (detail::registerModule(connection, std::move(events), {}) != SQLITE_OK) {
        throw Error("", detail::reasonOf(connection));
    }
}

TableConnection::TableConnection(const std::vector<FileTableOptions>& files, VirtualTableEvents events,
                                 std::stop_token stop)
    : Stop(std::move(stop)), Database(detail::SqliteDatabase::inMemory(""))
{
    sqlite3* const connection = Database->handle();
    // SQLite would treat the quoted name of a missing column as a text.
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    if (detail::registerModule(connection, events, files) != SQLITE_OK) {
        Database->fail();
    }
    std::set<std::string> taken;
    for (std::size_t i = 0; i < files.size(); ++i) {
        const std::string name = tableName(files[i], taken, events);
        std::string sql = "CREATE VIRTUAL TABLE ";
        sql.append(detail::quotedName(name)).append(" USING kd(").append(std::to_string(i)).append(")");
        if (sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK) {
            Tables.push_back(name);
        } else if (files[i].MayFail) {
            say(events, files[i].File, {std::string("left out: ") + sqlite3_errmsg(connection), true});
        } else {
            Database->fail();
        }
    }
    if (Stop.stop_possible()) {
        sqlite3_progress_handler(connection, instructionsBetweenLooks, stopRequested, &Stop);
    }
}

TableConnection::~TableConnection() = default;

sqlite3* TableConnection::handle() const
{
    return Database->handle();
}

std::vector<FileTableOptions> tableFilesIn(const std::string& folder, const SourceOptions& options)
{
    std::error_code error;
    std::vector<FileTableOptions> files;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const SourceKind kind = detail::kindOfName(entry->path().string());
        std::error_code unknown;
        if (kind == SourceKind::Automatic || (kind == SourceKind::Fixed && options.FixedColumns.empty()) ||
            !entry->is_regular_file(unknown)) {
            continue;
        }
        files.push_back({entry->path().string(), {}, options, true});
    }
    if (error) {
        throw Error(folder, error.message());
    }
    if (files.empty()) {
        throw Error(folder, "no file in this folder has the extension of a table");
    }
    std::ranges::sort(files, {}, &FileTableOptions::File);
    return files;
}

}  // namespace kd_lib::exchange
