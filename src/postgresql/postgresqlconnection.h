/// \file
/// An open connection of libpq.
#pragma once

#include <kd_lib/detail/serverconnection.h>

#include <libpq-fe.h>

#include <memory>

namespace kd_lib::detail {

struct ResultDeleter {
    void operator()(PGresult* result) const { PQclear(result); }
};
using Result = std::unique_ptr<PGresult, ResultDeleter>;

/// A text of libpq on one line.
std::string postgresqlReason(const char* text);

/// The reason why a result is a failure: message, detail and SQLSTATE; the connection's failure if the result has no
/// text.
std::string postgresqlReason(const PGresult* result, const PGconn* connection);

class PostgresqlConnection final : public ServerConnection {
public:
    /// Owns `open`, a connection that has succeeded.
    explicit PostgresqlConnection(PGconn* open);
    ~PostgresqlConnection() override;

    PGconn* handle() const { return Handle; }

    bool alive() const override;
    SqlForm form() const override { return SqlForm::PostgreSql; }
    bool backslashes() const override;
    bool prepare(const StatementText& statement) override;
    bool run(const StatementText& statement, const std::vector<Parameter>& parameters,
             std::vector<std::string>& columns) override;
    bool next(TableFields& row) override;
    bool readRest() override;
    std::uint64_t changedRows() const override { return Changed; }
    bool command(const char* sql) override;
    void drop() override;

private:
    bool take();
    bool fail(const PGresult* result);

    PGconn* Handle;
    Result Current;  // taken, with rows left
    std::uint64_t Changed = 0;
    bool Running = false;   // results may still come
    bool OnServer = false;  // the server's unnamed statement is the current one
};

}  // namespace kd_lib::detail
