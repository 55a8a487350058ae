#include "commands.h"

#include "../database.h"
#include "../output.h"
#include "../sql_words.h"

namespace kd_tool {

namespace {

/// A connection that tells the end of the rows from a failure, and stops when nobody reads the results.
class QueryConnection : public Connection {
public:
    using Connection::Connection;

    bool fetchRow() override
    {
        // The end of the rows sets their number, a failure leaves it alone.
        constexpr std::uint64_t unset = ~std::uint64_t{0};
        resultRows = unset;
        const bool fetched = Connection::fetchRow();
        if (!fetched && resultRows == unset) {
            setError();
            fail();
        }
        return fetched;
    }

    bool processRow() override { return Connection::processRow() && !Results.failed(); }

    /// Prints the current result.
    void print()
    {
        queryResults();
        Results.finish();
    }

private:
    ResultOutput Results;
};

}  // namespace

void query(const QueryOptions& options)
{
    requireReadableFile(options.Database);
    if (holdsSecondStatement(options.Sql)) {
        throw Failure(options.Database, "the text holds more than one statement");
    }
    QueryConnection database(options.Database);
    database.require(database.query(options.Sql));
    if (database.statement == nullptr) {
        throw Failure(options.Database, "the text holds no SQL statement");
    }
    if (database.columnCount > 0) {
        database.print();
        return;
    }
    database.require(database.execute());
    note(options.Database + ": " + counted(database.resultRows, "row") + " changed");
}

}  // namespace kd_tool
