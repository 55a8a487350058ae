// Any sequence of calls on a SQLite3 object and on the handles that it shows, as a client may make them.

#include "support/bounded_output.h"
#include "support/calls.h"
#include "support/input_folder.h"
#include "support/sqlite_fence.h"

#include <kd_lib/sqliteconnection.h>
#include <sqlite3.h>

#include <cmath>
#include <exception>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <utility>

namespace {

constexpr std::size_t outputLimit = 64U << 20U;
constexpr int longestSequence = 300;
constexpr int mostRows = 50;

constexpr std::array<const char*, 5> files = {"a.db", "b.db", ":memory:", "none/none.db", ""};
constexpr std::array<const char*, 4> encodings = {"", "", "'UTF-16le'", "nonsense"};
constexpr std::array<const char*, 5> tables = {"t", "u", "none", "", "t UNION SELECT 'x' ORDER BY 1 DESC"};
constexpr std::array<const char*, 8> types = {"SMALLINT", "INT",          "INTEGER", "DECIMAL(8,2)",
                                              "FLOAT",    "CHARACTER(3)", "BLOB",    "TIMESTAMP"};
constexpr std::array<const char*, 22> statements = {
    "CREATE TABLE IF NOT EXISTS t (a UNIQUE, b)",
    "INSERT INTO t VALUES (1, 'r1'), (2, NULL), (3, x'00ff')",
    "INSERT INTO t VALUES (:a, :b)",
    "INSERT INTO t VALUES (?, ?)",
    "SELECT * FROM t",
    "SELECT a, :b FROM t",
    "SELECT abs(-9223372036854775807 - 1)",
    "SELECT 1.5 AS `MyCol`",
    "SELECT 1 WHERE 0",
    "UPDATE t SET b = :a",
    "DELETE FROM t WHERE a > 1",
    "DROP TABLE IF EXISTS t",
    "CREATE TABLE u (c)",
    "INSERT OR ROLLBACK INTO t VALUES (1, 'r1')",
    "BEGIN",
    "COMMIT",
    "ROLLBACK",
    "SAVEPOINT s",
    "SELECT 1; SELECT 2",
    "nonsense",
    "-- nothing",
    "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c) SELECT x FROM c"};

std::string inFolder(const std::string& name)
{
    return kd_fuzz::inputFolder() + '/' + name;
}

/// An object that fails in further ways: its overrides step the statement themselves.
class Client : public kd_lib::SQLite3 {
public:
    bool StepsItself = false;

    using SQLite3::execute;
    bool execute() override { return StepsItself ? sqlite3_step(statement) == SQLITE_DONE : SQLite3::execute(); }
};

class Session {
public:
    explicit Session(kd_fuzz::Calls calls) : Sequence(calls)
    {
        Database.host = kd_fuzz::inputFolder();
        Database.createDatabase(":memory:");
    }

    void run()
    {
        for (int i = 0; i < longestSequence && Sequence.more(); ++i) {
            try {
                callOnce();
            } catch (const std::exception&) {
                // A standard exception is an outcome.
            }
            kd_fuzz::require(Database.isConnected() != Database.isDisconnected(), "both connected and disconnected");
        }
    }

private:
    void callOnce()
    {
        switch (Sequence.below(10)) {
        case 0:
            connection();
            break;
        case 1:
            lists();
            break;
        case 2:
        case 3:
            prepare();
            break;
        case 4:
        case 5:
            step();
            break;
        case 6:
            bind();
            break;
        case 7:
            transaction();
            break;
        case 8:
            keep();
            break;
        default:
            print();
            break;
        }
    }

    std::string sql() { return Sequence.below(5) == 0 ? Sequence.text() : Sequence.oneOf(statements); }

    void connection()
    {
        const std::string name = Sequence.oneOf(files);
        switch (Sequence.below(8)) {
        case 0:
            Database.useDatabase(name);
            break;
        case 1:
            Database.createDatabase(name);
            break;
        case 2:
            Database.openDatabase(name, Sequence.flag(), Sequence.oneOf(encodings));
            break;
        case 3:
            Database.attach(Sequence.flag() ? inFolder("attached.db") : name,
                            Sequence.flag() ? "side" : Sequence.text());
            break;
        case 4:
            Database.detach(Sequence.flag() ? "side" : Sequence.text());
            break;
        case 5:
            Kept = nullptr;
            Database.disconnect();
            break;
        case 6:
            Database.loadEnabled = Sequence.flag();
            Database.loadExtension(Sequence.text());
            Database.enableLoad();
            break;
        default:
            Database.connect(Sequence.flag() ? kd_fuzz::inputFolder() : "", "user", "", "");
            Database.host = kd_fuzz::inputFolder();
            break;
        }
    }

    void lists()
    {
        switch (Sequence.below(7)) {
        case 0:
            Database.getDatabaseList();
            break;
        case 1:
            Database.isAttached("side");
            break;
        case 2:
            Database.getTableList();
            break;
        case 3:
            Database.getColumnList(Sequence.oneOf(tables));
            break;
        case 4:
            Database.getRecords(Sequence.oneOf(tables));
            break;
        case 5:
            Database.convertFieldType(static_cast<int>(Sequence.below(8)));
            Database.convertSql2FieldType(Sequence.flag() ? Sequence.text() : Sequence.oneOf(types));
            break;
        default:
            Database.linkTable("linked");
            Database.clearTableList();
            Database.SqlDatabase::useDatabase("x");
            Database.SqlDatabase::createDatabase("x");
            break;
        }
    }

