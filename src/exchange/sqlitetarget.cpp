#include <kd_lib/exchange/sqlitetarget.h>

#include "detail/databasefile.h"
#include "detail/digits.h"
#include "detail/sqliteaffinity.h"
#include "detail/sqlitebinder.h"
#include "detail/sqlitedatabase.h"

#include <kd_lib/exchange/tablelayout.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace kd_lib::exchange {

namespace {

using detail::Affinity;
using detail::quotedName;
using detail::SqliteDatabase;
using detail::StatementHandle;

/// Failures that the record is to blame for, and not the database.
bool isOfRecord(int code)
{
    switch (code) {
    case SQLITE_CONSTRAINT:
    case SQLITE_ERROR:
    case SQLITE_MISMATCH:
    case SQLITE_TOOBIG:
        return true;
    default:
        return false;
    }
}

void bindText(sqlite3_stmt* statement, int parameter, const std::string& text)
{
    sqlite3_bind_text64(statement, parameter, text.c_str(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

bool holdsTable(SqliteDatabase& database, const std::string& name)
{
    const StatementHandle statement =
        database.prepare("SELECT 1 FROM sqlite_master WHERE type IN ('table', 'view') AND name = ?1 COLLATE NOCASE");
    bindText(statement.get(), 1, name);
    return database.step(statement.get());
}

/// What the columns of an existing table do with values.
struct ExistingColumn {
    std::string Name;
    Affinity Kind;
};

std::vector<ExistingColumn> columnsOf(SqliteDatabase& database, const std::string& table)
{
    std::vector<ExistingColumn> columns;
    const StatementHandle statement = database.prepare("SELECT name, type FROM pragma_table_xinfo(?1)");
    bindText(statement.get(), 1, table);
    const auto textAt = [&statement](int column) {
        const unsigned char* const text = sqlite3_column_text(statement.get(), column);
        return std::string(text != nullptr ? reinterpret_cast<const char*>(text) : "");
    };
    while (database.step(statement.get())) {
        columns.push_back({textAt(0), detail::affinityOf(textAt(1))});
    }
    return columns;
}

const ExistingColumn* find(const std::vector<ExistingColumn>& columns, const std::string& name)
{
    const auto found = std::ranges::find_if(
        columns, [&name](const ExistingColumn& c) { return sqlite3_stricmp(c.Name.c_str(), name.c_str()) == 0; });
    return found != columns.end() ? &*found : nullptr;
}

/// Makes the place for a new table.
void makeRoom(SqliteDatabase& database, const TableLayout& layout)
{
    if (!holdsTable(database, layout.table())) {
        return;
    }
    if (layout.mode() != TableMode::Replace) {
        throw Error(database.name(), "table " + layout.table() + " exists already");
    }
    database.execute("DROP TABLE " + layout.quotedTable());
}

}  // namespace

/// A load under way.
class SqliteTarget::Load {
public:
    Load(const std::string& database, const TableOptions& table, const SqliteOptions& options, const std::string& file,
         const std::vector<Column>& columns)
        : Options(options), SourceFile(file), Layout(dialectOf(Engine::Sqlite), file, columns, table), Place(database),
          Database(open(Place.path(), database))
    {
        if (Place.isNew()) {
            // Nobody else knows the file: it needs neither locks nor a journal, and it is brought to the disk before
            // it is published.
            Database->execute("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA locking_mode=EXCLUSIVE");
        }
        Database->execute("BEGIN IMMEDIATE");
        if (Layout.mode() == TableMode::Append) {
            joinTable();
        } else {
            makeRoom(*Database, Layout);
            Database->execute(Layout.createTable(Layout.table()));
        }
        const std::size_t count = Layout.columns().size();
        Binder.emplace(Existing.empty() ? std::vector<Affinity>(count, Affinity::None) : Existing);
        Insert = Database->prepare(insertStatement(count));
    }

    const TableLayout& layout() const { return Layout; }

    void fit(Record& record)
    {
        if (Existing.empty()) {
            Layout.fit(record);
            return;
        }
        for (std::size_t i = 0; i < Existing.size(); ++i) {
            const Cell& cell = record.Cells[i];
            if (const char* const reason = detail::reasonAgainst(Existing[i], cell); reason != nullptr) {
                record.reject(i, reason);
            } else if (Existing[i] == Affinity::None && cell.Kind == CellKind::Number) {
                KeptAsText[i] += detail::sqliteFormOf(cell.Text) == detail::SqliteForm::Text ? 1U : 0U;
            }
        }
    }

    std::vector<Note> notes() const
    {
        std::vector<Note> notes = Layout.notes();
        for (std::size_t i = 0; i < KeptAsText.size(); ++i) {
            if (KeptAsText[i] != 0) {
                notes.push_back(TableLayout::textNote(Layout.columns()[i].Name, KeptAsText[i]));
            }
        }
        return notes;
    }

    void write(const Record& record)
    {
        sqlite3_stmt* const insert = Insert.get();
        if (Binder->bind(insert, record) != SQLITE_OK || sqlite3_step(insert) != SQLITE_DONE) {
            fail(record);
        }
        sqlite3_reset(insert);
    }

    void finish()
    {
        Insert.reset();
        Database->execute("COMMIT");
        if (!Place.isNew()) {
            return;
        }
        const std::string name = Database->name();
        Database.reset();
        if (!Place.publish()) {
            copyInto(name);
        }
    }

private:
    std::unique_ptr<SqliteDatabase> open(const std::string& path, const std::string& name) const
    {
        auto database = std::make_unique<SqliteDatabase>(path, name, SqliteDatabase::Access::Change);
        database->heed(Options.Stop, Options.Patience);
        return database;
    }

    void joinTable()
    {
        if (!holdsTable(*Database, Layout.table())) {
            throw Error(Database->name(), "there is no table " + Layout.table());
        }
        const std::vector<ExistingColumn> columns = columnsOf(*Database, Layout.table());
        const auto require = [&](const std::string& name) {
            const ExistingColumn* const column = find(columns, name);
            if (column == nullptr) {
                throw Error(Database->name(), "table " + Layout.table() + " has no column " + name);
            }
            return column->Kind;
        };
        if (!Layout.key().empty()) {
            require(Layout.key());
        }
        for (const TargetColumn& column : Layout.columns()) {
            Existing.push_back(require(column.Name));
        }
        KeptAsText.resize(Existing.size());
    }

    std::string insertStatement(std::size_t columns) const
    {
        std::string sql = "INSERT INTO " + Layout.quotedTable() + " (" + Layout.columnList() + ") VALUES (?";
        for (std::size_t i = 1; i < columns; ++i) {
            sql += ",?";
        }
        return sql + ")";
    }

    [[noreturn]] void fail(const Record& record) const
    {
        if (Options.Stop.stop_requested() || !isOfRecord(sqlite3_errcode(Database->handle()))) {
            Database->fail();
        }
        throw Error(exchange::Place{SourceFile, record.Number, {}, {}},
                    Database->name() + ": " + detail::reasonOf(Database->handle()));
    }

    /// Brings the table into the database that another program has made meanwhile.
    void copyInto(const std::string& name)
    {
        const std::unique_ptr<SqliteDatabase> target = SqliteDatabase::openOrMake(name);
        target->heed(Options.Stop, Options.Patience);
        const StatementHandle attach = target->prepare("ATTACH ?1 AS fresh");
        bindText(attach.get(), 1, Place.path());
        target->step(attach.get());
        target->execute("BEGIN IMMEDIATE");
        makeRoom(*target, Layout);
        const std::string table = Layout.quotedTable();
        target->execute(Layout.createTable(Layout.table()));
        target->execute("INSERT INTO main." + table + " SELECT * FROM fresh." + table + " ORDER BY rowid");
        target->execute("COMMIT");
    }

    const SqliteOptions& Options;
    std::string SourceFile;
    TableLayout Layout;
    detail::DatabaseFile Place;  // before the connection, which is closed first
    std::unique_ptr<SqliteDatabase> Database;
    std::vector<Affinity> Existing;         // of the columns of a table that is appended to; empty: a new table
    std::vector<std::uint64_t> KeptAsText;  // numbers in each column of such a table
    std::optional<detail::SqliteBinder> Binder;
    StatementHandle Insert;  // after the connection: it ends before that closes
};

SqliteTarget::SqliteTarget(std::string database, TableOptions table, SqliteOptions options)
    : Database(std::move(database)), Table(std::move(table)), Options(std::move(options))
{
}

SqliteTarget::~SqliteTarget() = default;

void SqliteTarget::begin(const std::string& file, const std::vector<Column>& columns)
{
    Work = std::make_unique<Load>(Database, Table, Options, file, columns);
    Destination = "table " + Work->layout().table();
}

void SqliteTarget::fit(Record& record)
{
    Work->fit(record);
}

void SqliteTarget::write(const Record& record)
{
    Work->write(record);
}

void SqliteTarget::finish()
{
    Notes = Work->notes();
    Work->finish();
    Work.reset();
}

void SqliteTarget::abandon() noexcept
{
    Work.reset();
}

std::string SqliteTarget::destination() const
{
    return Destination;
}

}  // namespace kd_lib::exchange
