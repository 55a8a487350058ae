#include "postgresqltarget.h"

#include "postgresqlcolumns.h"
#include "postgresqlsession.h"

#include <kd_lib/exchange/outputblock.h>
#include <kd_lib/exchange/rowchunks.h>
#include <kd_lib/exchange/rowtext.h>
#include <kd_lib/exchange/tablelayout.h>

#include <charconv>
#include <cstring>
#include <optional>
#include <utility>

namespace kd_lib::exchange::detail {

namespace {

/// Sent in pieces, so that libpq's own buffer stays small.
constexpr std::size_t pieceSize = 65536;

// The most rows and bytes of one COPY, because the records of its rows are remembered, and perhaps their texts.
constexpr std::size_t chunkRows = 262144;
constexpr std::size_t chunkBytes = 4 << 20;

constexpr const char* partsOfTable =
    "SELECT c.relname, 'INDEX' FROM pg_index i JOIN pg_class c ON c.oid = i.indexrelid "
    "WHERE i.indrelid = to_regclass(quote_ident($1)) "
    "UNION ALL SELECT c.relname, 'SEQUENCE' FROM pg_depend d JOIN pg_class c ON c.oid = d.objid "
    "WHERE d.refobjid = to_regclass(quote_ident($1)) AND c.relkind = 'S'";

constexpr const char* duplicateTable = "42P07";

/// Whether the server has refused a row, rather than failed for another reason: a lost connection, a deadlock, a full
/// disk.
bool isOfRow(const PGresult* result)
{
    const char* const text = PQresultErrorField(result, PG_DIAG_SQLSTATE);
    const std::string_view state = text != nullptr ? text : "";
    constexpr std::string_view invalidData = "22";
    constexpr std::string_view brokenConstraint = "23";
    constexpr std::string_view brokenView = "44";
    constexpr std::string_view raisedByTrigger = "P0";
    const std::string_view group = state.substr(0, 2);
    return group == invalidData || group == brokenConstraint || group == brokenView || group == raisedByTrigger;
}

/// The line that the server names, in the form "COPY people, line 3, column name".
std::optional<std::size_t> lineOf(const PGresult* result, const std::string& table)
{
    const char* const context = PQresultErrorField(result, PG_DIAG_CONTEXT);
    const std::string_view text = context != nullptr ? context : "";
    const std::string lead = "COPY " + table + ", line ";
    const std::size_t at = text.find(lead);
    std::size_t line = 0;
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    std::from_chars(text.data() + at + lead.size(), text.data() + text.size(), line);
    return line == 0 ? std::nullopt : std::optional(line - 1);
}

/// The column after the line number.
std::string columnOf(const PGresult* result)
{
    if (const char* const name = PQresultErrorField(result, PG_DIAG_COLUMN_NAME); name != nullptr) {
        return name;
    }
    const char* const context = PQresultErrorField(result, PG_DIAG_CONTEXT);
    const std::string_view text = context != nullptr ? context : "";
    constexpr std::string_view lead = ", column ";
    const std::size_t at = text.find(lead, std::min(text.find(", line "), text.size()));
    return at == std::string_view::npos
               ? ""
               : std::string(text.substr(at + lead.size(), text.find_first_of(":\n", at) - at - lead.size()));
}

/// A running load.
class PostgresqlLoad final : public ServerLoad {
public:
    PostgresqlLoad(const std::string& uri, const ServerOptions& options, const TableOptions& table,
                   const std::string& file, const std::vector<Column>& columns)
        : ServerLoad(Engine::PostgreSql, file, columns, table), Session(uri, options), Rows(*this)
    {
    }

    void begin() override
    {
        for (const std::string& statement : Layout.session()) {
            Session.run(statement);
        }
        Session.run("BEGIN");
        switch (Layout.mode()) {
        case TableMode::Append:
            joinTable();
            break;
        case TableMode::Replace:
            Loaded =
                Layout.dialect().nameWithSuffix(Layout.table(), "_kd_db_" + std::to_string(PQbackendPID(handle())));
            [[fallthrough]];
        case TableMode::Create:
            makeTable();
            break;
        }
        Copy = "COPY " + quoted(Loaded) + " (" + columnList() + ") FROM STDIN";
    }

    void write(const Record& record) override
    {
        writeCopyRow(record, Rows);
        Sent.Records.push_back(record.Number);
        if (Existing) {
            Rows.flush();
            Sent.Ends.push_back(Sent.Text.size());
        }
        if (Sent.Records.size() >= chunkRows || Sent.Text.size() >= chunkBytes) {
            endChunk();
        }
    }

    void finish() override
    {
        endChunk();
        if (Layout.mode() == TableMode::Replace) {
            exchangeTables();
        }
        const Result result = Session.run("COMMIT");
        if (std::strcmp(PQcmdStatus(result.get()), "COMMIT") != 0) {
            throw Error(Session.name(), "the server has rolled the load back");
        }
    }