    void prepare()
    {
        switch (Sequence.below(6)) {
        case 0:
            Database.prepare(sql());
            break;
        case 1:
            Database.query(sql());
            break;
        case 2:
            Database.execute(sql());
            break;
        case 3:
            Database.query();
            break;
        case 4:
            Database.prepareInsert(Sequence.oneOf(tables));
            break;
        default:
            Database.query("SELECT a, b FROM t");
            Database.prepareInsert("t");
            break;
        }
    }

    void step()
    {
        switch (Sequence.below(8)) {
        case 0:
            Database.execute();
            break;
        case 1:
            Database.fetchRow();
            break;
        case 2:
            for (int row = 0; row < mostRows && Database.fetchRow(); ++row) {
            }
            break;
        case 3:
            sqlite3_step(Database.statement);
            break;
        case 4:
            Database.resetResults();
            break;
        case 5:
            finalize();
            break;
        case 6:
            sqlite3_reset(Database.statement);
            break;
        default:
            Database.StepsItself = Sequence.flag();
            break;
        }
    }

    void finalize()
    {
        Database.finalize();
        kd_fuzz::require(Database.statement == nullptr, "finalize leaves a statement");
    }

    void bind()
    {
        switch (Sequence.below(7)) {
        case 0:
            Database.bind(Sequence.number(), Sequence.text());
            break;
        case 1:
            Database.bind(Sequence.number(), Sequence.number());
            break;
        case 2:
            Database.bind(Sequence.number(), Sequence.flag() ? std::nan("") : 2.5);
            break;
        case 3:
            Database.bind(Sequence.flag() ? ":a" : Sequence.text(), Sequence.text());
            break;
        case 4:
            Database.bindNULL(Sequence.number());
            break;
        case 5:
            Database.bindKept(Sequence.number(), Sequence.flag() ? "kept\0text" : "");
            break;
        default: {
            kd_lib::TableFields fields;
            const unsigned int count = Sequence.below(4);
            for (unsigned int i = 0; i < count; ++i) {
                fields.add(Sequence.flag() ? ":a" : Sequence.flag() ? ":b" : Sequence.text());
                fields.List.back()->Value = Sequence.text();
            }
            Database.preparedRecord(fields);
            break;
        }
        }
    }

    void transaction()
    {
        switch (Sequence.below(6)) {
        case 3:
            Other.host = kd_fuzz::inputFolder();
            Other.createDatabase(Sequence.oneOf(files));
            Other.execute("BEGIN EXCLUSIVE");
            break;
        case 4:
            Other.disconnect();
            break;
        case 0:
            Database.beginTransaction();
            break;
        case 1:
            Database.endTransaction();
            break;
        case 2:
            Database.rollback();
            break;
        default:
            Database.importSqlFile(inFolder(Sequence.flag() ? "input.sql" : "none.sql"));
            break;
        }
    }

    /// Removes a half-read statement and puts it back later, in place of the current one.
    void keep()
    {
        if (Kept == nullptr) {
            if (Database.isConnected() && Database.query("SELECT 1 AS x UNION ALL SELECT 2") && Database.fetchRow()) {
                Kept = Database.statement;
                Database.prepare("SELECT 3");
            }
            return;
        }
        Database.finalize();
        Database.statement = std::exchange(Kept, nullptr);
        if (Sequence.flag()) {
            Database.query();
            Database.fetchRow();
        }
    }

    void print()
    {
        std::istringstream replies(Sequence.text());
        std::streambuf* const input = std::cin.rdbuf(replies.rdbuf());
        Database.pageRows = Sequence.byte();
        if (kd_lib::TableField* first = Database.queryColumns.get(0UL)) {
            first->Length = Sequence.number();
        }
        try {
            printOnce();
        } catch (...) {
            std::cin.rdbuf(input);
            throw;
        }
        std::cin.rdbuf(input);
        std::cin.clear();
    }

    void printOnce()
    {
        switch (Sequence.below(4)) {
        case 0:
            Database.queryResults();
            break;
        case 1:
            Database.printHeader();
            Database.processRow();
            break;
        case 2:
            Database.showQueryColumns();
            break;
        default:
            Database.setError();
            break;
        }
    }

    kd_fuzz::Calls Sequence;
    Client Database;
    kd_lib::SQLite3 Other;  // takes locks
    sqlite3_stmt* Kept = nullptr;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    kd_fuzz::fenceInConnections();
    kd_fuzz::allowAttaching(inFolder("attached.db"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const kd_fuzz::FileAndCalls input(data, size);
    for (const char* file : {"a.db", "b.db", "attached.db"}) {
        std::filesystem::remove(inFolder(file));
        std::filesystem::remove(inFolder(std::string(file) + "-journal"));
    }
    kd_fuzz::writeInput("input.sql", input.File);
    const kd_fuzz::BoundedOutput output(outputLimit);
    kd_fuzz::renewBudget();
    Session(kd_fuzz::Calls(input.Sequence)).run();
    return 0;
}
