// Any sequence of calls on the base of the server back ends, with a connection whose results come from the input; and
// the reading of statements in both forms.

#include "support/bounded_output.h"
#include "support/calls.h"

#include <kd_lib/detail/serverconnection.h>
#include <kd_lib/serverdatabase.h>

#include <cmath>
#include <exception>

namespace {

constexpr std::size_t outputLimit = 16U << 20U;
constexpr int longestSequence = 200;
constexpr int mostRows = 20;

constexpr std::array<const char*, 10> statements = {"SELECT 1",
                                                    "INSERT INTO t VALUES (:a, :b, :a)",
                                                    "SELECT ?, ? FROM t -- ?\n",
                                                    "SELECT ':a' /* ? /* nested */ */, $tag$ :b $tag$, a::int[1:2]",
                                                    "SELECT `a`, \"b\", E'\\'', '\\\\' # ?\n",
                                                    "nonsense",
                                                    "",
                                                    "SELECT $1, $2",
                                                    "UPDATE t SET a = :a WHERE b = :b",
                                                    "$$ open"};
constexpr std::array<const char*, 12> types = {"BIGINT",
                                               "VARCHAR(20)",
                                               "TIMESTAMP(3) WITHOUT TIME ZONE",
                                               "NUMERIC(8,2)",
                                               "TEXT",
                                               "DOUBLE PRECISION",
                                               "BYTEA",
                                               "DATE",
                                               "TIME",
                                               "BOOLEAN",
                                               "INT(11) UNSIGNED",
                                               ""};

/// Fails or returns a result, as the input says.
class ScriptedConnection : public kd_lib::detail::ServerConnection {
public:
    ScriptedConnection(kd_fuzz::Calls& sequence, kd_lib::detail::SqlForm form) : Sequence(sequence), Form(form) {}

    bool alive() const override { return Alive; }
    kd_lib::detail::SqlForm form() const override { return Form; }
    bool backslashes() const override { return Form == kd_lib::detail::SqlForm::MariaDb; }

    bool prepare(const kd_lib::detail::StatementText& statement) override
    {
        kd_fuzz::require(statement.number("none of these") == 0, "an unknown parameter has no number");
        return outcome();
    }

    bool run(const kd_lib::detail::StatementText& statement, const std::vector<kd_lib::detail::Parameter>& parameters,
             std::vector<std::string>& columns) override
    {
        kd_fuzz::require(parameters.size() == statement.Names.size(), "every parameter has a value");
        columns.clear();
        for (unsigned int i = Sequence.below(4); i > 0; --i) {
            columns.push_back(Sequence.flag() ? "Name" : Sequence.flag() ? "type" : Sequence.text());
        }
        Rows = Sequence.below(4);
        return outcome();
    }

    bool next(kd_lib::TableFields& row) override
    {
        if (Rows == 0) {
            outcome();
            return false;
        }
        --Rows;
        for (kd_lib::TableField& field : row) {
            field.Value = Sequence.flag() ? Sequence.oneOf(types) : Sequence.text();
        }
        return true;
    }

    bool readRest() override
    {
        Rows = 0;
        return outcome();
    }

    std::uint64_t changedRows() const override { return 7; }
    bool command(const char*) override { return outcome(); }
    void drop() override {}

private:
    bool outcome()
    {
        const unsigned int kind = Sequence.below(12);
        Alive = Alive && kind != 11;
        if (kind < 9) {
            return true;
        }
        Failure = "refused [#" + std::to_string(kind) + "]";
        return false;
    }

    kd_fuzz::Calls& Sequence;
    kd_lib::detail::SqlForm Form;
    unsigned int Rows = 0;
    bool Alive = true;
};

/// Names are quoted as by the form's server: the reading of statements relies on that.
class Server : public kd_lib::ServerDatabase {
public:
    Server(kd_fuzz::Calls& sequence, kd_lib::detail::SqlForm form)
        : ServerDatabase("FUZZ", {"SELECT 1", "SELECT 2", "SELECT :table", "BEGIN",
                                  form == kd_lib::detail::SqlForm::MariaDb ? '`' : '"'}),
          Sequence(sequence), Form(form)
    {
    }