    /// Returns when the server has undone everything, unless the connection is lost.
    bool abandon() noexcept override
    {
        Rows.discard();
        const Result result(PQexec(handle(), "ROLLBACK"));
        return true;
    }

private:
    /// Sends the text of rows to the server.
    class RowBlock final : public OutputBlock {
    public:
        explicit RowBlock(PostgresqlLoad& load) : OutputBlock(pieceSize), To(load) {}

        using OutputBlock::discard;

    private:
        void take(std::string_view piece) override { To.put(piece); }

        PostgresqlLoad& To;
    };

    PGconn* handle() const { return Session.handle(); }

    std::string columnList() const
    {
        std::string list;
        for (const std::string& name : columnNames()) {
            list.append(list.empty() ? "" : ",").append(quoted(name));
        }
        return list;
    }

    void joinTable() { Existing.emplace(Layout, columnsOfTable(Session, Layout.table()), Session.name()); }

    void makeTable()
    {
        const Result result(PQexec(handle(), Layout.createTable(Loaded).c_str()));
        const char* const state = PQresultErrorField(result.get(), PG_DIAG_SQLSTATE);
        if (state != nullptr && std::strcmp(state, duplicateTable) == 0) {
            throw Error(Session.name(), "table " + Loaded + " exists already");
        }
        if (PQresultStatus(result.get()) != PGRES_COMMAND_OK) {
            Session.fail(result.get());
        }
    }

    /// The new table gets the old one's name, and its indexes and sequences are renamed accordingly.
    void exchangeTables()
    {
        Session.run("DROP TABLE IF EXISTS " + quoted(Layout.table()));
        const Result parts = Session.rows(partsOfTable, Loaded);
        Session.run("ALTER TABLE " + quoted(Loaded) + " RENAME TO " + quoted(Layout.table()));
        for (int i = 0; i < PQntuples(parts.get()); ++i) {
            const std::string part = valueOf(parts, i, 0);
            if (part.starts_with(Loaded)) {
                Session.run("ALTER " + valueOf(parts, i, 1) + " " + quoted(part) + " RENAME TO " +
                            quoted(Layout.dialect().nameWithSuffix(Layout.table(), part.substr(Loaded.size()))));
            }
        }
    }

    /// Sends rows to the server, which is slower than this program, so a second thread would gain nothing.
    void put(std::string_view rows)
    {
        if (!std::exchange(Copying, true)) {
            Session.checkStop();
            // Only an existing table can have a constraint or trigger that refuses a row without naming it.
            if (Existing) {
                Session.run("SAVEPOINT chunk");
            }
            Session.run(Copy, true);
        }
        send(rows);
        if (Existing) {
            Sent.Text.append(rows);
        }
    }

    void send(std::string_view rows)
    {
        while (!rows.empty()) {
            const std::string_view piece = rows.substr(0, pieceSize);
            if (PQputCopyData(handle(), piece.data(), static_cast<int>(piece.size())) != 1) {
                Session.fail(nullptr);
            }
            rows.remove_prefix(piece.size());
        }
    }

    /// Ends a COPY; nothing if the server accepts its rows.
    std::optional<RowRefusal> endCopy()
    {
        Copying = false;
        if (PQputCopyEnd(handle(), nullptr) != 1) {
            Session.fail(nullptr);
        }
        std::optional<RowRefusal> refusal;
        while (const Result result{PQgetResult(handle())}) {
            if (PQresultStatus(result.get()) == PGRES_COMMAND_OK || refusal) {
                continue;
            }
            if (!isOfRow(result.get())) {
                Session.fail(result.get());
            }
            refusal = RowRefusal{kd_lib::detail::postgresqlReason(result.get(), handle()), lineOf(result.get(), Loaded),
                                 columnOf(result.get())};
        }
        return refusal;
    }

    /// Ends the current COPY. The rows of a chunk are remembered until the server has accepted them.
    void endChunk()
    {
        Rows.flush();
        std::optional<RowRefusal> refusal = Copying ? endCopy() : std::nullopt;
        if (refusal && !refusal->Row && Existing) {
            Session.run("ROLLBACK TO chunk");
            refusal->Row = RowChunks::rowsTaken(Sent, [&](std::size_t rows) {
                Session.run(Copy, true);
                send(Sent.first(rows));
                const bool taken = !endCopy();
                Session.run("ROLLBACK TO chunk");
                return taken;
            });
        }
        if (refusal) {
            refuse(Sent, *refusal, Session.name());
        }
        Sent.Text.clear();
        Sent.Ends.clear();
        Sent.Records.clear();
    }

    PostgresqlSession Session;
    std::string Copy;
    RowChunks::Chunk Sent;  // its texts only if the server may refuse a row without naming it
    bool Copying = false;
    RowBlock Rows;
};

}  // namespace

std::unique_ptr<ServerLoad> postgresqlLoad(const std::string& uri, const ServerOptions& options,
                                           const TableOptions& table, const std::string& file,
                                           const std::vector<Column>& columns)
{
    return std::make_unique<PostgresqlLoad>(uri, options, table, file, columns);
}

}  // namespace kd_lib::exchange::detail
