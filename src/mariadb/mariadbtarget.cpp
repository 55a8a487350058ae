#include "mariadbtarget.h"

#include "mariadbcolumns.h"
#include "mariadbsession.h"
#include "rowsender.h"

#include <kd_lib/exchange/outputblock.h>
#include <kd_lib/exchange/rowchunks.h>
#include <kd_lib/exchange/tablelayout.h>

#include <optional>
#include <utility>

namespace kd_lib::exchange::detail {

namespace {

/// Marks an unfinished table.
constexpr const char* unfinished = "kd_db: unfinished load";

std::vector<std::string> namesOf(const TableLayout& layout, const std::optional<ExistingColumns>& existing)
{
    std::vector<std::string> names;
    for (std::size_t i = 0; i < layout.columns().size(); ++i) {
        names.push_back(existing ? existing->all()[i].Name : layout.columns()[i].Name);
    }
    return names;
}

}  // namespace

/// A running load.
class MariadbTarget::Load {
public:
    Load(std::string uri, const TableOptions& table, const ServerOptions& options, const std::string& file,
         const std::vector<Column>& columns)
        : Uri(std::move(uri)), SourceFile(file), Source(columns),
          Layout(dialectOf(Engine::MySql), file, columns, table), Session(Uri, options), Loaded(Layout.table()),
          Chunks([this](const RowChunks::Chunk& chunk) { send(chunk); }), Rows(Chunks)
    {
    }

    ~Load() { Chunks.discard(); }

    void begin()
    {
        for (const std::string& statement : Layout.session()) {
            Session.run(statement);
        }
        std::vector<std::string> foreign;
        if (Layout.mode() == TableMode::Append) {
            joinTable();
            foreign = foreignColumns(Session, Layout.table());
        } else {
            makeTable();
        }
        Columns = namesOf(Layout, Existing);
        Sender.emplace(Session, Layout, Loaded, Columns, foreign);
    }

    const TableLayout& layout() const { return Layout; }

    void fit(Record& record)
    {
        if (Existing) {
            Existing->fit(record, Engine::MySql);
        } else {
            Layout.fit(record);
        }
    }

    void write(const Record& record)
    {
        Sender->write(record, Rows);
        Rows.flush();
        Chunks.endRow(record.Number);
    }

    void finish()
    {
        Chunks.finish();
        if (Existing) {
            Session.run("COMMIT");
        } else {
            publish();
        }
    }

    /// Undoes everything; false if a table with a temporary name may remain.
    bool abandon() noexcept
    {
        Chunks.discard();
        try {
            if (Session.send("ROLLBACK")) {
                return !Made || Session.send(dropStatement());
            }
            return !Made || dropAnew();
        } catch (const std::exception&) {
            return false;
        }
    }

    /// The name under which the table is loaded.
    const std::string& loaded() const { return Loaded; }

private:
    /// Appends the text of rows to the current chunk.
    class RowBlock final : public OutputBlock {
    public:
        explicit RowBlock(RowChunks& chunks) : To(chunks) {}

    private:
        void take(std::string_view piece) override { To.text().append(piece); }

        RowChunks& To;
    };

    std::string quoted(const std::string& name) const { return Layout.dialect().quoteName(name); }
    std::string dropStatement() const { return "DROP TABLE IF EXISTS " + quoted(Loaded); }

    bool tableExists(const std::string& table)
    {
        return !Session
                    .rows("SELECT 1 FROM information_schema.tables WHERE table_schema = database() AND "
                          "table_name = " +
                          Session.literal(table))
                    .empty();
    }

    void joinTable()
    {
        Existing.emplace(Layout, columnsOfTable(Session, Layout.table()), Session.name());
        const TextRows engine =
            Session.rows("SELECT e.engine, e.transactions FROM information_schema.tables t JOIN "
                         "information_schema.engines e ON e.engine = t.engine WHERE t.table_schema = database() AND "
                         "t.table_name = " +
                         Session.literal(Layout.table()));
        if (!engine.empty() && engine[0][1] != "YES") {
            throw Error(Session.name(), "table " + Layout.table() + " is of engine " + engine[0][0] +
                                            ", which has no transactions: a failure could not be undone");
        }
        Session.run("START TRANSACTION");
    }