    using ServerDatabase::connect;
    bool connect() override
    {
        adopt(std::make_unique<ScriptedConnection>(Sequence, Form));
        return isConnected();
    }
    bool connectUri(const std::string&) override { return connect(); }

private:
    kd_fuzz::Calls& Sequence;
    kd_lib::detail::SqlForm Form;
};

void connectOrList(Server& server, kd_fuzz::Calls& calls)
{
    switch (calls.below(8)) {
    case 0:
        server.connect("host", "user", "password", "database");
        break;
    case 1:
        server.disconnect();
        break;
    case 2:
        server.createDatabase(calls.text());
        break;
    case 3:
        server.getDatabaseList();
        break;
    case 4:
        server.getTableList();
        break;
    case 5:
        server.getColumnList(calls.text());
        break;
    case 6:
        server.getRecords(calls.text());
        break;
    default:
        server.convertSql2FieldType(calls.flag() ? calls.oneOf(types) : calls.text());
        break;
    }
}

void runStatement(Server& server, kd_fuzz::Calls& calls)
{
    const std::string sql = calls.below(4) == 0 ? calls.text() : calls.oneOf(statements);
    switch (calls.below(9)) {
    case 0:
        server.prepare(sql);
        break;
    case 1:
        server.execute();
        break;
    case 2:
        server.execute(sql);
        break;
    case 3:
        server.query();
        break;
    case 4:
        server.query(sql);
        break;
    case 5:
        for (int row = 0; row < mostRows && server.fetchRow(); ++row) {
        }
        break;
    case 6:
        server.finalize();
        break;
    case 7:
        server.prepareInsert(calls.text());
        break;
    default:
        server.clearResults();
        break;
    }
}

void bindOrEnd(Server& server, kd_fuzz::Calls& calls)
{
    switch (calls.below(9)) {
    case 0:
        server.bind(calls.number(), calls.text());
        break;
    case 1:
        server.bind(calls.number(), calls.number());
        break;
    case 2:
        server.bind(calls.number(), calls.flag() ? std::nan("") : 0.1);
        break;
    case 3:
        server.bind(calls.flag() ? ":a" : calls.text(), calls.text());
        break;
    case 4:
        server.bindNULL(calls.number());
        break;
    case 5: {
        kd_lib::TableFields fields;
        for (unsigned int i = calls.below(3); i > 0; --i) {
            fields.add(calls.flag() ? ":a" : calls.text());
        }
        server.preparedRecord(fields);
        break;
    }
    case 6:
        server.beginTransaction();
        break;
    case 7:
        server.endTransaction();
        break;
    default:
        server.rollback();
        break;
    }
}

void callOnce(Server& server, kd_fuzz::Calls& calls)
{
    switch (calls.below(5)) {
    case 0:
        connectOrList(server, calls);
        break;
    case 1:
    case 2:
        runStatement(server, calls);
        break;
    case 3:
        bindOrEnd(server, calls);
        break;
    default:
        kd_lib::detail::readStatement(
            calls.text(), calls.flag() ? kd_lib::detail::SqlForm::PostgreSql : kd_lib::detail::SqlForm::MariaDb,
            calls.flag());
        break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const kd_fuzz::BoundedOutput output(outputLimit);
    kd_fuzz::Calls calls(std::string_view(reinterpret_cast<const char*>(data), size));
    const bool mariaDb = calls.flag();
    Server server(calls, mariaDb ? kd_lib::detail::SqlForm::MariaDb : kd_lib::detail::SqlForm::PostgreSql);
    server.connect();
    for (int i = 0; i < longestSequence && calls.more(); ++i) {
        try {
            callOnce(server, calls);
        } catch (const std::exception&) {
            // A standard exception is an outcome.
        }
        kd_fuzz::require(server.isConnected() != server.isDisconnected(), "both connected and disconnected");
    }
    return 0;
}
