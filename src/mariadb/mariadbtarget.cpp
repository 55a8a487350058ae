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

/// A running load.
class MariadbLoad final : public ServerLoad {
public:
    MariadbLoad(std::string uri, const ServerOptions& options, const TableOptions& table, const std::string& file,
                const std::vector<Column>& columns)
        : ServerLoad(Engine::MySql, file, columns, table), Uri(std::move(uri)), Session(Uri, options),
          Chunks([this](const RowChunks::Chunk& chunk) { send(chunk); }), Rows(Chunks)
    {
    }

    ~MariadbLoad() override { Chunks.discard(); }

    void begin() override
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
        Sender.emplace(Session, Layout, Loaded, columnNames(), foreign);
    }

    void write(const Record& record) override
    {
        Sender->write(record, Rows);
        Rows.flush();
        Chunks.endRow(record.Number);
    }

    void finish() override
    {
        Chunks.finish();
        if (Existing) {
            Session.run("COMMIT");
        } else {
            publish();
        }
    }

    bool abandon() noexcept override
    {
        Chunks.discard();
        try {
            if (Session.send("ROLLBACK")) {
                return !Made || Session.send(dropStatement());
            }
            return !Made || dropOverNewConnection();
        } catch (const std::exception&) {
            return false;
        }
    }

private:
    /// Appends the text of rows to the current chunk.
    class RowBlock final : public OutputBlock {
    public:
        explicit RowBlock(RowChunks& chunks) : To(chunks) {}

    private:
        void take(std::string_view piece) override { To.text().append(piece); }

        RowChunks& To;
    };

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
    bool dropOverNewConnection()
    {
        MariadbSession second(Uri, {});
        // The server may not have noticed yet that the first connection has ended.
        second.send("KILL " + std::to_string(Session.number()));
        return second.send(dropStatement());
    }

    /// Runs on the thread of the chunks: nobody else uses the connection until it returns.
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
        refuse(chunk, *refusal, Session.name());
    }

    std::string Uri;
    MariadbSession Session;
    bool Made = false;  // the table `loaded` is new
    std::optional<RowSender> Sender;
    RowChunks Chunks;
    RowBlock Rows;
};

}  // namespace

std::unique_ptr<ServerLoad> mariadbLoad(const std::string& uri, const ServerOptions& options, const TableOptions& table,
                                        const std::string& file, const std::vector<Column>& columns)
{
    return std::make_unique<MariadbLoad>(uri, options, table, file, columns);
}

}  // namespace kd_lib::exchange::detail
