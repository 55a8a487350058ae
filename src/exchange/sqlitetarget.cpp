#include <kd_lib/exchange/sqlitetarget.h>

#include "detail/digits.h"
#include "detail/loaddatabase.h"
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
using detail::SqliteDatabase;
using detail::StatementHandle;

/// Failures that are due to the record, not to the database.
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

/// How the columns of an existing table treat values.
struct TableColumn {
    std::string Name;
    Affinity Kind;
};

std::vector<TableColumn> columnsOf(SqliteDatabase& database, const std::string& table)
{
    std::vector<TableColumn> columns;
    const StatementHandle statement = database.prepare("SELECT name, type FROM pragma_table_xinfo(?1)");
    detail::bindText(statement.get(), 1, table);
    const auto textAt = [&statement](int column) {
        const unsigned char* const text = sqlite3_column_text(statement.get(), column);
        return std::string(text != nullptr ? reinterpret_cast<const char*>(text) : "");
    };
    while (database.step(statement.get())) {
        columns.push_back({textAt(0), detail::affinityOf(textAt(1))});
    }
    return columns;
}

const TableColumn* find(const std::vector<TableColumn>& columns, const std::string& name)
{
    const auto found = std::ranges::find_if(
        columns, [&name](const TableColumn& c) { return sqlite3_stricmp(c.Name.c_str(), name.c_str()) == 0; });
    return found != columns.end() ? &*found : nullptr;
}

}  // namespace

/// A running load.
class SqliteTarget::Load {
public:
    Load(detail::LoadDatabase& into, const TableOptions& table, const std::string& file,
         const std::vector<Column>& columns)
        : Into(into), Database(into.database()), SourceFile(file),
          Layout(dialectOf(Engine::Sqlite), file, columns, table)
    {
        Database.execute("BEGIN IMMEDIATE");
        try {
            prepare();
        } catch (...) {
            Database.rollback();
            throw;
        }
    }

    ~Load()
    {
        Insert.reset();
        Database.rollback();
    }

    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

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
        Database.execute("COMMIT");
        if (Layout.mode() != TableMode::Append) {
            Into.add({Layout.table(), Layout.createTable(Layout.table()), Layout.mode()});
        }
    }

private:
    void prepare()
    {
        if (Layout.mode() == TableMode::Append) {
            joinTable();
        } else {
            detail::makeRoom(Database, Layout.table(), Layout.mode());
            Database.execute(Layout.createTable(Layout.table()));
        }
        Binder.emplace(Existing.empty() ? newColumns() : Existing);
        Insert = Database.prepare(insertStatement(Layout.columns().size()));
    }

    std::vector<Affinity> newColumns() const
    {
        std::vector<Affinity> affinities;
        for (const TargetColumn& column : Layout.columns()) {
            affinities.push_back(detail::affinityOf(column.Type));
        }
        return affinities;
    }

    void joinTable()
    {
        if (!detail::holdsTable(Database, Layout.table())) {
            throw Error(Database.name(), "there is no table " + Layout.table());
        }
        const std::vector<TableColumn> columns = columnsOf(Database, Layout.table());
        const auto require = [&](const std::string& name) {
            const TableColumn* const column = find(columns, name);
            if (column == nullptr) {
                throw Error(Database.name(), "table " + Layout.table() + " has no column " + name);
            }
            return column->Kind;
        };
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
        if (Into.options().Stop.stop_requested() || !isOfRecord(sqlite3_errcode(Database.handle()))) {
            Database.fail();
        }
        throw Error(exchange::Place{SourceFile, record.Number, {}, {}},
                    Database.name() + ": " + detail::reasonOf(Database.handle()));
    }

    detail::LoadDatabase& Into;
    SqliteDatabase& Database;
    std::string SourceFile;
    TableLayout Layout;
    std::vector<Affinity> Existing;         // of the columns of the existing table; empty: a new table
    std::vector<std::uint64_t> KeptAsText;  // how many numbers, in each column of that table
    std::optional<detail::SqliteBinder> Binder;
    StatementHandle Insert;
};

SqliteBatch::SqliteBatch(std::string database, SqliteOptions options)
    : Database(std::make_unique<detail::LoadDatabase>(std::move(database), std::move(options),
                                                      detail::LoadDatabase::Tables::Several))
{
}

SqliteBatch::~SqliteBatch() = default;

void SqliteBatch::finish()
{
    Database->finish();
}

SqliteTarget::SqliteTarget(std::string database, TableOptions table, SqliteOptions options)
    : Name(std::move(database)), Table(std::move(table)), Options(std::move(options))
{
}

SqliteTarget::SqliteTarget(SqliteBatch& batch, TableOptions table) : Batch(&batch), Table(std::move(table)) {}

SqliteTarget::~SqliteTarget() = default;

void SqliteTarget::begin(const std::string& file, const std::vector<Column>& columns)
{
    if (Batch == nullptr) {
        Own = std::make_unique<detail::LoadDatabase>(Name, Options, detail::LoadDatabase::Tables::One);
    }
    Work = std::make_unique<Load>(Batch == nullptr ? *Own : *Batch->Database, Table, file, columns);
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
    if (Own != nullptr) {
        Own->finish();
        Own.reset();
    }
}

void SqliteTarget::abandon() noexcept
{
    Work.reset();
    Own.reset();
}

std::string SqliteTarget::destination() const
{
    return Destination;
}

}  // namespace kd_lib::exchange