    void makeTable()
    {
        if (Layout.mode() == TableMode::Create && tableExists(Layout.table())) {
            throw Error(Session.name(), "table " + Layout.table() + " exists already");
        }
        Loaded = Layout.dialect().nameWithSuffix(Layout.table(), "_kd_db_" + std::to_string(Session.number()));
        Session.run(Layout.createTable(Loaded) + " COMMENT='" + unfinished + "'");
        Made = true;
        // The table is dropped after a failure, so a transaction would only cost time.
        Session.run("SET SESSION autocommit = 1");
    }

    /// The new table gets its name.
    void publish()
    {
        Session.run("ALTER TABLE " + quoted(Loaded) + " COMMENT=''");
        const std::string rename = quoted(Loaded) + " TO " + quoted(Layout.table());
        if (Layout.mode() != TableMode::Replace || !tableExists(Layout.table())) {
            Session.run("RENAME TABLE " + rename);
            return;
        }
        const std::string old =
            quoted(Layout.dialect().nameWithSuffix(Layout.table(), "_kd_db_old_" + std::to_string(Session.number())));
        Session.run("RENAME TABLE " + quoted(Layout.table()) + " TO " + old + ", " + rename);
        if (!Session.send("DROP TABLE " + old)) {
            const std::string reason = Session.reason();
            Session.run("RENAME TABLE " + quoted(Layout.table()) + " TO " + quoted(Loaded) + ", " + old + " TO " +
                        quoted(Layout.table()));
            throw Error(Session.name(), reason);
        }
    }

    /// Drops the table over a new connection.
    bool dropAnew()
    {
        MariadbSession second(Uri, {});
        second.send("KILL " + std::to_string(Session.number()));  // it may not have noticed its end
        return second.send(dropStatement());
    }

    /// On the thread of the chunks: until it returns, nobody else uses the connection.
    void send(const RowChunks::Chunk& chunk)
    {
        Session.checkStop();
        if (Existing) {
            Session.run("SAVEPOINT chunk");
        }
        std::optional<RowRefusal> refusal = Sender->send(chunk, chunk.Ends.size());
        if (!refusal) {
            return;
        }
        if (!refusal->Row && Existing) {
            Session.run("ROLLBACK TO chunk");
            refusal->Row = RowChunks::rowsTaken(chunk, [&](std::size_t rows) {
                const bool taken = !Sender->send(chunk, rows);
                Session.run("ROLLBACK TO chunk");
                return taken;
            });
        }
        refuse(chunk, *refusal);
    }

    [[noreturn]] void refuse(const RowChunks::Chunk& chunk, const RowRefusal& refusal) const
    {
        Place place{SourceFile, 0, {}, {}};
        if (refusal.Row && *refusal.Row < chunk.Records.size()) {
            place.Record = chunk.Records[*refusal.Row];
        }
        for (std::size_t i = 0; i < Source.size(); ++i) {
            if (Columns[i] == refusal.Column) {
                place.Column = Source[i].Name;
            }
        }
        throw Error(place, Session.name() + ": " + refusal.Reason);
    }

    std::string Uri;
    std::string SourceFile;
    const std::vector<Column>& Source;
    TableLayout Layout;
    MariadbSession Session;
    std::string Loaded;  // the table that is loaded, which is renamed at the end unless it existed
    bool Made = false;
    std::optional<ExistingColumns> Existing;
    std::vector<std::string> Columns;
    std::optional<RowSender> Sender;
    RowChunks Chunks;
    RowBlock Rows;
};

MariadbTarget::MariadbTarget(std::string uri, TableOptions table, ServerOptions options)
    : Uri(std::move(uri)), Table(std::move(table)), Options(std::move(options))
{
}

MariadbTarget::~MariadbTarget()
{
    MariadbTarget::abandon();
}

void MariadbTarget::begin(const std::string& file, const std::vector<Column>& columns)
{
    Work = std::make_unique<Load>(Uri, Table, Options, file, columns);
    Destination = "table " + Work->layout().table();
    Notes = Work->layout().notes();
    Work->begin();
}

void MariadbTarget::fit(Record& record)
{
    Work->fit(record);
}

void MariadbTarget::write(const Record& record)
{
    Work->write(record);
}

void MariadbTarget::finish()
{
    Work->finish();
    Notes = Work->layout().notes();
    Work.reset();
}

void MariadbTarget::abandon() noexcept
{
    if (!Work) {
        return;
    }
    if (!Work->abandon()) {
        Notes.push_back({"a table " + Work->loaded() + " may be left in the database", false});
    }
    Work.reset();
}

}  // namespace kd_lib::exchange::detail
